#pragma once

#include "published/host_records.h"
#include "simulator/host/session/sensor_registers.h"
#include "simulator/host/session/settings_store.h"
#include "simulator/host/session/state_variables.h"

#include <QString>
#include <functional>
#include <map>
#include <utility>

namespace pictara {
/// The setting "IniFileName" for a file. Plug-ins read it as UTF-8 on Windows, whatever the code page.
[[nodiscard]] QByteArray iniFileSetting(QString const& iniFile);

/// Serves the plug-in: the table of service functions and what they act on. The functions have no context
/// pointer, so one desk at a time is open; without one they do nothing and answer 0 or an empty text.
class ServiceDesk {
public:
    /// What is handed in outlives the desk. `iniFile` is what the setting "IniFileName" answers.
    ServiceDesk(StateVariables& states, SettingsStore& settings, SensorRegisters& registers,
                QString const& iniFile);
    ~ServiceDesk();
    Q_DISABLE_COPY(ServiceDesk)

    /// All 33 functions; each call is told to the boundary's observers.
    [[nodiscard]] static HostServices const& table();

    /// Called when the plug-in asks for the host's graph.
    std::function<void()> onGraph = [] {};
    /// Register-list entries that reached the sensor.
    [[nodiscard]] uint64_t listEntriesWritten() const { return m_listEntriesWritten; }
    /// What the last of them left, by id and address.
    [[nodiscard]] std::map<std::pair<uint32_t, uint32_t>, uint32_t> const& listEntries() const {
        return m_listEntries;
    }

private:
    [[nodiscard]] static HostServices filledTable();
    [[nodiscard]] QByteArray textSetting(QByteArray const& key, QByteArray const& fallback) const;

    StateVariables& m_states;
    SettingsStore& m_settings;
    SensorRegisters& m_registers;
    QString const m_iniFile;
    std::map<QByteArray, QByteArray> m_options; ///< what the plug-in was answered
    uint64_t m_listEntriesWritten = 0;
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> m_listEntries;
};
} // namespace pictara
