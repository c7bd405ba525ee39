#include "calibration/calibration_page.h"

#include "common/version.h"

#include <algorithm>
#include <utility>

namespace kestra {

namespace {

constexpr int kTickMs = 500;

} // namespace

CalibrationPage::CalibrationPage(QWidget* parent, std::shared_ptr<CalibrationFlow> flow)
    : QDialog(parent), m_flow(std::move(flow)) {
    m_flow->emitStatus = [this] { emit Status(); };
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
    m_flow->widgets.timer = timer;
    connectWidgets();
    version->setText(versionText());
}

void CalibrationPage::connectWidgets() {
    PageWidgets const& w = m_flow->widgets;
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

void CalibrationPage::start() {
    std::shared_ptr const flow = m_flow;
    flow->gate.runOrDrop([&] {
        flow->run([&] { flow->tick(); });
        flow->stepEnded();
    });
}

void CalibrationPage::onFrame(Frame const& frame) {
    std::shared_ptr const flow = m_flow;
    flow->gate.runOrDrop([&] { flow->run([&] { flow->onFrame(frame); }); });
}

// What this throws is for the one who opens the dialog: the host gets none.
void CalibrationPage::initialise() {
    std::shared_ptr const flow = m_flow;
    flow->gate.runOrDrop([&] { flow->initialise(); });
}

void CalibrationPage::setVisible(bool visible) {
    QPointer<CalibrationPage> const self(this);
    press(&CalibrationFlow::pageShown);
    if (!self)
        return;
    if (QTimer* const timer = m_flow->widgets.timer)
        timer->start();
    QDialog::setVisible(visible);
}

void CalibrationPage::reject() {}

void CalibrationPage::setSerialNumber(SerialNumber serialNumber) {
    m_flow->serialNumber = std::move(serialNumber);
}

void CalibrationPage::setDestroyedHook(std::function<void()> hook) {
    m_destroyedHook = std::move(hook);
}

void CalibrationPage::adopt(SensorRecord const& sensor, HostServices const& services) {
    m_flow->adopt(sensor, services);
}

void CalibrationPage::setFileState(StepState state) {
    press([state](CalibrationFlow& flow) { flow.setFileState(state); });
}
void CalibrationPage::closePage() {
    press(&CalibrationFlow::closePage);
}
void CalibrationPage::registerChanged(uint32_t what, uint32_t) {
    std::shared_ptr const flow = m_flow;
    if (what == 0)
        flow->run([&] { flow->showLensCorrection(); });
}
void CalibrationPage::OnUpdateStatus() {
    std::shared_ptr const flow = m_flow;
    flow->run([&] { flow->show(); });
}
void CalibrationPage::OnBnClicked_LensCalibSetup() {
    press(&CalibrationFlow::applySetup);
}
void CalibrationPage::OnBnClickedAe() {
    press(&CalibrationFlow::adjustExposure);
}
void CalibrationPage::OnBnClickedAwb() {
    press(&CalibrationFlow::adjustColourBalance);
}
void CalibrationPage::OnBnClickedCalibrate() {
    press(&CalibrationFlow::calibrate);
}
void CalibrationPage::OnBnClickedFilesave() {
    press(&CalibrationFlow::saveToFile);
}
void CalibrationPage::OnBnClickedPromsave() {
    press(&CalibrationFlow::saveToEeprom);
}
void CalibrationPage::OnBnClickedStartover() {
    press(&CalibrationFlow::startOver);
}
void CalibrationPage::OnBnClickedGraph() {
    press(&CalibrationFlow::showGraph);
}
void CalibrationPage::OnBnClickedCU() {
    press(&CalibrationFlow::testUniformity);
}
void CalibrationPage::OnBnClickedRunall() {
    press(&CalibrationFlow::toggleRunAll);
}
void CalibrationPage::OnBnClickedBrowse() {
    press(&CalibrationFlow::browse);
}
void CalibrationPage::OnCbnSelchangePromLabel(QString const& text) {
    OnCbnEditchangePromLabel(text);
}
void CalibrationPage::OnCbnEditchangePromLabel(QString const&) {
    edit(&CalibrationFlow::eepromLabelChanged);
}
// The signatures of these two are published, values and all. NOLINTBEGIN(performance-unnecessary-value-param)
void CalibrationPage::OnEnChangeGoodcu(QString text) {
    edit([text](CalibrationFlow& flow) { flow.uniformityLimitChanged(text); });
}
void CalibrationPage::OnEnChangeSavedir(QString) {
    edit(&CalibrationFlow::saveDirChanged);
}
// NOLINTEND(performance-unnecessary-value-param)
void CalibrationPage::OnBnClickedEnableLC() {
    edit(&CalibrationFlow::switchLensCorrection);
}

void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty) {
    bool const allReady = std::ranges::all_of(
        pages, [](CalibrationPage const* page) { return !page || page->state().fileState == kReady; });
    if (!isEmpty && allReady)
        return;
    for (CalibrationPage* const page : pages)
        if (page)
            page->setFileState(isEmpty ? kFailed : kNotEvaluated);
}

} // namespace kestra
