#include "simulator/files/interruption.h"
#include "tools/shading/command_line.h"

#include <QCoreApplication>
#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    files::noteInterruptions();
    // The libraries' own words; every failure is told once, by the program.
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    shading::Outcome const outcome = shading::runCommandLine(QCoreApplication::arguments());
    std::fputs(outcome.output.toLocal8Bit().constData(), stdout);
    if (!outcome.complaint.isEmpty())
        std::fprintf(stderr, "shading: %s\n", outcome.complaint.toLocal8Bit().constData());
    return outcome.exitCode;
}
