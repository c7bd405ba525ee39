#pragma once

#include <QByteArray>
#include <QString>
#include <utility>
#include <vector>

namespace pictara {
struct Options;

/// Names for what differs from machine to machine, so that recordings can be compared.
class Placeholders {
public:
    /// The UTF-8 path, in the system's and in Qt's way of writing it, is shown as `name`.
    void add(QString const& path, QByteArray const& name);
    [[nodiscard]] QByteArray hide(QByteArray text) const;
    [[nodiscard]] QByteArray reveal(QByteArray text) const;

private:
    std::vector<std::pair<QByteArray, QByteArray>> m_names; ///< longest path first
};

/// Of a session with these options: "<output>", "<ini>" and "<program>".
[[nodiscard]] Placeholders placeholdersOf(Options const& options);
} // namespace pictara
