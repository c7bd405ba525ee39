#pragma once

#include "simulator/boundary/plugin_library.h"
#include "simulator/camera/simulated_camera.h"
#include "tests/support/fake_bench.h"

#include <QDialog>
#include <QMetaMethod>
#include <memory>
#include <vector>

/// The built plug-in on a simulated camera, with its dialog as a host shows it. The dialog's timer is
/// stopped.
class DialogScene {
public:
    DialogScene();
    ~DialogScene();

    /// Opens and shows the dialog until it stands painted.
    void open();
    void close();

    /// An RGB-32 frame that no step asked for.
    void frame();
    /// What the page's timer does.
    void tick();
    /// Starts the calibration step, which then waits for frames.
    void startCalibration();

private:
    kestra::FakeBench m_bench;
    std::unique_ptr<simulator::SimulatedCamera> m_camera;
    pictara::PluginLibrary m_plugin;
    std::unique_ptr<QDialog> m_dialog;
    QMetaMethod m_tick;
    QDialog* m_page = nullptr; // owned by the dialog
    std::vector<uint32_t> m_pixels;
};
