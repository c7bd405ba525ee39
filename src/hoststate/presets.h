#pragma once

#include "common/host.h"

#include <QByteArray>
#include <span>

/// A preset of the host's ini file under the names that it may bear, in the order in which they are tried:
/// the host marks presets that its menus hide, or that its toolbar shows, with a prefix.
using PresetNames = std::span<char const* const>;

inline constexpr char const* kSetupPreset[] = {
    "Lens Calibration Setup",
    "Hidden: Lens Calibration Setup",
    "Toolbar: Lens Calibration Setup",
};
inline constexpr char const* kVerifyPreset[] = {
    "Lens Calibration Verify",
    "Hidden: Lens Calibration Verify",
};

/// Whether the host's ini file holds a section of exactly that name; asks the host for the file anew each
/// time.
[[nodiscard]] bool presetExists(Host const& host, char const* name);

/// The first of the names that exists, or null.
[[nodiscard]] char const* findPreset(Host const& host, PresetNames names);

/// Lets the host apply the first of the names that exists; false when there is none.
[[nodiscard]] bool applyPreset(Host const& host, PresetNames names);
