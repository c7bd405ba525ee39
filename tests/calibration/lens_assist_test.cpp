#include "tests/calibration/pages.h"

#include "calibration/calibration_flow.h"

#include <array>
#include <cstring>

using namespace kestra;

namespace {
class LensAssistPage : public PageFixture {
protected:
    LensAssistPage() : PageFixture(kLensAssistPage) {}

    // A sensor of this kind, whose next frame is the one to calibrate from.
    void openSettled(uint32_t kind) {
        sensor.sensorKind = kind;
        libraries.bitfields.insert("COLOR_PIPELINE_CONTROL.LENS_SHADING");
        open();
        click("Calibrate");
        frames(kind == 16 ? 5 : 6);
        host.log.clear();
    }
    // From the button to the moment at which the library is due.
    void calibrateToCapture() {
        click("Calibrate");
        frames(6);
        ASSERT_EQ(state().lscStepProgress, 30);
    }
    void solve() {
        calibrateToCapture();
        frames(1, 13);
        ASSERT_EQ(state().lscStepProgress, 40);
    }
};

TEST_F(LensAssistPage, RunAllWalksEveryStepOneActionATick) {
    host.textSettings["LensAssist Dir"] = saveDir();
    open();
    click("Run_All");
    std::vector<std::string> actions;
    // What the status texts say after each tick, without repetitions: the road as a user sees it.
    for (int i = 0; i < 100 && state().runAll; ++i) {
        play(1);
        std::string const now = std::to_string(state().presetState) + std::to_string(state().aeStepState) +
                                std::to_string(state().wbStepState) + std::to_string(state().lscStepState) +
                                std::to_string(state().fileState) + std::to_string(state().promState);
        if (actions.empty() || actions.back() != now)
            actions.push_back(now);
    }
    EXPECT_EQ(actions, (std::vector<std::string>{"400115", "430115", "440115", "443115", "444115", "444315",
                                                 "444415", "444445"}));
    EXPECT_EQ(text("SETUP_Status"), "Done.");
    EXPECT_EQ(text("AE_Status"), "Done.");
    EXPECT_EQ(text("AWB_Status"), "Done.");
    EXPECT_EQ(text("Calibrate_Status"), "Done.");
    EXPECT_EQ(text("CU_Status"), " 0.00   (Lower is better.)");
    EXPECT_EQ(text("File_Save_Status"), "Done: BOARD_PART.ini");
    EXPECT_EQ(text("Prom_Save_Status"), "No EEPROM.");
    EXPECT_EQ(libraries.path, saveDir() + "\\BOARD_PART.ini");
    EXPECT_TRUE(host.isBalanced());
}

TEST_F(LensAssistPage, CalibrationStartPreparesHostSensorAndLibraryInOrder) {
    host.intSettings["LensAssist Falloff for S1"] = 75;
    open();
    click("Calibrate");
    auto const log = changes();
    ASSERT_GE(log.size(), 6U);
    EXPECT_EQ(log[0].substr(0, 24), "writeText LensAssist Dir");
    EXPECT_EQ(log[3], "setState Lens Correction Falloff 75");
    EXPECT_EQ(log[4], "setState Lens Correction Coeff Prec 16");
    EXPECT_EQ(log[5], "begin");
    EXPECT_EQ(host.calls("writeRegister"),
              (std::vector<std::string>(2, "writeRegister POLY_SC_ENABLE ENABLE 0")));
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
    EXPECT_EQ(host.calls("setInputImage2"), std::vector<std::string>{"setInputImage2 64 48 12 3 2 0 -1 -1"});
    auto const words = [](auto const& record) {
        std::vector<uint32_t> found(sizeof record / 4);
        std::memcpy(found.data(), &record, sizeof record);
        return found;
    };
    std::vector<uint32_t> solution = {104, 0, 110, 24, 1, 400, 300, 0, 0, 0, 0, 0x3FF00000, 0, 321};
    solution.resize(26);
    EXPECT_EQ(words(libraries.solution), solution);
    EXPECT_EQ(words(libraries.apga), (std::vector<uint32_t>{48, 0, 110, 0, 0, 0, 0, 400, 300, 0, 321, 0}));

    host.log.clear();
    tick();
    EXPECT_EQ(host.log[0], "dumpRegList");
    EXPECT_EQ(host.log[1], "begin");
    EXPECT_EQ(host.log[2], "writeListEntry 13824 0 1 0 7");
    EXPECT_EQ(host.log[3], "writeListEntry 13826 0 0 0 8");
    EXPECT_EQ(host.log[4], "setState Color Correction 1");
    EXPECT_EQ(host.log.back(), "end");
    EXPECT_EQ(state().lscStepProgress, 50);
}

TEST_F(LensAssistPage, AFrameThatCannotBeReadFailsTheStepAndTheNextCalibrationSucceeds) {
    open();
    uint8_t const pixels[64] = {};
    for (Frame const& frame :
         {Frame{nullptr, ImageType::Raw12, 4, 4, 8}, Frame{pixels, ImageType::Raw12, 4, 4, 7},
          Frame{pixels, ImageType::Raw12, 4, 4, -7}, Frame{pixels, ImageType::Raw12, 0, 4, 8},
          Frame{pixels, ImageType::Raw12, -4, 4, 0}, Frame{pixels, ImageType::Raw12, 4, -4, 8},
          Frame{nullptr, ImageType::Raw12, 4, 4, 0},
          Frame{pixels, ImageType::Ycbcr, INT32_MAX, INT32_MAX, INT32_MIN}}) {
        SCOPED_TRACE(frame.pitch);
        calibrateToCapture();
        host.log.clear();
        page->onFrame(frame);
        EXPECT_TRUE(host.calls("setInput").empty());
        EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
        frames(1, 13);
        EXPECT_EQ(state().lscStepState, kFailedOtherwise);
        solve();
    }
}

TEST_F(LensAssistPage, EachKindTakesItsOwnFrames) {
    for (auto const& [kind, type] : {std::pair(200U, 11U), {16U, 13U}}) {
        openSettled(kind);
        frames(1, type);
        EXPECT_EQ(host.calls("setInput"), std::vector<std::string>()) << kind;
    }
}

TEST_F(LensAssistPage, TheLibraryGetsTheRowsFromTheTopWithoutGapsWhateverThePitch) {
    using Row = std::tuple<uint32_t, uint32_t, int, char const*>;
    constexpr int kWidth = 5, kHeight = 3;
    for (auto const& [kind, type, bytesPerPixel, handOver] :
         {Row{200, 13, 2, "setInputImage2 5 3 12 0 0 0 -1 -1"}, Row{200, 5, 2, "setInputImageYcbcr 5 3"},
          Row{200, 8, 1, "setInputImage2 5 3 8 0 0 0 -1 -1"},
          Row{16, 11, 4, "setInputImage2 5 3 8 0 0 0 -1 -1"}}) {
        int const rowBytes = kWidth * bytesPerPixel;
        for (int const pitch : {0, rowBytes, rowBytes + 3, -rowBytes, -rowBytes - 1}) {
            SCOPED_TRACE(std::to_string(type) + ' ' + std::to_string(pitch));
            openSettled(kind);
            int const step = pitch == 0 ? rowBytes : std::abs(pitch);
            std::vector<uint8_t> memory(size_t(step * kHeight), 0xEE), expected;
            uint8_t* const first = pitch < 0 ? memory.data() + step * (kHeight - 1) : memory.data();
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < rowBytes; ++x) {
                    expected.push_back(uint8_t(50 * y + x));
                    first[(pitch < 0 ? -step : step) * y + x] = expected.back();
                }
            std::vector<uint8_t> handedOver;
            // The library may read until it has solved.
            host.onCall = [&](std::string const& call) {
                if (call != "findSolution")
                    return;
                auto const* const bytes = static_cast<uint8_t const*>(libraries.frame);
                handedOver.assign(bytes, bytes + expected.size());
            };
            page->onFrame({first, ImageType(type), kWidth, kHeight, pitch});
            host.onCall = nullptr;
            EXPECT_EQ(handedOver, expected);
            EXPECT_EQ(host.calls("setInput"), std::vector<std::string>{handOver});
            EXPECT_EQ(state().inputWasYcbcr, type == 5 ? 1U : 0U);
            EXPECT_EQ(libraries.frame == first, pitch == 0 || pitch == rowBytes) << "copied without need";
            EXPECT_EQ(state().lscStepProgress, phase::kSolved);
        }
    }
}

TEST_F(LensAssistPage, YcbcrInputCarriesTheLumaRange) {
    using Row = std::tuple<int32_t, int32_t, uint32_t, uint32_t>;
    for (auto const& [automatic, high, low, chromaHigh] : {Row{1, 255, 11, 255}, Row{0, 235, 22, 224}}) {
        open();
        host.states = {{"sRGB Color Standard", 3}, {"Auto Luma Range", automatic},
                       {"Luma Clip Lo", 11},       {"Luma Lo", 22},
                       {"Luma Clip Hi", high},     {"Sensor Orientation", 1}};
        calibrateToCapture();
        host.log.clear();
        frames(1, 5);
        sf_YcbcrInput const& input = libraries.ycbcrInput;
        EXPECT_EQ(input.size, 48U);
        EXPECT_EQ(input.srgbStandard, 3U);
        EXPECT_EQ(input.componentOrder[3], 3U);
        EXPECT_EQ(input.lumaLow, low);
        EXPECT_EQ(input.lumaHigh, uint32_t(high));
        EXPECT_EQ(input.chromaHigh, chromaHigh);
        EXPECT_EQ(input.chromaZero, 128U);
        EXPECT_EQ(input.orientation, 1U);
        auto const reads = host.calls("readState");
        ASSERT_EQ(reads.size(), 5U);
        EXPECT_EQ(reads[1], "readState Auto Luma Range");
        EXPECT_EQ(reads[4], "readState Sensor Orientation");
    }
}

TEST_F(LensAssistPage, FailuresShowTheirOwnText) {
    using Row = std::tuple<int, int, int, bool, char const*>;
    constexpr char const* kSize = "Error: Incompatible image size.";
    constexpr char const* kOther = "Error. Are the External sensor data files installed?";
    for (auto const& [input, solution, apga, list, told] :
         {Row{0, 0, 0, true, kOther}, Row{1, -2, 0, true, kSize}, Row{1, -1, 0, true, kOther},
          Row{1, 0, -2, true, kSize}, Row{1, 0, 9, true, kOther}, Row{1, 0, 0, false, kOther}}) {
        libraries.inputAnswer = input;
        libraries.solutionAnswer = solution;
        libraries.apgaAnswer = apga;
        libraries.hasList = list;
        open();
        calibrateToCapture();
        frames(1, 13);
        tick();
        EXPECT_EQ(text("Calibrate_Status"), told);
        EXPECT_TRUE(host.calls("writeListEntry").empty());
        click("Calibrate");
        EXPECT_EQ(state().lscStepState, kInProgress) << "the next try starts afresh";
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
    EXPECT_EQ(text("Calibrate_Status"), "Error. Are the External sensor data files installed?");
}

TEST_F(LensAssistPage, OddListsAreHandled) {
    using Row = std::tuple<int32_t, bool, size_t, uint32_t>;
    for (auto const& [count, pointer, writes, step] :
         {Row{0, true, 0, kInProgress}, Row{-5, true, 0, kInProgress}, Row{2, false, 0, kFailedOtherwise},
          Row{0, false, 0, kInProgress}, Row{1, true, 1, kInProgress}}) {
        libraries.list = {count, pointer ? libraries.entries.data() : nullptr};
        open();
        solve();
        host.log.clear();
        tick();
        EXPECT_EQ(host.calls("writeListEntry").size(), writes) << count;
        EXPECT_EQ(state().lscStepState, step) << count;
        EXPECT_TRUE(host.isBalanced());
        EXPECT_EQ(host.calls("begin").empty(), step == kFailedOtherwise);
    }
}

TEST_F(LensAssistPage, ResultsFileNameIsBuiltByteForByte) {
    using Row = std::tuple<char const*, char const*, std::string>;
    for (auto const& [part, sensorName, name] :
         {Row{"B:%1", "P/%2", "B:%1_P/%2.ini"}, Row{nullptr, nullptr, "_.ini"}}) {
        sensor.fileNamePart = part;
        libraries.description.name = sensorName;
        open();
        widget<QLineEdit>("Save_Dir")->setText(QString::fromStdString(saveDir() + "/"));
        solve();
        tick();
        frames(6);
        tick();
        ASSERT_EQ(state().lscStepState, kDone);
        click("File_Save");
        EXPECT_EQ(libraries.path, saveDir() + "/\\" + name);
        EXPECT_EQ(text("File_Save_Status"), "Done: " + name);
    }
}

TEST_F(LensAssistPage, UnusableTopRowsAreLeftOutForTheirKinds) {
    for (uint32_t const kind : {33U, 46U, 56U, 66U, 200U}) {
        sensor.sensorKind = kind;
        open();
        click("ColorUniformity");
        std::vector<uint32_t> pixels(64 * 48, 0x808080);
        std::fill(pixels.begin(), pixels.begin() + 2 * 64, 0xFF00FFU);
        std::fill(pixels.begin(), pixels.begin() + 32, 0x00FF00U);
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
