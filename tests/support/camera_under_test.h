#pragma once

#include "simulator/camera/simulated_camera.h"
#include "tests/support/small_profile.h"

#include <memory>

/// A camera as a test wants it: a small and almost noiseless array, unless the test says otherwise.
using Camera = std::unique_ptr<simulator::SimulatedCamera>;

/// Opens an installed profile or a profile's file. Fails the test when it cannot.
[[nodiscard]] Camera openProfile(QString const& profile);
/// Opens the default profile with some keys changed; the text begins with a comma. Fails the test when it
/// cannot.
[[nodiscard]] Camera openChanged(QByteArray const& changes);
/// The default sensor with 320 x 240 pixels and hardly any noise, read out as told.
[[nodiscard]] Camera openQuiet(uint32_t arrayPhase = 0, uint32_t orientation = 0);

/// A sample of a raw frame, 8 or 12 bits.
[[nodiscard]] double sampleAt(simulator::Frame const& frame, uint32_t x, uint32_t y);

/// Part of a picture in percent of its width and height.
struct Region {
    uint32_t left = 0, top = 0, right = 100, bottom = 100;
};

/// Means above black.
[[nodiscard]] double redMean(simulator::SimulatedCamera const& camera, simulator::Frame const& frame,
                             Region const& region = {});
/// Of the green in the rows that hold red.
[[nodiscard]] double greenMean(simulator::SimulatedCamera const& camera, simulator::Frame const& frame,
                               Region const& region = {});

/// Switches the sensor's correction as a host does. Fails the test when the sensor has no switch.
void switchCorrection(simulator::SimulatedCamera const& camera, bool on);

/// What the correction multiplies the green by: of the same light without and with it.
[[nodiscard]] double correctionAt(Camera const& camera, Region const& region = {45, 45, 55, 55});

void writeRegister(simulator::SimulatedCamera const& camera, char const* reg, uint32_t value,
                   char const* bitfield = "");
[[nodiscard]] uint32_t readRegister(simulator::SimulatedCamera const& camera, char const* reg,
                                    char const* bitfield = "");

/// Sets what the device holds, past every access and fault.
void programContents(simulator::SimulatedCamera& camera, QByteArray const& contents);
