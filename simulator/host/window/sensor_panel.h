#pragma once

#include "simulator/host/window/live_panel.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QSpinBox;

namespace pictara {
class Session;

/// The sensor on the headboard and what a person does to it by hand: another profile, exposure, the seed of
/// the noise, faults of the EEPROM. Its controls are children named "profile", "automaticExposure",
/// "exposure", "seed", "fault", "operation", "lasts" and "fail".
class SensorPanel : public LivePanel {
    Q_OBJECT
public:
    /// Borrows the session.
    explicit SensorPanel(Session& session, QWidget* parent = nullptr);
    /// Shows exposure and its loop as they are by now, unless the person is about to set it.
    void refresh(quint64 frame) override;

signals:
    /// The person wants that sensor instead.
    void profileWished(QString const& profile);
    void told(QString const& message);

private:
    void addProfile(QFormLayout& form);
    void addExposure(QFormLayout& form);
    void addSeed(QFormLayout& form);
    void addFault(QFormLayout& form);
    void planFault();

    Session& m_session;
    QCheckBox* m_automatic;
    QSpinBox* m_exposure;
    QComboBox* m_fault;
    QSpinBox* m_operation;
    QCheckBox* m_lasts;
};
} // namespace pictara
