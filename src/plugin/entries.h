#pragma once

#include "common/host_records.h"
#include "plugin/kestra_mfr.h"

#include <cstdint>

class QDialog;

// The five functions by which the host drives the plug-in, all on its GUI thread. None of them throws.
extern "C" {

/// Makes the wizard for a sensor. Null for another interface version than 5, for a sensor kind that has no
/// calibration, and when the host's ini file holds no calibration preset. The plug-in keeps the last dialog
/// until the library is unloaded; the host may delete it earlier.
KESTRA_EXPORT QDialog* OpenQtDialog(uint32_t apiVersion, QWidget* parent, SensorRecord const* sensor,
                                    HostServices const* services) noexcept;

/// Does nothing: the dialog stays where it is. The next `OpenQtDialog` makes another one and leaves this one
/// to the host, and to its parent.
KESTRA_EXPORT void CloseDialog() noexcept;

/// Hands a frame to the pages. An RGB-32 frame may be painted into.
KESTRA_EXPORT void ImageData(void const* frame, uint32_t imageType, uint32_t width, int32_t height,
                             uint32_t pitch) noexcept;
KESTRA_EXPORT void RgbImageData(void const* frame, uint32_t imageType, uint32_t width, uint32_t height,
                                int32_t pitch) noexcept;

/// Tells the pages that a register was written.
KESTRA_EXPORT void RegisterChanged(uint32_t what, uint32_t value) noexcept;

} // extern "C"
