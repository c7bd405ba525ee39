#include "tools/headboard-image/entry_blocks.h"

#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "tools/headboard-image/record_store.h"

#include <algorithm>

namespace headboard_image {
namespace {

constexpr size_t kBlockHead = 3;
constexpr uint8_t kUnused = 0xFF;

} // namespace

RegisterSetContent splitRegisterSet(std::span<uint8_t const> record) {
    size_t at = std::min(record.size(), RecordPlace::kHeadSize + recordNameWidth(kRecordPga));
    RegisterSetContent content;
    while (record.size() - at >= kBlockHead && entryKind(record[at])) {
        size_t const length = getU16Be(record, at + 1);
        size_t const begin = at + kBlockHead;
        size_t const there = std::min(length, record.size() - begin);
        content.blocks.push_back({at, record[at], length, record.subspan(begin, there)});
        at = begin + there;
    }
    content.restOffset = at;
    if (at < record.size() && record[at] != kUnused)
        content.rest = record.subspan(at);
    return content;
}

bool holdsLines(RegisterSetContent const& content) {
    return content.blocks.empty() && !content.rest.empty() && !entryKind(content.rest.front());
}

} // namespace headboard_image
