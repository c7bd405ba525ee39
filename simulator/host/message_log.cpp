#include "simulator/host/message_log.h"

#include <QMutex>
#include <QtGlobal>
#include <cstdio>

namespace pictara {
namespace {

constexpr char kSolverMark[] = "shadefit:";

struct Log {
    QMutex mutex; // messages come from any thread
    QString solverMessage;
    bool progressLineShown = false;
};

Log& log() {
    static Log instance;
    return instance;
}

void onMessage(QtMsgType type, QMessageLogContext const&, QString const& text) {
    QMutexLocker const lock(&log().mutex);
    if (text.startsWith(QLatin1String(kSolverMark)))
        log().solverMessage = text.mid(int(sizeof kSolverMark) - 1).trimmed();
    std::fprintf(stderr, "%s%s\n", log().progressLineShown ? "\r\033[K" : "", text.toLocal8Bit().constData());
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

void installMessageLog() {
    qInstallMessageHandler(onMessage);
}

QString lastSolverMessage() {
    QMutexLocker const lock(&log().mutex);
    return log().solverMessage;
}

void forgetSolverMessage() {
    QMutexLocker const lock(&log().mutex);
    log().solverMessage.clear();
}

void complain(QString const& text) {
    std::fprintf(stderr, "pictara-sim: %s\n", text.toLocal8Bit().constData());
}

void setProgressLineShown(bool shown) {
    QMutexLocker const lock(&log().mutex);
    log().progressLineShown = shown;
}

} // namespace pictara
