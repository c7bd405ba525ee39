#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/simulated_camera.h"

#include <QString>
#include <array>
#include <optional>
#include <vector>

namespace simulator {
/// The shading of a real camera module: correcting gains on a grid of cells under several illuminants.
struct MeasuredShading {
    struct Illuminant {
        double temperature = 0;                   ///< kelvin
        std::array<std::vector<double>, 3> gains; ///< red, green, blue; row by row from the top left
    };

    QString name;
    uint32_t columns = 0;
    uint32_t rows = 0;
    std::vector<Illuminant> illuminants; ///< in ascending order of temperature
};

/// Reads a file of the format shading-gains-1. Empty with a message that names the fault and its place in
/// `error` when it is malformed.
[[nodiscard]] SIMULATED_CAMERA_API std::optional<MeasuredShading> readMeasuredShading(QString const& file,
                                                                                      QString* error);

/// A measured lens under one illuminant: the response is 1 / gain at the centres of the cells, a bicubic
/// surface between them (cubic convolution, Keys 1981, a = -1/2), and goes on linearly to the border.
class SIMULATED_CAMERA_API MeasuredLens : public LensResponse {
public:
    MeasuredLens(MeasuredShading const& shading, SensorArray const& array, double colourTemperature);
    void row(Plane plane, uint32_t y, std::span<float> response) const override;

private:
    SensorArray m_array;
    uint32_t m_columns;
    uint32_t m_rows;
    std::array<std::vector<double>, 3> m_responses; ///< red, green, blue at the centres
};
} // namespace simulator
