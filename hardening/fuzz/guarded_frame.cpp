#include "hardening/fuzz/guarded_frame.h"

#include "hardening/fuzz/fuzz_target.h"
#include "published/entries.h"
#include "tests/support/guarded_memory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr size_t kMostBytes = 65536;
constexpr uint32_t kYcbcr = 5, kRgb32 = 11, kRaw12 = 13, kRaw8 = 8;

GuardedMemory arenas[] = {GuardedMemory(kMostBytes), GuardedMemory(kMostBytes), GuardedMemory(kMostBytes),
                          GuardedMemory(kMostBytes)};
size_t alive = 0;

} // namespace

GuardedFrame::GuardedFrame(InputReader& input) {
    MUST_HOLD(alive < std::size(arenas));
    GuardedMemory& arena = arenas[alive++];
    chooseSizes(input);
    if (isConsistent() && !m_isNull)
        fill(input);
    m_pixels = arena.placeAtRear(m_before.size());
    std::copy(m_before.begin(), m_before.end(), m_pixels);
}

GuardedFrame::~GuardedFrame() {
    --alive;
}

void GuardedFrame::deliverGood(int displayed, int raw) {
    constexpr uint8_t kDisplayed[] = {0, 0, 0, 3, 32, 3, 24, 2, 0, 0x80, 0x90, 0x70, 0};
    constexpr uint8_t kRaw[] = {2, 0, 0, 3, 32, 3, 24, 2, 0, 0x08, 0x09, 0x07, 0};
    for (int i = 0; i < displayed + raw; ++i) {
        InputReader reader(i < displayed ? std::span<uint8_t const>(kDisplayed) : kRaw);
        GuardedFrame(reader).deliver();
    }
}

size_t GuardedFrame::bytesPerPixel() const {
    return m_type == kRgb32 ? 4 : m_type == kRaw12 || m_type == kYcbcr ? 2 : 1;
}

size_t GuardedFrame::rowBytes() const {
    // Pitch 0 tells of a raw frame without gaps.
    if (m_pitch == 0)
        return m_width > 0 ? size_t(m_width) * bytesPerPixel() : 0;
    return size_t(m_pitch < 0 ? -int64_t{m_pitch} : int64_t{m_pitch});
}

bool GuardedFrame::isConsistent() const {
    // These two are captured by their rows' bytes alone.
    if (m_type == kRaw12 || m_type == kYcbcr)
        return m_height > 0 && rowBytes() > 0;
    return m_width > 0 && m_height > 0 && rowBytes() >= size_t(m_width) * bytesPerPixel();
}

void GuardedFrame::chooseSizes(InputReader& input) {
    constexpr uint32_t kTypes[] = {kRgb32, kRgb32, kRaw12, kYcbcr, kRaw8, 0, 0xFFFFFFFF, kRgb32};
    m_type = input.pick(kTypes);
    m_isRgbEntry = input.chance(2);
    m_isNull = input.chance(16);
    m_width = int32_t(input.number());
    m_height = int32_t(input.number());
    switch (input.byte() % 4) {
    case 0:
        m_pitch = int32_t(input.number());
        break;
    case 1:
        m_pitch = int32_t(0U - uint32_t(m_width) * uint32_t(bytesPerPixel()) - input.byte());
        break;
    default:
        m_pitch = int32_t(uint32_t(m_width) * uint32_t(bytesPerPixel()) + input.byte() % 8);
        break;
    }
    if (m_isNull || !isConsistent())
        return;
    // A host tells the truth about the memory that it hands over, so the sizes have to fit into what is here.
    if (rowBytes() > kMostBytes) {
        m_width = 1 + int32_t(uint32_t(m_width) % 1024);
        m_pitch = m_width * int32_t(bytesPerPixel());
    }
    m_height = std::min(m_height, int32_t(kMostBytes / rowBytes()));
}

void GuardedFrame::fill(InputReader& input) {
    m_before.resize(size_t(m_height) * rowBytes());
    uint32_t const pattern = input.word();
    for (size_t i = 0; i + 4 <= m_before.size(); i += 4)
        std::memcpy(&m_before[i], &pattern, 4);
    for (int spots = input.byte() % 8; spots > 0; --spots)
        m_before[input.word() % m_before.size()] = input.byte();
}

void GuardedFrame::deliver() {
    // Walked upwards, a frame begins with its last row in memory.
    uint8_t* const first =
        m_pitch < 0 && !m_before.empty() ? m_pixels + m_before.size() - rowBytes() : m_pixels;
    void const* const data = m_isNull ? nullptr : first;
    if (m_isRgbEntry)
        RgbImageData(data, m_type, uint32_t(m_width), uint32_t(m_height), m_pitch);
    else
        ImageData(data, m_type, uint32_t(m_width), m_height, uint32_t(m_pitch));
    // Only the pixels of a displayed frame may be painted into, never what pads its rows.
    size_t const painted = m_type == kRgb32 && m_pitch != 0 ? size_t(m_width) * 4 : 0;
    for (size_t row = 0; row < m_before.size(); row += rowBytes())
        MUST_HOLD(!std::memcmp(m_pixels + row + painted, &m_before[row] + painted, rowBytes() - painted));
}
