#pragma once

#include "simulator/camera/simulated_camera.h"

#include <functional>

/// A camera of 12-bit Bayer frames, black at 100 and full scale at 1100 counts.
inline simulator::CameraDescription bayerCamera(uint32_t width, uint32_t height, uint32_t phase = 0) {
    simulator::CameraDescription camera;
    camera.width = width;
    camera.height = height;
    camera.bayerPhase = phase;
    camera.blackLevel = 100;
    camera.whiteLevel = 1100;
    return camera;
}

enum class Site { Red, Green, Blue };

inline Site siteOf(simulator::CameraDescription const& camera, uint32_t x, uint32_t y) {
    bool const redColumn = ((x ^ camera.bayerPhase) & 1) == 0;
    bool const redRow = ((y ^ camera.bayerPhase >> 1) & 1) == 0;
    if (redColumn != redRow)
        return Site::Green;
    return redRow ? Site::Red : Site::Blue;
}

/// A frame of the camera's samples in counts, its rows `spare` bytes longer than they need be.
inline simulator::Frame bayerFrame(simulator::CameraDescription const& camera,
                                   std::function<double(Site, uint32_t x, uint32_t y)> const& counts,
                                   uint32_t spare = 6) {
    simulator::Frame frame{.type = simulator::FrameType::Raw12,
                           .width = camera.width,
                           .height = int32_t(camera.height),
                           .pitch = camera.width * 2 + spare,
                           .pixels = QByteArray(int((camera.width * 2 + spare) * camera.height), '\x55')};
    for (uint32_t y = 0; y < camera.height; ++y)
        for (uint32_t x = 0; x < camera.width; ++x) {
            auto const sample = uint32_t(counts(siteOf(camera, x, y), x, y) + 0.5);
            int const at = int(y * frame.pitch + 2 * x);
            frame.pixels[at] = char(sample & 0xFF);
            frame.pixels[at + 1] = char(sample >> 8);
        }
    return frame;
}
