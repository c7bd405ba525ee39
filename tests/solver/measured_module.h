#pragma once

#include "tests/solver/synthetic.h"

#include <QString>
#include <vector>

/// A camera module's measured shading at one colour temperature.
struct MeasuredShading {
    QString name;
    int colourTemperature = 0;
    int columns = 0;
    int rows = 0;
    std::vector<double> gains[3];

    /// 1/gain between the cells' centres, a smooth surface, continued linearly to the border.
    [[nodiscard]] Response response(TestSensor const& sensor) const;
};

/// All modules of the measured folder at all their colour temperatures; empty when there is none.
[[nodiscard]] std::vector<MeasuredShading> measuredShadings();
