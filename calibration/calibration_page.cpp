#include "calibration/calibration_page.h"

#include "common/version.h"

#include <utility>

namespace {

constexpr int kTickMs = 500;

} // namespace

CalibrationPage::CalibrationPage(QWidget* parent, std::shared_ptr<CalibrationFlow> flow)
    : QDialog(parent), m_flow(std::move(flow)) {
    m_flow->setStatusSignal([this] { emit Status(); });
}

CalibrationPage::~CalibrationPage() {
    if (m_destroyedHook)
        m_destroyedHook();
    m_flow->pageDestroyed();
}

void CalibrationPage::finishBuilding(QLabel* version) {
    auto* const timer = new QTimer(this);
    timer->setInterval(kTickMs);
    connect(timer, &QTimer::timeout, this, &CalibrationPage::start);
    m_flow->widgets().timer = timer;
    connectWidgets();
    version->setText(versionText());
}

void CalibrationPage::connectWidgets() {
    PageWidgets const& w = m_flow->widgets();
    using Slot = void (CalibrationPage::*)();
    std::pair<QPushButton*, Slot> const buttons[] = {
        {w.LensCalibSetup, &CalibrationPage::OnBnClicked_LensCalibSetup},
        {w.AE, &CalibrationPage::OnBnClickedAe},
        {w.AWB, &CalibrationPage::OnBnClickedAwb},
        {w.Show_Graph, &CalibrationPage::OnBnClickedGraph},
        {w.Calibrate, &CalibrationPage::OnBnClickedCalibrate},
        {w.File_Save, &CalibrationPage::OnBnClickedFilesave},
        {w.Prom_Save, &CalibrationPage::OnBnClickedPromsave},
        {w.Run_All, &CalibrationPage::OnBnClickedRunall},
        {w.Start_Over, &CalibrationPage::OnBnClickedStartover},
        {w.ColorUniformity, &CalibrationPage::OnBnClickedCU},
        {w.Browse, &CalibrationPage::OnBnClickedBrowse},
        {w.Enable_LC, &CalibrationPage::OnBnClickedEnableLC},
    };
    for (auto const& [button, slot] : buttons)
        connect(button, &QPushButton::clicked, this, slot);
    // By name: the overload with the text is marked obsolete and the one with the index has no text to pass
    // on.
    connect(w.Prom_Label, SIGNAL(currentIndexChanged(QString)), this, SLOT(OnCbnSelchangePromLabel(QString)));
    connect(w.Prom_Label, &QComboBox::editTextChanged, this, &CalibrationPage::OnCbnEditchangePromLabel);
    connect(w.GoodCU, &QLineEdit::textChanged, this, &CalibrationPage::OnEnChangeGoodcu);
    connect(w.Save_Dir, &QLineEdit::textChanged, this, &CalibrationPage::OnEnChangeSavedir);
    connect(this, &CalibrationPage::Status, this, &CalibrationPage::OnUpdateStatus);
}

void CalibrationPage::setVisible(bool visible) {
    QPointer<CalibrationPage> const self(this);
    std::shared_ptr(m_flow)->pageShown();
    if (!self)
        return;
    if (QTimer* const timer = m_flow->widgets().timer)
        timer->start();
    QDialog::setVisible(visible);
}

void CalibrationPage::reject() {}

void CalibrationPage::setSerialNumber(SerialNumber serialNumber) {
    m_flow->setSerialNumber(std::move(serialNumber));
}

void CalibrationPage::setFileState(StepState state) {
    std::shared_ptr(m_flow)->setFileState(state);
}

void CalibrationPage::setDestroyedHook(std::function<void()> hook) {
    m_destroyedHook = std::move(hook);
}

void CalibrationPage::adopt(SensorRecord const& sensor, HostServices const& services) {
    m_flow->adopt(sensor, services);
}

// Every call below works on a share of the flow of its own: the page may be gone when the flow returns.

void CalibrationPage::initialise() {
    std::shared_ptr(m_flow)->initialise();
}
void CalibrationPage::closePage() {
    std::shared_ptr(m_flow)->closePage();
}
void CalibrationPage::registerChanged(uint32_t what, uint32_t) {
    std::shared_ptr(m_flow)->registerChanged(what);
}
void CalibrationPage::onFrame(Frame const& frame) {
    std::shared_ptr(m_flow)->onFrame(frame);
}
void CalibrationPage::start() {
    std::shared_ptr(m_flow)->start();
}
void CalibrationPage::OnBnClicked_LensCalibSetup() {
    std::shared_ptr(m_flow)->applySetup();
}
void CalibrationPage::OnBnClickedAe() {
    std::shared_ptr(m_flow)->adjustExposure();
}
void CalibrationPage::OnBnClickedAwb() {
    std::shared_ptr(m_flow)->adjustColourBalance();
}
void CalibrationPage::OnBnClickedCalibrate() {
    std::shared_ptr(m_flow)->calibrate();
}
void CalibrationPage::OnBnClickedFilesave() {
    std::shared_ptr(m_flow)->saveToFile();
}
void CalibrationPage::OnBnClickedPromsave() {
    std::shared_ptr(m_flow)->saveToEeprom();
}
void CalibrationPage::OnBnClickedStartover() {
    std::shared_ptr(m_flow)->startOver();
}
void CalibrationPage::OnBnClickedGraph() {
    std::shared_ptr(m_flow)->showGraph();
}
void CalibrationPage::OnBnClickedCU() {
    std::shared_ptr(m_flow)->testUniformity();
}
void CalibrationPage::OnBnClickedRunall() {
    std::shared_ptr(m_flow)->toggleRunAll();
}
void CalibrationPage::OnBnClickedBrowse() {
    std::shared_ptr(m_flow)->browse();
}
void CalibrationPage::OnCbnSelchangePromLabel(QString const& text) {
    OnCbnEditchangePromLabel(text);
}
void CalibrationPage::OnCbnEditchangePromLabel(QString const&) {
    std::shared_ptr(m_flow)->eepromLabelChanged();
}
// The signatures of these two are published, values and all. NOLINTBEGIN(performance-unnecessary-value-param)
void CalibrationPage::OnEnChangeGoodcu(QString text) {
    std::shared_ptr(m_flow)->uniformityLimitChanged(text);
}
void CalibrationPage::OnEnChangeSavedir(QString) {
    std::shared_ptr(m_flow)->saveDirChanged();
}
// NOLINTEND(performance-unnecessary-value-param)
void CalibrationPage::OnBnClickedEnableLC() {
    std::shared_ptr(m_flow)->enableLensCorrectionClicked();
}
void CalibrationPage::OnUpdateStatus() {
    std::shared_ptr(m_flow)->updateDisplay();
}
