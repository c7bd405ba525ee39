// Frames of any type, size, pitch and sequence, through the two exported entries, in every phase of a
// calibration: nothing outside of the pixels is read, nothing outside of a displayed picture is written.

#include "calibration/calibration_page.h"
#include "hardening/fuzz/fuzz_frames.h"
#include "hardening/fuzz/fuzz_target.h"
#include "hardening/fuzz/open_dialogs.h"

using namespace kestra;

namespace {
constexpr int kMostFrames = 24;

// Brings the page to where a frame does something, by good frames and ticks.
void advance(int ticks) {
    for (int i = 0; i < ticks; ++i) {
        deliverGoodFrames(6, 1);
        DialogSession::press("start");
    }
}
} // namespace

int LLVMFuzzerInitialize(int*, char***) {
    DialogSession::prepare();
    return 0;
}

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    InputReader input({data, size});
    static auto* const dialogs = new OpenDialogs(input, {200, 16, 33, 72, 68});
    dialogs->choose(input);
    DialogSession::pressAny(input.byte() % 11);
    DialogSession::pressAny(input.byte() % 11);
    DialogSession::type("GoodCU", QString::number(input.byte() % 4));
    advance(input.byte() % 4);
    for (int i = 0; i < kMostFrames && !input.isUsedUp(); ++i) {
        deliverFrame(input);
        uint8_t const next = input.byte();
        if (next % 4 == 0)
            DialogSession::press("start");
        if (next % 16 == 1)
            DialogSession::pressAny(next / 16 % 11);
    }
    dialogs->checkBalance();
    return 0;
}
