#include "headboard/time_stamp.h"

#include "common/utc_clock.h"
#include "headboard/record_format.h"

#include <algorithm>

EepromRecord makeTimeStamp() {
    std::string const text = currentUtcTime().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")).toStdString();
    auto const length = int32_t(text.size() + 1);
    EepromRecord record = EepromNewRecord(kRecordTimeStamp, length, length);
    std::copy_n(text.c_str(), length, record.payload().begin());
    return record;
}
