#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/session/command_line.h"
#include "simulator/host/session/viewing_conditions.h"

#include <optional>

namespace pictara {
/// Where the camera's EEPROM lasts from one sitting to the next: a file of its bytes and, beside it, the
/// conditions under which they were calibrated.
class EepromStore {
public:
    /// Puts into the camera what the file holds, or leaves it as the profile makes it when there is no file
    /// yet. For a replay the camera then starts up from it, and nothing will be kept. A fault that waits for
    /// an operation is planned; operations count from now on. Empty with a message for the user; a camera
    /// without an EEPROM has an empty store.
    [[nodiscard]] static std::optional<EepromStore> open(simulator::SimulatedCamera& camera,
                                                         Options const& options, QString const& outputFolder,
                                                         QString* error);

    /// Writes what the camera's EEPROM holds by now, and the conditions, to their files. Conditions of an
    /// earlier sitting go when the EEPROM was written to without new ones. False with a message for the user;
    /// what a file held before is still in it then.
    [[nodiscard]] bool keep(simulator::SimulatedCamera const& camera, QString* error) const;

    /// Empty when nothing will be kept.
    [[nodiscard]] QString const& file() const { return m_file; }
    /// Register writes of the start-up.
    [[nodiscard]] uint64_t replayedWrites() const { return m_replayedWrites; }

    /// Of a replayed EEPROM, as they were found; else those to be kept.
    std::optional<ViewingConditions> conditions;

private:
    [[nodiscard]] bool load(simulator::SimulatedCamera& camera, QString* error) const;
    [[nodiscard]] bool replay(simulator::SimulatedCamera& camera, Options const& options, QString* error);

    QString m_file;
    uint64_t m_replayedWrites = 0;
};
} // namespace pictara
