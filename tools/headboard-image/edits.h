#pragma once

#include "tools/headboard-image/addressing.h"
#include "tools/headboard-image/outcome.h"

#include <QString>
#include <optional>

// The commands that change an image file. The file changes as a whole or, when the outcome is not
// `kExitDone`, not at all.
namespace headboard_image {
/// What becomes a record, and of what kind and name.
struct Import {
    QString presetFile;
    QString section;
    uint8_t type = 0;
    Addressing addressing = Addressing::Plain; ///< without a sensor
    QString sensor;                            ///< a profile's name or file; empty: none is known
    QString label;                             ///< of the record; empty: the section's name
};

/// Builds a register set from a section of a preset file, in the place of an older one of the same name. With
/// a sensor it is the record that a calibration of that sensor stores; without, it holds the section's lines
/// alone. Refused when the record would not say what the section says.
[[nodiscard]] Outcome importSection(QString const& image, Import const& import);

/// Deletes the first record of a type and, where one is given, of that name.
[[nodiscard]] Outcome deleteRecord(QString const& image, uint8_t type, std::optional<QString> const& name);

/// Makes the chain empty; a file that is not there is created as an erased device first.
[[nodiscard]] Outcome formatImage(QString const& image);
} // namespace headboard_image
