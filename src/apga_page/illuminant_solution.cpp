#include "apga_page/illuminant_solution.h"

#include "calibration/settings.h"
#include "calibration/solver_input.h"
#include "common/libraries.h"

namespace kestra {

namespace {

constexpr uint32_t kAdaptiveBits = 12;
constexpr uint32_t kBitsOfYcbcr = 8;
constexpr uint32_t kAutomaticBits = 8; // whatever the frame holds: the library knows these sensors

constexpr int32_t kNoRadius = 0;             // the radius belongs to the base solution alone
constexpr uint32_t kUnsetTemperature = 4000; // kelvin
constexpr uint32_t kSlots[kIlluminants] = {2, 3, 4};

// One calculation. It holds what it works on by value, since the page may be reset inside any library call;
// then the calibration is not the page's any more, and nothing further is asked.
class Calculation {
public:
    Calculation(PageCore& core, CapturedFrames const& captured, IlluminantTemperatures const& temperatures)
        : m_cursor(core.widgets.page), m_core(core), m_host(core.host), m_handle(core.state.shadingHandle),
          m_captured(captured), m_temperatures(temperatures), m_info(core.camera().info()),
          m_bayer(readBayerCoding(m_host)), m_ycbcr(readYcbcrInput(m_host, m_bayer.orientation)),
          m_falloff(falloffPercent(core.widgets.falloffText())),
          m_apga(makeApgaParams(m_falloff, kNoRadius)) {
        m_apga.colourTemperature = kUnsetTemperature;
        m_apga.illuminantSlot = kSlots[kFluorescent];
    }

    // The base comes from the fluorescent frame, and its own table is found last: the library keeps the
    // order in which the tables are asked for.
    void adaptive() {
        uint32_t const bits = m_core.state.inputWasYcbcr ? kBitsOfYcbcr : kAdaptiveBits;
        if (give(kFluorescent, bits))
            findBase();
        for (Illuminant const illuminant : {kIncandescent, kDaylight, kFluorescent})
            if (give(illuminant, bits))
                find(illuminant, shadefit().sf_FindApga);
    }

    void automatic() {
        for (Illuminant const illuminant : {kIncandescent, kDaylight, kFluorescent})
            if (give(illuminant, kAutomaticBits))
                find(illuminant, shadefit().sf_FindAutoPga);
    }

private:
    [[nodiscard]] bool goesOn() const {
        return m_core.alive && m_core.state.lscStepState == kInProgress &&
               m_core.state.lscStepProgress == 0 && m_core.state.shadingHandle == m_handle;
    }

    [[nodiscard]] bool give(Illuminant illuminant, uint32_t bits) {
        CaptureRow const& row = m_captured[illuminant];
        if (!goesOn() || !row.samples)
            return false;
        LibraryImage const image = {
            .data = row.samples->data(),
            .width = m_info ? m_info->imageWidth : uint32_t(row.width),
            .height = m_info ? m_info->imageHeight : uint32_t(row.height),
            .isYcbcr = m_core.state.inputWasYcbcr != 0,
            .bits = bits,
        };
        // The sensor's picture may have grown since the capture; the library reads as much as it is told of.
        if (uint64_t{image.width} * image.height > row.samples->size()) {
            m_core.state.lscStepState = kFailed;
            return false;
        }
        int const accepted =
            image.isYcbcr ? handOverYcbcr(m_handle, image, m_ycbcr) : handOverBayer(m_handle, image, m_bayer);
        if (goesOn() && accepted == 0)
            m_core.state.lscStepState = kFailedOtherwise;
        return goesOn();
    }

    void findBase() {
        sf_SolutionParams const params = makeSolutionParams(m_falloff, m_core.state.lensRadius);
        judge(shadefit().sf_FindSolution(m_handle.get(), &params));
    }

    void find(Illuminant illuminant, decltype(Shadefit::sf_FindApga) findTable) {
        m_apga.colourTemperature = uint32_t(m_temperatures[illuminant]);
        m_apga.illuminantSlot = kSlots[illuminant];
        judge(findTable(m_handle.get(), &m_apga));
    }

    void judge(int result) {
        if (result != 0 && goesOn())
            m_core.state.lscStepState = failureOf(result);
    }

    WaitCursor const m_cursor; // from before the reads
    PageCore& m_core;
    Host const m_host;
    ShadingHandle const m_handle;
    CapturedFrames const m_captured;
    IlluminantTemperatures const m_temperatures;
    std::optional<SensorInfo> const m_info;
    BayerCoding const m_bayer;
    sf_YcbcrInput const m_ycbcr;
    int32_t const m_falloff;
    sf_ApgaParams m_apga;
};

} // namespace

void findIlluminantSolution(PageCore& core, CapturedFrames const& captured, PgaMode mode,
                            IlluminantTemperatures const& temperatures) {
    if (mode.autoPgaMode)
        Calculation(core, captured, temperatures).automatic();
    else if (mode.adaptivePgaMode)
        Calculation(core, captured, temperatures).adaptive();
}

} // namespace kestra
