// headboard-config: the headboard configuration page on a simulated camera, for work by hand.

#include "config_page/config_state.h"
#include "tools/headboard-config/session.h"

#include <QApplication>
#include <QLabel>
#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

void complain(QString const& text) {
    std::fprintf(stderr, "headboard-config: %s\n", text.toLocal8Bit().constData());
}

// The command line is read without a display.
CommandLine readCommandLine(int argc, char** argv) {
    QCoreApplication const application(argc, argv);
    return parseCommandLine(QCoreApplication::arguments());
}

#ifdef Q_OS_LINUX
// Qt would abort.
bool hasDisplay() {
    static constexpr char const* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::any_of(std::begin(kVariables), std::end(kVariables),
                       [](char const* name) { return !qEnvironmentVariableIsEmpty(name); });
}
#else
bool hasDisplay() {
    return true;
}
#endif

// What the page shows, for whoever has no picture.
void report(Config const& page) {
    static constexpr char const* kNames[] = {"part number", "interface", "market indicator",
                                             "special processing"};
    auto const text = [&](char const* label) {
        return page.findChild<QLabel*>(QLatin1String(label))->text().toLocal8Bit();
    };
    std::printf("%s\n", text("EEPROM_Status").constData());
    std::printf("serial number: %s\n%s\n", page.serialNumber().toLocal8Bit().constData(),
                text("SN_Status").constData());
    for (size_t i = 0; i < std::size(kNames); ++i)
        std::printf("%s: %s\n", kNames[i], page.state().identification[i].toLocal8Bit().constData());
}

int run(Session& session, Options const& options) {
    session.window().show();
    session.page().initialise();
    bool pictured = true;
    if (options.screenshotFile.isEmpty()) {
        QApplication::exec();
    } else {
        QApplication::processEvents();
        pictured = session.window().grab().save(options.screenshotFile);
        if (!pictured)
            complain(QStringLiteral("The picture %1 cannot be written.").arg(options.screenshotFile));
        report(session.page());
    }
    QString error;
    bool const saved = session.saveEeprom(&error);
    if (!saved)
        complain(error);
    return saved && pictured ? kExitDone : kExitNotSaved;
}

} // namespace

int main(int argc, char** argv) {
    CommandLine const commandLine = readCommandLine(argc, argv);
    if (!commandLine.options) {
        std::fputs(commandLine.text.toLocal8Bit().constData(),
                   commandLine.exitCode == kExitDone ? stdout : stderr);
        return commandLine.exitCode;
    }
    if (!commandLine.options->screenshotFile.isEmpty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!hasDisplay()) {
        complain(QStringLiteral("There is no display for the window. --screenshot needs none."));
        return kExitUsage;
    }
    // Qt has options of its own; the program's are not for it.
    int onlyTheProgramsName = 1;
    QApplication const application(onlyTheProgramsName, argv);
    QString error;
    std::unique_ptr<Session> const session = Session::open(*commandLine.options, &error);
    if (!session) {
        complain(error);
        return kExitUsage;
    }
    return run(*session, *commandLine.options);
}
