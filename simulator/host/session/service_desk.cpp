#include "simulator/host/session/service_desk.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/preset_file.h"

#include <QFile>
#include <QtDebug>
#include <algorithm>
#include <cstring>

namespace pictara {
namespace {
ServiceDesk* current = nullptr;

constexpr uint32_t kRegisterSpace = 0;

// Options and settings are names of their own and share a file.
QByteArray keyOf(QByteArray const& option) { return "Option: " + option; }
} // namespace

QByteArray iniFileSetting(QString const& iniFile) {
#ifdef Q_OS_WIN
    return iniFile.toUtf8();
#else
    return QFile::encodeName(iniFile);
#endif
}

// What the services do at a desk. A missing text counts as an empty one.
struct Services {
    uint32_t readRegister(QByteArray const& reg, QByteArray const& bitfield, uint32_t) {
        return desk.m_registers.read(reg.constData(), bitfield.constData());
    }

    void writeRegister(QByteArray const& reg, QByteArray const& bitfield, uint32_t value) {
        if (!desk.m_registers.write(reg.constData(), bitfield.constData(), value))
            qWarning("pictara: the sensor does not take %u in %s %s", value, reg.constData(),
                     bitfield.constData());
    }

    void writeListEntry(uint32_t address, uint32_t, uint32_t id, uint32_t, uint32_t value) {
        if (desk.m_registers.writeAt(kRegisterSpace, id, address, value)) {
            ++desk.m_listEntriesWritten;
            desk.m_listEntries[{id, address}] = value;
        } else {
            qWarning("pictara: the sensor does not take 0x%X at %u, 0x%X", value, id, address);
        }
    }

    uint32_t readBusByte(uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        return desk.m_registers.readBusByte(device, address, {addressBits, dataBits});
    }

    void writeBusByte(uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                      uint32_t dataBits) {
        if (!desk.m_registers.writeBusByte(device, address, value, {addressBits, dataBits}))
            qWarning("pictara: the device 0x%X does not take a byte at 0x%X", device, address);
    }

    int32_t readState(QByteArray const& variable) { return desk.m_states.read(variable); }
    void setState(QByteArray const& variable, int32_t value) { desk.m_states.set(variable, value); }

    char const* readOption(QByteArray const& option) {
        // The answer stays valid while the option is not read again.
        return (desk.m_options[option] = desk.m_settings.text(keyOf(option), {})).constData();
    }

    void writeOption(QByteArray const& option, QByteArray const& value) {
        desk.m_settings.setText(keyOf(option), value);
    }

    void applyPreset(uint32_t, QByteArray const& preset) {
        // Read anew each time: the user may edit the file while the host runs.
        if (!pictara::applyPreset(desk.m_iniFile, preset, desk.m_states, desk.m_registers))
            qWarning("pictara: there is no preset \"%s\"", preset.constData());
    }

    int32_t readIntSetting(QByteArray const& key, int32_t fallback) {
        return desk.m_settings.integer(key, fallback);
    }

    void writeIntSetting(QByteArray const& key, int32_t value) { desk.m_settings.setInteger(key, value); }

    void readTextSetting(QByteArray const& key, char* buffer, uint32_t size, QByteArray const& fallback) {
        if (!buffer || size == 0)
            return;
        QByteArray const value =
            key == "IniFileName" ? iniFileSetting(desk.m_iniFile) : desk.m_settings.text(key, fallback);
        size_t const length = std::min(size_t(value.size()), size_t(size) - 1);
        std::memcpy(buffer, value.constData(), length);
        buffer[length] = '\0';
    }

    void writeTextSetting(QByteArray const& key, QByteArray const& value) {
        desk.m_settings.setText(key, value);
    }

    void beginChanges() { desk.m_registers.beginChanges(); }
    void endChanges() { desk.m_registers.endChanges(); }

    ServiceDesk& desk;
};

namespace {
template <auto Slot, auto Function>
struct Service;

// `name` is set when the table is filled: a slot's function has no other place to keep it.
template <typename Result, typename... Arguments, Result (*HostServices::*Slot)(Arguments...), auto Function>
struct Service<Slot, Function> {
    static inline char const* name = "";

    static Result call(Arguments... arguments) {
        return simulator::observed(SourceWatch{CallSource::Host}, simulator::Call(name, arguments...),
                                   [&]() -> Result {
                                       if constexpr (!std::is_null_pointer_v<decltype(Function)>)
                                           if (current)
                                               return (Services{*current}.*Function)(arguments...);
                                       if constexpr (std::is_same_v<Result, char const*>)
                                           return "";
                                       else
                                           return Result();
                                   });
    }
};

// Its answer is in the caller's buffer.
void readTextSetting(char const* key, char* buffer, uint32_t size, char const* fallback) {
    simulator::observed(
        SourceWatch{CallSource::Host}, simulator::Call("readTextSetting", key, size, fallback),
        [&] {
            if (current)
                Services{*current}.readTextSetting(key, buffer, size, fallback);
        },
        [&] { return buffer && size > 0 ? simulator::callText(buffer) : QByteArray(); });
}

template <auto Slot, auto Function>
void fill(HostServices& table, char const* name) {
    Service<Slot, Function>::name = name;
    table.*Slot = Service<Slot, Function>::call;
}

HostServices filledTable() {
    HostServices table{};
#define PICTARA_SERVICE(slot) fill<&HostServices::slot, &Services::slot>(table, #slot)
#define PICTARA_UNUSED(slot) fill<&HostServices::slot, nullptr>(table, #slot)
    PICTARA_SERVICE(readRegister);
    PICTARA_SERVICE(writeRegister);
    PICTARA_SERVICE(writeListEntry);
    PICTARA_SERVICE(readBusByte);
    PICTARA_SERVICE(writeBusByte);
    PICTARA_SERVICE(readState);
    PICTARA_SERVICE(setState);
    PICTARA_SERVICE(readOption);
    PICTARA_SERVICE(writeOption);
    PICTARA_SERVICE(applyPreset);
    PICTARA_SERVICE(readIntSetting);
    PICTARA_SERVICE(writeIntSetting);
    PICTARA_SERVICE(writeTextSetting);
    PICTARA_SERVICE(beginChanges);
    PICTARA_SERVICE(endChanges);
    table.readTextSetting = readTextSetting;
    // This host marks no registers, locks nothing while a dialog of the plug-in is open and analyses nothing.
    PICTARA_UNUSED(announceRegister), PICTARA_UNUSED(modalDialog), PICTARA_UNUSED(setupAnalysis);
    PICTARA_UNUSED(slot1), PICTARA_UNUSED(slot6), PICTARA_UNUSED(slot11), PICTARA_UNUSED(slot12);
    PICTARA_UNUSED(slot13), PICTARA_UNUSED(slot17), PICTARA_UNUSED(slot22), PICTARA_UNUSED(slot24);
    PICTARA_UNUSED(slot27), PICTARA_UNUSED(slot28), PICTARA_UNUSED(slot29), PICTARA_UNUSED(slot30);
    PICTARA_UNUSED(slot31), PICTARA_UNUSED(slot32);
#undef PICTARA_SERVICE
#undef PICTARA_UNUSED
    return table;
}
} // namespace

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
} // namespace pictara
