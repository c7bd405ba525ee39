#include "simulator/host/recording/placeholders.h"

#include <QDir>
#include <algorithm>

namespace pictara {
void Placeholders::add(QString const& path, QByteArray const& name) {
    for (QString const& written : {QDir::toNativeSeparators(path), path})
        m_names.emplace_back(written.toUtf8(), name);
    // A file is looked for before the folder that it lies in.
    std::stable_sort(m_names.begin(), m_names.end(),
                     [](auto const& a, auto const& b) { return a.first.size() > b.first.size(); });
}

QByteArray Placeholders::hide(QByteArray text) const {
    for (auto const& [path, name] : m_names)
        text.replace(path, name);
    return text;
}

QByteArray Placeholders::reveal(QByteArray text) const {
    for (auto const& [path, name] : m_names)
        text.replace(name, path);
    return text;
}
} // namespace pictara
