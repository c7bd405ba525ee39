#include "config_page/identification.h"

#include "common/system.h"

#include <algorithm>

namespace kestra {
namespace {
constexpr std::chrono::milliseconds kAccessPause{100};

constexpr uint32_t kAddresses[] = {8191, 8177, 8179, 8180}; // in the EEPROM, by `Identification`

constexpr ProductCode kUnspecified = {"Unspecified", kUnspecifiedCode};

constexpr ProductCode kPartNumbers[] = {
    {"KV0134 colour (KV0134-C12)", 1},
    {"KV0134 monochrome (KV0134-M12)", 2},
    {"KV0231 colour (KV0231-C10)", 3},
    {"KV0231 near infrared (KV0231-N10)", 4},
    {"KV0512 colour (KV0512-C12)", 8},
    {"KV0820 colour (KV0820-C12)", 12},
    {"Corvo 1.3 module (CM0134-A)", 64, InterfaceFamily::Module},
    {"Corvo 2.3 module (CM0231-A)", 65, InterfaceFamily::Module},
    {"Engineering sample (KVX)", 254},
    kUnspecified,
};

constexpr ProductCode kSensorInterfaces[] = {{"Parallel", 1}, {"MIPI", 2}, {"Tavlink", 3}, kUnspecified};

constexpr ProductCode kModuleInterfaces[] = {
    {"Corvo Parallel", kModuleParallelCode}, {"Corvo MIPI", 18}, kUnspecified};

constexpr ProductCode kMarketIndicators[] = {{"General purpose", 1}, {"Automotive", 2}, {"Industrial", 3},
                                             {"Medical", 4},         {"Mobile", 5},     kUnspecified};

constexpr ProductCode kSpecialProcessings[] = {{"None", 1},
                                               {"Cover glass removed", 2},
                                               {"Microlenses shifted", 3},
                                               {"Colour filters omitted", 4},
                                               kUnspecified};
} // namespace

uint32_t readIdentification(Host const& host, uint32_t device, Identification field) {
    uint32_t const code = host.readBusByte(device, kAddresses[size_t(field)]);
    pauseFor(kAccessPause);
    return code;
}

void writeIdentification(Host const& host, uint32_t device, Identification field, uint8_t code) {
    host.writeBusByte(device, kAddresses[size_t(field)], code);
    pauseFor(kAccessPause);
}

QString identificationText(uint32_t code) {
    // To Qt "%02" is a marker's number and no width: 1 is told as 0x1, deliberately, as the text is only read
    // by people.
    return QStringLiteral("0x%02").arg(code, 0, 16);
}

std::span<ProductCode const> productCodes(Identification field, InterfaceFamily family) {
    static constexpr std::span<ProductCode const> kLists[] = {kPartNumbers, kSensorInterfaces,
                                                              kMarketIndicators, kSpecialProcessings};
    bool const isOfModule = field == Identification::Interface && family == InterfaceFamily::Module;
    return isOfModule ? kModuleInterfaces : kLists[size_t(field)];
}

InterfaceFamily interfaceFamily(uint32_t partNumberCode) {
    auto const* const row = std::ranges::find(kPartNumbers, partNumberCode, &ProductCode::code);
    return row == std::end(kPartNumbers) ? InterfaceFamily::Sensor : row->interfaces;
}
} // namespace kestra
