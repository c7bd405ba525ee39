#pragma once

// The two records that the host hands to the plug-in. Their layout is the host's and fixed byte for byte.

#include <cstddef>
#include <cstdint>

struct vy_Camera;

/// The attached sensor as the host describes it. Strings stay the host's; null stands for an empty text.
struct SensorRecord {
    char const* name;    ///< qualifies the per-sensor settings keys
    uint32_t sensorKind; ///< chooses the page and several rules
    uint32_t unread12[2];
    uint32_t variant;         ///< generation within a sensor kind
    char const* fileNamePart; ///< first part of the results file's name
    uint64_t unread32[3];
    vy_Camera* camera; ///< handle for the sensor-access library
};

static_assert(sizeof(SensorRecord) == 64);
static_assert(offsetof(SensorRecord, sensorKind) == 8);
static_assert(offsetof(SensorRecord, variant) == 20);
static_assert(offsetof(SensorRecord, fileNamePart) == 24);
static_assert(offsetof(SensorRecord, camera) == 56);

/// The host's services, one function pointer a slot. Any slot may be null. Strings are 8-bit,
/// zero-terminated, in the local code page. Use it through `Host` (host.h), which tolerates null slots.
struct HostServices {
    using Unused = void (*)();

    uint32_t (*readRegister)(char const* reg, char const* bitfield, uint32_t one);          // 0
    Unused slot1;                                                                           // 1
    void (*writeRegister)(char const* reg, char const* bitfield, uint32_t value);           // 2
    void (*writeListEntry)(uint32_t second, uint32_t zero1, uint32_t first, uint32_t zero2, // 3
                           uint32_t third);
    uint32_t (*readBusByte)(uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits); // 4
    void (*writeBusByte)(uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,        // 5
                         uint32_t dataBits);
    Unused slot6;                                                                                // 6
    void (*announceRegister)(char const* reg, uint32_t zero1, uint32_t zero2);                   // 7
    void (*modalDialog)(uint32_t opening);                                                       // 8
    int32_t (*readState)(char const* variable);                                                  // 9
    void (*setState)(char const* variable, int32_t value);                                       // 10
    Unused slot11, slot12, slot13;                                                               // 11-13
    char const* (*readOption)(char const* option);                                               // 14
    void (*writeOption)(char const* option, char const* value);                                  // 15
    void (*applyPreset)(uint32_t zero, char const* preset);                                      // 16
    Unused slot17;                                                                               // 17
    int32_t (*readIntSetting)(char const* key, int32_t fallback);                                // 18
    void (*writeIntSetting)(char const* key, int32_t value);                                     // 19
    void (*readTextSetting)(char const* key, char* buffer, uint32_t size, char const* fallback); // 20
    void (*writeTextSetting)(char const* key, char const* value);                                // 21
    Unused slot22;                                                                               // 22
    void (*setupAnalysis)(uint32_t one, uint32_t zero1, uint32_t value1, uint32_t zero2,         // 23
                          uint32_t value2);
    Unused slot24;                                         // 24
    void (*beginChanges)();                                // 25
    void (*endChanges)();                                  // 26
    Unused slot27, slot28, slot29, slot30, slot31, slot32; // 27-32
};

static_assert(sizeof(HostServices) == 264);
static_assert(offsetof(HostServices, writeRegister) == 16);
static_assert(offsetof(HostServices, readBusByte) == 32);
static_assert(offsetof(HostServices, announceRegister) == 56);
static_assert(offsetof(HostServices, setState) == 80);
static_assert(offsetof(HostServices, readOption) == 112);
static_assert(offsetof(HostServices, applyPreset) == 128);
static_assert(offsetof(HostServices, readIntSetting) == 144);
static_assert(offsetof(HostServices, writeTextSetting) == 168);
static_assert(offsetof(HostServices, setupAnalysis) == 184);
static_assert(offsetof(HostServices, beginChanges) == 200);
static_assert(offsetof(HostServices, endChanges) == 208);
