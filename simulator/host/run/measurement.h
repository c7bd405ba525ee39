#pragma once

#include "simulator/host/report/evenness.h"
#include "simulator/host/run/run_all.h"

namespace pictara {
class Session;

/// Has the dialog measure how even the picture is, first with the sensor's correction off, then on, all else
/// equal, and measures the same pictures; the correction stays on. Nothing of a state in which the dialog
/// shows no figure.
[[nodiscard]] EvennessStates measureEvenness(Session& session, DialogPage& page, RunDriver& driver);

/// Has it measure more frames of what a certificate tells, for the figure's repeatability; the dialog then
/// shows the last one's.
void measureRepeatability(DialogPage& page, RunDriver& driver, Certificate& certificate);

/// The target that the dialog shows, with the limit of the options.
[[nodiscard]] LuminanceTarget targetOf(Session const& session, DialogPage const& page);

/// Tells the dialog's figure under each light of a page with several, and at last under one between the two
/// bluest, where a sensor has to blend: without correction, by each of the sensor's tables alone and as the
/// sensor blends them, which is judged. Exposure and colour balance are the light's, and equal for all. To
/// see one table alone, the registers of the tables' colour temperatures are set so that every light lies
/// beyond it, and set back. The last light stays, and so does the correction. False when the dialog did not
/// show every figure.
[[nodiscard]] bool measureLights(Session& session, DialogPage& page, RunDriver& driver,
                                 Certificate& certificate);
} // namespace pictara
