#include "simulator/host/session/service_desk.h"

#include "simulator/host/session/preset_file.h"

#include <QFile>
#include <QtDebug>
#include <algorithm>
#include <cstring>

namespace pictara {
namespace {
ServiceDesk* current = nullptr;

constexpr uint32_t kRegisterSpace = 0;

char const* textOrEmpty(char const* text) { return text ? text : ""; }

// Options and settings are names of their own and share a file.
QByteArray keyOf(char const* option) { return QByteArrayLiteral("Option: ") + option; }
} // namespace

QByteArray iniFileSetting(QString const& iniFile) {
#ifdef Q_OS_WIN
    return iniFile.toUtf8();
#else
    return QFile::encodeName(iniFile);
#endif
}

struct ServiceFunctions {
    // For the slots that this host has no use for.
    static void ignore() {}

    static uint32_t readRegister(char const* reg, char const* bitfield, uint32_t) {
        return current && reg ? current->m_registers.read(reg, textOrEmpty(bitfield)) : 0;
    }

    static void writeRegister(char const* reg, char const* bitfield, uint32_t value) {
        if (current && reg && !current->m_registers.write(reg, textOrEmpty(bitfield), value))
            qWarning("pictara: the sensor does not take %u in %s %s", value, reg, textOrEmpty(bitfield));
    }

    static void writeListEntry(uint32_t address, uint32_t, uint32_t id, uint32_t, uint32_t value) {
        if (!current)
            return;
        if (current->m_registers.writeAt(kRegisterSpace, id, address, value)) {
            ++current->m_listEntriesWritten;
            current->m_listEntries[{id, address}] = value;
        } else {
            qWarning("pictara: the sensor does not take 0x%X at %u, 0x%X", value, id, address);
        }
    }

    static uint32_t readBusByte(uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        return current ? current->m_registers.readBusByte(device, address, {addressBits, dataBits}) : 0;
    }

    static void writeBusByte(uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                             uint32_t dataBits) {
        if (current && !current->m_registers.writeBusByte(device, address, value, {addressBits, dataBits}))
            qWarning("pictara: the device 0x%X does not take a byte at 0x%X", device, address);
    }

    // This host marks no registers, locks nothing while a dialog of the plug-in is open and analyses nothing.
    static void announceRegister(char const*, uint32_t, uint32_t) {}
    static void modalDialog(uint32_t) {}
    static void setupAnalysis(uint32_t, uint32_t, uint32_t, uint32_t, uint32_t) {}

    static int32_t readState(char const* variable) {
        return current && variable ? current->m_states.read(variable) : 0;
    }

    static void setState(char const* variable, int32_t value) {
        if (current && variable)
            current->m_states.set(variable, value);
    }

    static char const* readOption(char const* option) {
        if (!current || !option)
            return "";
        // The answer stays valid while the option is not read again.
        QByteArray& answer = current->m_options[option];
        answer = current->m_settings.text(keyOf(option), {});
        return answer.constData();
    }

    static void writeOption(char const* option, char const* value) {
        if (current && option)
            current->m_settings.setText(keyOf(option), textOrEmpty(value));
    }

    static void applyPreset(uint32_t, char const* preset) {
        if (!current || !preset)
            return;
        // Read anew each time: the user may edit the file while the host runs.
        auto const lines = readPreset(current->m_iniFile, preset);
        if (!lines)
            qWarning("pictara: there is no preset \"%s\"", preset);
        pictara::applyPreset(lines.value_or(QList<PresetLine>()), current->m_states, current->m_registers);
    }

    static int32_t readIntSetting(char const* key, int32_t fallback) {
        return current && key ? current->m_settings.integer(key, fallback) : fallback;
    }

    static void writeIntSetting(char const* key, int32_t value) {
        if (current && key)
            current->m_settings.setInteger(key, value);
    }

    static void readTextSetting(char const* key, char* buffer, uint32_t size, char const* fallback) {
        if (!buffer || size == 0)
            return;
        QByteArray value = textOrEmpty(fallback);
        if (current && key)
            value = qstrcmp(key, "IniFileName") == 0 ? iniFileSetting(current->m_iniFile)
                                                     : current->m_settings.text(key, value);
        size_t const length = std::min(size_t(value.size()), size_t(size) - 1);
        std::memcpy(buffer, value.constData(), length);
        buffer[length] = '\0';
    }

    static void writeTextSetting(char const* key, char const* value) {
        if (current && key)
            current->m_settings.setText(key, textOrEmpty(value));
    }

    static void beginChanges() {
        if (current)
            current->m_registers.beginChanges();
    }

    static void endChanges() {
        if (current)
            current->m_registers.endChanges();
    }
};

ServiceDesk::ServiceDesk(StateVariables& states, SettingsStore& settings, SensorRegisters& registers,
                         QString const& iniFile)
    : m_states(states), m_settings(settings), m_registers(registers), m_iniFile(iniFile) {
    current = this;
}

ServiceDesk::~ServiceDesk() { current = nullptr; }

HostServices const& ServiceDesk::table() {
    using F = ServiceFunctions;
    static constexpr HostServices kServices = {
        .readRegister = F::readRegister,
        .slot1 = F::ignore,
        .writeRegister = F::writeRegister,
        .writeListEntry = F::writeListEntry,
        .readBusByte = F::readBusByte,
        .writeBusByte = F::writeBusByte,
        .slot6 = F::ignore,
        .announceRegister = F::announceRegister,
        .modalDialog = F::modalDialog,
        .readState = F::readState,
        .setState = F::setState,
        .slot11 = F::ignore,
        .slot12 = F::ignore,
        .slot13 = F::ignore,
        .readOption = F::readOption,
        .writeOption = F::writeOption,
        .applyPreset = F::applyPreset,
        .slot17 = F::ignore,
        .readIntSetting = F::readIntSetting,
        .writeIntSetting = F::writeIntSetting,
        .readTextSetting = F::readTextSetting,
        .writeTextSetting = F::writeTextSetting,
        .slot22 = F::ignore,
        .setupAnalysis = F::setupAnalysis,
        .slot24 = F::ignore,
        .beginChanges = F::beginChanges,
        .endChanges = F::endChanges,
        .slot27 = F::ignore,
        .slot28 = F::ignore,
        .slot29 = F::ignore,
        .slot30 = F::ignore,
        .slot31 = F::ignore,
        .slot32 = F::ignore,
    };
    return kServices;
}
} // namespace pictara
