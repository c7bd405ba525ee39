// Writes one picture for each named state of a page or of the bench: screenshots FOLDER [NAME ...]

#include "apga_page/lens_assist_apga.h"
#include "lsc_page/lens_assist.h"
#include "tests/support/page_bench.h"
#include "tools/screenshots/bench_states.h"
#include "tools/screenshots/config_states.h"
#include "tools/screenshots/named_picture.h"

#include <QApplication>
#include <QDir>
#include <cstdio>
#include <functional>
#include <vector>

using namespace kestra;

namespace {
constexpr int kWidth = 640;
constexpr int kHeight = 360;

// A page on a fake host, driven to a state as a host and a user would drive it.
class Scene : public PageBench {
public:
    Scene() {
        writeIni("[Lens Calibration Setup]\n");
        host.textSettings["LensAssist Dir"] = "/tmp";
        libraries.bitfields = {"POLY_SC_ENABLE.ENABLE"};
        sensor.variant = 0;
        sensor.fileNamePart = "MODULE";
    }

    void open() {
        openPage(new LensAssist(nullptr, sensor, services, wizard.get(), eepromSlot), "Lens Calibration");
    }
    void openThreeIlluminants() {
        sensor.sensorKind = 72;
        auto* const created = new LensAssistApga(nullptr, sensor, services, wizard.get(), eepromSlot);
        created->setMode({.autoPgaMode = 0, .adaptivePgaMode = 1});
        openPage(created, "Lens Calibration - APGA(Adaptive/Auto)");
    }
    void openPage(CalibrationPage* created, char const* tab) {
        page = created;
        page->initialise();
        wizard->addPage(page, QString::fromLatin1(tab));
        page->findChild<QTimer*>()->stop();
        wizard->show();
    }
    void press(char const* button) { page->findChild<QPushButton*>(QLatin1String(button))->click(); }
    void tick() {
        QMetaObject::invokeMethod(page, "start");
        page->registerChanged(0, 0);
    }
    void rawFrame(ImageType type = ImageType::Raw12) {
        std::vector<uint16_t> samples(size_t(kWidth) * kHeight);
        page->onFrame({samples.data(), type, kWidth, kHeight, kWidth * 2});
    }
    CapturedFrames const& captured() const { return static_cast<LensAssistApga*>(page)->captured(); }
    void runAllUntil(Illuminant illuminant, CaptureState captureState) {
        if (!page->state().runAll)
            press("Run_All");
        while (captured()[illuminant].state != captureState) {
            frames(5);
            rawFrame();
            tick();
        }
    }
    void pressWaitingRows() {
        if (captured()[kFluorescent].state == kWaiting)
            press("Fluorescent_Image");
        if (captured()[kDaylight].state == kWaiting)
            press("Daylight_Image");
    }
    void captureAll() {
        for (char const* const button : {"Incandescent_Image", "Fluorescent_Image", "Daylight_Image"}) {
            press(button);
            rawFrame();
        }
    }
    // A grey picture in which one block is tinted by `tint` counts of red.
    void frame(uint32_t tint = 0) {
        std::vector<uint32_t> pixels(size_t(kWidth) * kHeight, 0x808080);
        for (size_t y = 0; y < 20; ++y)
            std::fill_n(pixels.begin() + ptrdiff_t(y * kWidth), 20, 0x808080 + (tint << 16));
        page->onFrame({pixels.data(), ImageType::Rgb32, kWidth, kHeight, kWidth * 4});
    }
    void frames(int count) {
        while (count-- > 0)
            frame();
    }
    void calibrate(ImageType type = ImageType::Raw12, uint32_t tint = 0) {
        press("Calibrate");
        frames(6);
        rawFrame(type);
        tick();
        for (int i = 0; i < 6; ++i)
            frame(tint);
        tick();
    }
    void runAll() {
        press("Run_All");
        for (int i = 0; i < 80; ++i) {
            frames(5);
            rawFrame();
            tick();
        }
    }
    CalibrationPage* page = nullptr; // owned by the wizard's tab
};

struct NamedState {
    char const* name;
    std::function<void(Scene&)> reach;
};

NamedState const kStates[] = {
    {"fresh", [](Scene& s) { s.open(); }},
    {"no-preset-no-directory",
     [](Scene& s) {
         s.writeIni("");
         s.host.textSettings["LensAssist Dir"] = "/nowhere";
         s.open();
     }},
    {"setup-done",
     [](Scene& s) {
         s.open();
         s.press("LensCalibSetup");
     }},
    {"exposure-runs",
     [](Scene& s) {
         s.open();
         s.press("AE");
         s.frames(11);
         s.tick();
     }},
    {"colour-balance-runs",
     [](Scene& s) {
         s.open();
         s.press("AWB");
         s.frames(12);
         s.tick();
     }},
    {"run-all-exposes",
     [](Scene& s) {
         s.open();
         s.press("Run_All");
         s.tick();
         s.tick();
         s.frames(16);
         s.tick();
     }},
    {"run-all-calibrates",
     [](Scene& s) {
         s.open();
         s.press("Run_All");
         while (s.page->state().lscStepState != kInProgress) {
             s.frames(5);
             s.tick();
         }
         s.frames(4);
         s.tick();
     }},
    {"all-done",
     [](Scene& s) {
         s.open();
         s.runAll();
     }},
    {"uniformity-warning",
     [](Scene& s) {
         s.open();
         s.calibrate(ImageType::Raw12, 6);
     }},
    {"uniformity-bad",
     [](Scene& s) {
         s.open();
         s.calibrate(ImageType::Raw12, 60);
     }},
    {"ycbcr",
     [](Scene& s) {
         s.open();
         s.calibrate(ImageType::Ycbcr);
     }},
    {"image-size-failed",
     [](Scene& s) {
         s.libraries.solutionAnswer = -2;
         s.open();
         s.calibrate();
     }},
    {"data-files-missing",
     [](Scene& s) {
         s.libraries.createsHandle = false;
         s.open();
         s.calibrate();
     }},
    {"no-eeprom",
     [](Scene& s) {
         s.libraries.headboard.deviceAddress = 0;
         s.open();
     }},
    {"eeprom-failed",
     [](Scene& s) {
         s.open();
         s.calibrate();
         s.libraries.headboard.plan(DeviceFault::TransportFailed);
         s.press("Prom_Save");
     }},
    {"apga-fresh", [](Scene& s) { s.openThreeIlluminants(); }},
    {"apga-waits",
     [](Scene& s) {
         s.openThreeIlluminants();
         s.runAllUntil(kFluorescent, kWaiting);
     }},
    {"apga-waits-for-daylight",
     [](Scene& s) {
         s.openThreeIlluminants();
         s.runAllUntil(kFluorescent, kWaiting);
         s.press("Fluorescent_Image");
         s.runAllUntil(kDaylight, kWaiting);
         s.tick();
     }},
    {"apga-calibrates",
     [](Scene& s) {
         s.openThreeIlluminants();
         s.captureAll();
         s.press("Calibrate");
         s.tick();
         s.tick();
         s.frames(2);
         s.tick();
     }},
    {"apga-failed",
     [](Scene& s) {
         s.libraries.hasList = false;
         s.openThreeIlluminants();
         s.captureAll();
         s.press("Calibrate");
         s.tick();
         s.tick();
     }},
    {"apga-all-done",
     [](Scene& s) {
         s.openThreeIlluminants();
         s.press("Run_All");
         while (s.page->state().runAll) {
             s.frames(5);
             s.rawFrame();
             s.pressWaitingRows();
             s.tick();
         }
     }},
    {"saving-failed",
     [](Scene& s) {
         s.libraries.fileAnswer = 1;
         s.open();
         s.calibrate();
         s.press("File_Save");
     }},
};

bool write(NamedState const& state, QDir const& folder) {
    Scene scene;
    state.reach(scene);
    QApplication::processEvents();
    return writeNamedPicture({scene.wizard.get()}, folder, state.name);
}
} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const application(argc, argv);
    QStringList const arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty() || !QDir().mkpath(arguments[0])) {
        std::fputs("usage: screenshots FOLDER [NAME ...]\n", stderr);
        return 2;
    }
    bool good = true;
    for (NamedState const& state : kStates)
        if (arguments.size() == 1 || arguments.contains(QLatin1String(state.name)))
            good = write(state, QDir(arguments[0])) && good;
    good = writeConfigStates(QDir(arguments[0]), arguments.mid(1)) && good;
    good = writeBenchStates(QDir(arguments[0]), arguments.mid(1)) && good;
    return good ? 0 : 1;
}
