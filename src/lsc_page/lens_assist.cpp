#include "lsc_page/lens_assist.h"

#include "calibration/calibration_flow.h"
#include "calibration/display.h"
#include "calibration/frame_steps.h"
#include "calibration/saving.h"
#include "calibration/settings.h"
#include "calibration/solver_input.h"
#include "common/libraries.h"
#include "headboard/register_record.h"
#include "ui_lens_assist.h"

#include <QScopedValueRollback>

namespace kestra {

namespace {

constexpr uint32_t kAllBits = 0xFFFFFFFF;

int findSolution(PageCore const& core, ShadingHandle const& handle) {
    int32_t const falloff = falloffPercent(core.widgets.falloffText());
    sf_SolutionParams const solution = makeSolutionParams(falloff, core.state.lensRadius);
    int const result = shadefit().sf_FindSolution(handle.get(), &solution);
    if (result != 0)
        return result;
    // Sensors of this page have no illuminant tables; slot 0 lets the library finish what it has.
    sf_ApgaParams const apga = makeApgaParams(falloff, core.state.lensRadius);
    return shadefit().sf_FindApga(handle.get(), &apga);
}

} // namespace

/// What only the lens-shading page does: it solves from one frame inside the frame handler, and loads the
/// solution at the next tick.
class LensAssistFlow : public CalibrationFlow {
public:
    LensAssistFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot);

protected:
    [[nodiscard]] QString eepromLabel() const override;
    [[nodiscard]] ShadingHandle createCalibration() override;
    void calibrationTick() override;
    void captureFrame(Frame const& frame) override;
    [[nodiscard]] int skippedRows() const override;
    [[nodiscard]] EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) override;

private:
    void loadWhenSolved();
    void solve(Frame const& frame);
    [[nodiscard]] bool isCalibrationInput(Frame const& frame) const;

    bool m_solving = false; // a frame that arrives inside a library call must not start another
};

LensAssistFlow::LensAssistFlow(SensorRecord const& sensor, HostServices const& services,
                               EepromSlot& eepromSlot)
    : CalibrationFlow(PageKind::LensShading, sensor, services, eepromSlot) {}

QString LensAssistFlow::eepromLabel() const {
    return QStringLiteral("KestraTune");
}

ShadingHandle LensAssistFlow::createCalibration() {
    std::optional<SensorInfo> const info = core.camera().info();
    return ownShadingHandle(shadefit().sf_Create2(info ? info->sensorData : nullptr, core.sensor.sensorKind,
                                                  core.sensor.variant, kAllBits));
}

EepromStatus LensAssistFlow::storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) {
    EepromStatus status =
        saveShadingRegisters(eeprom, label.constData(), {core.sensor.sensorKind, core.sensor.variant});
    if (status == kEepromOk)
        status = addFactoryTime(eeprom, label, OlderTime::MustGo);
    return status >= kEepromOk ? HeadboardEepromFlush(eeprom) : status;
}

int LensAssistFlow::skippedRows() const {
    return core.kind().unusableTopRows;
}

void LensAssistFlow::calibrationTick() {
    if (!core.state.shadingHandle) {
        if (core.state.runAll)
            setRunAll(false);
        if (core.state.lscStepProgress < phase::kLoaded)
            return;
    }
    if (core.state.lscStepProgress == phase::kSolved)
        loadWhenSolved();
    finishWhenMeasured();
    refreshStatus(core);
}

void LensAssistFlow::loadWhenSolved() {
    ShadingHandle const handle = core.state.shadingHandle;
    std::optional<std::vector<sf_RegEntry>> const entries = dumpRegisterList(handle);
    if (!isCalibrating(handle, phase::kSolved))
        return;
    if (entries)
        return loadSolution(*entries);
    core.state.lscStepState = kFailedOtherwise;
    core.state.lscStepProgress = 0;
    refreshEnables(core);
}

bool LensAssistFlow::isCalibrationInput(Frame const& frame) const {
    return frame.isRgb32() == core.kind().calibratesFromRgb;
}

void LensAssistFlow::captureFrame(Frame const& frame) {
    countPhase(core, frame, 0, phase::kSettleEnd - 1);
    countPhase(core, frame, phase::kLoaded, phase::kMeasure - 1);
    bool const due =
        core.state.lscStepState == kInProgress && core.state.lscStepProgress == phase::kSettleEnd;
    if (!due || m_solving || !isCalibrationInput(frame))
        return;
    QScopedValueRollback<bool> const solving(m_solving, true);
    solve(frame);
    notifyStatus();
}

void LensAssistFlow::solve(Frame const& frame) {
    ShadingHandle const handle = core.state.shadingHandle;
    if (!handle)
        return;
    std::shared_ptr<void const> const pixels = gaplessPixels(frame); // until the library has solved
    if (!pixels) {
        core.state.lscStepState = kFailedOtherwise; // to wait for a better one would tell the user nothing
        return;
    }
    LibraryImage const image = {
        .data = pixels.get(),
        .width = uint32_t(frame.width),
        .height = uint32_t(frame.height),
        .isYcbcr = frame.type == ImageType::Ycbcr,
        .bits = frame.type == ImageType::Raw12 ? 12U : 8U,
    };
    int const accepted = handOver(core.host, handle, image);
    if (!isCalibrating(handle, phase::kSettleEnd))
        return;
    core.state.inputWasYcbcr = image.isYcbcr ? 1 : 0;
    if (accepted == 0) {
        core.state.lscStepState = kFailedOtherwise;
        return;
    }
    int const result = findSolution(core, handle);
    if (!isCalibrating(handle, phase::kSettleEnd))
        return;
    if (result == 0)
        core.state.lscStepProgress = phase::kSolved;
    else
        core.state.lscStepState = failureOf(result);
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
