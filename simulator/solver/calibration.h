#pragma once

#include "simulator/solver/block_means.h"
#include "simulator/solver/solution.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace solver {
/// Results of the find operations, as the library's interface numbers them.
enum class Outcome : int { Solved = 0, Failed = -1, WrongImageSize = -2 };

/// One sensor's calibration: the input image of the moment, reduced to block means, and the solution.
///
/// Whatever fails leaves no solution behind, so that a caller that overlooks a failure finds an empty
/// register list and never a stale or a half one. Causes go to the log.
class Calibration {
public:
    explicit Calibration(SensorLayout layout) : m_layout(std::move(layout)), m_array(m_layout) {}

    [[nodiscard]] SensorLayout const& layout() const { return m_layout; }
    [[nodiscard]] Solution const& solution() const { return m_solution; }

    /// Reads a Bayer or RGB frame, or refuses it (false). A frame of another size than the array's is
    /// accepted unread, and the next find operation tells. The frame is not kept.
    [[nodiscard]] bool setImage(void const* frame, uint32_t width, uint32_t height, uint32_t bayerPhase,
                                uint32_t orientation);
    [[nodiscard]] bool setYcbcrImage(void const* frame, uint32_t width, uint32_t height,
                                     sf_YcbcrInput const& input);

    /// The full correction of the image, which becomes the base; drops all tables.
    [[nodiscard]] Outcome findBase(uint32_t falloffPercent, uint32_t radius);
    /// Adds the table of a slot, which corrects what the base leaves of the image.
    [[nodiscard]] Outcome findTable(sf_ApgaParams const& params);
    /// Adds the table of a slot, which is the full correction; drops the base.
    [[nodiscard]] Outcome findFullTable(sf_ApgaParams const& params);

    /// Logs a cause and drops the solution.
    void fail(QString const& cause);
    /// The same for an input image: what came before it is no input either.
    void refuse(QString const& cause);

private:
    [[nodiscard]] bool fits(uint32_t width, uint32_t height);
    [[nodiscard]] bool take(BlockMeans means);
    [[nodiscard]] Outcome imageOutcome();
    [[nodiscard]] BankCoefficients fit(BlockMeans const& means, uint32_t falloffPercent,
                                       uint32_t radius) const;
    [[nodiscard]] Outcome addTable(BlockMeans const& means, sf_ApgaParams const& params);

    SensorLayout m_layout;
    Geometry m_array;
    bool m_sizeFits = true;
    QString m_sizes;                   ///< of the last frame that does not fit, for the log
    std::optional<BlockMeans> m_means; ///< none: no usable image
    std::vector<bool> m_trusted;
    Solution m_solution;
};

/// Writes a line to the log in the library's name.
void logCause(QString const& cause);
} // namespace solver
