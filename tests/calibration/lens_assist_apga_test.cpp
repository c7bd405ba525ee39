#include "tests/calibration/pages.h"

#include "apga_page/white_balance_gains.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"

using namespace kestra;

namespace {
// What only the three-illuminant page does.
class LensAssistApgaPage : public PageFixture {
protected:
    explicit LensAssistApgaPage(PageCase const& pageCase = kAdaptivePage) : PageFixture(pageCase) {
        host.states = {{"X Offset", 1}, {"Y Offset", 1}, {"Sensor Orientation", 2}};
    }

    [[nodiscard]] CapturedFrames const& captured() const {
        return static_cast<LensAssistApga*>(page.data())->captured();
    }
    void captureAll() {
        capture(true);
        frames(3, 13);
    }
    void startCalibration() {
        captureAll();
        click("Calibrate");
        host.log.clear();
    }
    [[nodiscard]] std::vector<std::string> solverCalls() const {
        std::vector<std::string> found;
        for (std::string const& call : host.log)
            if (call.starts_with("setInputImage") || call.starts_with("find"))
                found.push_back(call);
        return found;
    }
    // Runs all as the host and a user would, who changes the light and tells the gains that the host found.
    void runAll(
        std::vector<int> const& redGains, std::function<void(size_t)> const& before = [](size_t) {}) {
        click("Run_All");
        size_t light = 0;
        for (int i = 0; i < 400 && state().runAll; ++i) {
            host.states["Relative Red Gain"] = redGains[light];
            host.states["Relative Blue Gain"] = 2 * redGains[light];
            frames(3);
            before(light);
            frames(1, 13);
            bool const waits = text("Fluorescent_Status") == "Waiting for you..." ||
                               text("Daylight_Status") == "Waiting for you...";
            if (waits && light < 2 && captured()[light].state == kCaptured) {
                ++light;
                capture();
            }
            tick();
        }
        EXPECT_EQ(state().runAll, 0U);
    }
};

class AutomaticPgaPage : public LensAssistApgaPage {
protected:
    AutomaticPgaPage() : LensAssistApgaPage(kAutomaticPage) {}
};

TEST_F(LensAssistApgaPage, ResetArmsTheFirstRowAndForgetsAllFrames) {
    open();
    EXPECT_EQ(captured()[kIncandescent].state, kArmed);
    EXPECT_EQ(text("Incandescent_Status"), "Not done yet.");
    captureAll();
    EXPECT_TRUE(captured().haveAllFrames());
    click("Start_Over");
    for (CaptureRow const& row : captured())
        EXPECT_FALSE(row.samples);
    EXPECT_EQ(captured()[kDaylight].state, kNotCaptured);
}

TEST_F(LensAssistApgaPage, ARowTakesTheNextCapturableFrameAlone) {
    open();
    click("Daylight_Image");
    click("Fluorescent_Image");
    EXPECT_EQ(text("Daylight_Status"), "In progress...");
    frames(1, 11);
    frames(1, 9);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing) << "only two formats can be captured";
    frames(1, 5);
    EXPECT_EQ(captured()[kFluorescent].state, kCaptured);
    EXPECT_EQ(captured()[kDaylight].state, kCapturing) << "one row a frame, in their order";
    EXPECT_EQ(state().inputWasYcbcr, 1U);
    frames(1, 13);
    EXPECT_EQ(text("Daylight_Status"), "Done.");
    EXPECT_EQ(captured()[kDaylight].progress, 100);
    EXPECT_EQ(captured()[kDaylight].redGain, 0) << "gains are recorded during Run All only";
    EXPECT_EQ(state().inputWasYcbcr, 0U);
}

TEST_F(LensAssistApgaPage, ALargerFrameDropsAllThree) {
    libraries.description.imageWidth = 640;
    libraries.description.imageHeight = 480;
    open();
    captureAll();
    EXPECT_EQ(captured()[kFluorescent].samples->size(), 640U * 480U) << "what the library will read";
    std::vector<uint16_t> larger(80 * 48, 7);
    click("Incandescent_Image");
    page->onFrame({nullptr, ImageType::Raw12, 80, 48, 160});
    page->onFrame({larger.data(), ImageType::Raw12, 80, 0, 160});
    page->onFrame({larger.data(), ImageType::Raw12, 80, 48, -160});
    EXPECT_TRUE(captured().haveAllFrames()) << "what cannot be read changes nothing";
    page->onFrame({larger.data(), ImageType::Raw12, 80, 48, 160});
    EXPECT_FALSE(captured().haveAllFrames());
    EXPECT_EQ(captured()[kDaylight].state, kCaptured) << "the rows keep their states";
    ASSERT_TRUE(captured()[kIncandescent].samples);
    EXPECT_EQ(captured()[kIncandescent].samples->at(80 * 48 - 1), 7);
    EXPECT_EQ(captured()[kIncandescent].samples->at(80 * 48), 0);
    captureAll();
    click("Daylight_Image");
    page->onFrame({larger.data(), ImageType::Raw12, 8, 8, 3});
    EXPECT_TRUE(captured().haveAllFrames()) << "a smaller frame, with whatever pitch, drops none";
    EXPECT_EQ(captured()[kDaylight].state, kCaptured);
}

TEST_F(LensAssistApgaPage, TheUserIsWaitedForUnderTheSecondAndThirdLightOnly) {
    open();
    click("Run_All");
    play(60);
    EXPECT_EQ(text("Incandescent_Status"), "Done.");
    EXPECT_EQ(text("Fluorescent_Status"), "Waiting for you...");
    EXPECT_EQ(text("Daylight_Status"), "Not done yet.");
    bool const isLit = captured()[kFluorescent].isLit;
    tick();
    EXPECT_NE(captured()[kFluorescent].isLit, isLit);
    tick();
    EXPECT_EQ(captured()[kFluorescent].isLit, isLit);
    click("Fluorescent_Image");
    EXPECT_EQ(state().aeStepState, kReady) << "exposure is redone under the new light";
    EXPECT_EQ(state().wbStepState, kReady);
    frames(2, 13);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing);
    for (int i = 0; i < 40 && state().wbStepState != kInProgress; ++i) {
        frames(3);
        tick();
    }
    frames(1, 13);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing) << "colour balance runs";
    for (int i = 0; i < 40 && captured()[kDaylight].state != kWaiting; ++i) {
        frames(3);
        tick();
    }
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing) << "the user pressed once";
}

TEST_F(LensAssistApgaPage, OnlyANewLightDuringRunAllHasExposureRedone) {
    open();
    click("Run_All");
    play(60);
    click("Incandescent_Image");
    EXPECT_EQ(state().aeStepState, kDone);
    click("Run_All");
    ASSERT_EQ(state().runAll, 0U);
    EXPECT_EQ(text("Fluorescent_Status"), "Waiting for you...") << "cancelling leaves the rows";
    click("Daylight_Image");
    EXPECT_EQ(state().aeStepState, kDone);
    EXPECT_EQ(state().wbStepState, kDone);
}

TEST_F(LensAssistApgaPage, RunAllEndsWhereAFrameIsMissingOrNothingIsLeftToWaitFor) {
    open();
    page->findChild<QTimer*>()->stop();
    runAll({500, 750, 1500}, [this](size_t light) {
        std::vector<uint16_t> larger(80 * 48, 7);
        if (light == kDaylight)
            page->onFrame({larger.data(), ImageType::Raw12, 80, 48, 160});
    });
    EXPECT_FALSE(captured().haveAllFrames()) << "the last one dropped the others";
    EXPECT_EQ(state().lscStepProgress, 0);

    libraries.hasList = false; // and there is no EEPROM
    open();
    runAll({500, 750, 1500});
    EXPECT_EQ(state().lscStepState, kFailedOtherwise);
    EXPECT_TRUE(host.calls("dumpRegFile").empty());
}

TEST_F(LensAssistApgaPage, AdaptiveCalculationAsksInItsOrder) {
    host.intSettings["LensAssist Radius for S1"] = 7; // of the base alone
    open();
    widget<QLineEdit>("Daylight_Temp")->setText("7000");
    startCalibration();
    std::vector<void const*> frames;
    host.onCall = [&](std::string const& call) {
        if (call.starts_with("setInputImage"))
            frames.push_back(libraries.frame);
    };
    tick();
    host.onCall = nullptr;
    EXPECT_EQ(state().lscStepProgress, phase::kSolved);
    std::string const image = "setInputImage2 1920 1080 12 3 2 0 -1 -1"; // not of the frames' own size
    EXPECT_EQ(solverCalls(),
              (std::vector<std::string>{image, "findSolution", image, "findApga 2 2800 95 0", image,
                                        "findApga 4 7000 95 0", image, "findApga 3 4000 95 0"}));
    EXPECT_EQ(libraries.solution.radius, 7U);
    auto const data = [&](Illuminant i) -> void const* { return captured()[i].samples->data(); };
    EXPECT_EQ(frames, (std::vector<void const*>{data(kFluorescent), data(kIncandescent), data(kDaylight),
                                                data(kFluorescent)}));
    for (char const* const state : {"X Offset", "Sensor Orientation", "Luma Clip Hi"})
        EXPECT_EQ(host.calls(std::string("readState ") + state).size(), 1U) << "the host is asked once";
}

TEST_F(LensAssistApgaPage, ATemperatureIsTheNumberInFrontOfItsTextWithoutItsFraction) {
    using Row = std::tuple<char const*, char const*>;
    for (auto const& [typed, kelvin] :
         {Row{"2856.5", "2856"}, Row{"2856K", "2856"}, Row{" +2856.9 K", "2856"}, Row{"abc", "0"},
          Row{"", "0"}, Row{"1e99", "2147483647"}}) {
        SCOPED_TRACE(typed);
        open();
        widget<QLineEdit>("Incandescent_Temp")->setText(typed);
        captureAll();
        host.log.clear();
        click("Calibrate");
        EXPECT_EQ(host.calls("writeInt LensAssist Left").back(),
                  std::string("writeInt LensAssist Left Temp for S1 ") + kelvin);
        tick();
        EXPECT_EQ(host.calls("findApga 2").back(), std::string("findApga 2 ") + kelvin + " 95 0");
        page->setVisible(true);
        EXPECT_EQ(widget<QLineEdit>("Incandescent_Temp")->text(), kelvin) << "as it is stored";
    }
}

TEST_F(AutomaticPgaPage, AsksForNoBaseAndTakesSamplesAsEightBits) {
    libraries.hasDescription = false;
    open();
    startCalibration();
    tick();
    std::string const image = "setInputImage2 64 48 8 3 2 0 -1 -1"; // the frames' own size
    EXPECT_EQ(solverCalls(),
              (std::vector<std::string>{image, "findAutoPga 2 2800 95 0", image, "findAutoPga 4 6500 95 0",
                                        image, "findAutoPga 3 4000 95 0"}));
}

TEST_F(AutomaticPgaPage, TheFirstKindHasAFileFormatOfItsOwn) {
    open();
    runAll({500, 750, 1500});
    EXPECT_EQ(host.calls("dumpRegFile"), std::vector<std::string>{"dumpRegFile 2"});
}

// A calibration's start forgets it, so only pictures that are taken while it waits for them count.
TEST_F(LensAssistApgaPage, CalibratingWaitsForMissingPicturesAndYcbcrOnesAreHandedOverAsSuch) {
    open();
    click("Incandescent_Image");
    frames(1, 5);
    click("Calibrate");
    tick(3);
    EXPECT_TRUE(solverCalls().empty());
    EXPECT_EQ(state().lscStepState, kInProgress);
    capture(true);
    frames(3, 5);
    host.log.clear();
    tick();
    EXPECT_EQ(host.calls("setInputImageYcbcr 1920 1080").size(), 4U);
    EXPECT_TRUE(host.calls("setInputImage2").empty());
    EXPECT_EQ(libraries.ycbcrInput.orientation, 2U);
}

TEST_F(LensAssistApgaPage, AFailedCalculationAsksNoMoreAndShowsAtTheNextTick) {
    using Row = std::tuple<int, int, int, size_t>;
    for (auto const& [input, solution, table, calls] :
         {Row{0, 0, 0, 1}, Row{1, -2, 0, 2}, Row{1, 1, 0, 2}, Row{1, 0, -2, 4}}) {
        SCOPED_TRACE(calls);
        libraries.inputAnswer = input;
        libraries.solutionAnswer = solution;
        libraries.apgaAnswer = table;
        libraries.hasList = false;
        open();
        startCalibration();
        tick();
        EXPECT_EQ(solverCalls().size(), calls);
        EXPECT_EQ(state().lscStepState, kInProgress);
        EXPECT_EQ(state().lscStepProgress, phase::kSolved);
        tick();
        EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
    }
    libraries.apgaAnswer = 0;
    libraries.hasList = true;
    libraries.list.count = 0;
    startCalibration();
    tick(2);
    EXPECT_EQ(state().lscStepState, kFailedOtherwise) << "a solution without registers";
    EXPECT_EQ(state().lscStepProgress, 0);
    EXPECT_TRUE(host.calls("begin").empty());
}

TEST_F(LensAssistApgaPage, FramesOfASensorWhosePictureHasGrownAreNotHandedOver) {
    libraries.description.imageWidth = 64;
    libraries.description.imageHeight = 48;
    open();
    startCalibration();
    libraries.description.imageHeight = 4096;
    tick();
    EXPECT_EQ(solverCalls(), std::vector<std::string>{});
}

TEST_F(LensAssistApgaPage, LoadingBeginsWithTheSelectWriteAndShowsItsStatusInsideTheGroup) {
    open();
    captureAll();
    host.log.clear();
    click("Calibrate");
    EXPECT_EQ(host.calls("create"), std::vector<std::string>{"create 72 1 -1"});
    frames(6);
    frames(6, 13);
    EXPECT_EQ(state().lscStepProgress, 0) << "only the tick solves; no frame counts before";
    tick();
    host.log.clear();
    std::string shownAtTheEnd;
    host.onCall = [&](std::string const& call) {
        if (call == "end")
            shownAtTheEnd = text("Calibrate_Status");
    };
    tick();
    host.onCall = nullptr;
    EXPECT_EQ(host.calls("writeListEntry"),
              (std::vector<std::string>{"writeListEntry 2446 0 0 0 0", "writeListEntry 13824 0 1 0 7",
                                        "writeListEntry 13826 0 0 0 8"}));
    EXPECT_EQ(host.log.back(), "end");
    EXPECT_LT(std::ranges::find(host.log, "begin"),
              std::ranges::find(host.log, "writeListEntry 2446 0 0 0 0"));
    EXPECT_EQ(shownAtTheEnd, "In progress... 50%");
    EXPECT_EQ(state().lscStepProgress, phase::kLoaded);
}

TEST_F(LensAssistApgaPage, TheFileNeedsASerialNumberAndBearsASanitisedName) {
    bool missing = true;
    sensor.fileNamePart = ":B%1";
    libraries.description.name = "P/\"2\"";
    open();
    page->setSerialNumber({{}, [&] { return missing; }});
    startCalibration();
    tick(2);
    play(10);
    ASSERT_EQ(state().lscStepState, kDone);
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error: No serial number.");
    EXPECT_TRUE(host.calls("dumpRegFile").empty());
    missing = false;
    QMetaObject::invokeMethod(page, "OnUpdateStatus");
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
    widget<QLineEdit>("Save_Dir")->setText(QString::fromStdString(saveDir() + "/"));
    click("File_Save");
    EXPECT_EQ(libraries.path, saveDir() + "/\\-B%1_P-'2'.ini");
    EXPECT_EQ(text("File_Save_Status"), "Done: \\-B%1_P-'2'.ini");
}

TEST(Parabola, GoesThroughItsPointsAndFallsBackToTheFirst) {
    std::array<double, 3> const xs = {2800, 4000, 6500};
    std::array<double, 3> ys{};
    auto const curve = [](double x) { return 3e-8 * x * x - 2e-4 * x + 1.7; };
    std::transform(xs.begin(), xs.end(), ys.begin(), curve);
    for (double const x : {2000.0, 2800.0, 3333.0, 6500.0, 9000.0})
        EXPECT_NEAR(quadraticThrough(xs, ys, x), curve(x), 1e-9) << x;
    EXPECT_EQ(quadraticThrough({4000, 4000, 6500}, {1, 2, 3}, 5000), 1);
    EXPECT_EQ(quadraticThrough({4000, 2800, 4000}, {1, 2, 3}, 5000), 1);
    EXPECT_EQ(quadraticThrough({2800, 4000, 4000}, {1, 2, 3}, 5000), 1);
}

// A sensor that keeps white-balance gains.
class WhiteBalanceRecord : public LensAssistApgaPage {
protected:
    WhiteBalanceRecord() {
        libraries.headboard.deviceAddress = 0xA8;
        for (char const set : {'L', 'M', 'R'})
            for (char const* const what : {"_RG_GAIN", "_BG_GAIN"})
                libraries.headboard.add(std::string("CAM_AWB_CCM_") + set + what, 0, 0,
                                        uint32_t(0x4000 + 2 * libraries.headboard.registers.size()), 2);
        host.registers = {
            {"CAM_AWB_CCM_L_CTEMP.", 2800}, {"CAM_AWB_CCM_M_CTEMP.", 4000}, {"CAM_AWB_CCM_R_CTEMP.", 6500}};
    }
    // In the image that the page works on; what the device holds is another matter.
    [[nodiscard]] bool has(uint8_t type) const {
        return eepromSlot && EepromFindRecord(*eepromSlot, type, nullptr, 0) >= 0;
    }
};

TEST_F(WhiteBalanceRecord, IsMadeForItsSensorOutOfRecordedGainsOnly) {
    using Row = std::tuple<uint32_t, uint32_t, std::vector<int>, bool>;
    for (auto const& [kind, variant, redGains, isMade] :
         {Row{72, 1, {500, 750, 1500}, true}, Row{72, 2, {500, 750, 1500}, false},
          Row{76, 1, {500, 750, 1500}, false}, Row{72, 1, {500, 0, 1500}, false}}) {
        libraries.headboard.device.fill(0xFF);
        sensor.sensorKind = kind;
        sensor.variant = variant;
        open();
        runAll(redGains);
        EXPECT_EQ(text("Prom_Save_Status"), "Done.");
        EXPECT_EQ(has(kRecordCcm), isMade) << kind << ' ' << variant;
        EXPECT_EQ(host.calls("dumpRegFile"), std::vector<std::string>{"dumpRegFile 0"});
        host.log.clear();
    }
}

TEST_F(WhiteBalanceRecord, IsMadeAlsoWhereTheRegistersFindNoRoomButThenNothingIsWritten) {
    for (int i = 0; i < 40; ++i)
        libraries.headboard.add("P_RD_P" + std::to_string(i / 10) + "Q" + std::to_string(i % 10), 0, 0,
                                uint32_t(0x3640 + 2 * i), 2);
    open();
    ASSERT_EQ(EepromAppendRecord(*eepromSlot, EepromNewRecord(3, 8100, 8000)), kEepromOk);
    ASSERT_EQ(HeadboardEepromFlush(*eepromSlot), kEepromOk);
    simulator::EepromContents const before = libraries.headboard.device;
    runAll({500, 750, 1500});
    EXPECT_EQ(text("Prom_Save_Status"), "Error accessing the EEPROM.");
    EXPECT_TRUE(has(kRecordCcm));
    EXPECT_FALSE(has(kRecordTimeStamp));
    EXPECT_EQ(libraries.headboard.device, before);
}

// A record bears at most 8 characters of its label.
TEST_F(WhiteBalanceRecord, EverySaveUnderALongLabelReplacesTheOneBefore) {
    open();
    runAll({500, 750, 1500});
    widget<QComboBox>("Prom_Label")->addItem("KestraTune");
    widget<QComboBox>("Prom_Label")->setCurrentText("KestraTune");
    discardEeprom(eepromSlot);
    libraries.headboard.device.fill(0xFF);
    std::copy_n("VYEE\1", 5, libraries.headboard.device.begin());
    for (int saves = 1; saves <= 3; ++saves) {
        click("Prom_Save");
        ASSERT_EQ(text("Prom_Save_Status"), "Done.");
        EXPECT_EQ(recordsOnDevice(), (std::map<uint8_t, int>{{kRecordPga, 1}, {kRecordCcm, 1}})) << saves;
    }
}

TEST_F(WhiteBalanceRecord, TheSaveIsReadBack) {
    open();
    libraries.headboard.plan(DeviceFault::IgnoredWrite);
    runAll({500, 750, 1500});
    EXPECT_EQ(text("Prom_Save_Status"), "Error accessing the EEPROM.");
}

TEST_F(WhiteBalanceRecord, HoldsTheGainsOfTheThreeLightsAtTheSetsTemperatures) {
    open();
    widget<QLineEdit>("Incandescent_Temp")->setText("2000");
    runAll({503, 753, 1503});
    EXPECT_EQ(text("Prom_Save_Status"), "Done.");
    EXPECT_EQ(captured()[kDaylight].redGain, 1.503);
    EXPECT_EQ(host.calls("writeInt LensAssist Left Temp").back(),
              "writeInt LensAssist Left Temp for S1 2000");
    EepromShare const eeprom = HeadboardEepromCreate(sensor.camera);
    std::vector<uint8_t> record(200);
    ASSERT_GT(EepromReadNth(*eeprom, kRecordCcm, "FACTORY", 0, record), 0);
    std::vector<uint32_t> gains;
    RegisterEntry entry{};
    for (int n = 0; EepromGetEntry(*eeprom, record, n, entry) == kEepromOk; ++n)
        gains.push_back(entry.value);
    EXPECT_EQ(gains, (std::vector<uint32_t>{72, 144, 96, 192, 192, 384}));
    EXPECT_GE(EepromFindRecord(*eeprom, kRecordTimeStamp, nullptr, 0), 0);

    // Temperatures that their fractions alone tell apart, on a line that reaches its third point.
    for (auto const& [field, kelvin] :
         {std::pair{"Incandescent_Temp", "2800.25 K"}, std::pair{"Fluorescent_Temp", "2800.5"},
          std::pair{"Daylight_Temp", "2800.75"}})
        widget<QLineEdit>(field)->setText(kelvin);
    host.registers["CAM_AWB_CCM_L_CTEMP."] = 2801;
    click("Prom_Save");
    EepromShare const again = HeadboardEepromCreate(sensor.camera);
    ASSERT_GT(EepromReadNth(*again, kRecordCcm, "FACTORY", 0, record), 0);
    ASSERT_EQ(EepromGetEntry(*again, record, 0, entry), kEepromOk);
    EXPECT_EQ(entry.value,
              uint32_t(quadraticThrough({2800.25, 2800.5, 2800.75}, {0.503, 0.753, 1.503}, 2801) * 128));
}
} // namespace
