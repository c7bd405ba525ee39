#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/// Writes a profile that is the default one with fewer pixels and gives its path; `more` are further keys,
/// with a leading comma. Lens and colours are the same, and a run takes a fraction of the time.
inline QString writeSmallProfile(QString const& folder, QByteArray const& more = {}) {
    QString const name = folder + QStringLiteral("/small.json");
    QFile file(name);
    QByteArray const size = R"({"width": 480, "height": 270})";
    QByteArray const text =
        R"({"base": "poly-12bit", "array": )" + size + R"(, "layout": )" + size + more + "}";
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() ? name : QString();
}
