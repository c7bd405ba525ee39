#include "tests/calibration/page_fixture.h"

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

    [[nodiscard]] CapturedFrames const& captured() const { return state().captured; }
    // What the solver is asked at the tick.
    Calls calculate() {
        startCalibration();
        host.log.clear();
        tick();
        Calls found = host.log;
        std::erase_if(found, [](std::string const& call) {
            return !call.starts_with("setInputImage") && !call.starts_with("find");
        });
        return found;
    }
    std::vector<uint16_t> const largerPixels = std::vector<uint16_t>(80 * 48, 7);
    Frame const larger{largerPixels.data(), ImageType::Raw12, 80, 48, 160};

    // Runs all as the host and a user would, who changes the light and tells the gains that the host found.
    void runAll(std::array<int, 3> const& redGains, bool growsUnderDaylight = false) {
        click("Run_All");
        size_t light = 0;
        for (int i = 0; i < 400 && state().runAll; ++i) {
            host.states["Relative Red Gain"] = redGains[light];
            host.states["Relative Blue Gain"] = 2 * redGains[light];
            frames(3);
            if (growsUnderDaylight && light == kDaylight)
                page->onFrame(larger);
            frames(1, 13);
            if (light < 2 && captured()[light + 1].state == kWaiting) {
                ++light;
                capture();
            }
            tick();
        }
        EXPECT_EQ(state().runAll, 0U);
    }
};

struct AutomaticPgaPage : LensAssistApgaPage {
    AutomaticPgaPage() : LensAssistApgaPage(kAutomaticPage) {}
};

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

TEST_F(LensAssistApgaPage, ALargerFrameAndAResetDropAllThree) {
    libraries.description.imageWidth = 640;
    libraries.description.imageHeight = 480;
    open();
    startCalibration();
    EXPECT_EQ(captured()[kFluorescent].samples->size(), 640U * 480U) << "what the library will read";
    click("Incandescent_Image");
    page->onFrame({largerPixels.data(), ImageType::Raw12, 80, 0, 160});
    page->onFrame({largerPixels.data(), ImageType::Raw12, 80, 48, -160});
    page->onFrame({nullptr, ImageType::Ycbcr, 80, 48, 160});
    EXPECT_TRUE(captured().haveAllFrames()) << "what cannot be read changes nothing";
    EXPECT_EQ(captured()[kIncandescent].state, kCapturing) << "and the next frame may be good";
    EXPECT_EQ(state().inputWasYcbcr, 0U);
    page->onFrame(larger);
    EXPECT_FALSE(captured().haveAllFrames());
    EXPECT_EQ(captured()[kDaylight].state, kCaptured) << "the rows keep their states";
    ASSERT_TRUE(captured()[kIncandescent].samples);
    EXPECT_EQ(captured()[kIncandescent].samples->at(80 * 48 - 1), 7);
    EXPECT_EQ(captured()[kIncandescent].samples->at(80 * 48), 0);
    startCalibration();
    click("Daylight_Image");
    page->onFrame({largerPixels.data(), ImageType::Raw12, 8, 8, 1});
    EXPECT_TRUE(captured().haveAllFrames()) << "a smaller frame, with whatever pitch, drops none";
    EXPECT_EQ(captured()[kDaylight].state, kCaptured);
    click("Start_Over");
    EXPECT_EQ(captured()[kIncandescent].state, kArmed);
    EXPECT_EQ(captured()[kDaylight].state, kNotCaptured);
    for (CaptureRow const& row : captured())
        EXPECT_FALSE(row.samples);
}

TEST_F(LensAssistApgaPage, TheUserIsWaitedForUnderTheSecondAndThirdLightOnly) {
    open();
    click("Run_All");
    for (int i = 0; i < 60 && captured()[kFluorescent].state != kWaiting; ++i)
        play(1);
    EXPECT_EQ(text("Incandescent_Status"), "Done.");
    EXPECT_EQ(text("Fluorescent_Status"), "Waiting for you...");
    EXPECT_EQ(text("Daylight_Status"), "Not done yet.");
    for (bool const isLit : {true, false, true}) {
        tick();
        EXPECT_EQ(captured()[kFluorescent].isLit, isLit);
    }
    click("Incandescent_Image");
    EXPECT_EQ(captured()[kIncandescent].progress, 0);
    EXPECT_EQ(state().aeStepState, kDone) << "exposure is redone under a new light only";
    frames(1, 13);
    click("Fluorescent_Image");
    EXPECT_EQ(state().aeStepState, kReady);
    EXPECT_EQ(state().wbStepState, kReady);
    frames(2, 13);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing);
    for (; state().wbStepState != kInProgress; tick())
        frames(3);
    frames(1, 13);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing) << "colour balance runs";
    for (; captured()[kDaylight].state != kWaiting; tick())
        frames(3);
    EXPECT_EQ(captured()[kFluorescent].state, kCapturing) << "the user pressed once";
    click("Run_All");
    EXPECT_EQ(text("Daylight_Status"), "Waiting for you...") << "cancelling leaves the rows";
    click("Daylight_Image");
    EXPECT_EQ(state().aeStepState, kDone) << "behind Run All nothing is redone";
    EXPECT_EQ(state().wbStepState, kDone);
}

TEST_F(LensAssistApgaPage, RunAllEndsWhereAFrameIsMissingOrNothingIsLeftToWaitFor) {
    open();
    runAll({500, 750, 1500}, true);
    EXPECT_FALSE(captured().haveAllFrames()) << "the last one dropped the others";
    EXPECT_EQ(state().lscStepProgress, 0);

    libraries.hasList = false; // and there is no EEPROM
    open();
    runAll({500, 750, 1500});
    EXPECT_EQ(state().lscStepState, kFailedOtherwise);
    EXPECT_EQ(host.calls("dumpRegFile"), Calls());
}

TEST_F(LensAssistApgaPage, AdaptiveCalculationAsksInItsOrder) {
    host.intSettings["LensAssist Radius for S1"] = 7; // of the base alone
    open();
    enter("Daylight_Temp", "7000");
    std::vector<void const*> frames;
    host.onCall = [&](std::string const& call) {
        if (call.starts_with("setInputImage"))
            frames.push_back(libraries.frame);
    };
    std::string const image = "setInputImage2 1920 1080 12 3 2 0 -1 -1"; // not of the frames' own size
    EXPECT_EQ(calculate(), (Calls{image, "findSolution", image, "findApga 2 2800 95 0", image,
                                  "findApga 4 7000 95 0", image, "findApga 3 4000 95 0"}));
    host.onCall = nullptr;
    EXPECT_EQ(state().lscStepProgress, phase::kSolved);
    EXPECT_EQ(libraries.solution.radius, 7U);
    auto const data = [&](Illuminant i) -> void const* { return captured()[i].samples->data(); };
    EXPECT_EQ(frames, (std::vector<void const*>{data(kFluorescent), data(kIncandescent), data(kDaylight),
                                                data(kFluorescent)}));
    for (char const* const state : {"X Offset", "Sensor Orientation", "Luma Clip Hi"})
        EXPECT_EQ(host.calls(std::string("readState ") + state).size(), 1U) << "the host is asked once";
}

TEST_F(LensAssistApgaPage, ATemperatureIsTheNumberInFrontOfItsTextWithoutItsFraction) {
    using Row = std::pair<char const*, std::string>;
    for (auto const& [typed, kelvin] :
         {Row{"2856.5", "2856"}, Row{"2856K", "2856"}, Row{" +2856.9 K", "2856"}, Row{"abc", "0"},
          Row{"", "0"}, Row{"1e99", "2147483647"}}) {
        open();
        enter("Incandescent_Temp", typed);
        EXPECT_EQ(calculate().at(3), "findApga 2 " + kelvin + " 95 0") << typed;
        page->setVisible(true);
        EXPECT_EQ(text("Incandescent_Temp"), kelvin) << "as it is stored";
    }
}

TEST_F(AutomaticPgaPage, AsksForNoBaseTakesSamplesAsEightBitsAndHasAFileFormatOfItsOwn) {
    libraries.hasDescription = false;
    open();
    std::string const image = "setInputImage2 64 48 8 3 2 0 -1 -1"; // the frames' own size
    EXPECT_EQ(calculate(), (Calls{image, "findAutoPga 2 2800 95 0", image, "findAutoPga 4 6500 95 0", image,
                                  "findAutoPga 3 4000 95 0"}));
    runAll({500, 750, 1500});
    EXPECT_EQ(host.calls("dumpRegFile"), Calls{"dumpRegFile 2"});
}

// A calibration's start forgets it, so only pictures that are taken while it waits for them count.
TEST_F(LensAssistApgaPage, CalibratingWaitsForMissingPicturesAndYcbcrOnesAreHandedOverAsSuch) {
    open();
    click("Incandescent_Image");
    frames(1, 5);
    click("Calibrate");
    tick(3);
    EXPECT_EQ(host.calls("setInputImage"), Calls());
    EXPECT_EQ(state().lscStepState, kInProgress);
    capture(true);
    frames(3, 5);
    tick();
    EXPECT_EQ(host.calls("setInputImage"), Calls(4, "setInputImageYcbcr 1920 1080"));
    EXPECT_EQ(libraries.ycbcrInput.orientation, 2U);
}

TEST_F(LensAssistApgaPage, FramesOfASensorWhosePictureHasGrownAreNotHandedOver) {
    libraries.description.imageWidth = 64;
    libraries.description.imageHeight = 48;
    open();
    startCalibration();
    EXPECT_EQ(host.calls("create"), Calls{"create 72 1 -1"});
    libraries.description.imageHeight = 4096;
    tick();
    EXPECT_EQ(host.calls("setInputImage"), Calls());
}

TEST(Parabola, GoesThroughItsPointsAndFallsBackToTheFirst) {
    auto const curve = [](double x) { return 3e-8 * x * x - 2e-4 * x + 1.7; };
    for (double const x : {2000.0, 2800.0, 3333.0, 6500.0, 9000.0})
        EXPECT_NEAR(quadraticThrough({2800, 4000, 6500}, {curve(2800), curve(4000), curve(6500)}, x),
                    curve(x), 1e-9);
    using Xs = std::array<double, 3>;
    for (Xs const& xs : {Xs{4000, 4000, 6500}, Xs{4000, 2800, 4000}, Xs{2800, 4000, 4000}})
        EXPECT_EQ(quadraticThrough(xs, {1, 2, 3}, 5000), 1);
}

// A sensor that keeps white-balance gains.
class WhiteBalanceRecord : public LensAssistApgaPage {
protected:
    WhiteBalanceRecord() {
        libraries.headboard.deviceAddress = 0xA8;
        for (char const* const gain : {"L_RG", "L_BG", "M_RG", "M_BG", "R_RG", "R_BG"})
            libraries.headboard.add(std::string("CAM_AWB_CCM_") + gain + "_GAIN", 0, 0,
                                    uint32_t(0x4000 + 2 * libraries.headboard.registers.size()), 2);
        host.registers = {
            {"CAM_AWB_CCM_L_CTEMP.", 2800}, {"CAM_AWB_CCM_M_CTEMP.", 4000}, {"CAM_AWB_CCM_R_CTEMP.", 6500}};
    }
    // In the image that the page works on; what the device holds is another matter.
    [[nodiscard]] bool has(uint8_t type) const {
        return eepromSlot && EepromFindRecord(*eepromSlot, type, nullptr, 0) >= 0;
    }
    // Of the factory's record in the device.
    [[nodiscard]] std::vector<uint32_t> gains() const {
        EepromShare const eeprom = HeadboardEepromCreate(sensor.camera);
        std::vector<uint8_t> record(200);
        EXPECT_GT(EepromReadNth(*eeprom, kRecordCcm, "FACTORY", 0, record), 0);
        std::vector<uint32_t> found;
        RegisterEntry entry{};
        while (EepromGetEntry(*eeprom, record, int(found.size()), entry) == kEepromOk)
            found.push_back(entry.value);
        return found;
    }
};

TEST_F(WhiteBalanceRecord, IsMadeForItsSensorOutOfRecordedGainsOnly) {
    using Row = std::tuple<uint32_t, uint32_t, int, bool>;
    for (auto const& [kind, variant, gain, isMade] :
         {Row{72, 1, 750, true}, Row{72, 2, 750, false}, Row{76, 1, 750, false}, Row{72, 1, 0, false}}) {
        libraries.headboard.device.fill(0xFF);
        sensor.sensorKind = kind;
        sensor.variant = variant;
        open();
        runAll({500, gain, 1500});
        EXPECT_EQ(text("Prom_Save_Status"), "Done.");
        EXPECT_EQ(has(kRecordCcm), isMade) << kind << ' ' << variant;
        EXPECT_EQ(host.calls("dumpRegFile"), Calls{"dumpRegFile 0"});
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
    chooseLabel("KestraTune");
    discardEeprom(eepromSlot);
    libraries.headboard.device = simulator::formattedContents();
    for (int saves = 1; saves <= 3; ++saves) {
        click("Prom_Save");
        ASSERT_EQ(text("Prom_Save_Status"), "Done.");
        EXPECT_EQ(recordsOnDevice(), (std::map<uint8_t, int>{{kRecordPga, 1}, {kRecordCcm, 1}})) << saves;
    }
}

TEST_F(WhiteBalanceRecord, HoldsTheGainsOfTheThreeLightsAtTheSetsTemperatures) {
    open();
    enter("Incandescent_Temp", "2000");
    runAll({503, 753, 1503});
    EXPECT_EQ(text("Prom_Save_Status"), "Done.");
    EXPECT_EQ(captured()[kDaylight].redGain, 1.503);
    EXPECT_EQ(gains(), (std::vector<uint32_t>{72, 144, 96, 192, 192, 384}));
    EXPECT_EQ(recordsOnDevice()[kRecordTimeStamp], 1);

    // Temperatures that their fractions alone tell apart, on a line that reaches its third point.
    enter("Incandescent_Temp", "2800.25 K");
    enter("Fluorescent_Temp", "2800.5");
    enter("Daylight_Temp", "2800.75");
    host.registers["CAM_AWB_CCM_L_CTEMP."] = 2801;
    click("Prom_Save");
    EXPECT_EQ(gains().at(0),
              uint32_t(quadraticThrough({2800.25, 2800.5, 2800.75}, {0.503, 0.753, 1.503}, 2801) * 128));

    libraries.headboard.plan(DeviceFault::IgnoredWrite);
    enter("Daylight_Temp", "7000");
    click("Prom_Save");
    EXPECT_EQ(text("Prom_Save_Status"), "Error accessing the EEPROM.") << "the save is read back";
}
} // namespace
