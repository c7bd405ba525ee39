#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Takes decisions from the bytes of a fuzz input, front to back. Behind its end every byte is 0, or, of a
/// repeating reader, the input begins anew.
class InputReader {
public:
    enum class AtEnd : uint8_t { Zeros, Repeat };

    explicit InputReader(std::span<uint8_t const> input, AtEnd atEnd = AtEnd::Zeros)
        : m_input(input), m_repeats(atEnd == AtEnd::Repeat && !input.empty()) {}

    [[nodiscard]] bool isUsedUp() const { return m_at == m_input.size() && !m_repeats; }

    [[nodiscard]] uint8_t byte() {
        if (m_at == m_input.size() && m_repeats)
            m_at = 0;
        return m_at == m_input.size() ? uint8_t{0} : m_input[m_at++];
    }
    [[nodiscard]] uint32_t word() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | byte();
        return value;
    }
    /// True once in `oneIn` of random inputs; never behind the end of one.
    [[nodiscard]] bool chance(int oneIn) { return byte() % oneIn == oneIn - 1; }

    template <typename Value, size_t Count>
    [[nodiscard]] Value const& pick(Value const (&values)[Count]) {
        return values[byte() % Count];
    }
    /// Mostly small, sometimes as large as a word, sometimes at the ends of its range.
    [[nodiscard]] uint32_t number() {
        constexpr uint32_t kEnds[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFF, 0x10000, 0x40000000};
        switch (byte() % 8) {
        case 0:
            return pick(kEnds);
        case 1:
            return word();
        case 2:
            return uint32_t{byte()} << 8;
        default:
            return byte();
        }
    }
    [[nodiscard]] std::string text() {
        std::string found(byte() % 40, '\0');
        for (char& c : found)
            c = char(byte());
        return found;
    }
    /// All that is left, at most `most` bytes.
    [[nodiscard]] std::span<uint8_t const> rest(size_t most) {
        auto const left = m_input.subspan(m_at, std::min(most, m_input.size() - m_at));
        m_at += left.size();
        return left;
    }

private:
    std::span<uint8_t const> m_input;
    size_t m_at = 0;
    bool m_repeats;
};
