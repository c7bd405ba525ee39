#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/files/sensor_layout.h"

#include <QImage>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace shading {
inline constexpr qint64 kMostBytes = 512 << 20;                     ///< of a picture's file
inline constexpr uint32_t kShortestSide = 48, kLongestSide = 16384; ///< of a picture, pixels
inline constexpr uint32_t kLongestRatio = 16;                       ///< of the sides; a table has rows

/// What the command line tells of pictures. It holds before what a file tells of itself.
struct Coding {
    /// A picture without a head: rows of samples from the top, in bytes or, above 8 bits, in 16-bit
    /// little-endian words.
    struct Bare {
        uint32_t width = 0;
        uint32_t height = 0;
        uint32_t bits = 0;
    };

    std::optional<Bare> bare{};      ///< what all files are that are no PNG, TIFF or DNG; none: makers' raw
    std::optional<uint32_t> phase{}; ///< as that of a mosaic
    std::optional<double> black{};   ///< counts
    std::optional<double> white{};   ///< counts
    QString blackSource = QStringLiteral("--black");
    uint32_t orientation = 0;  ///< of the read-out; bit 0: mirrored, bit 1: upside down
    uint32_t unusableRows = 0; ///< at the top, which are dropped
};

/// A picture that Qt can show. Null for others, for what is cut off or has too long sides, and for TIFF: Qt
/// would take a DNG for one and show its thumbnail.
[[nodiscard]] QImage shownPicture(QByteArray bytes);

/// A phase by the colours of the first two rows, such as RGGB; none for any other text.
[[nodiscard]] std::optional<uint32_t> phaseNamed(QString const& name);

/// Adds to what is told what a simulated sensor's profile tells; false with a message for the user.
[[nodiscard]] bool fillCoding(Coding& coding, QString const& profile, QString* error);

/// The samples of a raw picture as a sensor with a Bayer pattern delivers them; nothing is subtracted.
struct Mosaic {
    QString file;
    uint32_t width = 0;                       ///< pixels
    uint32_t height = 0;                      ///< pixels
    std::vector<uint16_t> samples;            ///< rows from the top
    uint32_t bayerPhase = 0;                  ///< bit 0: column, bit 1: row of the first red pixel
    simulator::PerPlane<double> blackLevel{}; ///< counts
    double whiteLevel = 0;                    ///< counts, above every black level
    QString blackSource;                      ///< who told the black level
    uint32_t orientation = 0;                 ///< of the read-out, as in the coding

    /// The same as a frame of 16-bit words, which borrows the samples, and as a camera that delivers it. Its
    /// black level is the planes' mean.
    [[nodiscard]] simulator::Frame frame() const;
    [[nodiscard]] simulator::CameraDescription description() const;
};

/// Reads a DNG or a maker's raw file (by LibRaw), a 16-bit PNG or TIFF of one channel, or bare samples. Empty
/// with a message for the user: what holds no Bayer mosaic, is cut off or too large, and what neither the
/// file nor the coding tells.
[[nodiscard]] std::optional<Mosaic> readMosaic(QString const& file, Coding const& coding, QString* error);
} // namespace shading
