#pragma once

#include "common/host.h"
#include "pictures/frame.h"
#include "published/shadefit.h"

#include <QByteArray>
#include <memory>
#include <optional>
#include <vector>

namespace kestra {
/// An image for the calibration library: rows from the top without gaps, in the library's 8-bit or 16-bit
/// form.
struct LibraryImage {
    void const* data = nullptr;
    uint32_t width{};  ///< pixels
    uint32_t height{}; ///< rows
    bool isYcbcr{};
    uint32_t bits = 8; ///< a Bayer sample's
};

/// A frame's pixels as the library reads them, which knows no pitch: rows from the top without gaps. They are
/// borrowed from the frame, pitch 0 telling that it has no gaps, or a copy where they lie otherwise. Null
/// when they cannot be read: no data, a size of 0 or less, a pitch shorter than a row, no memory for the
/// copy.
[[nodiscard]] std::shared_ptr<void const> gaplessPixels(Frame const& frame);

/// How the samples of a Bayer image lie.
struct BayerCoding {
    uint32_t phase{}; ///< X offset + 2 x Y offset of the colour filter
    uint32_t orientation{};
};

/// The same, read from the host's state variables.
[[nodiscard]] BayerCoding readBayerCoding(Host const& host);

/// How the host codes a YCbCr image, read from its state variables; the orientation, which both codings have,
/// only when it is not known yet.
[[nodiscard]] sf_YcbcrInput readYcbcrInput(Host const& host, std::optional<uint32_t> knownOrientation = {});

/// The solution asked for: `falloffPercent` as the page shows it, `radius` as its setting tells.
[[nodiscard]] sf_SolutionParams makeSolutionParams(int32_t falloffPercent, int32_t radius);

/// The same for the adaptive solution, without an illuminant.
[[nodiscard]] sf_ApgaParams makeApgaParams(int32_t falloffPercent, int32_t radius);

/// A calibration of the library: its handle, which it destroys, and what can be asked of it. Without a handle
/// the library is not asked, and every answer is a failure. A call keeps the handle to its end, also when the
/// calibration is given up inside it.
class Shading {
public:
    explicit operator bool() const { return m_handle != nullptr; }
    /// Takes over a handle that the library created; null stays null.
    void take(sf_Handle* handle);
    void giveUp();

    /// Hands an image over, coded as told; whether the library accepts it.
    [[nodiscard]] bool accepts(LibraryImage const& image, BayerCoding const& coding) const;
    [[nodiscard]] bool accepts(LibraryImage const& image, sf_YcbcrInput const& coding) const;
    /// The library's own results: 0 for success.
    [[nodiscard]] int findSolution(sf_SolutionParams const& params) const;
    [[nodiscard]] int findApga(sf_ApgaParams const& params) const;
    [[nodiscard]] int findAutoPga(sf_ApgaParams const& params) const;
    /// The registers of the solution, copied. Empty when there is none: no list, or a list that promises
    /// entries and has no pointer to them. A negative count is no entries.
    [[nodiscard]] std::optional<std::vector<sf_RegEntry>> registers() const;
    /// Writes the solution to a file in one of the library's formats; false when that failed.
    [[nodiscard]] bool save(QByteArray const& path, uint32_t format) const;

private:
    std::shared_ptr<sf_Handle> m_handle;
};
} // namespace kestra
