#include "config_page/serial_number.h"

#include "common/system.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"

#include <algorithm>
#include <array>

namespace kestra {
namespace {
constexpr int kLength = 10;
constexpr int kCountLength = 3;
constexpr int kHighestCount = 999;
constexpr size_t kRecordBuffer = 1000; // header included

bool isDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

// A count that is no number counts as 0.
int countOf(QString const& text) { return std::all_of(text.begin(), text.end(), isDigit) ? text.toInt() : 0; }

QString numberInImage(HeadboardEeprom& eeprom) {
    std::array<uint8_t, kRecordBuffer> record{};
    int32_t const size = EepromReadNth(eeprom, kRecordHeadboardId, nullptr, 0, record);
    if (size < kRecordHead)
        return {};
    auto const* const text = reinterpret_cast<char const*>(record.data()) + kRecordHead;
    return QString::fromLocal8Bit(text, int(qstrnlen(text, uint(size - kRecordHead))));
}

EepromStatus replaceInImage(HeadboardEeprom& eeprom, QByteArray const& number) {
    auto const length = int32_t(number.size() + 1); // the closing zero belongs to it
    EepromRecord record = EepromNewRecord(kRecordHeadboardId, length, 0);
    auto const* const bytes = reinterpret_cast<uint8_t const*>(number.constData());
    // Room is made sure of first: without it the replacing would only take the older number away.
    int32_t const available = EepromFreeSpace(eeprom);
    int32_t const older = EepromReadNth(eeprom, kRecordHeadboardId, nullptr, 0, {});
    if (available < 0)
        return EepromStatus(available);
    bool const fits = record.append({bytes, size_t(length)}) &&
                      int64_t(record.bytes().size()) < int64_t{available} + std::max(older, 0);
    return fits ? EepromReplaceRecord(eeprom, record) : kEepromNoRoom;
}

int lastOf(char separator, QByteArray const& path) {
    int last = -1;
    for (int i = 0; i < path.size(); i += beginsTwoByteLetter(path[i]) ? 2 : 1)
        if (path[i] == separator)
            last = i;
    return last;
}
} // namespace

bool isSerialNumber(QString const& text) { return text.size() == kLength; }

std::optional<QString> nextSerialNumber(QString const& last) {
    if (!isSerialNumber(last))
        return std::nullopt;
    int const next = countOf(last.right(kCountLength)) + 1;
    int const count = next > kHighestCount ? 1 : next;
    // Not by a pattern: the first part may hold a "%" sign.
    return last.left(kLength - kCountLength) +
           QString::number(count).rightJustified(kCountLength, QLatin1Char('0'));
}

QString storedSerialNumber(HeadboardEeprom& eeprom) {
    QString const number = numberInImage(eeprom);
    return HeadboardEepromHasChanges(eeprom) ? QString() : number;
}

bool putSerialNumber(HeadboardEeprom& eeprom, QString const& number) {
    // What an earlier attempt could not write is in the image already and only waits for the flush.
    return numberInImage(eeprom) == number || replaceInImage(eeprom, number.toLocal8Bit()) == kEepromOk;
}

QByteArray grabFileName(QByteArray const& present, QByteArray const& serialNumber) {
    int separator = lastOf('/', present);
    if (separator < 0)
        separator = lastOf('\\', present);
    return present.left(separator + 1) + serialNumber + '_'; // none: the number alone
}
} // namespace kestra
