#pragma once

#include <QtGlobal>

class Config;
class HeadboardEeprom;
class LensAssist;
class LensAssistApga;
class QWidget;
class Wizard;

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
    LensAssist* g_lensAssist;           ///< the lens-shading page, when one was created
    LensAssistApga* g_lensAssistApga;   ///< the three-illuminant page, when one was created
    Wizard* g_wizard;                   ///< the dialog that the host was given
    HeadboardEeprom* g_headboardEeprom; ///< the EEPROM image, from its first user on
    QWidget* g_parentWidget;            ///< the host's parent widget; borrowed
};

static_assert(sizeof(KestraMfr) == 48);

/// The one instance.
[[nodiscard]] KestraMfr& kestraMfr();
