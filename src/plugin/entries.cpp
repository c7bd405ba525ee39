#include "plugin/instance.h"

#include "apga_page/lens_assist_apga.h"
#include "common/host.h"
#include "common/sensor_kinds.h"
#include "hoststate/pipeline.h"
#include "lsc_page/lens_assist.h"
#include "wizard/gate.h"
#include "wizard/wizard.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QScopeGuard>

using namespace kestra;

namespace {
constexpr uint32_t kApiVersion = 5;
// The mismatch is silent to the user, deliberately: the null result tells the host, who knows what it asked
// for. So the box is made and never shown; it needs an application.
void reportVersionMismatch() {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    QMessageBox const box(QMessageBox::Information, QStringLiteral("KestraMfr Plug-in"),
                          QStringLiteral("Pictara dialog plugin API mismatch."), QMessageBox::Ok, nullptr,
                          Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);
}

// Whoever deletes the object, the instance does not keep a pointer to it.
template <typename Object>
void forgetWhenDestroyed(Object* object, Object* KestraMfr::*member) {
    object->setDestroyedHook([object, member] {
        if (kestraMfr().*member == object)
            kestraMfr().*member = nullptr;
    });
}

// Deletes a part of a dialog that is not finished, since the host does not get that dialog.
auto deletedUnlessFinished(QPointer<QWidget> const& part) {
    return qScopeGuard([part] { delete part.data(); });
}

// The tabs' labels; the third is made and never used, since this dialog shows no configuration page.
constexpr char const* kTabLabels[] = {"Lens Calibration", "Lens Calibration - APGA(Adaptive/Auto)",
                                      "Headboard Configuration"};

// The host may delete the dialog from inside a service that the page calls on its way.
template <typename Page>
void addPage(Page* created, Page* KestraMfr::*member, QPointer<Wizard> const& wizard,
             SensorRecord const& sensor, HostServices const& services, char const* label) {
    auto unfinished = deletedUnlessFinished(created);
    QPointer<Page> const page = created;
    kestraMfr().*member = page;
    forgetWhenDestroyed(page.data(), member);
    page->adopt(sensor, services); // the constructor has copied both already; harmless and kept
    page->setSerialNumber(serialNumberOfConfigPage());
    page->initialise();
    // The page's parent is the host's widget: without its wizard it would stay, unseen, and get every frame.
    if (!wizard || !page)
        return;
    wizard->addPage(page, QString::fromLatin1(label));
    unfinished.dismiss();
}

void addPageOf(SensorRecord const& sensor, HostServices const& services, QPointer<Wizard> const& wizard) {
    KestraMfr& plugin = kestraMfr();
    QWidget* const parent = plugin.g_parentWidget;
    DialogPage const choice = sensorKind(sensor.sensorKind, sensor.variant).page;
    if (choice == DialogPage::LensShading) {
        auto* const page = new LensAssist(parent, sensor, services, wizard, plugin.g_headboardEeprom);
        return addPage(page, &KestraMfr::g_lensAssist, wizard, sensor, services, kTabLabels[0]);
    }
    bool const isAutomatic = choice == DialogPage::AutomaticPga;
    auto* const page = new LensAssistApga(parent, sensor, services, wizard, plugin.g_headboardEeprom);
    page->setMode({.autoPgaMode = isAutomatic, .adaptivePgaMode = !isAutomatic});
    addPage(page, &KestraMfr::g_lensAssistApga, wizard, sensor, services, kTabLabels[1]);
}

QDialog* openDialog(QWidget* parent, SensorRecord const& sensor, HostServices const& services) {
    // Only the preset's plain name opens the dialog; the host's prefixed forms count in the setup step.
    DialogPage const page = sensorKind(sensor.sensorKind, sensor.variant).page;
    if (page == DialogPage::NoDialog || !presetExists(Host(services), kSetupPreset[0]))
        return nullptr;
    KestraMfr& plugin = kestraMfr();
    plugin.g_parentWidget = parent;
    QPointer<Wizard> const wizard =
        new Wizard(QStringLiteral("Kestra Headboard Tuning - LSC Wizard"), plugin.g_parentWidget);
    auto unfinished = deletedUnlessFinished(wizard.data());
    plugin.g_wizard = wizard;
    forgetWhenDestroyed(wizard.data(), &KestraMfr::g_wizard);
    if (page != DialogPage::EmptyDialog)
        addPageOf(sensor, services, wizard);
    if (!wizard)
        return nullptr;
    for (int index = 1; index < wizard->pageCount(); ++index)
        wizard->enablePage(index);
    wizard->enablePage(0);
    unfinished.dismiss();
    return wizard;
}

// What both entries do. Neither calls the other: the program's loader binds an exported name to the first
// function of that name, which may be one of the host's own.
void deliverFrame(void const* data, uint32_t type, int32_t width, int32_t height, int32_t pitch) noexcept {
    guarded("ImageData", [&] {
        Frame const frame = {
            .data = data, .type = ImageType(type), .width = width, .height = height, .pitch = pitch};
        // The member is read anew for each page: a page may go away inside the call of the other.
        if (LensAssist* const page = kestraMfr().g_lensAssist)
            page->onFrame(frame);
        if (LensAssistApga* const page = kestraMfr().g_lensAssistApga)
            page->onFrame(frame);
    });
}
} // namespace

QDialog* OpenQtDialog(uint32_t apiVersion, QWidget* parent, SensorRecord const* sensor,
                      HostServices const* services) noexcept {
    QDialog* dialog = nullptr;
    guarded("OpenQtDialog", [&] {
        if (apiVersion != kApiVersion)
            reportVersionMismatch();
        else if (sensor && services)
            dialog = openDialog(parent, *sensor, *services);
    });
    return dialog;
}

void CloseDialog() noexcept {}

void ImageData(void const* frame, uint32_t imageType, uint32_t width, int32_t height,
               uint32_t pitch) noexcept {
    deliverFrame(frame, imageType, int32_t(width), height, int32_t(pitch));
}

void RgbImageData(void const* frame, uint32_t imageType, uint32_t width, uint32_t height,
                  int32_t pitch) noexcept {
    deliverFrame(frame, imageType, int32_t(width), int32_t(height), pitch);
}

void RegisterChanged(uint32_t what, uint32_t value) noexcept {
    guarded("RegisterChanged", [&] {
        if (LensAssist* const page = kestraMfr().g_lensAssist)
            page->registerChanged(what, value);
        if (LensAssistApga* const page = kestraMfr().g_lensAssistApga)
            page->registerChanged(what, value);
    });
}
