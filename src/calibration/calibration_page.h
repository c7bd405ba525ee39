#pragma once

#include "calibration/calibration_flow.h"
#include "wizard/gated_page.h"

#include <span>

namespace kestra {
/// A calibration page: the dialog that stands as a tab in the wizard. It owns the widgets and the timer, and
/// hands everything that happens to its flow, through the gate.
class CalibrationPage : public GatedPage<CalibrationFlow> {
    Q_OBJECT

public:
    ~CalibrationPage() override;

    void setVisible(bool visible) override;
    /// Hides the page for good: no tick runs any more.
    virtual void closePage() { press(&CalibrationFlow::closePage); }
    /// The host tells of a register write; `what` 0 means any register.
    virtual void registerChanged(uint32_t what, uint32_t value);

    /// Takes a fresh copy of the host's records.
    void adopt(SensorRecord const& sensor, HostServices const& services) { m_flow->adopt(sensor, services); }
    /// Brings the page into its first state; called once, after construction. What this throws is for the
    /// one who opens the dialog: the host gets none.
    void initialise();
    /// A frame of the host's; see `Frame`.
    void onFrame(Frame const& frame);
    void setSerialNumber(SerialNumber serialNumber) { m_flow->serialNumber = std::move(serialNumber); }
    /// Overrules how the file step stands.
    void setFileState(StepState state) {
        press([state](CalibrationFlow& flow) { flow.setFileState(state); });
    }
    /// Called once when the page goes away, before anything of it is gone.
    void setDestroyedHook(std::function<void()> hook) { m_destroyedHook = std::move(hook); }

    [[nodiscard]] PageState const& state() const { return m_flow->state(); }

signals:
    void Status();

public slots:
    void start();
    void OnBnClicked_LensCalibSetup() { press(&CalibrationFlow::applySetup); }
    void OnBnClickedAe() { press(&CalibrationFlow::adjustExposure); }
    void OnBnClickedAwb() { press(&CalibrationFlow::adjustColourBalance); }
    void OnBnClickedCalibrate() { press(&CalibrationFlow::calibrate); }
    void OnBnClickedFilesave() { press(&CalibrationFlow::saveToFile); }
    void OnBnClickedPromsave() { press(&CalibrationFlow::saveToEeprom); }
    void OnBnClickedStartover() { press(&CalibrationFlow::startOver); }
    void OnBnClickedGraph() { press(&CalibrationFlow::showGraph); }
    void OnBnClickedCU() { press(&CalibrationFlow::testUniformity); }
    void OnBnClickedRunall();
    void OnBnClickedBrowse() { press(&CalibrationFlow::browse); }
    void OnCbnSelchangePromLabel(QString const&) { edit(&CalibrationFlow::eepromLabelChanged); }
    void OnCbnEditchangePromLabel(QString const&) { edit(&CalibrationFlow::eepromLabelChanged); }
    // These two are published with values. NOLINTBEGIN(performance-unnecessary-value-param)
    void OnEnChangeGoodcu(QString text);
    void OnEnChangeSavedir(QString) { edit(&CalibrationFlow::saveDirChanged); }
    // NOLINTEND(performance-unnecessary-value-param)
    void OnBnClickedEnableLC();
    void OnUpdateStatus();

protected:
    CalibrationPage(QWidget* parent, std::shared_ptr<CalibrationFlow> flow);

    /// Builds the page's common part on the widgets that the derived page's form has created: timer, version
    /// text and connections.
    template <typename Form>
    void build(Form const& form, QLabel* version, Wizard* wizard) {
        m_flow->widgets.bind(this, form, wizard);
        finishBuilding(version);
    }

private:
    void finishBuilding(QLabel* version);

    std::function<void()> m_destroyedHook;
};

/// Tells the calibration pages, absent ones being null, that the headboard's serial number is another one,
/// entered by the user or filled in. An empty one refuses the results file of every page. Any other opens the
/// file step of every page again, whatever became of it; only when all of them are ready they stay so.
void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty);
} // namespace kestra
