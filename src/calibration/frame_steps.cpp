#include "calibration/frame_steps.h"

#include "hoststate/pipeline.h"
#include "pictures/uniformity.h"
#include "pictures/white_balance.h"

namespace kestra {

namespace {

constexpr int32_t kExposureStep = 4;       // progress a frame: the host's own loop does the work in that time
constexpr int32_t kColourBalanceStep = 20; // progress a correction
constexpr int32_t kPhaseStep = 5;          // phase a frame

constexpr uint32_t kRed = 0xDD2200;
constexpr uint32_t kAmber = 0xDDBB55;

// Whether a correction is still due: the step may be reset, and another frame may correct, inside a host
// call.
bool isCorrectionDue(PageCore const& core) {
    return core.alive && core.state.wbStepState == kInProgress && core.state.settleFrames == 0;
}

void correctColourBalance(PageCore& core, MeanColour const& mean) {
    Host const host = core.host;
    int32_t const redGain = host.readState(kRelativeRedGain);
    int32_t const blueGain = host.readState(kRelativeBlueGain);
    if (!isCorrectionDue(core))
        return;
    host.setState(kRelativeRedGain, correctedGain(redGain, mean.red, mean.green));
    host.setState(kRelativeBlueGain, correctedGain(blueGain, mean.blue, mean.green));
    if (!isCorrectionDue(core))
        return;
    core.state.settleFrames = kFramesToSettle;
    core.state.wbStepProgress += kColourBalanceStep;
}

} // namespace

void adjustExposureAndColourBalance(PageCore& core, Frame const& frame) {
    if (!frame.isRgb32())
        return;
    PageState& state = core.state;
    if (state.aeStepState == kInProgress && state.aeStepProgress < kFullProgress)
        state.aeStepProgress += kExposureStep;
    if (state.wbStepState == kInProgress && state.settleFrames == 0) {
        std::optional<MeanColour> const mean = meanOfCentre(frame);
        if (mean && mean->red > 0 && mean->green > 0 && mean->blue > 0)
            correctColourBalance(core, *mean);
    }
    // The frame that was corrected on counts as the first one to let pass.
    if (state.wbStepState == kInProgress && state.settleFrames > 0)
        --state.settleFrames;
}

void countPhase(PageCore& core, Frame const& frame, int32_t first, int32_t last) {
    PageState& state = core.state;
    if (state.lscStepState == kInProgress && frame.isRgb32() && state.lscStepProgress >= first &&
        state.lscStepProgress <= last)
        state.lscStepProgress += kPhaseStep;
}

void measureUniformityWhenDue(PageCore& core, Frame const& frame, int skippedRows) {
    PageState& state = core.state;
    if (state.lscStepState != kInProgress || state.lscStepProgress != phase::kMeasure || !frame.isRgb32())
        return;
    std::optional<Uniformity> const uniformity = measureUniformity(frame, skippedRows);
    if (!uniformity)
        return;
    state.uniformityValue = uniformity->value;
    state.worstBlock = uniformity->worstBlock;
    state.lscStepProgress = phase::kMeasured;
}

void markWorstBlock(PageCore const& core, Frame const& frame) {
    PageState const& state = core.state;
    if (state.lscStepState != kDone || !frame.isRgb32() || !(state.uniformityValue > state.uniformityLimit) ||
        state.worstBlock.isEmpty())
        return;
    bool const nearlyGood = state.uniformityValue <= state.uniformityLimit + 1.0;
    paintRing(frame, state.worstBlock, nearlyGood ? kAmber : kRed);
}

} // namespace kestra
