#include "tools/headboard-image/printed_text.h"

#include "headboard/record_format.h"

#include <algorithm>

using namespace kestra;

namespace headboard_image {
namespace {
constexpr char kDigits[] = "0123456789ABCDEF";
constexpr size_t kDumpWidth = 16;

bool isPrintable(char c) { return c >= ' ' && c <= '~'; }
std::string byteText(uint8_t byte) { return {kDigits[byte >> 4], kDigits[byte & 15]}; }

std::string escaped(char c) {
    switch (c) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    case '"':
    case '\\':
        return {'\\', c};
    default:
        return isPrintable(c) ? std::string(1, c) : "\\x" + byteText(uint8_t(c));
    }
}
} // namespace

std::string hexadecimal(uint32_t value, size_t digits) {
    std::string text;
    for (; value != 0; value >>= 4)
        text.insert(text.begin(), kDigits[value & 15]);
    if (text.size() < digits)
        text.insert(0, digits - text.size(), '0');
    return "0x" + text;
}

std::string offsetText(int32_t offset) { return hexadecimal(uint32_t(offset), 4); }

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (char const c : text)
        result += escaped(c);
    return result + '"';
}

std::string typeText(uint8_t type) {
    char const* const name = recordTypeName(type);
    return name ? name : "type " + std::to_string(type);
}

std::string column(std::string text, size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string hexDump(std::span<uint8_t const> bytes, int32_t offset) {
    std::string dump;
    for (size_t at = 0; at < bytes.size(); at += kDumpWidth) {
        std::string codes, text;
        for (uint8_t const byte : bytes.subspan(at, std::min(kDumpWidth, bytes.size() - at))) {
            codes += byteText(byte) + ' ';
            text += isPrintable(char(byte)) ? char(byte) : '.';
        }
        dump += offsetText(offset + int32_t(at)) + "  " + column(codes, 3 * kDumpWidth) + ' ' + text + '\n';
    }
    return dump;
}

std::string counted(int64_t count, char const* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}
} // namespace headboard_image
