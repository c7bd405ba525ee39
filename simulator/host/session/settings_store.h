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
    /// Empty until the file was read.
    explicit SettingsStore(QString const& file) : m_file(file) {}

    /// A file that does not exist holds nothing. False with the reason in `error`.
    [[nodiscard]] bool read(QString* error);

    [[nodiscard]] QByteArray text(QByteArray const& key, QByteArray const& fallback) const;
    void setText(QByteArray const& key, QByteArray const& value);
    /// The fallback also stands for a value that is no integer.
    [[nodiscard]] int32_t integer(QByteArray const& key, int32_t fallback) const;
    void setInteger(QByteArray const& key, int32_t value);

private:
    void save();

    QString m_file;
    std::map<QByteArray, QByteArray> m_values;
    bool m_isOnDisk = true; ///< the last change; else it is kept in memory only, and that was logged
};
} // namespace pictara
