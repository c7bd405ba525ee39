// All combinations of a dozen widths, heights, pitches and types, in every state in which a page looks at
// frames. The pixels lie right at a guard page, the one before them or the one behind; a frame whose sizes do
// not hold together has none at all.

#include "apga_page/lens_assist_apga.h"
#include "plugin/instance.h"
#include "tests/support/dialog_session.h"
#include "tests/support/told_frame.h"

#include <gtest/gtest.h>
#include <iostream>
#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

using namespace kestra;

namespace {
constexpr int32_t kWidths[] = {INT32_MIN, -1, 0, 1, 2, 3, 4, 31, 32, 33, 129, INT32_MAX};
constexpr int32_t kHeights[] = {INT32_MIN, -1, 0, 1, 2, 3, 15, 17, 18, 19, 65, 97};
constexpr uint32_t kTypes[] = {0, 1, 4, 5, 6, 8, 10, 11, 12, 13, 14, UINT32_MAX};
constexpr uint32_t kRgbInputKind = 16;
constexpr uint32_t kRgb32 = ToldFrame::kRgb32;
constexpr size_t kCombinations = 12 * 12 * 12 * 12;

// Pitches lie around a row's own bytes, or are absurd.
template <typename Visit>
void forEachCombination(Visit visit) {
    size_t number = 0;
    for (uint32_t const type : kTypes)
        for (int32_t const width : kWidths)
            for (int32_t const height : kHeights) {
                std::vector<int32_t> pitches = {INT32_MIN, 0, 1, INT32_MAX};
                for (int const spare : {-1, 0, 1, 3})
                    for (int const sign : {1, -1})
                        pitches.push_back(
                            int32_t(sign * (ToldFrame{type, width, height, 0}.rowBytes() + spare)));
                for (int32_t const pitch : pitches)
                    visit(ToldFrame{type, width, height, pitch}, number++);
            }
    ASSERT_EQ(number, kCombinations);
}

// Between two pages that nobody may touch.
std::span<uint8_t> makeRoom() {
    constexpr size_t kPage = 4096, kSize = size_t{256} * 1024;
#ifdef _WIN32
    auto* const pages =
        static_cast<uint8_t*>(VirtualAlloc(nullptr, kSize + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    EXPECT_TRUE(VirtualAlloc(pages + kPage, kSize, MEM_COMMIT, PAGE_READWRITE));
#else
    auto* const pages = static_cast<uint8_t*>(
        mmap(nullptr, kSize + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    EXPECT_EQ(mprotect(pages + kPage, kSize, PROT_READ | PROT_WRITE), 0);
#endif
    return {pages + kPage, kSize};
}

// Noise, so that a byte that is painted shows.
std::span<uint8_t> placePixels(ToldFrame const& frame, bool atRear) {
    static std::span<uint8_t> const room = makeRoom();
    auto const bytes = size_t(frame.bytes());
    if (bytes > room.size())
        return {};
    std::span<uint8_t> const pixels = atRear ? room.last(bytes) : room.first(bytes);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = uint8_t(i * 37 >> 3);
    return pixels;
}

void settle(PageState const& state, bool (*isDue)(PageState const&)) {
    for (int frames = 0; !isDue(state) && frames < 40; ++frames)
        ImageData(nullptr, kRgb32, 0, 0, 0); // counts as a frame, has no pixels
    ASSERT_TRUE(isDue(state));
}

bool isInPhase(PageState const& state, int wanted) {
    return state.lscStepState == kInProgress && state.lscStepProgress == wanted;
}

void bringToColourBalance(PageState const& state) {
    if (state.wbStepState != kInProgress)
        DialogSession::press("OnBnClickedAwb");
    settle(state, [](PageState const& now) { return now.settleFrames == 0; });
}

void bringToMeasurement(PageState const& state) {
    if (isInPhase(state, phase::kMeasured))
        DialogSession::press("start"); // done: the next frame gets a ring, then it is measured again
    else if (!isInPhase(state, phase::kMeasure))
        DialogSession::press("OnBnClickedCU");
}

// The ring around a block of a larger frame than any that comes.
void bringToRing(PageState const& state) {
    if (state.lscStepState == kDone)
        return;
    DialogSession::press("OnBnClickedCU");
    std::vector<uint32_t> picture(128 * 96, 0x808080);
    picture.back() = 0xFF0000;
    ImageData(picture.data(), kRgb32, 128, 96, 512);
    DialogSession::press("start");
    ASSERT_GT(state.worstBlock.right(), 120);
}

// The displayed frame that ends the settling is itself the input of the kind that calibrates from it.
int capturePhase = 0;

void bringToCapture(PageState const& state) {
    LensAssistApga const* const page = kestraMfr().g_lensAssistApga;
    if (!page) {
        if (!isInPhase(state, capturePhase))
            DialogSession::press("OnBnClickedCalibrate");
        settle(state, [](PageState const& now) { return isInPhase(now, capturePhase); });
        return;
    }
    // All three frames are what was last delivered; with them the page calculates.
    if (page->captured().haveAllFrames() && page->captured()[kDaylight].state == kCaptured)
        for (char const* const slot : {"OnBnClickedCalibrate", "start"})
            DialogSession::press(slot);
    for (auto const& [row, slot] : {std::pair{kIncandescent, "OnBnClickedIncandescent_Image"},
                                    {kFluorescent, "OnBnClickedFluorescent_Image"},
                                    {kDaylight, "OnBnClickedDaylight_Image"}})
        if (page->captured()[row].state != kCapturing)
            DialogSession::press(slot);
}

// What a page is brought to before each frame, when it is not there already.
constexpr std::pair<char const*, void (*)(PageState const&)> kDue[] = {
    {"colour balance", bringToColourBalance},
    {"measurement", bringToMeasurement},
    {"ring", bringToRing},
    {"capture", bringToCapture}};

class FrameEdges : public ::testing::TestWithParam<uint32_t> {};

TEST_P(FrameEdges, NothingBesideThePixelsIsTouchedInAnyStateOfThePage) {
    InputReader nothing({});
    DialogSession session(nothing);
    session.sensor.sensorKind = GetParam();
    capturePhase = GetParam() == kRgbInputKind ? phase::kSettleEnd - 5 : phase::kSettleEnd;
    session.services.announceRegister = nullptr;
    ASSERT_TRUE(session.open());
    CalibrationPage* const page = DialogSession::page();
    page->setVisible(true); // it ticks only when shown
    DialogSession::type("GoodCU", QStringLiteral("-1"));
    size_t withPixels = 0;
    for (auto const& [name, bring] : kDue) {
        SCOPED_TRACE(name);
        DialogSession::press("OnBnClickedStartover");
        forEachCombination([&, bringThere = bring](ToldFrame const& frame, size_t number) {
            bringThere(page->state());
            // With each width, pitch and type some heights come to each guard page through each entry.
            size_t const height = number / 12;
            std::span<uint8_t> const pixels = placePixels(frame, height % 2 == 0);
            withPixels += !pixels.empty();
            if (!frame.deliver(pixels, height / 2 % 2 == 0))
                FAIL() << "painted behind a row of " << frame.width << " pixels";
            session.host.log.clear();
        });
    }
    EXPECT_EQ(page->state().updateDepth, 0U);
    std::cout << std::size(kDue) * kCombinations << " frames, " << withPixels << " of them with pixels\n";
    EXPECT_GT(withPixels, 10000U);
}

// The pages of both forms, and the kinds that skip rows, calibrate from the displayed picture, or blend.
INSTANTIATE_TEST_SUITE_P(Kinds, FrameEdges, ::testing::Values(200, 33, 16, 72, 68));
} // namespace
