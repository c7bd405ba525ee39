#include "simulator/host/settings_store.h"

#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QtDebug>

namespace pictara {
namespace {

QByteArray encoded(QByteArray const& text) {
    return text.toPercentEncoding(" /\\:(),;\"'");
}

} // namespace

SettingsStore::SettingsStore(QString const& file) : m_file(file) {
    if (!QFileInfo::exists(file))
        return;
    for (QByteArray line : files::read(file, files::kMostText, &m_fault).value_or(QByteArray()).split('\n')) {
        while (line.endsWith('\r'))
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
    QByteArray text;
    for (auto const& [key, value] : m_values)
        text += encoded(key) + '=' + encoded(value) + '\n';
    QString fault;
    if (files::replace(m_file, text, &fault))
        fault.clear();
    else if (isOnDisk())
        qWarning("pictara: the settings cannot be kept in %s: %s", qUtf8Printable(m_file),
                 qUtf8Printable(fault));
    m_fault = fault;
}

} // namespace pictara
