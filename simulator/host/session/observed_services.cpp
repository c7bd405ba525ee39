#include "simulator/host/session/observed_services.h"

#include "simulator/boundary/call_text.h"
#include "simulator/host/session/boundary.h"
#include "simulator/host/session/service_desk.h"

namespace pictara {
namespace {
using simulator::callText;
using simulator::callTexts;

template <auto Slot>
struct Observed;

// `name` is set when the table is filled: a slot's function has no other place to keep it.
template <typename Result, typename... Arguments, Result (*HostServices::*Slot)(Arguments...)>
struct Observed<Slot> {
    static inline char const* name = "";

    static Result call(Arguments... arguments) {
        Crossing crossing(CallSource::Host, name, [&] { return callTexts(arguments...); });
        if constexpr (std::is_void_v<Result>) {
            (ServiceDesk::table().*Slot)(arguments...);
        } else {
            Result const result = (ServiceDesk::table().*Slot)(arguments...);
            if (crossing.isTold())
                crossing.setResult(callText(result));
            return result;
        }
    }
};

// Its answer is in the caller's buffer.
void readTextSetting(char const* key, char* buffer, uint32_t size, char const* fallback) {
    Crossing crossing(CallSource::Host, "readTextSetting", [&] { return callTexts(key, size, fallback); });
    ServiceDesk::table().readTextSetting(key, buffer, size, fallback);
    if (crossing.isTold() && buffer && size > 0)
        crossing.setResult(callText(static_cast<char const*>(buffer)));
}

template <auto Slot>
void observe(HostServices& table, char const* name) {
    Observed<Slot>::name = name;
    table.*Slot = Observed<Slot>::call;
}

HostServices observedTable() {
    HostServices table{};
#define PICTARA_SLOT(slot) observe<&HostServices::slot>(table, #slot)
    PICTARA_SLOT(readRegister);
    PICTARA_SLOT(slot1);
    PICTARA_SLOT(writeRegister);
    PICTARA_SLOT(writeListEntry);
    PICTARA_SLOT(readBusByte);
    PICTARA_SLOT(writeBusByte);
    PICTARA_SLOT(slot6);
    PICTARA_SLOT(announceRegister);
    PICTARA_SLOT(modalDialog);
    PICTARA_SLOT(readState);
    PICTARA_SLOT(setState);
    PICTARA_SLOT(slot11);
    PICTARA_SLOT(slot12);
    PICTARA_SLOT(slot13);
    PICTARA_SLOT(readOption);
    PICTARA_SLOT(writeOption);
    PICTARA_SLOT(applyPreset);
    PICTARA_SLOT(slot17);
    PICTARA_SLOT(readIntSetting);
    PICTARA_SLOT(writeIntSetting);
    PICTARA_SLOT(writeTextSetting);
    PICTARA_SLOT(slot22);
    PICTARA_SLOT(setupAnalysis);
    PICTARA_SLOT(slot24);
    PICTARA_SLOT(beginChanges);
    PICTARA_SLOT(endChanges);
    PICTARA_SLOT(slot27);
    PICTARA_SLOT(slot28);
    PICTARA_SLOT(slot29);
    PICTARA_SLOT(slot30);
    PICTARA_SLOT(slot31);
    PICTARA_SLOT(slot32);
#undef PICTARA_SLOT
    table.readTextSetting = readTextSetting;
    return table;
}
} // namespace

HostServices const& observedServices() {
    static HostServices const table = observedTable();
    return table;
}
} // namespace pictara
