#pragma once

#include "simulator/solver/block_means.h"
#include "simulator/solver/gain_fit.h"

#include <QString>
#include <map>
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
    explicit Calibration(SensorLayout layout) : m_layout(std::move(layout)) {}

    /// Reads a Bayer or RGB frame, or refuses it (false). A frame of another size than the array's is
    /// accepted unread, and the next find operation tells. The frame is not kept.
    [[nodiscard]] bool setImage(void const* frame, uint32_t width, uint32_t height, uint32_t bayerPhase,
                                uint32_t orientation);
    [[nodiscard]] bool setYcbcrImage(void const* frame, uint32_t width, uint32_t height,
                                     sf_YcbcrInput const& input);

    /// The full correction of the image, which becomes the base; drops all tables.
    [[nodiscard]] Outcome findBase(sf_SolutionParams const& params);
    /// Adds the table of a slot, which corrects what the base leaves of the image.
    [[nodiscard]] Outcome findTable(sf_ApgaParams const& params);
    /// Adds the table of a slot, which is the full correction; drops the base.
    [[nodiscard]] Outcome findFullTable(sf_ApgaParams const& params);

    [[nodiscard]] bool hasSolution() const { return !m_banks.empty(); }
    /// All registers in the order in which they are to be written: the origin, then, the base first, bank by
    /// bank its origin where it has its own, its coefficients, and its colour temperature where the sensor
    /// asks for it.
    [[nodiscard]] std::vector<sf_RegEntry> registers() const;
    /// The same as lines of the host's preset "Lens Correction", `REG = <id>, <address>, <value>`, and where
    /// tables are told apart with a comment before each.
    [[nodiscard]] QByteArray presetText(bool tellsTablesApart) const;

    /// Logs a cause and drops the solution.
    Outcome fail(QString const& cause);
    /// The same for an input image: what came before it is no input either. False.
    bool refuse(QString const& cause);

private:
    /// The solution for one bank.
    struct Bank {
        uint32_t colourTemperature = 0; ///< kelvin; of a table
        BankCoefficients coefficients{};
    };

    [[nodiscard]] bool fits(uint32_t width, uint32_t height);
    [[nodiscard]] bool take(BlockMeans means);
    void drop();
    [[nodiscard]] Outcome imageOutcome();
    [[nodiscard]] BankCoefficients fit(BlockMeans const& means, uint32_t falloffPercent,
                                       uint32_t radius) const;
    [[nodiscard]] Outcome addTable(BlockMeans const& means, sf_ApgaParams const& params);
    [[nodiscard]] std::vector<sf_RegEntry> registersOf(uint32_t slot, Bank const& bank) const;

    SensorLayout m_layout;
    QString m_misfit;                  ///< the sizes of a frame that does not fit, for the log
    std::optional<BlockMeans> m_means; ///< none: no usable image
    BlockMask m_trusted;
    uint32_t m_falloffPercent = 100;  ///< of the solution
    std::map<uint32_t, Bank> m_banks; ///< by slot, the base before the tables
};

/// Writes a line to the log in the library's name.
void logCause(QString const& cause);
} // namespace solver
