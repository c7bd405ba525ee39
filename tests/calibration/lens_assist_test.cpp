#include "tests/calibration/pages.h"

#include "calibration/calibration_flow.h"

#include <array>
#include <cstring>

using namespace kestra;

namespace {
class LensAssistPage : public PageFixture {
protected:
    LensAssistPage() : PageFixture(kLensAssistPage) {}

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

TEST_F(LensAssistPage, EachKindTakesItsOwnFrames) {
    struct Row {
        uint32_t kind;
        uint32_t type;
        char const* call; // null: not taken
    };
    Row const rows[] = {{200, 13, "setInputImage2 64 48 12 0 0 0 -1 -1"},
                        {200, 2, "setInputImage2 64 48 8 0 0 0 -1 -1"},
                        {200, 5, "setInputImageYcbcr 64 48"},
                        {200, 11, nullptr},
                        {16, 11, "setInputImage2 64 48 8 0 0 0 -1 -1"},
                        {16, 13, nullptr}};
    for (Row const& row : rows) {
        sensor.sensorKind = row.kind;
        libraries.bitfields.insert("COLOR_PIPELINE_CONTROL.LENS_SHADING");
        open();
        click("Calibrate");
        frames(row.kind == 16 ? 5 : 6);
        host.log.clear();
        frames(1, row.type);
        EXPECT_EQ(host.calls("setInput"),
                  row.call ? std::vector<std::string>{row.call} : std::vector<std::string>{})
            << row.kind << ' ' << row.type;
        EXPECT_EQ(state().inputWasYcbcr, row.type == 5 ? 1U : 0U);
    }
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

TEST_F(LensAssistPage, TheLibraryGetsTheRowsFromTheTopWithoutGapsWhateverThePitch) {
    struct Row {
        uint32_t kind, type;
        int bytesPerPixel;
    };
    constexpr int kWidth = 5, kHeight = 3;
    for (Row const& row : {Row{200, 13, 2}, Row{200, 5, 2}, Row{200, 8, 1}, Row{16, 11, 4}}) {
        int const rowBytes = kWidth * row.bytesPerPixel;
        for (int const pitch : {0, rowBytes, rowBytes + 3, -rowBytes, -rowBytes - 1}) {
            SCOPED_TRACE(std::to_string(row.type) + ' ' + std::to_string(pitch));
            sensor.sensorKind = row.kind;
            libraries.bitfields.insert("COLOR_PIPELINE_CONTROL.LENS_SHADING");
            open();
            click("Calibrate");
            frames(row.kind == 16 ? 5 : 6);
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
            page->onFrame({first, ImageType(row.type), kWidth, kHeight, pitch});
            host.onCall = nullptr;
            EXPECT_EQ(handedOver, expected);
            EXPECT_EQ(libraries.frame == first, pitch == 0 || pitch == rowBytes) << "copied without need";
            EXPECT_EQ(state().lscStepProgress, phase::kSolved);
        }
    }
}

TEST_F(LensAssistPage, YcbcrInputCarriesTheLumaRange) {
    struct Row {
        int32_t automatic, high;
        uint32_t low, chromaHigh;
    };
    for (Row const& row : {Row{1, 255, 11, 255}, Row{0, 235, 22, 224}}) {
        open();
        host.states = {{"sRGB Color Standard", 3}, {"Auto Luma Range", row.automatic},
                       {"Luma Clip Lo", 11},       {"Luma Lo", 22},
                       {"Luma Clip Hi", row.high}, {"Sensor Orientation", 1}};
        calibrateToCapture();
        host.log.clear();
        frames(1, 5);
        sf_YcbcrInput const& input = libraries.ycbcrInput;
        EXPECT_EQ(input.size, 48U);
        EXPECT_EQ(input.srgbStandard, 3U);
        EXPECT_EQ(input.componentOrder[3], 3U);
        EXPECT_EQ(input.lumaLow, row.low);
        EXPECT_EQ(input.lumaHigh, uint32_t(row.high));
        EXPECT_EQ(input.chromaHigh, row.chromaHigh);
        EXPECT_EQ(input.chromaZero, 128U);
        EXPECT_EQ(input.orientation, 1U);
        auto const reads = host.calls("readState");
        ASSERT_EQ(reads.size(), 5U);
        EXPECT_EQ(reads[1], "readState Auto Luma Range");
        EXPECT_EQ(reads[4], "readState Sensor Orientation");
    }
}

TEST_F(LensAssistPage, FailuresShowTheirOwnText) {
    struct Row {
        int input, solution, apga;
        bool list;
        char const* text;
    };
    constexpr char const* kSize = "Error: Incompatible image size.";
    constexpr char const* kOther = "Error. Are the External sensor data files installed?";
    for (Row const& row :
         {Row{0, 0, 0, true, kOther}, Row{1, -2, 0, true, kSize}, Row{1, -1, 0, true, kOther},
          Row{1, 0, -2, true, kSize}, Row{1, 0, 9, true, kOther}, Row{1, 0, 0, false, kOther}}) {
        libraries.inputAnswer = row.input;
        libraries.solutionAnswer = row.solution;
        libraries.apgaAnswer = row.apga;
        libraries.hasList = row.list;
        open();
        calibrateToCapture();
        frames(1, 13);
        tick();
        EXPECT_EQ(text("Calibrate_Status"), row.text);
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
    struct Row {
        int32_t count;
        bool pointer;
        size_t writes;
        uint32_t step;
    };
    for (Row const& row :
         {Row{0, true, 0, kInProgress}, Row{-5, true, 0, kInProgress}, Row{2, false, 0, kFailedOtherwise},
          Row{0, false, 0, kInProgress}, Row{1, true, 1, kInProgress}}) {
        libraries.list = {row.count, row.pointer ? libraries.entries.data() : nullptr};
        open();
        solve();
        host.log.clear();
        tick();
        EXPECT_EQ(host.calls("writeListEntry").size(), row.writes) << row.count;
        EXPECT_EQ(state().lscStepState, row.step) << row.count;
        EXPECT_TRUE(host.isBalanced());
        EXPECT_EQ(host.calls("begin").empty(), row.step == kFailedOtherwise);
    }
}

TEST_F(LensAssistPage, ResultsFileNameIsBuiltByteForByte) {
    struct Row {
        char const* part;
        char const* sensorName;
        std::string name;
    };
    for (Row const& row : {Row{"B:%1", "P/%2", "B:%1_P/%2.ini"}, Row{nullptr, nullptr, "_.ini"}}) {
        sensor.fileNamePart = row.part;
        libraries.description.name = row.sensorName;
        open();
        widget<QLineEdit>("Save_Dir")->setText(QString::fromStdString(saveDir() + "/"));
        solve();
        tick();
        frames(6);
        tick();
        ASSERT_EQ(state().lscStepState, kDone);
        click("File_Save");
        EXPECT_EQ(libraries.path, saveDir() + "/\\" + row.name);
        EXPECT_EQ(text("File_Save_Status"), "Done: " + row.name);
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

TEST_F(LensAssistPage, ANewCalibrationForgetsTheWorstBlock) {
    open();
    click("ColorUniformity");
    frames(1);
    EXPECT_FALSE(state().worstBlock.isEmpty());
    click("Calibrate");
    EXPECT_TRUE(state().worstBlock.isEmpty());
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
