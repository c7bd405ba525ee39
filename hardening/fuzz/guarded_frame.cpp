#include "hardening/fuzz/guarded_frame.h"

#include "hardening/fuzz/fuzz_target.h"
#include "published/entries.h"
#include "tests/support/guarded_memory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {
constexpr size_t kMostBytes = 65536;

GuardedMemory arenas[] = {GuardedMemory(kMostBytes), GuardedMemory(kMostBytes), GuardedMemory(kMostBytes),
                          GuardedMemory(kMostBytes)};
size_t alive = 0;
} // namespace

GuardedFrame::GuardedFrame(InputReader& input) {
    MUST_HOLD(alive < std::size(arenas));
    GuardedMemory& arena = arenas[alive++];
    chooseSizes(input);
    if (m_sizes.holdTogether() && !m_isNull)
        fill(input);
    m_pixels = arena.placeAtRear(m_before.size());
    std::copy(m_before.begin(), m_before.end(), m_pixels);
}

GuardedFrame::~GuardedFrame() { --alive; }

void GuardedFrame::deliverGood(int displayed, int raw) {
    constexpr uint8_t kDisplayed[] = {0, 0, 0, 3, 32, 3, 24, 2, 0, 0x80, 0x90, 0x70, 0};
    constexpr uint8_t kRaw[] = {2, 0, 0, 3, 32, 3, 24, 2, 0, 0x08, 0x09, 0x07, 0};
    for (int i = 0; i < displayed + raw; ++i) {
        InputReader reader(i < displayed ? std::span<uint8_t const>(kDisplayed) : kRaw);
        GuardedFrame(reader).deliver();
    }
}

void GuardedFrame::chooseSizes(InputReader& input) {
    using Sizes = kestra::FrameSizes;
    constexpr uint32_t kTypes[] = {Sizes::kRgb32, Sizes::kRgb32, Sizes::kRaw12,
                                   Sizes::kYcbcr, Sizes::kRaw8,  0,
                                   0xFFFFFFFF,    Sizes::kRgb32};
    m_sizes.type = input.pick(kTypes);
    m_isRgbEntry = input.chance(2);
    m_isNull = input.chance(16);
    m_sizes.width = int32_t(input.number());
    m_sizes.height = int32_t(input.number());
    switch (input.byte() % 4) {
    case 0:
        m_sizes.pitch = int32_t(input.number());
        break;
    case 1:
        m_sizes.pitch =
            int32_t(0U - uint32_t(m_sizes.width) * uint32_t(m_sizes.bytesPerPixel()) - input.byte());
        break;
    default:
        m_sizes.pitch =
            int32_t(uint32_t(m_sizes.width) * uint32_t(m_sizes.bytesPerPixel()) + input.byte() % 8);
        break;
    }
    if (m_isNull || !m_sizes.holdTogether())
        return;
    // A host tells the truth about the memory that it hands over, so the sizes have to fit into what is here.
    if (size_t(m_sizes.step()) > kMostBytes) {
        m_sizes.width = 1 + int32_t(uint32_t(m_sizes.width) % 1024);
        m_sizes.pitch = m_sizes.width * int32_t(m_sizes.bytesPerPixel());
    }
    m_sizes.height = std::min(m_sizes.height, int32_t(kMostBytes / size_t(m_sizes.step())));
}

void GuardedFrame::fill(InputReader& input) {
    m_before.resize(size_t(m_sizes.height) * size_t(m_sizes.step()));
    uint32_t const pattern = input.word();
    for (size_t i = 0; i + 4 <= m_before.size(); i += 4)
        std::memcpy(&m_before[i], &pattern, 4);
    for (int spots = input.byte() % 8; spots > 0; --spots)
        m_before[input.word() % m_before.size()] = input.byte();
}

void GuardedFrame::deliver() {
    // Walked upwards, a frame begins with its last row in memory.
    uint8_t* const first = m_sizes.pitch < 0 && !m_before.empty()
                               ? m_pixels + m_before.size() - size_t(m_sizes.step())
                               : m_pixels;
    void const* const data = m_isNull ? nullptr : first;
    if (m_isRgbEntry)
        RgbImageData(data, m_sizes.type, uint32_t(m_sizes.width), uint32_t(m_sizes.height), m_sizes.pitch);
    else
        ImageData(data, m_sizes.type, uint32_t(m_sizes.width), m_sizes.height, uint32_t(m_sizes.pitch));
    auto const painted = size_t(m_sizes.paintableBytes());
    for (size_t row = 0; row < m_before.size(); row += size_t(m_sizes.step()))
        MUST_HOLD(!std::memcmp(m_pixels + row + painted, &m_before[row] + painted,
                               size_t(m_sizes.step()) - painted));
}
