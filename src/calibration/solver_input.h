#pragma once

#include "calibration/page_core.h"
#include "pictures/frame.h"
#include "published/shadefit.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestra {

/// An image for the calibration library: rows from the top without gaps, in the library's 8-bit or 16-bit
/// form.
struct LibraryImage {
    void const* data = nullptr;
    uint32_t width = 0;  ///< pixels
    uint32_t height = 0; ///< rows
    bool isYcbcr = false;
    uint32_t bits = 8; ///< a Bayer sample's
};

/// A frame's pixels as the library reads them, which knows no pitch: rows from the top without gaps. They are
/// borrowed from the frame, pitch 0 telling that it has no gaps, or a copy where they lie otherwise. Null
/// when they cannot be read: no data, a size of 0 or less, a pitch shorter than a row, no memory for the
/// copy.
[[nodiscard]] std::shared_ptr<void const> gaplessPixels(Frame const& frame);

/// How the samples of a Bayer image lie.
struct BayerCoding {
    uint32_t phase = 0; ///< X offset + 2 x Y offset of the colour filter
    uint32_t orientation = 0;
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

/// Hands an image to the library, coded as told. Returns the library's answer: 0 = refused.
[[nodiscard]] int handOverBayer(ShadingHandle const& handle, LibraryImage const& image,
                                BayerCoding const& coding);
[[nodiscard]] int handOverYcbcr(ShadingHandle const& handle, LibraryImage const& image,
                                sf_YcbcrInput const& coding);

/// Hands an image to the library, with the Bayer phase and orientation, or the YCbCr coding, that the host's
/// state variables tell. Returns the library's answer: 0 = refused.
[[nodiscard]] int handOver(Host const& host, ShadingHandle const& handle, LibraryImage const& image);

/// The registers of a calibration's solution, copied from the library. Empty when it has none: no list, or a
/// list that promises entries and has no pointer to them. A negative count is no entries.
[[nodiscard]] std::optional<std::vector<sf_RegEntry>> dumpRegisterList(ShadingHandle const& handle);

/// Writes the entries into the sensor through the host, in order, as long as `goOn` answers true after each:
/// the page may be reset or deleted from inside a write. False when it did not write all.
[[nodiscard]] bool writeRegisterList(Host const& host, std::vector<sf_RegEntry> const& entries,
                                     std::function<bool()> const& goOn);

/// The step's state after a result of the library that is no success: it tells pictures of a wrong size
/// apart.
[[nodiscard]] StepState failureOf(int libraryResult);

} // namespace kestra
