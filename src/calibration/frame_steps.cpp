#include "calibration/calibration_flow.h"
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
} // namespace

void CalibrationFlow::onFrame(Frame const& frame) {
    adjustExposureAndColourBalance(frame);
    captureFrame(frame);
    measureUniformityWhenDue(frame);
    markWorstBlock(frame);
}

void CalibrationFlow::adjustExposureAndColourBalance(Frame const& frame) {
    if (!frame.isRgb32())
        return;
    if (m_state.aeStepState == kInProgress && m_state.aeStepProgress < kFullProgress)
        m_state.aeStepProgress += kExposureStep;
    if (m_state.wbStepState != kInProgress)
        return;
    if (m_state.settleFrames == 0) {
        std::optional<MeanColour> const mean = meanOfCentre(frame);
        if (!mean || !(mean->red > 0 && mean->green > 0 && mean->blue > 0))
            return;
        int32_t const redGain = m_host.readState(kRelativeRedGain);
        int32_t const blueGain = m_host.readState(kRelativeBlueGain);
        m_host.setState(kRelativeRedGain, correctedGain(redGain, mean->red, mean->green));
        m_host.setState(kRelativeBlueGain, correctedGain(blueGain, mean->blue, mean->green));
        m_state.settleFrames = kFramesToSettle;
        m_state.wbStepProgress += kColourBalanceStep;
    }
    // The frame that was corrected on counts as the first one to let pass.
    --m_state.settleFrames;
}

void CalibrationFlow::countPhase(Frame const& frame, int32_t first, int32_t end) {
    if (m_state.lscStepState == kInProgress && frame.isRgb32() && m_state.lscStepProgress >= first &&
        m_state.lscStepProgress < end)
        m_state.lscStepProgress += kPhaseStep;
}

void CalibrationFlow::measureUniformityWhenDue(Frame const& frame) {
    if (m_state.lscStepState != kInProgress || m_state.lscStepProgress != phase::kMeasure || !frame.isRgb32())
        return;
    std::optional<Uniformity> const uniformity =
        measureUniformity(frame, m_traits.skipsUnusableRows ? kind().unusableTopRows : 0);
    if (!uniformity)
        return;
    m_state.uniformityValue = uniformity->value;
    m_state.worstBlock = uniformity->worstBlock;
    m_state.lscStepProgress = phase::kMeasured;
}

void CalibrationFlow::markWorstBlock(Frame const& frame) const {
    if (m_state.lscStepState != kDone || !frame.isRgb32() ||
        !(m_state.uniformityValue > m_state.uniformityLimit) || m_state.worstBlock.isEmpty())
        return;
    bool const nearlyGood = m_state.uniformityValue <= m_state.uniformityLimit + kUniformityTolerance;
    paintRing(frame, m_state.worstBlock, nearlyGood ? kAmber : kRed);
}
} // namespace kestra
