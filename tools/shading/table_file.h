#pragma once

#include "simulator/camera/optics.h"

namespace shading {
/// Where a table goes, and in which formats.
struct TableFile {
    QString name;
    bool hasTuning = false; ///< besides, as tuningName() tells

    /// Beside the table, its suffix replaced by "tuning.json".
    [[nodiscard]] QString tuningName() const;
    /// Whether all can be written; false with a message for the user.
    [[nodiscard]] bool isReplaceable(QString* error) const;
    /// Writes the format shading-gains-1 and, where asked for, tuning tables: per lamp the gains of red and
    /// of blue over that of green, the smallest of each 1, and the gains of green, on 16 x 12 cells. False
    /// with a message for the user.
    [[nodiscard]] bool write(simulator::MeasuredShading const& shading, QString* error) const;
};
} // namespace shading
