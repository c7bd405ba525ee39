#pragma once

#include "simulator/host/report/run_report.h"
#include "simulator/host/report/summary_lines.h"
#include "simulator/host/run/capture_rows.h"
#include "simulator/host/run/light_matrix.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class Session;
struct Options;

/// What a sitting did to the camera's EEPROM.
struct EepromUse {
    QString file;  ///< that holds its bytes
    QString fault; ///< as the user wished it; empty for none
    uint64_t operations = 0;
    uint64_t bytesWritten = 0;
    std::optional<bool> holdsSolution; ///< none without a solution
    QString lack;                      ///< why it does not hold it
};

/// How a calibration ended, the worst first.
enum class Verdict { NotCalibrated, NotSaved, BeyondLimit, Calibrated };

/// What a run leaves for its reader.
struct RunSummary {
    Scene scene;
    RunResult run;
    std::vector<CaptureRow> captures; ///< as the run left them; empty where one light does
    std::optional<Evenness> before;   ///< none when the run did not get so far
    std::optional<Evenness> after;
    QImage refused; ///< the picture that the library refused, with its blocks; null when it refused none
    bool hasRefusedBlocks = false;   ///< else it refused the whole picture
    LightMatrix lights;              ///< empty where one light does
    uint64_t solutionRegisters = 0;  ///< registers of the solution that reached the sensor
    uint64_t registerWrites = 0;     ///< all register writes until the run ended
    std::optional<EepromUse> eeprom; ///< none on a camera without one
    QStringList filesWritten;        ///< without folder
    QStringList earlierResults;      ///< results files in the folder that are not of this run
    QString
        firstRefusal; ///< cause of the refusal after which the light was mended; empty when there was none
    Verdict verdict = Verdict::NotCalibrated;
    QString cause; ///< of a failure, in the dialog's own words and then the calibration library's
};

/// None on a camera without an EEPROM. What the dialog solved is compared with what a camera that starts up
/// from the EEPROM holds, whatever the dialog shows of the save.
[[nodiscard]] std::optional<EepromUse> eepromUseOf(Session& session, DialogPage const& page,
                                                   Options const& options);

/// The same for a report.
[[nodiscard]] RunReport reportOf(Session& session, RunSummary const& summary);

/// One page, a "name: value" line each.
[[nodiscard]] QString summaryText(RunSummary const& summary);
} // namespace pictara
