#include "apga_page/white_balance_gains.h"

#include "common/numbers.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"

#include <algorithm>
#include <string>

namespace kestra {
namespace {
constexpr double kFixedPointOne = 128; // 7 fraction bits
constexpr char kSets[kIlluminants] = {'L', 'M', 'R'};

std::string registerOf(char set, char const* what) { return std::string("CAM_AWB_CCM_") + set + what; }
} // namespace

bool hasWhiteBalanceGains(CapturedFrames const& captured) {
    return std::ranges::all_of(
        captured, [](CaptureRow const& row) { return row.state == kCaptured && row.redGain != 0; });
}

double quadraticThrough(std::array<double, kIlluminants> const& xs,
                        std::array<double, kIlluminants> const& ys, double x) {
    auto const [x0, x1, x2] = xs;
    auto const [y0, y1, y2] = ys;
    if (x0 == x1 || x1 == x2 || x0 == x2)
        return y0;
    double const a = (y2 - y1) / ((x2 - x1) * (x2 - x0)) - (y0 - y1) / ((x0 - x1) * (x2 - x0));
    double const b = ((y0 - y1) + a * (x1 * x1 - x0 * x0)) / (x0 - x1);
    double const c = y0 - a * x0 * x0 - b * x0;
    return a * x * x + b * x + c;
}

void storeWhiteBalanceGains(HeadboardEeprom& eeprom, char const* name, Host const& host,
                            CapturedFrames const& captured, IlluminantKelvins const& temperatures) {
    std::array<double, kIlluminants> setTemperatures{}, red{}, blue{};
    std::ranges::transform(kSets, setTemperatures.begin(), [&](char set) {
        return host.readRegister(registerOf(set, "_CTEMP").c_str(), "");
    });
    std::ranges::transform(captured, red.begin(), &CaptureRow::redGain);
    std::ranges::transform(captured, blue.begin(), &CaptureRow::blueGain);
    EepromRecord record = makeRegisterSet(kRecordCcm, eeprom.registerRoom(), name);
    auto const* setTemperature = setTemperatures.data();
    for (char const set : kSets) {
        auto const add = [&](char const* what, std::array<double, kIlluminants> const& gains) {
            double const gain = quadraticThrough(temperatures, gains, *setTemperature);
            (void)EepromAddRegister(eeprom, record, registerOf(set, what).c_str(), "",
                                    uint32_t(toInt32(gain * kFixedPointOne)));
        };
        add("_RG_GAIN", red);
        add("_BG_GAIN", blue);
        ++setTemperature;
    }
    // The older one bears the name as stored, which may be shorter than the one asked for.
    std::string const stored(record.name());
    // Appended even if the older one could not be deleted, and neither is asked for its result, deliberately:
    // the save's result is that of the shading registers.
    (void)EepromDeleteNth(eeprom, kRecordCcm, stored.c_str(), 0);
    (void)EepromAppendRecord(eeprom, record);
}
} // namespace kestra
