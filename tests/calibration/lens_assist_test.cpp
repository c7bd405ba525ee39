#include "tests/calibration/page_fixture.h"

#include <array>
#include <cstring>

using namespace kestra;

namespace {
using Words = std::vector<uint32_t>;
Words wordsOf(auto const& record) {
    Words found(sizeof record / 4);
    std::memcpy(found.data(), &record, sizeof record);
    return found;
}
constexpr char kNoData[] = "Error. Are the External sensor data files installed?";

class LensAssistPage : public PageFixture {
protected:
    LensAssistPage() : PageFixture(kLensAssistPage) {}

    // From the button to the moment at which the library is due.
    void calibrateToCapture() {
        click("Calibrate");
        frames(sensor.sensorKind == 16 ? 5 : 6); // kind 16 calibrates from frames that count, too
        host.log.clear();
    }
    void solve() {
        calibrateToCapture();
        frames(1, 13);
        ASSERT_EQ(state().lscStepProgress, phase::kSolved);
    }
};

TEST_F(LensAssistPage, RunAllWalksEveryStepOneActionATick) {
    open();
    click("Run_All");
    std::vector<std::string> road; // the steps' states, without repetitions
    for (int i = 0; i < 100 && state().runAll; ++i) {
        play(1);
        std::string now;
        for (StepState const step : {state().presetState, state().aeStepState, state().wbStepState,
                                     state().lscStepState, state().fileState, state().promState})
            now += std::to_string(step);
        if (road.empty() || road.back() != now)
            road.push_back(now);
    }
    EXPECT_EQ(road, (std::vector<std::string>{"400115", "430115", "440115", "443115", "444115", "444315",
                                              "444415", "444445"}));
    EXPECT_EQ(text("File_Save_Status"), "Done: BOARD_PART.ini");
    EXPECT_EQ(text("CU_Status"), " 0.00   (Lower is better.)");
    auto const* const undriven = widget<QProgressBar>("Lens_Calib_progressBar");
    EXPECT_TRUE(undriven->isHidden() && undriven->value() == 0);
    EXPECT_TRUE(host.isBalanced());
}

TEST_F(LensAssistPage, CalibrationStartPreparesHostSensorAndLibraryInOrder) {
    host.intSettings["LensAssist Falloff for S1"] = 75;
    open();
    click("Calibrate");
    Calls log = changes();
    log.resize(6);
    EXPECT_EQ(log, (Calls{"writeText LensAssist Dir " + saveDir(), "writeInt LensAssist Falloff for S1 75",
                          "writeInt LensAssist GoodCU for S1 2000", "setState Lens Correction Falloff 75",
                          "setState Lens Correction Coeff Prec 16", "begin"}));
    EXPECT_EQ(host.calls("writeRegister"), Calls(2, "writeRegister POLY_SC_ENABLE ENABLE 0"));
    EXPECT_EQ(host.log.back(), "create2 data 200 1 4294967295");
    click("Calibrate");
    EXPECT_EQ(host.calls("create2").size(), 1U) << "the calibration is kept for the next one";
    click("Start_Over");
    EXPECT_EQ(host.calls("destroy").size(), 1U);
}

TEST_F(LensAssistPage, FramesGoToTheLibraryWithTheHostsGeometry) {
    host.intSettings["LensAssist Radius for S1"] = 321;
    open();
    host.states = {{"X Offset", 1}, {"Y Offset", 1}, {"Sensor Orientation", 2}};
    widget<QComboBox>("FallOff")->setCurrentText(QStringLiteral("110%"));
    solve();
    EXPECT_EQ(host.calls("setInputImage2"), Calls{"setInputImage2 64 48 12 3 2 0 -1 -1"});
    Words solution = {104, 0, 110, 24, 1, 400, 300, 0, 0, 0, 0, 0x3FF00000, 0, 321};
    solution.resize(26);
    EXPECT_EQ(wordsOf(libraries.solution), solution);
    EXPECT_EQ(wordsOf(libraries.apga), (Words{48, 0, 110, 0, 0, 0, 0, 400, 300, 0, 321, 0}));

    host.log.clear();
    tick();
    EXPECT_EQ(host.log.back(), "end");
    host.log.resize(5);
    EXPECT_EQ(host.log, (Calls{"dumpRegList", "begin", "writeListEntry 13824 0 1 0 7",
                               "writeListEntry 13826 0 0 0 8", "setState Color Correction 1"}));
    EXPECT_EQ(state().lscStepProgress, phase::kLoaded);
}

TEST_F(LensAssistPage, AFrameThatCannotBeReadFailsTheStepAndTheNextCalibrationSucceeds) {
    open();
    uint8_t const pixels[64] = {};
    for (Frame const& frame :
         {Frame{nullptr, ImageType::Raw12, 4, 4, 8}, Frame{pixels, ImageType::Raw12, 4, 4, 7},
          Frame{pixels, ImageType::Raw12, 4, 4, -7}, Frame{pixels, ImageType::Raw12, 0, 4, 8},
          Frame{pixels, ImageType::Raw12, 4, -4, 8},
          Frame{pixels, ImageType::Ycbcr, INT32_MAX, INT32_MAX, INT32_MIN}}) {
        SCOPED_TRACE(frame.pitch);
        calibrateToCapture();
        page->onFrame(frame);
        EXPECT_EQ(text("Calibrate_Status"), kNoData);
        frames(1, 13);
        EXPECT_EQ(host.calls("setInput"), Calls());
        EXPECT_EQ(state().lscStepState, kFailedOtherwise);
        solve();
    }
}

TEST_F(LensAssistPage, TheLibraryGetsTheRowsFromTheTopWithoutGapsWhateverThePitch) {
    libraries.bitfields.insert("COLOR_PIPELINE_CONTROL.LENS_SHADING");
    using Row = std::tuple<uint32_t, uint32_t, int, char const*>;
    for (auto const& [kind, type, bytesPerPixel, handOver] :
         {Row{200, 13, 2, "setInputImage2 5 3 12 0 0 0 -1 -1"}, Row{200, 5, 2, "setInputImageYcbcr 5 3"},
          Row{200, 8, 1, "setInputImage2 5 3 8 0 0 0 -1 -1"},
          Row{16, 11, 4, "setInputImage2 5 3 8 0 0 0 -1 -1"}}) {
        constexpr int kHeight = 3;
        int const rowBytes = 5 * bytesPerPixel;
        for (int const pitch : {0, rowBytes, rowBytes + 3, -rowBytes, -rowBytes - 1}) {
            SCOPED_TRACE(std::to_string(type) + ' ' + std::to_string(pitch));
            sensor.sensorKind = kind;
            open();
            calibrateToCapture();
            int const step = pitch == 0 ? rowBytes : pitch;
            std::vector<uint8_t> memory(size_t(std::abs(step) * kHeight), 0xEE), expected, handedOver;
            uint8_t* const first = &memory[size_t(step < 0 ? -step * (kHeight - 1) : 0)];
            for (int i = 0; i < kHeight * rowBytes; ++i) {
                expected.push_back(uint8_t(i));
                first[i / rowBytes * step + i % rowBytes] = uint8_t(i);
            }
            // The library may read until it has solved.
            host.onCall = [&](std::string const& call) {
                auto const* const bytes = static_cast<uint8_t const*>(libraries.frame);
                if (call == "findSolution")
                    handedOver.assign(bytes, bytes + expected.size());
            };
            page->onFrame({first, ImageType(type), 5, kHeight, pitch});
            host.onCall = nullptr;
            EXPECT_EQ(handedOver, expected);
            EXPECT_EQ(host.calls("setInput"), Calls{handOver});
            EXPECT_EQ(state().inputWasYcbcr, type == 5 ? 1U : 0U);
            EXPECT_EQ(libraries.frame == first, step == rowBytes) << "copied without need";
            EXPECT_EQ(state().lscStepProgress, phase::kSolved);
        }
    }
}

TEST_F(LensAssistPage, YcbcrInputCarriesTheLumaRange) {
    host.states = {
        {"sRGB Color Standard", 3}, {"Luma Clip Lo", 11}, {"Luma Lo", 22}, {"Sensor Orientation", 1}};
    using Row = std::tuple<int32_t, int32_t, char const*, uint32_t, uint32_t>;
    for (auto const& [automatic, high, lowState, low, chromaHigh] :
         {Row{1, 255, "Luma Clip Lo", 11, 255}, Row{0, 235, "Luma Lo", 22, 224}}) {
        host.states["Auto Luma Range"] = automatic;
        host.states["Luma Clip Hi"] = high;
        open();
        calibrateToCapture();
        frames(1, 5);
        EXPECT_EQ(wordsOf(libraries.ycbcrInput),
                  (Words{48, 0, 3, 0, 1, 2, 3, low, uint32_t(high), chromaHigh, 128, 1}));
        EXPECT_EQ(host.calls("readState"),
                  (Calls{"readState sRGB Color Standard", "readState Auto Luma Range",
                         std::string("readState ") + lowState, "readState Luma Clip Hi",
                         "readState Sensor Orientation"}));
    }
}

TEST_F(LensAssistPage, AFailedCalibrationKeepsRunAllWaitingButAMissingOneEndsIt) {
    libraries.inputAnswer = 0;
    open();
    click("Run_All");
    play(60);
    EXPECT_EQ(state().lscStepState, kFailedOtherwise);
    EXPECT_EQ(state().runAll, 1U);
    EXPECT_EQ(state().fileState, kReady);
    click("Run_All");
    EXPECT_EQ(state().lscStepState, kFailedOtherwise);

    libraries.createsHandle = false;
    click("Run_All");
    play(60);
    EXPECT_EQ(state().runAll, 0U);
    EXPECT_EQ(text("Calibrate_Status"), kNoData);
}

TEST_F(LensAssistPage, UnusableTopRowsAreLeftOutForTheirKinds) {
    std::vector<uint32_t> pixels(64 * 48, 0x808080);
    std::fill_n(pixels.begin(), 2 * 64, 0xFF00FFU);
    std::fill_n(pixels.begin(), 32, 0x00FF00U);
    for (uint32_t const kind : {33U, 46U, 56U, 66U, 200U}) {
        sensor.sensorKind = kind;
        open();
        click("ColorUniformity");
        page->onFrame({pixels.data(), ImageType::Rgb32, 64, 48, 256});
        EXPECT_EQ(state().uniformityValue == 0, kind != 200) << kind;
    }
}

TEST(SerialNumberEdits, OneFileStepThatIsOverIsOpenAgainOnBothPages) {
    PageBench bench;
    LensAssist first(nullptr, {}, bench.services, nullptr, bench.eepromSlot);
    LensAssist second(nullptr, {}, bench.services, nullptr, bench.eepromSlot);
    first.setFileState(kReady);
    second.setFileState(kDone);
    tellSerialNumberEdited(std::array<CalibrationPage*, 3>{&first, nullptr, &second}, false);
    EXPECT_EQ(first.state().fileState, kNotEvaluated);
    EXPECT_EQ(second.state().fileState, kNotEvaluated);
}

TEST(Label, BearsNoCharacterThatAFileNameCannot) {
    EXPECT_EQ(sanitisedLabel("a\\b/c:d*e?f|g\"h<i>j"), QByteArray("a-b-c-d-e-f-g'h(i)j"));
    EXPECT_EQ(sanitisedLabel("Plain label_1.0 %1 \xE4"), QByteArray("Plain label_1.0 %1 \xE4"));
}
} // namespace
