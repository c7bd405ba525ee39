#include "apga_page/lens_assist_apga.h"

#include "apga_page/capture_rows.h"
#include "apga_page/illuminant_solution.h"
#include "apga_page/white_balance_gains.h"
#include "calibration/calibration_flow.h"
#include "calibration/display.h"
#include "calibration/frame_steps.h"
#include "calibration/saving.h"
#include "calibration/settings.h"
#include "calibration/solver_input.h"
#include "common/libraries.h"
#include "common/numbers.h"
#include "headboard/register_record.h"
#include "hoststate/pipeline.h"
#include "ui_capture_rows.h"
#include "ui_lens_assist_apga.h"

#include <QCoreApplication>

namespace kestra {

namespace {

struct TemperatureSetting {
    char const* key;
    int32_t fallback; ///< kelvin
};
constexpr TemperatureSetting kTemperatures[kIlluminants] = {
    {"LensAssist Left Temp", 2800}, {"LensAssist Middle Temp", 4000}, {"LensAssist Right Temp", 6500}};

constexpr int32_t kLibraryMinusOne = -1;
constexpr double kThousandths = 1000.0;
// Written before a solution's registers.
constexpr sf_RegEntry kSelectWrite = {.first = 0, .second = 0x098E, .third = 0};

// Moves the steps together, on the page and among its bullets, and puts the capture rows between them.
void placeCaptureRows(Ui::LensAssistApga const& steps, Ui::LensAssistApgaCaptureRows const& rows) {
    struct Place {
        QWidget* widget;
        int top;
        int height;
    };
    for (Place const& place :
         {Place{steps.Run_All, 6, 30}, Place{steps.Start_Over, 6, 30}, Place{steps.groupBox, 40, 62},
          Place{steps.groupBox_2, 105, 94}, Place{steps.groupBox_3, 331, 164},
          Place{steps.groupBox_4, 498, 94}, Place{steps.groupBox_5, 595, 94},
          Place{steps.layoutWidget, 48, 631}, Place{steps.Version_APGA, 690, 40}})
        place.widget->setGeometry(place.widget->x(), place.top, place.widget->width(), place.height);
    for (QGridLayout* const grid : {steps.adjustGrid, steps.calibrateGrid, steps.fileGrid, steps.eepromGrid})
        grid->setContentsMargins(10, 1, 10, 2);

    std::pair<QSpacerItem*, int> const spacers[] = {
        {steps.above_Setup_Bullet, 23},      {steps.above_AE_Bullet, 43}, {steps.above_AWB_Bullet, 9},
        {steps.above_Calibrate_Bullet, 110}, {steps.above_CU_Bullet, 10}, {steps.above_FileSave_Bullet, 79},
        {steps.above_PromSave_Bullet, 75}};
    constexpr int kBulletWidth = 22;
    for (auto const& [spacer, height] : spacers)
        spacer->changeSize(kBulletWidth, height, QSizePolicy::Minimum, QSizePolicy::Fixed);
    // Screen readers and the Tab key go as the eye does: children and focus follow the place on the page.
    rows.groupBox_6->stackUnder(steps.groupBox_3);
    QVBoxLayout* const column = steps.verticalLayout_2;
    int index = column->indexOf(steps.AWB_Bullet);
    std::pair<QLabel*, int> const bullets[] = {
        {rows.Incandescent_Bullet, 44}, {rows.Fluorescent_Bullet, 9}, {rows.Daylight_Bullet, 9}};
    for (auto const& [bullet, above] : bullets) {
        column->insertSpacerItem(
            ++index, new QSpacerItem(kBulletWidth, above, QSizePolicy::Minimum, QSizePolicy::Fixed));
        column->insertWidget(++index, bullet);
        bullet->stackUnder(steps.Calibrate_Bullet);
    }
    QWidget* previous = steps.AWB;
    for (QWidget* const next : std::initializer_list<QWidget*>{
             rows.Incandescent_Image, rows.Incandescent_Temp, rows.Fluorescent_Image, rows.Fluorescent_Temp,
             rows.Daylight_Image, rows.Daylight_Temp}) {
        QWidget::setTabOrder(previous, next);
        previous = next;
    }
}

} // namespace

/// What only the three-illuminant page does: it captures one frame under each light, solves from all three
/// at a tick, and keeps the white balance of the three lights in the EEPROM.
class LensAssistApgaFlow : public CalibrationFlow {
public:
    LensAssistApgaFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot);

    void setMode(PgaMode mode) { m_mode = mode; }
    [[nodiscard]] CaptureDisplay& captureDisplay() { return m_display; }
    [[nodiscard]] CapturedFrames const& captured() const { return m_captured; }

    /// The button of a row. Under a light that the user has changed during Run All, exposure and colour
    /// balance are done again before the frame is taken.
    void captureImage(Illuminant illuminant);

protected:
    [[nodiscard]] QString eepromLabel() const override;
    void dropInputs() override;
    void makeInputsReady() override;
    [[nodiscard]] bool takeInputs() override;
    void loadOwnSettings() override;
    void storeOwnSettings() override;
    [[nodiscard]] ShadingHandle createCalibration() override;
    void calibrationTick() override;
    [[nodiscard]] bool passesOverFailure() const override { return true; }
    void showLoaded() override;
    void captureFrame(Frame const& frame) override;
    [[nodiscard]] int skippedRows() const override;
    [[nodiscard]] ResultFile resultFile() const override;
    [[nodiscard]] EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) override;

private:
    void takeFrame(Frame const& frame);
    void solve();
    void loadWhenSolved();
    void showStatus();
    void arm(CaptureRow& row);

    PgaMode m_mode;
    CapturedFrames m_captured;
    CaptureDisplay m_display;
};

LensAssistApgaFlow::LensAssistApgaFlow(SensorRecord const& sensor, HostServices const& services,
                                       EepromSlot& eepromSlot)
    : CalibrationFlow(PageKind::Apga, sensor, services, eepromSlot) {
    core.display = {.showOwnStatus = [this] { showStatus(); },
                    .showOwnEnables = [this] { m_display.enable(core.state); },
                    .pathSeparator = '/'};
}

QString LensAssistApgaFlow::eepromLabel() const {
    return QStringLiteral("FACTORY");
}

int LensAssistApgaFlow::skippedRows() const {
    return 0;
}

ResultFile LensAssistApgaFlow::resultFile() const {
    return {.format = core.kind().resultFileFormat, .sanitisesNames = true};
}

ShadingHandle LensAssistApgaFlow::createCalibration() {
    return ownShadingHandle(
        shadefit().sf_Create(core.sensor.sensorKind, core.sensor.variant, kLibraryMinusOne));
}

void LensAssistApgaFlow::loadOwnSettings() {
    Host const host = core.host;
    for (size_t i = 0; i < kIlluminants && core.alive; ++i) {
        QByteArray const key = sensorSettingKey(kTemperatures[i].key, core.sensor.name);
        int32_t const kelvin = host.readIntSetting(key, kTemperatures[i].fallback);
        UpdateGuard const guard(core.state.updateDepth);
        m_display.showTemperature(i, kelvin);
    }
}

void LensAssistApgaFlow::storeOwnSettings() {
    Host const host = core.host;
    for (size_t i = 0; i < kIlluminants && core.alive; ++i) {
        int32_t const kelvin = toInt32(m_display.temperature(i));
        host.writeIntSetting(sensorSettingKey(kTemperatures[i].key, core.sensor.name), kelvin);
    }
}

void LensAssistApgaFlow::dropInputs() {
    m_captured.reset();
}

void LensAssistApgaFlow::makeInputsReady() {
    arm(m_captured[kIncandescent]);
}

void LensAssistApgaFlow::arm(CaptureRow& row) {
    row.state = kArmed;
    row.progress = 0;
}

void LensAssistApgaFlow::captureImage(Illuminant illuminant) {
    m_captured[illuminant].progress = 0;
    m_captured[illuminant].state = kCapturing;
    if (illuminant != kIncandescent && core.state.runAll) {
        core.state.aeStepState = kReady;
        core.state.wbStepState = kReady;
    }
    refresh();
}

// The first frame is taken under the light that exposure and colour balance were done in; for the other two
// the user changes the light.
bool LensAssistApgaFlow::takeInputs() {
    CaptureRow& first = m_captured[kIncandescent];
    if (first.state == kNotCaptured) {
        arm(first);
        return true;
    }
    if (first.state == kArmed) {
        first.state = kCapturing;
        return true;
    }
    for (size_t i = kIncandescent; i < kIlluminants; ++i) {
        CaptureRow& row = m_captured[i];
        if (row.state >= kCapturing)
            continue;
        if (row.state != kWaiting) {
            arm(row);
            row.state = kWaiting;
        } else {
            m_display.blink(i, core.widgets.wizard);
        }
        return true;
    }
    return false;
}

void LensAssistApgaFlow::showLoaded() {
    refreshStatus(core);
}

void LensAssistApgaFlow::captureFrame(Frame const& frame) {
    takeFrame(frame);
    if (core.alive)
        countPhase(core, frame, phase::kLoaded, phase::kMeasure - 1);
}

void LensAssistApgaFlow::takeFrame(Frame const& frame) {
    CaptureRow* const row = m_captured.capturing();
    bool const isYcbcr = frame.type == ImageType::Ycbcr;
    if (!row || !(isYcbcr || frame.type == ImageType::Raw12))
        return;
    bool const balancedFirst = core.state.runAll != 0;
    if (balancedFirst && !(core.state.aeStepState == kDone && core.state.wbStepState == kDone))
        return;
    std::optional<SensorInfo> const info = core.camera().info();
    if (!core.alive || row->state != kCapturing)
        return;
    m_captured.capture(*row, frame, info ? size_t{info->imageWidth} * info->imageHeight : 0);
    if (row->state == kCapturing)
        return; // the frame cannot be read whole; the next one may be good
    core.state.inputWasYcbcr = isYcbcr ? 1 : 0;
    if (row->state == kCaptured && balancedFirst) {
        Host const host = core.host;
        double const red = host.readState(kRelativeRedGain) / kThousandths;
        double const blue = host.readState(kRelativeBlueGain) / kThousandths;
        if (core.alive && row->state == kCaptured) {
            row->redGain = red;
            row->blueGain = blue;
        }
    }
    notifyStatus();
}

void LensAssistApgaFlow::calibrationTick() {
    if (!core.state.shadingHandle || !m_captured.haveAllFrames()) {
        if (core.state.runAll)
            setRunAll(false);
        if (core.state.lscStepProgress < phase::kLoaded)
            return;
    }
    if (core.state.lscStepProgress == 0)
        solve();
    else if (core.state.lscStepProgress == phase::kSolved)
        loadWhenSolved();
    finishWhenMeasured();
    refreshStatus(core);
}

void LensAssistApgaFlow::solve() {
    ShadingHandle const handle = core.state.shadingHandle;
    IlluminantTemperatures temperatures{};
    for (size_t i = 0; i < kIlluminants; ++i)
        temperatures[i] = toInt32(m_display.temperature(i));
    core.widgets.paintAtOnce(core.widgets.calibration);
    if (core.alive)
        findIlluminantSolution(core, m_captured, m_mode, temperatures);
    PageState& state = core.state;
    bool const isOurs = core.alive && state.shadingHandle == handle && state.lscStepProgress == 0 &&
                        (state.lscStepState == kInProgress || isFailed(state.lscStepState));
    if (!isOurs)
        return;
    // Not a failure yet, deliberately: a calculation that failed has no registers, and the next tick says so.
    state.lscStepState = kInProgress;
    state.lscStepProgress = phase::kSolved;
}

void LensAssistApgaFlow::loadWhenSolved() {
    ShadingHandle const handle = core.state.shadingHandle;
    std::optional<std::vector<sf_RegEntry>> entries = dumpRegisterList(handle);
    if (!isCalibrating(handle, phase::kSolved))
        return;
    if (!entries || entries->empty()) {
        core.state.lscStepState = kFailedOtherwise;
        core.state.lscStepProgress = 0;
        refreshEnables(core);
        return;
    }
    entries->insert(entries->begin(), kSelectWrite);
    loadSolution(*entries);
}

EepromStatus LensAssistApgaFlow::storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) {
    SensorModel const model = {core.sensor.sensorKind, core.sensor.variant};
    EepromStatus const stored = saveShadingRegisters(eeprom, label.constData(), model);
    if (stored == kEepromOk)
        (void)addFactoryTime(eeprom, label, OlderTime::MayStay); // the result is that of the registers
    if (core.alive && core.kind().keepsWhiteBalanceGains && hasWhiteBalanceGains(m_captured)) {
        CapturedFrames const captured = m_captured;
        storeWhiteBalanceGains(eeprom, label.constData(), core.host, captured, [this] {
            IlluminantKelvins temperatures{};
            for (size_t i = 0; i < kIlluminants; ++i)
                temperatures[i] = m_display.temperature(i);
            return temperatures;
        });
    }
    if (stored < kEepromOk)
        return stored;
    EepromStatus const written = HeadboardEepromFlush(eeprom);
    return written == kEepromOk ? HeadboardEepromVerify(eeprom, 0, -1) : written;
}

void LensAssistApgaFlow::showStatus() {
    m_display.show(m_captured, core.widgets.wizard);
    if (core.state.fileState == kFailed && isNumberMissing(core) && core.widgets.file.status)
        core.widgets.file.status->setText(
            QCoreApplication::translate("LensAssistApga", "Error: No serial number."));
}

} // namespace kestra

using namespace kestra;

LensAssistApga::LensAssistApga(QWidget* parent, SensorRecord const& sensor, HostServices const& services,
                               Wizard* wizard, EepromSlot& eepromSlot)
    : LensAssistApga(parent, std::make_shared<LensAssistApgaFlow>(sensor, services, eepromSlot), wizard) {}

LensAssistApga::LensAssistApga(QWidget* parent, std::shared_ptr<LensAssistApgaFlow> flow, Wizard* wizard)
    : CalibrationPage(parent, flow), m_flow(std::move(flow)) {
    Ui::LensAssistApga steps;
    steps.setupUi(this);
    Ui::LensAssistApgaCaptureRows rows;
    rows.setupUi(this);
    placeCaptureRows(steps, rows);
    build(steps, steps.Version_APGA, wizard);
    m_flow->captureDisplay().bind(rows);
    connect(rows.Incandescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedIncandescent_Image);
    connect(rows.Fluorescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedFluorescent_Image);
    connect(rows.Daylight_Image, &QPushButton::clicked, this, &LensAssistApga::OnBnClickedDaylight_Image);
}

void LensAssistApga::setMode(PgaMode mode) {
    m_flow->setMode(mode);
}

CapturedFrames const& LensAssistApga::captured() const {
    return m_flow->captured();
}

void LensAssistApga::OnBnClickedIncandescent_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kIncandescent);
}
void LensAssistApga::OnBnClickedFluorescent_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kFluorescent);
}
void LensAssistApga::OnBnClickedDaylight_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kDaylight);
}
