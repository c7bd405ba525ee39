#pragma once

#include "headboard/register_set.h"
#include "tools/headboard-image/record_store.h"

#include <string>
#include <vector>

namespace headboard_image {
/// One thing that a check has to say.
struct Finding {
    int32_t offset = 0;  ///< in the image
    bool isFault = true; ///< else a remark: unusual, but no damage
    std::string text;
};

[[nodiscard]] bool hasFault(std::vector<Finding> const& findings);

[[nodiscard]] std::string findingText(Finding const& finding);
/// One line each.
[[nodiscard]] std::string findingLines(std::vector<Finding> const& findings);

/// What is wrong inside a record, given from its head on.
[[nodiscard]] std::vector<Finding> checkRecord(RecordPlace const& place, std::span<uint8_t const> record);

/// Whether a register set consists of lines of text rather than of entries.
[[nodiscard]] bool holdsLines(kestra::RegisterSetContent const& content);
} // namespace headboard_image
