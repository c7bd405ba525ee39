#include "tools/headboard-image/record_check.h"

#include "headboard/record_format.h"
#include "tools/headboard-image/printed_text.h"

#include <algorithm>

using namespace kestra;

namespace headboard_image {
namespace {
constexpr uint8_t kNul = 0;

// The types whose register sets may consist of lines of state instead.
bool mayHoldLines(uint8_t type) {
    return type == kRecordSwPga || type == kRecordSwCcm || type == kRecordSwStereo;
}

class RecordCheck {
public:
    RecordCheck(RecordPlace const& place, std::span<uint8_t const> record)
        : m_place(place), m_record(record) {}

    std::vector<Finding> run() {
        checkTail();
        switch (recordPayload(m_place.type)) {
        case RecordPayload::Opaque:
            if (!recordTypeName(m_place.type))
                remark("the record's type is not known here");
            break;
        case RecordPayload::Text:
            if (std::ranges::count(payload(), kNul) == 0)
                fault(0, "the text has no closing NUL");
            break;
        case RecordPayload::RegisterSet:
            if (checkName())
                checkContent();
            break;
        case RecordPayload::NamedData:
            (void)checkName();
            break;
        }
        return std::move(m_findings);
    }

private:
    [[nodiscard]] std::span<uint8_t const> payload() const { return m_record.subspan(kRecordHead); }

    // `at` is counted from the record's begin.
    void fault(size_t at, std::string text) {
        m_findings.push_back({m_place.offset + int32_t(at), true, std::move(text)});
    }
    void remark(std::string text) { m_findings.push_back({m_place.offset, false, std::move(text)}); }

    // When the power fails while a record is written into erased bytes, its head tells more than there is.
    void checkTail() {
        auto const last =
            std::find_if(m_record.rbegin(), m_record.rend(), [](uint8_t byte) { return byte != kErased; });
        auto const erased = std::min(size_t(last - m_record.rbegin()), payload().size());
        if (erased < leastErased() || erased == 0)
            return;
        std::string const text = "the record's last " + counted(int64_t(erased), "byte") + " are erased";
        bool const isCutOff = recordPayload(m_place.type) == RecordPayload::RegisterSet ||
                              recordPayload(m_place.type) == RecordPayload::Text;
        if (isCutOff)
            fault(m_record.size() - erased, text + ": its writing was cut off");
        else
            remark(text);
    }

    // As many bytes 0xFF as no whole record of the type ends with.
    [[nodiscard]] size_t leastErased() const {
        constexpr size_t kUnlikely = 16, kMaskAndValue = 8;
        if (recordPayload(m_place.type) == RecordPayload::Text)
            return std::ranges::count(payload(), kNul) == 0 ? 1 : payload().size() + 1;
        if (recordPayload(m_place.type) != RecordPayload::RegisterSet)
            return std::min(payload().size(), kUnlikely);
        RegisterSetContent const content = splitRegisterSet(m_record);
        // Values may be so, and unused bytes that are too few for a block.
        if (content.blocks.empty() || content.restOffset < m_record.size())
            return kBlockHead;
        EntryKind const kind = content.blocks.back().kind;
        return kind == EntryKind::Full ? kMaskAndValue : entrySize(kind);
    }

    // False when there is nothing behind the name to look at.
    bool checkName() {
        size_t const width = recordNameWidth(m_place.type);
        if (payload().size() < width) {
            fault(0, "the record is too short for its name");
            return false;
        }
        if (std::ranges::count(payload().first(width), kNul) == 0)
            remark("the name fills its field, without a closing NUL");
        return true;
    }

    void checkContent() {
        RegisterSetContent const content = splitRegisterSet(m_record);
        for (EntryBlock const& block : content.blocks)
            checkBlock(block);
        if (mayHoldLines(m_place.type) && holdsLines(content)) {
            if (content.rest.back() != kNul)
                fault(content.restOffset, "the last line has no closing NUL");
        } else if (!content.rest.empty()) {
            uint8_t const kind = content.rest.front();
            fault(content.restOffset, isEntryKind(kind)
                                          ? "the end of the record cuts off the block's head"
                                          : hexadecimal(kind, 2) + " is no kind of entry block");
        }
    }

    void checkBlock(EntryBlock const& block) {
        size_t const missing = block.length - block.entries.size();
        if (missing > 0)
            fault(block.offset, "the block is " + counted(int64_t(missing), "byte") +
                                    " longer than the rest of its record");
        else if (block.length % entrySize(block.kind) != 0)
            fault(block.offset, "the block's length leaves a part of an entry");
    }

    RecordPlace m_place;
    std::span<uint8_t const> m_record;
    std::vector<Finding> m_findings;
};
} // namespace

bool hasFault(std::vector<Finding> const& findings) {
    return std::ranges::any_of(findings, &Finding::isFault);
}

std::string findingText(Finding const& finding) {
    return offsetText(finding.offset) + (finding.isFault ? ": " : ": remark: ") + finding.text;
}

std::string findingLines(std::vector<Finding> const& findings) {
    std::string lines;
    for (Finding const& finding : findings)
        lines += findingText(finding) + '\n';
    return lines;
}

std::vector<Finding> checkRecord(RecordPlace const& place, std::span<uint8_t const> record) {
    return RecordCheck(place, record).run();
}

bool holdsLines(RegisterSetContent const& content) {
    return content.blocks.empty() && !content.rest.empty() && !isEntryKind(content.rest.front());
}
} // namespace headboard_image
