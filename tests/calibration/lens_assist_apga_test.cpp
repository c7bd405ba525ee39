#include "tests/calibration/pages.h"

#include "apga_page/white_balance_gains.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_content.h"
#include "headboard/record_types.h"

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
    void runAll(std::vector<int> const& redGains) {
        click("Run_All");
        size_t light = 0;
        for (int i = 0; i < 400 && state().runAll; ++i) {
            host.states["Relative Red Gain"] = redGains[light];
            host.states["Relative Blue Gain"] = 2 * redGains[light];
            frames(3);
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
}

TEST_F(LensAssistApgaPage, TheUserIsWaitedForUnderTheSecondAndThirdLightOnly) {
    open();
    click("Run_All");
    for (int i = 0; i < 60; ++i) {
        frames(3);
        frames(1, 13);
        tick();
    }
    EXPECT_EQ(text("Incandescent_Status"), "Done.");
    EXPECT_EQ(text("Fluorescent_Status"), "Waiting for you...");
    EXPECT_EQ(text("Daylight_Status"), "Not done yet.");
    auto const bullet = [&] {
        return widget<QLabel>("Fluorescent_Bullet")->pixmap(Qt::ReturnByValue).cacheKey();
    };
    qint64 const one = bullet();
    tick();
    qint64 const other = bullet();
    tick();
    EXPECT_NE(one, other);
    EXPECT_EQ(bullet(), one);
    EXPECT_TRUE(widget<QPushButton>("Fluorescent_Image")->isEnabled());
    click("Fluorescent_Image");
    EXPECT_EQ(state().aeStepState, kReady) << "exposure is redone under the new light";
    EXPECT_EQ(state().wbStepState, kReady);
    frames(2, 13);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing);
    tick();
    EXPECT_FALSE(widget<QPushButton>("Daylight_Image")->isEnabled()) << "exposure runs";
    EXPECT_TRUE(widget<QLineEdit>("Daylight_Temp")->isEnabled());
}

TEST_F(LensAssistApgaPage, AdaptiveCalculationAsksInItsOrder) {
    open();
    widget<QLineEdit>("Daylight_Temp")->setText("7000");
    startCalibration();
    std::vector<std::pair<uint32_t, uint32_t>> asked;
    std::vector<void const*> frames;
    host.onCall = [&](std::string const& call) {
        if (call.starts_with("findApga"))
            asked.emplace_back(libraries.apga.illuminantSlot, libraries.apga.colourTemperature);
        if (call.starts_with("setInputImage"))
            frames.push_back(libraries.frame);
    };
    tick();
    host.onCall = nullptr;
    EXPECT_EQ(state().lscStepProgress, phase::kSolved);
    std::vector<std::pair<uint32_t, uint32_t>> const expected = {{2, 2800}, {4, 7000}, {3, 4000}};
    EXPECT_EQ(asked, expected);
    EXPECT_EQ(host.calls("findSolution").size(), 1U);
    auto const data = [&](Illuminant i) -> void const* { return captured()[i].samples->data(); };
    EXPECT_EQ(frames, (std::vector<void const*>{data(kFluorescent), data(kIncandescent), data(kDaylight),
                                                data(kFluorescent)}));
    EXPECT_EQ(host.calls("readState X Offset").size(), 1U) << "the host is asked once";
    EXPECT_EQ(libraries.apga.falloffPercent, 95U);
}

TEST_F(AutomaticPgaPage, AsksForNoBaseAndTakesSamplesAsEightBits) {
    open();
    startCalibration();
    tick();
    EXPECT_TRUE(host.calls("findSolution").empty());
    EXPECT_EQ(host.calls("findAutoPga").size(), 3U);
    EXPECT_EQ(host.calls("setInputImage2").size(), 3U);
    for (std::string const& call : host.calls("setInputImage2"))
        EXPECT_NE(call.find(" 8 "), std::string::npos) << call;
}

TEST_F(LensAssistApgaPage, AFailedCalculationAsksNoMoreAndShowsAtTheNextTick) {
    open();
    startCalibration();
    libraries.solutionAnswer = -2;
    libraries.hasList = false;
    tick();
    EXPECT_EQ(solverCalls().size(), 2U) << "image and base solution";
    EXPECT_EQ(state().lscStepState, kInProgress);
    EXPECT_EQ(state().lscStepProgress, phase::kSolved);
    tick();
    EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
    EXPECT_TRUE(host.isBalanced());
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

TEST_F(LensAssistApgaPage, ASolutionWithoutRegistersIsAFailure) {
    libraries.list.count = 0;
    open();
    startCalibration();
    tick(2);
    EXPECT_EQ(state().lscStepState, kFailedOtherwise);
    EXPECT_TRUE(host.calls("begin").empty());
}

TEST_F(LensAssistApgaPage, LoadingBeginsWithTheSelectWriteInsideTheGroup) {
    open();
    startCalibration();
    tick();
    host.log.clear();
    tick();
    ASSERT_GE(host.log.size(), 4U);
    std::vector<std::string> const entries = host.calls("writeListEntry");
    ASSERT_EQ(entries.size(), 1 + libraries.entries.size());
    auto const at = [&](std::string const& call) {
        return std::find(host.log.begin(), host.log.end(), call) - host.log.begin();
    };
    EXPECT_LT(at("begin"), at(entries.front()));
    EXPECT_NE(entries.front().find(std::to_string(0x098E)), std::string::npos) << entries.front();
    EXPECT_EQ(state().lscStepProgress, phase::kLoaded);
}

TEST_F(LensAssistApgaPage, CalibratingWaitsForTheMissingFrames) {
    open();
    click("Incandescent_Image");
    frames(1, 13);
    click("Calibrate");
    host.log.clear();
    tick(3);
    EXPECT_TRUE(solverCalls().empty());
    EXPECT_EQ(state().lscStepState, kInProgress);
    captureAll();
    tick();
    EXPECT_EQ(state().lscStepProgress, phase::kSolved);
}

TEST_F(LensAssistApgaPage, TheFileNeedsASerialNumberWhereOneIsKept) {
    bool missing = true;
    open();
    page->setSerialNumber({{}, [&] { return missing; }});
    startCalibration();
    tick(2);
    for (int i = 0; i < 10; ++i) {
        frames(3);
        tick();
    }
    ASSERT_EQ(state().lscStepState, kDone);
    click("File_Save");
    EXPECT_EQ(text("File_Save_Status"), "Error: No serial number.");
    EXPECT_TRUE(host.calls("dumpRegFile").empty());
    missing = false;
    QMetaObject::invokeMethod(page, "OnUpdateStatus");
    EXPECT_EQ(text("File_Save_Status"), "Error: The directory does not exist.");
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

TEST_F(LensAssistApgaPage, RunAllKeepsTheWhiteBalanceOfTheThreeLights) {
    libraries.headboard.deviceAddress = 0xA8;
    for (char const set : {'L', 'M', 'R'})
        for (char const* const what : {"_RG_GAIN", "_BG_GAIN"})
            libraries.headboard.add(std::string("CAM_AWB_CCM_") + set + what, 0, 0,
                                    uint32_t(0x4000 + 2 * libraries.headboard.registers.size()), 2);
    host.registers = {
        {"CAM_AWB_CCM_L_CTEMP.", 2800}, {"CAM_AWB_CCM_M_CTEMP.", 4000}, {"CAM_AWB_CCM_R_CTEMP.", 6500}};
    open();
    runAll({503, 753, 1503});
    EXPECT_EQ(text("Prom_Save_Status"), "Done.");
    EXPECT_EQ(captured()[kDaylight].redGain, 1.503);
    HeadboardEeprom const eeprom = HeadboardEepromCreate(sensor.camera);
    std::vector<uint8_t> record(200);
    ASSERT_GT(EepromReadNth(eeprom, kRecordCcm, "FACTORY", 0, record), 0);
    std::vector<uint32_t> gains;
    RegisterEntry entry{};
    for (int n = 0; EepromGetEntry(eeprom, record, n, entry) == kEepromOk; ++n)
        gains.push_back(entry.value);
    EXPECT_EQ(gains, (std::vector<uint32_t>{64, 128, 96, 192, 192, 384}));
    EXPECT_GE(EepromFindRecord(eeprom, kRecordTimeStamp, nullptr, 0), 0);
}

} // namespace
