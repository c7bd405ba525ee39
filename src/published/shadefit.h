#pragma once

// Published interface of the lens-shading calibration library `shadefit`: plain C, natural alignment, 8-bit
// zero-terminated strings.

#include <cstddef>
#include <cstdint>

extern "C" {

/// Opaque calibration: input image and solution.
struct sf_Handle;

/// One register of a solution: page or id, register address, value.
struct sf_RegEntry {
    uint32_t first;  ///< page or id
    uint32_t second; ///< register address
    uint32_t third;  ///< value
};

/// The registers of a solution in the order in which they are to be written.
struct sf_RegList {
    int32_t count;
    sf_RegEntry const* entries;
};

/// How a YCbCr image is coded.
struct sf_YcbcrInput {
    uint64_t size;              ///< of this record in bytes, 48
    uint32_t srgbStandard;      ///< the host's "sRGB Color Standard"
    uint32_t componentOrder[4]; ///< order of the components in the stream: 0, 1, 2, 3
    uint32_t lumaLow;
    uint32_t lumaHigh;
    uint32_t chromaHigh;
    uint32_t chromaZero;  ///< 128
    uint32_t orientation; ///< the host's "Sensor Orientation"
};

/// What solution is asked for.
struct sf_SolutionParams {
    uint64_t size;           ///< of this record in bytes, 104
    uint32_t falloffPercent; ///< luminance that the corners may keep, per cent of the centre's
    uint32_t parameter12;    ///< 24
    uint32_t parameter16;    ///< 1
    uint32_t parameter20;    ///< 400
    uint32_t parameter24;    ///< 300
    uint32_t parameter28;    ///< 0
    double parameter32;      ///< 0.0
    double parameter40;      ///< 1.0
    uint32_t parameter48;    ///< 0
    uint32_t radius;         ///< the page's radius setting; 0 = the whole image
    uint32_t reserved[12];
};

/// What adaptive or automatic solution is asked for.
struct sf_ApgaParams {
    uint64_t size; ///< of this record in bytes, 48
    uint32_t falloffPercent;
    uint32_t colourTemperature; ///< kelvin
    uint32_t illuminantSlot;    ///< 2 left (incandescent), 3 middle (fluorescent), 4 right (daylight), 0 none
    uint32_t parameter20;       ///< 0
    uint32_t parameter24;       ///< 0
    uint32_t parameter28;       ///< 400
    uint32_t parameter32;       ///< 300
    uint32_t parameter36;       ///< 0
    uint32_t radius;
    uint32_t parameter44; ///< 0
};

/// A new calibration, or null when the library has no data for the sensor. The caller destroys it.
sf_Handle* sf_Create(uint32_t sensorKind, uint32_t variant, int32_t minusOne);
sf_Handle* sf_Create2(void const* sensorData, uint32_t sensorKind, uint32_t variant, uint32_t allBits);

/// Hands over a frame: 0 = refused, anything else accepted.
int sf_SetInputImage2(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height, uint32_t bits,
                      uint32_t bayerPhase, uint32_t orientation, uint32_t zero, int32_t minusOne1,
                      int32_t minusOne2);
int sf_SetInputImageYcbcr(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
                          sf_YcbcrInput const* input, int32_t minusOne1, int32_t minusOne2);

/// 0 = solved, -2 = incompatible image size, anything else another failure.
int sf_FindSolution(sf_Handle* handle, sf_SolutionParams const* params);
int sf_FindApga(sf_Handle* handle, sf_ApgaParams const* params);
int sf_FindAutoPga(sf_Handle* handle, sf_ApgaParams const* params);

/// The solution's registers; null on failure. Owned by the handle, valid until the next call on it.
sf_RegList const* sf_DumpRegList(sf_Handle* handle);

/// Writes the solution as preset lines: 0 = written.
int sf_DumpRegFile(sf_Handle* handle, char const* path, uint32_t format, uint32_t zero1, uint32_t zero2);

void sf_Destroy(sf_Handle* handle);

} // extern "C"

static_assert(sizeof(sf_RegEntry) == 12);
static_assert(sizeof(sf_RegList) == 16);
static_assert(offsetof(sf_RegList, entries) == 8);
static_assert(sizeof(sf_YcbcrInput) == 48);
static_assert(offsetof(sf_YcbcrInput, componentOrder) == 12);
static_assert(offsetof(sf_YcbcrInput, lumaLow) == 28);
static_assert(offsetof(sf_YcbcrInput, orientation) == 44);
static_assert(sizeof(sf_SolutionParams) == 104);
static_assert(offsetof(sf_SolutionParams, falloffPercent) == 8);
static_assert(offsetof(sf_SolutionParams, parameter32) == 32);
static_assert(offsetof(sf_SolutionParams, parameter40) == 40);
static_assert(offsetof(sf_SolutionParams, radius) == 52);
static_assert(sizeof(sf_ApgaParams) == 48);
static_assert(offsetof(sf_ApgaParams, colourTemperature) == 12);
static_assert(offsetof(sf_ApgaParams, parameter28) == 28);
static_assert(offsetof(sf_ApgaParams, radius) == 40);
