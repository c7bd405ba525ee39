#include "simulator/host/recording/placeholders.h"

#include "simulator/host/session/command_line.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
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

Placeholders placeholdersOf(Options const& options) {
    QString const program = QCoreApplication::applicationDirPath();
    Placeholders placeholders;
    placeholders.add(QDir(options.outputFolder).absolutePath(), "<output>");
    placeholders.add(options.iniFile.isEmpty() ? program + QStringLiteral("/pictara.ini")
                                               : QFileInfo(options.iniFile).absoluteFilePath(),
                     "<ini>");
    placeholders.add(program, "<program>");
    return placeholders;
}
} // namespace pictara
