#include "simulator/host/session/settings_store.h"

#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QtDebug>

namespace pictara {
namespace {
QByteArray encoded(QByteArray const& text) { return text.toPercentEncoding(" /\\:(),;\"'"); }
} // namespace

bool SettingsStore::read(QString* error) {
    if (!QFileInfo::exists(m_file))
        return true;
    auto const text = files::read(m_file, files::kMostText, error);
    if (!text)
        return false;
    for (QByteArray line : text->split('\n')) {
        while (line.endsWith('\r'))
            line.chop(1);
        int const equals = line.indexOf('=');
        if (equals > 0)
            m_values[QByteArray::fromPercentEncoding(line.left(equals))] =
                QByteArray::fromPercentEncoding(line.mid(equals + 1));
    }
    return true;
}

QByteArray SettingsStore::text(QByteArray const& key, QByteArray const& fallback) const {
    auto const found = m_values.find(key);
    return found == m_values.end() ? fallback : found->second;
}

void SettingsStore::setText(QByteArray const& key, QByteArray const& value) {
    auto const found = m_values.find(key);
    if (found != m_values.end() && found->second == value)
        return;
    m_values[key] = value;
    save();
}

int32_t SettingsStore::integer(QByteArray const& key, int32_t fallback) const {
    bool ok = false;
    int32_t const value = text(key, {}).toInt(&ok);
    return ok ? value : fallback;
}

void SettingsStore::setInteger(QByteArray const& key, int32_t value) {
    setText(key, QByteArray::number(value));
}

void SettingsStore::save() {
    QByteArray text;
    for (auto const& [key, value] : m_values)
        text += encoded(key) + '=' + encoded(value) + '\n';
    QString error;
    bool const isWritten = files::replace(m_file, text, &error);
    if (!isWritten && m_isOnDisk)
        qWarning("pictara: the settings cannot be kept in %s: %s", qUtf8Printable(m_file),
                 qUtf8Printable(error));
    m_isOnDisk = isWritten;
}
} // namespace pictara
