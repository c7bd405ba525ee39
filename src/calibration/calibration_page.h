#pragma once

#include "calibration/calibration_flow.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <span>

namespace kestra {

/// A calibration page: the dialog that stands as a tab in the wizard. It owns the widgets and the timer, and
/// hands everything that happens to its flow, through the gate.
class CalibrationPage : public QDialog {
    Q_OBJECT

public:
    ~CalibrationPage() override;

    void setVisible(bool visible) override;
    /// Hides the page for good: no tick runs any more.
    virtual void closePage();
    /// The host tells of a register write; `what` 0 means any register.
    virtual void registerChanged(uint32_t what, uint32_t value);

    /// A page is a part of its tab: the Escape key leaves it there.
    void reject() override;

    /// Takes a fresh copy of the host's records.
    void adopt(SensorRecord const& sensor, HostServices const& services);
    /// Brings the page into its first state; called once, after construction.
    void initialise();
    /// A frame of the host's; see `Frame`.
    void onFrame(Frame const& frame);
    void setSerialNumber(SerialNumber serialNumber);
    /// Overrules how the file step stands.
    void setFileState(StepState state);
    /// Called once when the page goes away, before anything of it is gone.
    void setDestroyedHook(std::function<void()> hook);

    [[nodiscard]] PageState const& state() const { return m_flow->state(); }

signals:
    void Status();

public slots:
    void start();
    void OnBnClicked_LensCalibSetup();
    void OnBnClickedAe();
    void OnBnClickedAwb();
    void OnBnClickedCalibrate();
    void OnBnClickedFilesave();
    void OnBnClickedPromsave();
    void OnBnClickedStartover();
    void OnBnClickedGraph();
    void OnBnClickedCU();
    void OnBnClickedRunall();
    void OnBnClickedBrowse();
    void OnCbnSelchangePromLabel(QString const& text);
    void OnCbnEditchangePromLabel(QString const& text);
    void OnEnChangeGoodcu(QString text);
    void OnEnChangeSavedir(QString text);
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

    /// A button: keeps what arrives inside a step, and shows what became of it. Nothing is thrown, also when
    /// there is no memory to keep it.
    template <typename Step>
    void press(Step step) {
        std::shared_ptr const flow = m_flow; // the step's own share
        guarded("a button", [&] {
            flow->gate.runOrKeep([&kept = *flow, step] {
                kept.run([&] {
                    std::invoke(step, kept);
                    kept.show();
                });
                kept.stepEnded();
            });
        });
    }

private:
    /// A field: a change that the page itself makes is none of the user's.
    template <typename Step>
    void edit(Step step) {
        if (m_flow->state().updateDepth == 0)
            press(step);
    }
    void finishBuilding(QLabel* version);
    void connectWidgets();

    std::shared_ptr<CalibrationFlow> const m_flow;
    std::function<void()> m_destroyedHook;
};

/// Tells the calibration pages, absent ones being null, that the headboard's serial number is another one,
/// entered by the user or filled in. An empty one refuses the results file of every page. Any other opens the
/// file step of every page again, whatever became of it; only when all of them are ready they stay so.
void tellSerialNumberEdited(std::span<CalibrationPage* const> pages, bool isEmpty);

} // namespace kestra
