#pragma once

#include "simulator/host/report/evenness.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class Session;

/// Has the dialog measure how even the picture is with the sensor's correction on or off, all else equal, and
/// measures the same picture; the correction stays so. Nothing when the dialog shows no figure.
[[nodiscard]] std::optional<Evenness> measureEvenness(Session& session, DialogPage& page, RunDriver& driver,
                                                      bool corrected);

/// The lights and, at last, one between the two bluest of them, where a sensor has to blend.
[[nodiscard]] std::vector<double> lightsToTry(std::vector<double> lights);

/// The dialog's figure under each light: without correction, by each of the sensor's tables alone and as the
/// sensor blends them. Exposure and colour balance are the light's, and equal for all. To see one table
/// alone, the registers of the tables' colour temperatures are set so that every light lies beyond it, and
/// set back. The last light stays, and so does the correction. `onLight` is called before each light.
[[nodiscard]] Section measureLights(Session& session, DialogPage& page, RunDriver& driver,
                                    std::vector<double> const& lights,
                                    std::function<void(double kelvin)> const& onLight);
} // namespace pictara
