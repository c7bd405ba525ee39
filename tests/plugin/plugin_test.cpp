#include "simulator/boundary/plugin_library.h"
#include "tests/support/fake_bench.h"
#include "wizard/wizard.h"

#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QTabWidget>
#include <QTimer>
#include <gtest/gtest.h>
#include <vector>
#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

// A host's program may export functions of the same names; the plug-in calls its own.
extern "C" [[gnu::visibility("default")]] void ImageData(void const*, uint32_t, uint32_t, int32_t,
                                                         uint32_t) noexcept {
    ADD_FAILURE() << "the host's function instead of the plug-in's";
}

using namespace kestra;

namespace {
class Plugin : public ::testing::Test, protected FakeBench {
protected:
    Plugin() {
        writeIni("[lens calibration setup]\n");
        load(QStringLiteral(PLUGIN_FILE));
        warnings.clear();
        qInstallMessageHandler(
            [](QtMsgType, QMessageLogContext const&, QString const& text) { warnings += text; });
    }
    ~Plugin() override { qInstallMessageHandler(nullptr); }

    void load(QString const& file) {
        QString error;
        ASSERT_TRUE(plugin.load(file, &error)) << qPrintable(error);
    }
    QDialog* open(uint32_t version = 5) {
        dialog = plugin.openDialog(nullptr, &sensor, &services, version);
        return dialog;
    }
    std::string text(char const* label) {
        return dialog->findChild<QLabel*>(QLatin1String(label))->text().toStdString();
    }

    pictara::PluginLibrary plugin;
    QPointer<QDialog> dialog;
    QDir const m_folder{QString::fromStdString(saveDir())};
    inline static QStringList warnings;
};

TEST_F(Plugin, AnswersNoDialogAndCallsNobodyForWhatItDoesNotServe) {
    for (uint32_t const version : {0U, 4U, 6U, 0xFFFFFFFFU})
        EXPECT_FALSE(open(version));
    EXPECT_FALSE(plugin.openDialog(nullptr, nullptr, nullptr, 4));
    EXPECT_FALSE(plugin.openDialog(nullptr, nullptr, &services));
    EXPECT_FALSE(plugin.openDialog(nullptr, &sensor, nullptr));
    sensor.sensorKind = 36;
    EXPECT_FALSE(open());
    EXPECT_TRUE(host.log.empty());
}

TEST_F(Plugin, OnlyThePlainSetupPresetOpensTheDialog) {
    for (char const* ini : {"", "[Hidden: Lens Calibration Setup]\n[Toolbar: Lens Calibration Setup]\n"}) {
        writeIni(ini);
        EXPECT_FALSE(open());
    }
    EXPECT_EQ(host.log, std::vector<std::string>(2, "readText IniFileName"));
    host.textSettings.clear();
    EXPECT_FALSE(open());
    HostServices const nothing{};
    EXPECT_FALSE(plugin.openDialog(nullptr, &sensor, &nothing));
}

TEST_F(Plugin, KindsChooseTheirTabs) {
    std::pair<uint32_t, QStringList> const rows[] = {
        {97, {}}, {200, {"Lens Calibration"}}, {72, {"Lens Calibration - APGA(Adaptive/Auto)"}}};
    for (auto const& [kind, labels] : rows) {
        delete dialog.data(); // the last one goes with the library
        sensor.sensorKind = kind;
        ASSERT_TRUE(open()) << kind;
        EXPECT_EQ(dialog->windowTitle(), "Kestra Headboard Tuning - LSC Wizard");
        EXPECT_EQ(dialog->size(), QSize(575, 816));
        auto* const tabs = dialog->findChild<QTabWidget*>("tabWidget");
        EXPECT_EQ(tabs->geometry(), QRect(0, 10, 565, 771));
        QStringList shown;
        for (int i = 0; i < tabs->count(); ++i)
            shown << (tabs->isTabEnabled(i) ? tabs->tabText(i) : "disabled");
        EXPECT_EQ(shown, labels) << kind;
    }
}

TEST_F(Plugin, BulletsComeFromTheLibrarysOwnResources) {
    ASSERT_TRUE(open());
    EXPECT_FALSE(dialog->findChild<QLabel*>("Setup_Bullet")->pixmap(Qt::ReturnByValue).isNull());
    auto const& wizard = static_cast<Wizard const&>(*dialog);
    for (QPixmap const* const bullet :
         {&wizard.pixGray, &wizard.pixBlue, &wizard.pixGreen, &wizard.pixYellow, &wizard.pixRed})
        EXPECT_FALSE(bullet->isNull());
}

TEST_F(Plugin, FramesReachThePageThroughBothEntriesAlsoAfterCloseDialog) {
    std::vector<uint32_t> picture(64 * 48, 0x808080);
    ASSERT_TRUE(open());
    auto* const page = dialog->findChild<QDialog*>("LensAssist");
    page->findChild<QTimer*>()->stop();
    QMetaObject::invokeMethod(page, "OnBnClickedAe");
    plugin.closeDialog();
    plugin.imageData(picture.data(), 11, 64, 48, 256);
    plugin.rgbImageData(picture.data(), 11, 64, 48, 256);
    plugin.rgbImageData(picture.data(), 13, 64, 48, -256);
    QMetaObject::invokeMethod(page, "OnUpdateStatus");
    EXPECT_EQ(text("AE_Status"), "In progress... 8 %");
    host.log.clear();
    plugin.registerChanged(1, 5);
    EXPECT_TRUE(host.log.empty());
}

TEST_F(Plugin, AloneInItsFolderItTellsOnceThatEachLibraryIsMissing) {
    QString const alone = m_folder.filePath(QFileInfo(QStringLiteral(PLUGIN_FILE)).fileName());
    ASSERT_TRUE(QFile::copy(QStringLiteral(PLUGIN_FILE), alone));
#ifdef Q_OS_WIN
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32); // not the program's own, where both libraries lie
#endif
    load(alone);
    int stranger = 0;
    sensor.camera = reinterpret_cast<vy_Camera*>(&stranger); // nobody looks behind it
    ASSERT_TRUE(open());
    for (int i = 0; i < 2; ++i)
        QMetaObject::invokeMethod(dialog->findChild<QDialog*>(), "OnBnClickedCalibrate");
#ifdef Q_OS_WIN
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS); // PATH is left out from now on
#endif
    EXPECT_EQ(warnings.filter("cannot be loaded").size(), 2);
    EXPECT_EQ(text("Calibrate_Status").substr(0, 25), "Error. Are the External s");
    EXPECT_TRUE(plugin.unload());
    EXPECT_FALSE(dialog) << "the library's end deletes its dialog";
}

#ifndef Q_OS_WIN // whose loader itself keeps a library's whole path
TEST_F(Plugin, LoadedByARelativePathItFindsItsLibrariesFromAnyFolder) {
    for (QString const file : {PLUGIN_FILE, SOLVER_FILE})
        ASSERT_TRUE(QFile::copy(file, m_folder.filePath(QFileInfo(file).fileName())));
    QString const before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    void* const loaded = dlopen("./KestraMfr.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(loaded) << dlerror();
    ASSERT_TRUE(QDir::setCurrent(before));
    auto* const openDialog = reinterpret_cast<decltype(&OpenQtDialog)>(dlsym(loaded, "OpenQtDialog"));
    dialog = openDialog(5, nullptr, &sensor, &services);
    ASSERT_TRUE(dialog);
    QMetaObject::invokeMethod(dialog->findChild<QDialog*>(), "OnBnClickedCalibrate");
    EXPECT_EQ(warnings.filter("cannot be loaded"), QStringList());
    dlclose(loaded);
}
#endif
} // namespace
