#include "simulator/host/session/service_desk.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/preset_file.h"

#include <QFile>
#include <QtDebug>

namespace pictara {
namespace {
ServiceDesk* current = nullptr;

constexpr uint32_t kRegisterSpace = 0;

// Options and settings are names of their own and share a file.
QByteArray keyOf(QByteArray const& option) { return "Option: " + option; }

template <auto Slot, typename Work>
struct Service;

// `name` is set when the table is filled: a slot's function has no other place to keep it.
template <typename Result, typename... Arguments, Result (*HostServices::*Slot)(Arguments...), typename Work>
struct Service<Slot, Work> {
    static inline char const* name = "";

    static Result call(Arguments... arguments) {
        return simulator::observed(SourceWatch{CallSource::Host}, simulator::Call(name, arguments...),
                                   [&]() -> Result {
                                       if (current)
                                           return Work{}(*current, arguments...);
                                       if constexpr (std::is_same_v<Result, char const*>)
                                           return "";
                                       else
                                           return Result();
                                   });
    }
};

template <auto Slot, typename Work>
void fill(HostServices& table, char const* name, Work) {
    Service<Slot, Work>::name = name;
    table.*Slot = Service<Slot, Work>::call;
}
} // namespace

QByteArray iniFileSetting(QString const& iniFile) {
#ifdef Q_OS_WIN
    return iniFile.toUtf8();
#else
    return QFile::encodeName(iniFile);
#endif
}

ServiceDesk::ServiceDesk(StateVariables& states, SettingsStore& settings, SensorRegisters& registers,
                         QString const& iniFile)
    : m_states(states), m_settings(settings), m_registers(registers), m_iniFile(iniFile) {
    current = this;
}

ServiceDesk::~ServiceDesk() { current = nullptr; }

HostServices const& ServiceDesk::table() {
    static HostServices const table = filledTable();
    return table;
}

// What the services do at a desk. A missing text counts as an empty one.
HostServices ServiceDesk::filledTable() {
    using Text = QByteArray const&;
    HostServices table{};
#define PICTARA_SERVICE(slot, ...) fill<&HostServices::slot>(table, #slot, __VA_ARGS__)
    PICTARA_SERVICE(readRegister, [](ServiceDesk& desk, Text reg, Text bitfield, uint32_t) {
        return desk.m_registers.read(reg.constData(), bitfield.constData());
    });
    PICTARA_SERVICE(writeRegister, [](ServiceDesk& desk, Text reg, Text bitfield, uint32_t value) {
        if (!desk.m_registers.write(reg.constData(), bitfield.constData(), value))
            qWarning("pictara: the sensor does not take %u in %s %s", value, reg.constData(),
                     bitfield.constData());
    });
    PICTARA_SERVICE(writeListEntry, [](ServiceDesk& desk, uint32_t address, uint32_t, uint32_t id, uint32_t,
                                       uint32_t value) {
        if (desk.m_registers.writeAt(kRegisterSpace, id, address, value)) {
            ++desk.m_listEntriesWritten;
            desk.m_listEntries[{id, address}] = value;
        } else {
            qWarning("pictara: the sensor does not take 0x%X at %u, 0x%X", value, id, address);
        }
    });
    PICTARA_SERVICE(readBusByte, [](ServiceDesk& desk, uint32_t device, uint32_t address,
                                    uint32_t addressBits, uint32_t dataBits) {
        return desk.m_registers.readBusByte(device, address, {addressBits, dataBits});
    });
    PICTARA_SERVICE(writeBusByte, [](ServiceDesk& desk, uint32_t device, uint32_t address, uint32_t value,
                                     uint32_t addressBits, uint32_t dataBits) {
        if (!desk.m_registers.writeBusByte(device, address, value, {addressBits, dataBits}))
            qWarning("pictara: the device 0x%X does not take a byte at 0x%X", device, address);
    });
    PICTARA_SERVICE(readState, [](ServiceDesk& desk, Text variable) { return desk.m_states.read(variable); });
    PICTARA_SERVICE(setState, [](ServiceDesk& desk, Text variable, int32_t value) {
        desk.m_states.set(variable, value);
    });
    PICTARA_SERVICE(readOption, [](ServiceDesk& desk, Text option) {
        // The answer stays valid while the option is not read again.
        return (desk.m_options[option] = desk.m_settings.text(keyOf(option), {})).constData();
    });
    PICTARA_SERVICE(writeOption, [](ServiceDesk& desk, Text option, Text value) {
        desk.m_settings.setText(keyOf(option), value);
    });
    PICTARA_SERVICE(applyPreset, [](ServiceDesk& desk, uint32_t, Text preset) {
        // Read anew each time: the user may edit the file while the host runs.
        if (!pictara::applyPreset(desk.m_iniFile, preset, desk.m_states, desk.m_registers))
            qWarning("pictara: there is no preset \"%s\"", preset.constData());
    });
    PICTARA_SERVICE(readIntSetting, [](ServiceDesk& desk, Text key, int32_t fallback) {
        return desk.m_settings.integer(key, fallback);
    });
    PICTARA_SERVICE(writeIntSetting, [](ServiceDesk& desk, Text key, int32_t value) {
        desk.m_settings.setText(key, QByteArray::number(value));
        if (key == "AnalysisDlg Show" && value == 1)
            desk.onGraph();
    });
    PICTARA_SERVICE(writeTextSetting,
                    [](ServiceDesk& desk, Text key, Text value) { desk.m_settings.setText(key, value); });
    PICTARA_SERVICE(beginChanges, [](ServiceDesk& desk) { desk.m_registers.beginChanges(); });
    PICTARA_SERVICE(endChanges, [](ServiceDesk& desk) { desk.m_registers.endChanges(); });
    // Its answer is in the caller's buffer.
    table.readTextSetting = [](char const* key, char* buffer, uint32_t size, char const* fallback) {
        simulator::observed(
            SourceWatch{CallSource::Host}, simulator::Call("readTextSetting", key, size, fallback),
            [&] {
                if (current && buffer && size > 0)
                    qstrncpy(buffer, current->textSetting(key, fallback).constData(), size);
            },
            [&] { return buffer && size > 0 ? simulator::callText(buffer) : QByteArray(); });
    };
    // This host marks no registers and locks nothing meanwhile; its graph shows what the person chooses.
#define PICTARA_UNUSED(slot) PICTARA_SERVICE(slot, [](auto&&...) {})
    PICTARA_UNUSED(announceRegister), PICTARA_UNUSED(modalDialog), PICTARA_UNUSED(setupAnalysis);
    PICTARA_UNUSED(slot1), PICTARA_UNUSED(slot6), PICTARA_UNUSED(slot11), PICTARA_UNUSED(slot12);
    PICTARA_UNUSED(slot13), PICTARA_UNUSED(slot17), PICTARA_UNUSED(slot22), PICTARA_UNUSED(slot24);
    PICTARA_UNUSED(slot27), PICTARA_UNUSED(slot28), PICTARA_UNUSED(slot29), PICTARA_UNUSED(slot30);
    PICTARA_UNUSED(slot31), PICTARA_UNUSED(slot32);
#undef PICTARA_SERVICE
#undef PICTARA_UNUSED
    return table;
}

QByteArray ServiceDesk::textSetting(QByteArray const& key, QByteArray const& fallback) const {
    return key == "IniFileName" ? iniFileSetting(m_iniFile) : m_settings.text(key, fallback);
}
} // namespace pictara
