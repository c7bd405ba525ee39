#pragma once

#include "simulator/camera/simulated_camera.h"

#include <QWidget>

class QCheckBox;
class QComboBox;

namespace pictara {
class QuantityControl;

/// Where a person sets the light before the camera. Its controls are children named "illuminant",
/// "temperature", "level", "gradient", "object", "cover" and "normal".
class LightPanel : public QWidget {
    Q_OBJECT
public:
    explicit LightPanel(simulator::Light const& light, QWidget* parent = nullptr);

signals:
    /// The light that falls into the lens: none when it is covered.
    void lightChanged(simulator::Light const& light);

private:
    void addIlluminants();
    void connectControls();
    void showIlluminant();
    void showLight();
    void announce();

    simulator::Light m_light; ///< as it falls into the lens that is not covered
    QComboBox* m_illuminant;
    QuantityControl* m_temperature;
    QuantityControl* m_level;
    QuantityControl* m_gradient;
    QCheckBox* m_object;
    QCheckBox* m_cover;
};
} // namespace pictara
