#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/session/command_line.h"

#include <optional>

namespace pictara {
/// Where the camera's EEPROM lasts from one sitting to the next: a file of its bytes.
class EepromStore {
public:
    /// Puts into the camera what the file holds, or leaves it as the profile makes it when there is no file
    /// yet. For a replay the camera then starts up from it, and nothing will be kept. A fault that waits for
    /// an operation is planned; operations count from now on. Empty with a message for the user; a camera
    /// without an EEPROM has an empty store.
    [[nodiscard]] static std::optional<EepromStore> open(simulator::SimulatedCamera& camera,
                                                         Options const& options, QString const& outputFolder,
                                                         QString* error);

    /// Writes what the camera's EEPROM holds by now to its file. False with a message for the user; what the
    /// file held before is still in it then.
    [[nodiscard]] bool keep(simulator::SimulatedCamera const& camera, QString* error) const;

    /// Empty when nothing will be kept.
    [[nodiscard]] QString const& file() const { return m_file; }
    /// Register writes of the start-up.
    [[nodiscard]] uint64_t replayedWrites() const { return m_replayedWrites; }

private:
    QString m_file;
    uint64_t m_replayedWrites = 0;
};
} // namespace pictara
