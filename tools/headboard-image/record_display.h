#pragma once

#include "tools/headboard-image/addressing.h"
#include "tools/headboard-image/outcome.h"
#include "tools/headboard-image/record_store.h"

namespace headboard_image {
/// A record in one line: offset, type, length, and name or text.
[[nodiscard]] std::string recordLine(RecordStore const& store, RecordPlace const& place);

/// The command `list`. Of a broken chain it lists what comes before the damage.
[[nodiscard]] Outcome listRecords(RecordStore const& store);

/// The command `show`: the record at an offset with its entries, lines or bytes.
[[nodiscard]] Outcome showRecord(RecordStore const& store, int32_t offset, Addressing addressing);
} // namespace headboard_image
