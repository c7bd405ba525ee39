#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/block_report.h"
#include "simulator/host/run_all.h"

#include <QImage>
#include <optional>

namespace pictara {

/// How even the picture is in one state of the sensor's correction.
struct Evenness {
    double uniformity = 0; ///< the dialog's own figure
    BlockReport blocks;
    QImage picture;
};

/// What a run leaves for its reader.
struct RunSummary {
    simulator::CameraDescription camera;
    QString shading; ///< the measured lens' file; empty for the profile's own lens
    simulator::Light light;
    uint64_t seed = 0;
    RunResult run;
    std::optional<Evenness> before; ///< none when the run did not get so far
    std::optional<Evenness> after;
    uint64_t solutionRegisters = 0; ///< registers of the solution that reached the sensor
    uint64_t registerWrites = 0;    ///< all register writes until the run ended
    QStringList filesWritten;       ///< without folder
    QString
        firstRefusal; ///< cause of the refusal after which the light was mended; empty when there was none
    bool succeeded = false;
    QString cause; ///< of a failure, in the dialog's own words and then the calibration library's
};

/// One page, a "name: value" line each.
[[nodiscard]] QString summaryText(RunSummary const& summary);

/// The picture with a frame around the block.
[[nodiscard]] QImage markedPicture(QImage const& picture, QRect const& block);

} // namespace pictara
