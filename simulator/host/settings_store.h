#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <map>

namespace pictara {

/// The host's settings in a text file, a "key=value" line each. Keys and values are 8-bit texts of any
/// content; what could break a line is percent-encoded. A change is on disk when the call returns.
class SettingsStore {
public:
    /// Reads the file; one that does not exist is an empty store.
    explicit SettingsStore(QString const& file);

    [[nodiscard]] QByteArray text(QByteArray const& key, QByteArray const& fallback) const;
    void setText(QByteArray const& key, QByteArray const& value);
    /// The fallback also stands for a value that is no integer.
    [[nodiscard]] int32_t integer(QByteArray const& key, int32_t fallback) const;
    void setInteger(QByteArray const& key, int32_t value);

    [[nodiscard]] std::map<QByteArray, QByteArray> const& all() const { return m_values; }
    /// False once the file could not be read or written; the settings are then kept in memory only.
    [[nodiscard]] bool isOnDisk() const { return m_fault.isEmpty(); }
    /// Why not.
    [[nodiscard]] QString const& fault() const { return m_fault; }

private:
    void save();

    QString m_file;
    std::map<QByteArray, QByteArray> m_values;
    QString m_fault;
};

} // namespace pictara
