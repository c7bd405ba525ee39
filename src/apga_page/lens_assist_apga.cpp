#include "apga_page/lens_assist_apga.h"

#include "apga_page/white_balance_gains.h"
#include "calibration/calibration_flow.h"
#include "common/libraries.h"
#include "common/numbers.h"
#include "headboard/register_record.h"
#include "ui_capture_rows.h"
#include "ui_lens_assist_apga.h"

namespace kestra {
namespace {
constexpr int32_t kLibraryMinusOne = -1;

constexpr uint32_t kAdaptiveBits = 12;
constexpr uint32_t kBitsOfYcbcr = 8;
constexpr uint32_t kAutomaticBits = 8; // whatever the frame holds: the library knows these sensors

constexpr int32_t kNoRadius = 0; // the radius belongs to the base solution alone
constexpr uint32_t kSlots[kIlluminants] = {2, 3, 4};

constexpr PageTraits kTraits = {
    .kind = PageKind::Apga,
    .eepromLabel = kFactoryLabel,
    .takesThreePictures = true,
    .savesInFormatOfKind = true,
    .tellsMissingNumber = true,
    .passesOverFailure = true,
    .failsWithoutRegisters = true,
    .pathSeparator = '/',
    .firstWrite = sf_RegEntry{.first = 0, .second = 0x098E, .third = 0},
};

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
/// at a tick, for the adaptive mode on a base solution from the fluorescent one, and keeps the white balance
/// of the three lights in the EEPROM.
class LensAssistApgaFlow : public CalibrationFlow {
public:
    LensAssistApgaFlow(SensorRecord const& sensor, HostServices const& services, EepromSlot& eepromSlot)
        : CalibrationFlow(kTraits, sensor, services, eepromSlot) {}

    void setMode(PgaMode mode) { m_mode = mode; }

    /// The button of a row. Under a light that the user has changed during Run All, exposure and colour
    /// balance are done again before the frame is taken.
    void captureImage(Illuminant illuminant);

protected:
    [[nodiscard]] sf_Handle* createCalibration() override;
    [[nodiscard]] bool takeInputs() override;
    void captureFrame(Frame const& frame) override;
    void solve() override;
    [[nodiscard]] EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) override;

private:
    void takeFrame(Frame const& frame);
    void findTables();
    [[nodiscard]] IlluminantKelvins temperatures() const;

    PgaMode m_mode;
    uint32_t m_blinks{}; // the lowest bit tells which bullet a waiting row shows
};

sf_Handle* LensAssistApgaFlow::createCalibration() {
    return shadefit().sf_Create(m_sensor.sensorKind, m_sensor.variant, kLibraryMinusOne);
}

void LensAssistApgaFlow::captureImage(Illuminant illuminant) {
    m_state.captured[illuminant].progress = 0;
    m_state.captured[illuminant].state = kCapturing;
    if (illuminant != kIncandescent && m_state.runAll) {
        m_state.aeStepState = kReady;
        m_state.wbStepState = kReady;
    }
}

// The first frame is taken under the light that exposure and colour balance were done in; for the other two
// the user changes the light.
bool LensAssistApgaFlow::takeInputs() {
    CaptureRow& first = m_state.captured[kIncandescent];
    if (first.state == kNotCaptured) {
        first.arm();
        return true;
    }
    if (first.state == kArmed) {
        first.state = kCapturing;
        return true;
    }
    for (CaptureRow& row : m_state.captured) {
        if (row.state >= kCapturing)
            continue;
        if (row.state == kWaiting) {
            row.isLit = (++m_blinks & 1) != 0;
        } else {
            row.arm();
            row.state = kWaiting;
        }
        return true;
    }
    return false;
}

void LensAssistApgaFlow::captureFrame(Frame const& frame) {
    takeFrame(frame);
    countPhase(frame, phase::kLoaded, phase::kMeasure);
}

void LensAssistApgaFlow::takeFrame(Frame const& frame) {
    CaptureRow* const row = m_state.captured.capturing();
    bool const isYcbcr = frame.type == ImageType::Ycbcr;
    if (!row || !(isYcbcr || frame.type == ImageType::Raw12))
        return;
    bool const balancedFirst = m_state.runAll != 0;
    if (balancedFirst && !(m_state.aeStepState == kDone && m_state.wbStepState == kDone))
        return;
    std::optional<SensorInfo> const info = m_camera.info();
    m_state.captured.capture(*row, frame, info ? size_t{info->imageWidth} * info->imageHeight : 0);
    if (row->state == kCapturing)
        return; // the frame cannot be read whole; the next one may be good
    m_state.inputWasYcbcr = isYcbcr ? 1 : 0;
    if (row->state == kCaptured && balancedFirst) {
        row->redGain = m_host.readState(kRelativeRedGain) / kThousandths;
        row->blueGain = m_host.readState(kRelativeBlueGain) / kThousandths;
    }
    notifyStatus();
}

IlluminantKelvins LensAssistApgaFlow::temperatures() const {
    return {widgets.temperature(kIncandescent), widgets.temperature(kFluorescent),
            widgets.temperature(kDaylight)};
}

void LensAssistApgaFlow::solve() {
    widgets.paintAtOnce(widgets.calibration);
    if (m_mode.autoPgaMode || m_mode.adaptivePgaMode)
        findTables();
    // Not a failure yet, deliberately: a calculation that failed has no registers, and the next tick says so.
    m_state.lscStepState = kInProgress;
    m_state.lscStepProgress = phase::kSolved;
}

// A frame that is refused or a solution that fails sets its failure state, and nothing more is asked.
void LensAssistApgaFlow::findTables() {
    WaitCursor const cursor(widgets.page);
    IlluminantKelvins const kelvins = temperatures();
    std::optional<SensorInfo> const info = m_camera.info();
    BayerCoding const bayer = readBayerCoding(m_host);
    sf_YcbcrInput const ycbcr = readYcbcrInput(m_host, bayer.orientation);
    int32_t const falloff = widgets.falloff();
    bool const isAutomatic = m_mode.autoPgaMode != 0;
    uint32_t const adaptiveBits = m_state.inputWasYcbcr ? kBitsOfYcbcr : kAdaptiveBits;

    auto const isGiven = [&](Illuminant illuminant) {
        CaptureRow const& row = m_state.captured[illuminant];
        if (m_state.lscStepState != kInProgress || !row.samples)
            return false;
        LibraryImage const image = {
            .data = row.samples->data(),
            .width = info ? info->imageWidth : uint32_t(row.width),
            .height = info ? info->imageHeight : uint32_t(row.height),
            .isYcbcr = m_state.inputWasYcbcr != 0,
            .bits = isAutomatic ? kAutomaticBits : adaptiveBits,
        };
        Shading const& library = m_state.shadingHandle;
        // The sensor's picture may have grown since the capture; the library reads as much as it is told of.
        if (uint64_t{image.width} * image.height > row.samples->size())
            m_state.lscStepState = kFailed;
        else if (!(image.isYcbcr ? library.accepts(image, ycbcr) : library.accepts(image, bayer)))
            m_state.lscStepState = kFailedOtherwise;
        return m_state.lscStepState == kInProgress;
    };
    auto const judge = [&](int result) {
        if (result != 0)
            m_state.lscStepState = failureOf(result);
    };
    if (!isAutomatic && isGiven(kFluorescent))
        judge(m_state.shadingHandle.findSolution(makeSolutionParams(falloff, m_state.lensRadius)));
    // The fluorescent table, whose frame the base comes from, is found last: the library keeps the order in
    // which the tables are asked for.
    for (Illuminant const illuminant : {kIncandescent, kDaylight, kFluorescent}) {
        if (!isGiven(illuminant))
            continue;
        sf_ApgaParams table = makeApgaParams(falloff, kNoRadius);
        table.colourTemperature = uint32_t(toInt32(kelvins[illuminant]));
        table.illuminantSlot = kSlots[illuminant];
        judge(isAutomatic ? m_state.shadingHandle.findAutoPga(table) : m_state.shadingHandle.findApga(table));
    }
}

EepromStatus LensAssistApgaFlow::storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) {
    SensorModel const model = {m_sensor.sensorKind, m_sensor.variant};
    EepromStatus const stored = saveShadingRegisters(eeprom, label.constData(), model);
    if (stored == kEepromOk)
        (void)addFactoryTime(eeprom, label, OlderTime::MayStay); // the result is that of the registers
    if (kind().keepsWhiteBalanceGains && hasWhiteBalanceGains(m_state.captured))
        storeWhiteBalanceGains(eeprom, label.constData(), m_host, m_state.captured, temperatures());
    if (stored != kEepromOk)
        return stored;
    EepromStatus const written = HeadboardEepromFlush(eeprom);
    return written == kEepromOk ? HeadboardEepromVerify(eeprom, 0, -1) : written;
}
} // namespace kestra

using namespace kestra;

LensAssistApga::LensAssistApga(QWidget* parent, SensorRecord const& sensor, HostServices const& services,
                               Wizard* wizard, EepromSlot& eepromSlot)
    : CalibrationPage(parent, std::make_shared<LensAssistApgaFlow>(sensor, services, eepromSlot)) {
    Ui::LensAssistApga steps;
    steps.setupUi(this);
    Ui::LensAssistApgaCaptureRows rows;
    rows.setupUi(this);
    placeCaptureRows(steps, rows);
    build(steps, steps.Version_APGA, wizard);
    m_flow->widgets.bindCaptures(rows);
    connect(rows.Incandescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedIncandescent_Image);
    connect(rows.Fluorescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedFluorescent_Image);
    connect(rows.Daylight_Image, &QPushButton::clicked, this, &LensAssistApga::OnBnClickedDaylight_Image);
}

LensAssistApgaFlow& LensAssistApga::flow() const { return static_cast<LensAssistApgaFlow&>(*m_flow); }
void LensAssistApga::setMode(PgaMode mode) { flow().setMode(mode); }

void LensAssistApga::capture(Illuminant illuminant) {
    press([&own = flow(), illuminant](CalibrationFlow&) { own.captureImage(illuminant); });
}
