#pragma once

#include "tools/headboard-image/addressing.h"
#include "tools/headboard-image/outcome.h"

#include <QString>
#include <optional>

// The commands that change an image file. The file changes as a whole or, when the outcome is not
// `kExitDone`, not at all.
namespace headboard_image {

/// Builds a register set from a section of a preset file, in the place of an older one of the same name.
/// Refused when the record would not say what the section says.
[[nodiscard]] Outcome importSection(QString const& image, QString const& presetFile, QString const& section,
                                    uint8_t type, Addressing addressing);

/// Deletes the first record of a type and, where one is given, of that name.
[[nodiscard]] Outcome deleteRecord(QString const& image, uint8_t type, std::optional<QString> const& name);

/// Makes the chain empty; a file that is not there is created as an erased device first.
[[nodiscard]] Outcome formatImage(QString const& image);

} // namespace headboard_image
