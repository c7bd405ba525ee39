#pragma once

#include <QSettings>
#include <cstdint>

namespace pictara {
/// The host's settings in an ini file. Keys and values are 8-bit texts of any content. A change is on disk
/// when the call returns; what cannot be written is logged and kept in memory.
class SettingsStore {
public:
    explicit SettingsStore(QString const& file) : m_settings(file, QSettings::IniFormat) {}

    /// False for a file that is there and cannot be read.
    [[nodiscard]] bool isReadable() const { return m_settings.status() == QSettings::NoError; }

    [[nodiscard]] QByteArray text(QByteArray const& key, QByteArray const& fallback) const {
        return m_settings.value(nameOf(key), fallback).toByteArray();
    }
    void setText(QByteArray const& key, QByteArray const& value) {
        if (m_settings.contains(nameOf(key)) && text(key, {}) == value)
            return;
        m_settings.setValue(nameOf(key), value);
        m_settings.sync();
        if (!isReadable())
            qWarning("pictara: the settings cannot be kept in %s", qUtf8Printable(m_settings.fileName()));
    }
    /// The fallback also stands for a value that is no integer.
    [[nodiscard]] int32_t integer(QByteArray const& key, int32_t fallback) const {
        bool ok = false;
        int32_t const value = text(key, {}).toInt(&ok);
        return ok ? value : fallback;
    }

private:
    // Percent-encoded, as "/" and "\" in a name would make groups.
    [[nodiscard]] static QString nameOf(QByteArray const& key) {
        return QString::fromLatin1(key.toPercentEncoding(" "));
    }

    QSettings m_settings;
};
} // namespace pictara
