#include "lsc_page/lens_assist.h"

#include "calibration/calibration_flow.h"
#include "common/libraries.h"
#include "headboard/register_record.h"
#include "ui_lens_assist.h"

namespace kestra {
namespace {
constexpr uint32_t kAllBits = 0xFFFFFFFF;

constexpr PageTraits kTraits = {
    .kind = PageKind::LensShading,
    .eepromLabel = "KestraTune",
    .skipsUnusableRows = true,
};
} // namespace

/// What only the lens-shading page does: it solves from one frame inside the frame handler, and loads the
/// solution at the next tick.
class LensAssistFlow : public CalibrationFlow {
public:
    LensAssistFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot)
        : CalibrationFlow(kTraits, sensor, services, eepromSlot) {}

protected:
    [[nodiscard]] sf_Handle* createCalibration() override;
    void captureFrame(Frame const& frame) override;
    [[nodiscard]] EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) override;

private:
    void solveFrom(Frame const& frame);
    [[nodiscard]] int findSolution() const;
};

sf_Handle* LensAssistFlow::createCalibration() {
    std::optional<SensorInfo> const info = m_camera.info();
    if (!widgets.page) // no calibration without a page: a library that solves cannot be silenced
        return nullptr;
    return shadefit().sf_Create2(info ? info->sensorData : nullptr, m_sensor.sensorKind, m_sensor.variant,
                                 kAllBits);
}

void LensAssistFlow::captureFrame(Frame const& frame) {
    countPhase(frame, 0, phase::kSettleEnd);
    countPhase(frame, phase::kLoaded, phase::kMeasure);
    if (m_state.lscStepState != kInProgress || m_state.lscStepProgress != phase::kSettleEnd ||
        frame.isRgb32() != kind().calibratesFromRgb)
        return;
    solveFrom(frame);
    notifyStatus();
}

void LensAssistFlow::solveFrom(Frame const& frame) {
    if (!m_state.shadingHandle)
        return;
    std::shared_ptr<void const> const pixels = gaplessPixels(frame); // until the library has solved
    if (!pixels) {
        m_state.lscStepState = kFailedOtherwise; // to wait for a better one would tell the user nothing
        return;
    }
    LibraryImage const image = {
        .data = pixels.get(),
        .width = uint32_t(frame.width),
        .height = uint32_t(frame.height),
        .isYcbcr = frame.type == ImageType::Ycbcr,
        .bits = frame.type == ImageType::Raw12 ? 12U : 8U,
    };
    Shading const& library = m_state.shadingHandle;
    bool const isAccepted = image.isYcbcr ? library.accepts(image, readYcbcrInput(m_host))
                                          : library.accepts(image, readBayerCoding(m_host));
    m_state.inputWasYcbcr = image.isYcbcr ? 1 : 0;
    if (!isAccepted) {
        m_state.lscStepState = kFailedOtherwise;
        return;
    }
    int const result = findSolution();
    if (result == 0)
        m_state.lscStepProgress = phase::kSolved;
    else
        m_state.lscStepState = failureOf(result);
}

int LensAssistFlow::findSolution() const {
    int32_t const falloff = widgets.falloff();
    int const result = m_state.shadingHandle.findSolution(makeSolutionParams(falloff, m_state.lensRadius));
    // Sensors of this page have no illuminant tables; slot 0 lets the library finish what it has.
    return result == 0 ? m_state.shadingHandle.findApga(makeApgaParams(falloff, m_state.lensRadius)) : result;
}

EepromStatus LensAssistFlow::storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) {
    EepromStatus status =
        saveShadingRegisters(eeprom, label.constData(), {m_sensor.sensorKind, m_sensor.variant});
    if (status == kEepromOk)
        status = addFactoryTime(eeprom, label, OlderTime::MustGo);
    return status == kEepromOk ? HeadboardEepromFlush(eeprom) : status;
}
} // namespace kestra

using namespace kestra;

LensAssist::LensAssist(QWidget* parent, SensorRecord const& sensor, HostServices const& services,
                       Wizard* wizard, EepromSlot& eepromSlot)
    : CalibrationPage(parent, std::make_shared<LensAssistFlow>(sensor, services, eepromSlot)) {
    Ui::LensAssist form;
    form.setupUi(this);
    // This page alone has the bar; no step drives it.
    auto* const bar = new QProgressBar(form.groupBox);
    bar->setObjectName(QStringLiteral("Lens_Calib_progressBar"));
    bar->setVisible(false);
    bar->setValue(0);
    form.setupGrid->addWidget(bar, 0, 2);
    build(form, form.Version_Lens, wizard);
}
