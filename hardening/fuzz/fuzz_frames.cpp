#include "hardening/fuzz/fuzz_frames.h"

#include "hardening/fuzz/fuzz_target.h"
#include "tests/support/guarded_frame.h"

#include <algorithm>
#include <iterator>

using namespace kestra;

namespace {
constexpr int64_t kMostBytes = 65536;

GuardedMemory rooms[] = {GuardedMemory(kMostBytes), GuardedMemory(kMostBytes), GuardedMemory(kMostBytes),
                         GuardedMemory(kMostBytes)};
size_t roomsInUse = 0;

void chooseSizes(InputReader& input, FrameSizes& sizes) {
    sizes.width = int32_t(input.number());
    sizes.height = int32_t(input.number());
    uint32_t const rowBytes = uint32_t(sizes.width) * uint32_t(sizes.bytesPerPixel());
    switch (input.byte() % 4) {
    case 0:
        sizes.pitch = int32_t(input.number());
        break;
    case 1:
        sizes.pitch = int32_t(0U - rowBytes - input.byte());
        break;
    default:
        sizes.pitch = int32_t(rowBytes + input.byte() % 8);
        break;
    }
}

// A host tells the truth about the memory that it hands over, so the sizes have to fit into what is here.
void fitIntoRoom(FrameSizes& sizes) {
    if (sizes.step() > kMostBytes) {
        sizes.width = 1 + int32_t(uint32_t(sizes.width) % 1024);
        sizes.pitch = int32_t(sizes.rowBytes());
    }
    sizes.height = int32_t(std::min(int64_t{sizes.height}, kMostBytes / sizes.step()));
}

void fill(InputReader& input, std::span<uint8_t> pixels) {
    uint32_t const pattern = input.word();
    std::ranges::fill(pixels, uint8_t{0});
    for (size_t i = 0; i + 4 <= pixels.size(); i += 4)
        std::memcpy(&pixels[i], &pattern, 4);
    for (int spots = input.byte() % 8; spots > 0; --spots)
        pixels[input.word() % pixels.size()] = input.byte();
}
} // namespace

void deliverFrame(InputReader& input) {
    MUST_HOLD(roomsInUse < std::size(rooms));
    constexpr uint32_t kTypes[] = {FrameSizes::kRgb32, FrameSizes::kRgb32, FrameSizes::kRaw12,
                                   FrameSizes::kYcbcr, FrameSizes::kRaw8,  0,
                                   0xFFFFFFFF,         FrameSizes::kRgb32};
    FrameSizes sizes{.type = input.pick(kTypes)};
    bool const asRgb = input.chance(2), hasPixels = !input.chance(16);
    chooseSizes(input, sizes);
    if (hasPixels && sizes.holdTogether())
        fitIntoRoom(sizes);
    GuardedFrame frame(rooms[roomsInUse++], sizes, true);
    if (!hasPixels)
        frame.pixels = {}, frame.data = nullptr;
    else if (!frame.pixels.empty())
        fill(input, frame.pixels);
    MUST_HOLD(frame.deliver(asRgb));
    --roomsInUse;
}

void deliverGoodFrames(int displayed, int raw) {
    constexpr uint8_t kDisplayed[] = {0, 0, 0, 3, 32, 3, 24, 2, 0, 0x80, 0x90, 0x70, 0};
    constexpr uint8_t kRaw[] = {2, 0, 0, 3, 32, 3, 24, 2, 0, 0x08, 0x09, 0x07, 0};
    for (int i = 0; i < displayed + raw; ++i) {
        InputReader reader(i < displayed ? std::span<uint8_t const>(kDisplayed) : kRaw);
        deliverFrame(reader);
    }
}
