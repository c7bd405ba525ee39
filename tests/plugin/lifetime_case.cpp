// One order in which host, dialog, library and application may come to their ends, named on the command line.
// The process must end with 0 in each.

#include "tests/fakes/fake_host.h"
#include "tests/plugin/plugin_library.h"

#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QLabel>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <vector>

namespace {

struct Setting {
    int argc = 1;
    char name[15] = "lifetime_case";
    char* argv[2] = {name, nullptr};
    QApplication* application = new QApplication(argc, argv);
    QTemporaryDir folder;
    FakeHost host;
    SensorRecord sensor{};
    HostServices services{};
    PluginLibrary plugin;

    Setting() {
        std::string const ini = folder.filePath(QStringLiteral("host.ini")).toStdString();
        std::ofstream(ini) << "[Lens Calibration Setup]\n";
        host.textSettings["IniFileName"] = ini;
        services = host.services();
        sensor.sensorKind = 200;
    }

    QDialog* open(QWidget* parent = nullptr) {
        QDialog* const dialog = plugin.open(5, parent, &sensor, &services);
        if (!dialog)
            std::exit(2);
        dialog->show();
        QApplication::processEvents();
        return dialog;
    }
    void frame() {
        static std::vector<uint32_t> picture(64 * 48, 0x808080);
        plugin.image(picture.data(), 11, 64, 48, 256);
        plugin.registerChanged(0, 0);
    }
    void unload() {
        if (!plugin.library.unload())
            std::exit(3);
    }
};

using Order = std::function<void(Setting&)>;

std::map<std::string, Order> const kOrders = {
    {"unload_alive",
     [](Setting& s) {
         s.open();
         s.unload();
         QApplication::processEvents();
         if (!QApplication::topLevelWidgets().isEmpty())
             std::exit(4); // the library's end deletes its dialog
         delete s.application;
     }},
    {"unload_after_application",
     [](Setting& s) {
         s.open();
         delete s.application;
         s.unload();
     }},
    {"exit_with_dialog",
     [](Setting& s) {
         s.open();
         delete s.application;
     }},
    {"exit_with_static_application", [](Setting& s) { s.open(); }},
    {"parent_first",
     [](Setting& s) {
         auto* const parent = new QWidget;
         s.open(parent);
         delete parent;
         s.frame();
         s.unload();
         delete s.application;
     }},
    {"dialog_first_then_frames",
     [](Setting& s) {
         delete s.open();
         s.frame();
         delete s.open();
         s.frame();
         s.unload();
         delete s.application;
     }},
    {"page_first",
     [](Setting& s) {
         QDialog* const dialog = s.open();
         delete dialog->findChild<QDialog*>();
         s.frame();
         s.unload();
         delete s.application;
     }},
    {"second_open",
     [](Setting& s) {
         QDialog* const first = s.open();
         s.sensor.sensorKind = 97;
         s.open();
         s.frame();
         delete first;
         s.frame();
         s.unload();
         delete s.application;
     }},
    {"without_libraries",
     [](Setting& s) {
         // The plug-in alone in a folder: its libraries are nowhere, which it tells once for each.
         QString const alone = s.folder.filePath(QFileInfo(QStringLiteral(PLUGIN_FILE)).fileName());
         if (!QFile::copy(QStringLiteral(PLUGIN_FILE), alone))
             std::exit(5);
         s.plugin.load(alone);
         static int warnings = 0;
         qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const& text) {
             warnings += text.contains(QLatin1String("cannot be loaded"));
         });
         int stranger = 0;
         s.sensor.camera = reinterpret_cast<vy_Camera*>(&stranger); // nobody looks behind it
         QDialog* const dialog = s.open();
         for (int i = 0; i < 2; ++i)
             QMetaObject::invokeMethod(dialog->findChild<QDialog*>(), "OnBnClickedCalibrate");
         auto const* const status = dialog->findChild<QLabel*>(QStringLiteral("Calibrate_Status"));
         if (!status->text().startsWith(QLatin1String("Error. Are the External")) || warnings != 2)
             std::exit(6);
         s.unload();
         delete s.application;
     }},
    {"unload_without_opening",
     [](Setting& s) {
         s.unload();
         delete s.application;
     }},
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !kOrders.count(argv[1]))
        return 1;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Never destroyed: what an order leaves alive is alive at the process's exit.
    auto* const setting = new Setting;
    kOrders.at(argv[1])(*setting);
    std::puts("ended in order");
    return 0;
}
