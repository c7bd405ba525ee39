#include "calibration/calibration_page.h"

#include "common/version.h"

#include <algorithm>
#include <utility>

namespace kestra {
CalibrationPage::CalibrationPage(QWidget* parent, std::shared_ptr<CalibrationFlow> flow)
    : GatedPage(parent, std::move(flow)) {
    m_flow->emitStatus = [this] { emit Status(); };
}

CalibrationPage::~CalibrationPage() {
    if (m_destroyedHook)
        m_destroyedHook();
    m_flow->pageDestroyed();
}

void CalibrationPage::finishBuilding(QLabel* version) {
    PageWidgets& w = m_flow->widgets;
    version->setText(versionText());
    w.timer = new QTimer(this);
    constexpr int kTickMs = 500;
    w.timer->setInterval(kTickMs);
    connect(w.timer, &QTimer::timeout, this, &CalibrationPage::start);
    std::pair<QPushButton*, void (CalibrationPage::*)()> const buttons[] = {
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
    flow->gate.runOrDrop([&] { flow->run([&] { flow->tick(); }); });
}

void CalibrationPage::onFrame(Frame const& frame) {
    std::shared_ptr const flow = m_flow;
    flow->gate.runOrDrop([&] { flow->run([&] { flow->onFrame(frame); }); });
}

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

void CalibrationPage::registerChanged(uint32_t what, uint32_t) {
    std::shared_ptr const flow = m_flow;
    if (what == 0)
        guarded("a register's change", [&] { flow->showLensCorrection(); });
}

void CalibrationPage::OnUpdateStatus() {
    std::shared_ptr const flow = m_flow;
    guarded("the status", [&] { flow->show(); });
}

// What these two buttons ask for is what they say when they are pressed, also when the press has to wait.
void CalibrationPage::OnBnClickedRunall() {
    press([on = !state().runAll](CalibrationFlow& flow) { flow.setRunAll(on); });
}
void CalibrationPage::OnBnClickedEnableLC() {
    edit(
        [on = m_flow->widgets.isEnableLcChecked()](CalibrationFlow& flow) { flow.switchLensCorrection(on); });
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): published with a value
void CalibrationPage::OnEnChangeGoodcu(QString text) {
    edit([text](CalibrationFlow& flow) { flow.uniformityLimitChanged(text); });
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
