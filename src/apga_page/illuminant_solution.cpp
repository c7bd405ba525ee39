#include "apga_page/illuminant_solution.h"

#include "calibration/settings.h"

namespace kestra {

namespace {

constexpr uint32_t kAdaptiveBits = 12;
constexpr uint32_t kBitsOfYcbcr = 8;
constexpr uint32_t kAutomaticBits = 8; // whatever the frame holds: the library knows these sensors

constexpr int32_t kNoRadius = 0;             // the radius belongs to the base solution alone
constexpr uint32_t kUnsetTemperature = 4000; // kelvin
constexpr uint32_t kSlots[kIlluminants] = {2, 3, 4};

class Calculation {
public:
    Calculation(CalculationInput const& input, IlluminantTemperatures const& temperatures)
        : m_cursor(input.widgets.page), m_state(input.state), m_temperatures(temperatures),
          m_info(input.camera.info()), m_bayer(readBayerCoding(input.host)),
          m_ycbcr(readYcbcrInput(input.host, m_bayer.orientation)),
          m_falloff(falloffPercent(input.widgets.falloffText())),
          m_apga(makeApgaParams(m_falloff, kNoRadius)) {
        m_apga.colourTemperature = kUnsetTemperature;
        m_apga.illuminantSlot = kSlots[kFluorescent];
    }

    // The base comes from the fluorescent frame, and its own table is found last: the library keeps the
    // order in which the tables are asked for.
    void adaptive() {
        uint32_t const bits = m_state.inputWasYcbcr ? kBitsOfYcbcr : kAdaptiveBits;
        if (give(kFluorescent, bits))
            judge(m_state.shading.findSolution(makeSolutionParams(m_falloff, m_state.lensRadius)));
        for (Illuminant const illuminant : {kIncandescent, kDaylight, kFluorescent})
            if (give(illuminant, bits))
                judge(m_state.shading.findApga(tableOf(illuminant)));
    }

    void automatic() {
        for (Illuminant const illuminant : {kIncandescent, kDaylight, kFluorescent})
            if (give(illuminant, kAutomaticBits))
                judge(m_state.shading.findAutoPga(tableOf(illuminant)));
    }

private:
    [[nodiscard]] bool give(Illuminant illuminant, uint32_t bits) {
        CaptureRow const& row = m_state.captured[illuminant];
        if (m_state.lscStepState != kInProgress || !row.samples)
            return false;
        LibraryImage const image = {
            .data = row.samples->data(),
            .width = m_info ? m_info->imageWidth : uint32_t(row.width),
            .height = m_info ? m_info->imageHeight : uint32_t(row.height),
            .isYcbcr = m_state.inputWasYcbcr != 0,
            .bits = bits,
        };
        // The sensor's picture may have grown since the capture; the library reads as much as it is told of.
        if (uint64_t{image.width} * image.height > row.samples->size()) {
            m_state.lscStepState = kFailed;
            return false;
        }
        if (!(image.isYcbcr ? m_state.shading.accepts(image, m_ycbcr)
                            : m_state.shading.accepts(image, m_bayer)))
            m_state.lscStepState = kFailedOtherwise;
        return m_state.lscStepState == kInProgress;
    }

    [[nodiscard]] sf_ApgaParams const& tableOf(Illuminant illuminant) {
        m_apga.colourTemperature = uint32_t(m_temperatures[illuminant]);
        m_apga.illuminantSlot = kSlots[illuminant];
        return m_apga;
    }

    void judge(int result) {
        if (result != 0)
            m_state.lscStepState = failureOf(result);
    }

    WaitCursor const m_cursor; // from before the reads
    PageState& m_state;
    IlluminantTemperatures const& m_temperatures;
    std::optional<SensorInfo> const m_info;
    BayerCoding const m_bayer;
    sf_YcbcrInput const m_ycbcr;
    int32_t const m_falloff;
    sf_ApgaParams m_apga;
};

} // namespace

void findIlluminantSolution(CalculationInput const& input, PgaMode mode,
                            IlluminantTemperatures const& temperatures) {
    if (mode.autoPgaMode)
        Calculation(input, temperatures).automatic();
    else if (mode.adaptivePgaMode)
        Calculation(input, temperatures).adaptive();
}

} // namespace kestra
