#include "calibration/calibration_page.h"

#include "lsc_page/lens_assist.h"
#include "tests/support/page_bench.h"

#include <QLabel>
#include <array>
#include <gtest/gtest.h>

using namespace kestra;

namespace {

TEST(SerialNumberEdits, AFileStepThatIsOverIsOpenAgainOnBothPages) {
    PageBench bench;
    LensAssist first(nullptr, {}, bench.services, nullptr, bench.eepromSlot);
    LensAssist second(nullptr, {}, bench.services, nullptr, bench.eepromSlot);
    std::array<CalibrationPage*, 2> const both = {&first, &second};
    struct Row {
        std::array<StepState, 2> before;
        bool isEmpty;
        std::array<StepState, 2> after;
    };
    for (Row const& row : {Row{{kReady, kDone}, true, {kFailed, kFailed}},
                           {{kFailed, kFailed}, false, {kNotEvaluated, kNotEvaluated}},
                           {{kReady, kDone}, false, {kNotEvaluated, kNotEvaluated}},
                           {{kReady, kReady}, false, {kReady, kReady}}}) {
        first.setFileState(row.before[0]);
        second.setFileState(row.before[1]);
        tellSerialNumberEdited(both, row.isEmpty);
        EXPECT_EQ((std::array{first.state().fileState, second.state().fileState}), row.after);
    }
    auto const* const status = first.findChild<QLabel*>(QStringLiteral("File_Save_Status"));
    QString const ready = status->text();
    tellSerialNumberEdited(std::array<CalibrationPage*, 2>{&first, nullptr}, true);
    EXPECT_NE(status->text(), ready) << "shown at once";
}

} // namespace
