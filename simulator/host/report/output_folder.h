#pragma once

#include <QDir>
#include <QImage>
#include <QStringList>

namespace pictara {
/// Writes a run's files, each as a whole or not at all, and knows their names. What cannot be written is told
/// on the standard error stream.
class OutputFolder {
public:
    explicit OutputFolder(QString const& folder) : m_folder(folder) {}

    /// As PNG, whatever the name says.
    void savePicture(QString const& name, QImage const& picture);
    void saveBytes(QString const& name, QByteArray const& bytes);
    /// Removes those of the names that this run did not write, so that nothing of an earlier one is taken for
    /// its own.
    void removeOthers(QStringList const& names);
    /// Absolute, whether it is there or not.
    [[nodiscard]] QString pathOf(QString const& name) const { return m_folder.absoluteFilePath(name); }
    [[nodiscard]] bool failed() const { return m_failed; }

private:
    QDir m_folder;
    QStringList m_written;
    bool m_failed = false;
};
} // namespace pictara
