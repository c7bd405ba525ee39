#include "simulator/files/interruption.h"
#include "tools/headboard-image/command_line.h"

#include <QCoreApplication>
#include <cstdio>

namespace {
void print(std::string const& text, std::FILE* file) {
    std::fputs(QString::fromStdString(text).toLocal8Bit().constData(), file);
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    // A command takes no time that anybody would cut short, and leaves no half-written file beside the image.
    files::noteInterruptions();
    headboard_image::Outcome const outcome = headboard_image::runCommandLine(QCoreApplication::arguments());
    print(outcome.output, stdout);
    if (!outcome.complaint.empty())
        print("headboard-image: " + outcome.complaint, stderr);
    return outcome.exitCode;
}
