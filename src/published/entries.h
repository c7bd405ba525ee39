#pragma once

#include "published/host_records.h"

#include <QtGlobal>
#include <cstdint>

class Config;
class LensAssist;
class LensAssistApga;
class QDialog;
class QWidget;
class Wizard;
namespace kestra {
class HeadboardEeprom;
}

#ifdef Q_OS_WIN
#define KESTRA_EXPORT __declspec(dllexport) // also for whoever links to it: nothing of the class is inline
#else
#define KESTRA_EXPORT __attribute__((visibility("default")))
#endif

/// The plug-in's only process-wide state: what `OpenQtDialog` made last. One instance lives from the
/// library's loading to its unloading.
class KESTRA_EXPORT KestraMfr {
public:
    /// Sets all members to null.
    KestraMfr();
    /// Copies the members as they stand; both then own the same objects, deliberately: the exported operator
    /// does nothing more.
    KestraMfr& operator=(KestraMfr const& other);
    KestraMfr(KestraMfr const&) = delete;
    /// With a wizard: deletes pages, EEPROM object, configuration page and wizard, in this order, as far as
    /// Qt still runs.
    ~KestraMfr();

    /// The headboard configuration page, asked by the calibration pages before they save. Null in this build,
    /// whose dialog shows none; `makeConfigPage` sets it. The destructor deletes it and leaves the old value,
    /// deliberately: what is set from outside is cleared there.
    Config* g_configPage;
    LensAssist* g_lensAssist;                   ///< the lens-shading page, when one was created
    LensAssistApga* g_lensAssistApga;           ///< the three-illuminant page, when one was created
    Wizard* g_wizard;                           ///< the dialog that the host was given
    kestra::HeadboardEeprom* g_headboardEeprom; ///< the EEPROM image, from its first user on
    QWidget* g_parentWidget;                    ///< the host's parent widget; borrowed
};

static_assert(sizeof(KestraMfr) == 48);

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
