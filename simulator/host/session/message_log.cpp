#include "simulator/host/session/message_log.h"

#include <QMutex>
#include <QtGlobal>
#include <cstdio>
#include <utility>

namespace pictara {
namespace {
constexpr char kSolverMark[] = "shadefit:";
constexpr char kBlocksMark[] = "refused blocks of ";
constexpr char kConsequence[] = "there is no ";

QMutex mutex; // messages come from any thread
SolverCause lastCause;
QString nextBlocks; // of the next cause

void onMessage(QtMsgType type, QMessageLogContext const&, QString const& text) {
    QMutexLocker const lock(&mutex);
    if (text.startsWith(QLatin1String(kSolverMark))) {
        QString const told = text.mid(int(sizeof kSolverMark) - 1).trimmed();
        if (told.startsWith(QLatin1String(kBlocksMark)))
            nextBlocks = told.mid(int(sizeof kBlocksMark) - 1);
        else if (!told.startsWith(QLatin1String(kConsequence)) || lastCause.text.isEmpty())
            lastCause = {told, std::exchange(nextBlocks, {})};
    }
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    if (type == QtFatalMsg)
        std::abort();
}
} // namespace

void installMessageLog() { qInstallMessageHandler(onMessage); }

SolverCause lastSolverCause() {
    QMutexLocker const lock(&mutex);
    return lastCause;
}

void forgetSolverCause() {
    QMutexLocker const lock(&mutex);
    lastCause = {};
}

void complain(QString const& text) {
    std::fprintf(stderr, "pictara-sim: %s\n", text.toLocal8Bit().constData());
}
} // namespace pictara
