#pragma once

#include "simulator/host/report/certificate.h"
#include "tools/shading/mosaic.h"

namespace shading {
/// Of colour uniformity, as the dialog has it until somebody types another one, a*b*.
inline constexpr double kUsualLimit = 2;

struct RateRequest {
    QString picture; ///< of any format that Qt reads, or a raw one
    Coding coding;   ///< where it tells size or phase, the picture is a raw one whatever it seems to be
    double limit = kUsualLimit;
};

/// Tells a picture's colour uniformity as the dialog measures and rates it, and where it is worst. Empty with
/// the cause when there is no such picture.
[[nodiscard]] std::optional<pictara::Certificate> ratePicture(RateRequest const& request, QString* error);
} // namespace shading
