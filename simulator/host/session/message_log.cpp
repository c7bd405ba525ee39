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

struct Log {
    QMutex mutex; // messages come from any thread
    SolverCause last;
    QString blocks; ///< of the next cause
};

Log& log() {
    static Log instance;
    return instance;
}

void noteSolver(QString const& told) {
    if (told.startsWith(QLatin1String(kBlocksMark))) {
        log().blocks = told.mid(int(sizeof kBlocksMark) - 1);
    } else if (!told.startsWith(QLatin1String(kConsequence)) || log().last.text.isEmpty()) {
        log().last = {told, std::exchange(log().blocks, {})};
    }
}

void onMessage(QtMsgType type, QMessageLogContext const&, QString const& text) {
    QMutexLocker const lock(&log().mutex);
    if (text.startsWith(QLatin1String(kSolverMark)))
        noteSolver(text.mid(int(sizeof kSolverMark) - 1).trimmed());
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    if (type == QtFatalMsg)
        std::abort();
}
} // namespace

void installMessageLog() { qInstallMessageHandler(onMessage); }

SolverCause lastSolverCause() {
    QMutexLocker const lock(&log().mutex);
    return log().last;
}

void forgetSolverCause() {
    QMutexLocker const lock(&log().mutex);
    log().last = {};
}

void complain(QString const& text) {
    std::fprintf(stderr, "pictara-sim: %s\n", text.toLocal8Bit().constData());
}
} // namespace pictara
