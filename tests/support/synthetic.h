#pragma once

#include "tests/support/solver_sensor.h"

#include <QByteArray>
#include <functional>

/// Planes of a response. The green of the rows with blue is one of its own; only Bayer frames hold it.
enum Colour { kColourRed, kColourGreen, kColourBlue, kColourGreenBlue };

/// Light that reaches a plane at a position of the array in pixels, relative to an ideal lens.
using Response = std::function<double(Colour, double x, double y)>;

/// A lens with its sensor's colour shading.
struct SyntheticLens {
    enum class Shape { CosineFourth, RadialPolynomial };

    Shape shape = Shape::CosineFourth;
    double peakGain = 2.5; ///< what the darkest corner's green needs
    double spread = 0.2;   ///< how far R/G changes over the field
    double offsetX = 0;    ///< of the lens's centre, in half-widths
    double offsetY = 0;

    [[nodiscard]] Response response(TestSensor const& sensor) const;
};

/// How a frame is taken.
struct Exposure {
    double level = 0.8;       ///< of the centre's green, 1 = saturation
    double noise = 0.005;     ///< standard deviation at saturation
    unsigned bayerPhase = 0;  ///< of the delivered picture
    unsigned orientation = 0; ///< bit 0: mirrored, bit 1: upside down
    double deviantPixels = 0; ///< share of pixels that are dead or hot
};

/// Relative sensitivity of the planes in the light of the frames.
[[nodiscard]] double sensitivity(Colour colour);

/// A frame as the sensor delivers it: Bayer samples, B G R x or Y Cb Y Cr (full range).
[[nodiscard]] QByteArray expose(TestSensor const& sensor, Response const& response,
                                Exposure const& exposure = {});
