#include "simulator/host/settings_store.h"

#include <QFile>
#include <QSaveFile>
#include <QtDebug>

namespace pictara {
namespace {

QByteArray encoded(QByteArray const& text) {
    return text.toPercentEncoding(" /\\:(),;\"'");
}

} // namespace

SettingsStore::SettingsStore(QString const& file) : m_file(file) {
    QFile in(file);
    if (!in.exists())
        return;
    m_onDisk = in.open(QIODevice::ReadOnly);
    while (m_onDisk && !in.atEnd()) {
        QByteArray line = in.readLine();
        while (line.endsWith('\n') || line.endsWith('\r'))
            line.chop(1);
        int const equals = line.indexOf('=');
        if (equals > 0)
            m_values[QByteArray::fromPercentEncoding(line.left(equals))] =
                QByteArray::fromPercentEncoding(line.mid(equals + 1));
    }
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
    QSaveFile out(m_file);
    bool written = out.open(QIODevice::WriteOnly);
    for (auto const& [key, value] : m_values)
        written = written && out.write(encoded(key) + '=' + encoded(value) + '\n') >= 0;
    written = written && out.flush() && out.commit();
    if (!written && m_onDisk)
        qWarning("pictara: the settings cannot be kept in %s", qUtf8Printable(m_file));
    m_onDisk = written;
}

} // namespace pictara
