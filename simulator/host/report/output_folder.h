#pragma once

#include <QDir>
#include <QImage>
#include <QStringList>

namespace pictara {
/// The picture as an address that a page can show.
[[nodiscard]] QString dataUri(QImage const& picture);

/// Writes a run's files, each as a whole or not at all, and knows their names. What cannot be written is told
/// on the standard error stream.
class OutputFolder {
public:
    explicit OutputFolder(QString const& folder) : m_folder(folder) {}

    /// As PNG, whatever the name says.
    void savePicture(QString const& name, QImage const& picture);
    void saveText(QString const& name, QString const& text);
    void saveBytes(QString const& name, QByteArray const& bytes);
    /// A file that somebody else should have written.
    [[nodiscard]] bool expect(QString const& name);
    /// Removes those of the names that this run did not write, so that nothing of an earlier one is taken for
    /// its own.
    void removeOthers(QStringList const& names);
    /// Files that match the wildcard and hold the text, but are none of this run.
    [[nodiscard]] QStringList filesOfOthers(QString const& wildcard, QByteArray const& text) const;
    /// Absolute, whether it is there or not.
    [[nodiscard]] QString pathOf(QString const& name) const { return m_folder.absoluteFilePath(name); }
    [[nodiscard]] QStringList const& written() const { return m_written; }
    [[nodiscard]] bool failed() const { return m_failed; }

private:
    QDir m_folder;
    QStringList m_written;
    bool m_failed = false;
};
} // namespace pictara
