#pragma once

#include <QByteArray>

/// The host's file name for grabbed pictures with a serial number in the place of its last part: the folder
/// stays, and the host goes on behind the "_". Texts are local 8-bit.
[[nodiscard]] QByteArray grabFileName(QByteArray const& present, QByteArray const& serialNumber);
