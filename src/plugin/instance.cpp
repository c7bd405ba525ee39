#include "plugin/instance.h"

#include "apga_page/lens_assist_apga.h"
#include "calibration/calibration_page.h"
#include "config_page/config.h"
#include "headboard/headboard_eeprom.h"
#include "lsc_page/lens_assist.h"
#include "wizard/wizard.h"

#include <QCoreApplication>
#include <array>
#include <type_traits>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#endif

using namespace kestra;

namespace {
// Set while the library is unloaded from a process that goes on.
bool unloading = false;

// Whoever looks at the members behind the destructor finds this. The compiler would leave out a plain store
// to an object that ends.
template <typename Object>
void leave(Object*& member, std::type_identity_t<Object>* value) {
    Object* volatile& kept = member;
    kept = value;
}

// The instance of this library. At process exit Qt's own statics may be gone although an application object
// still exists, so the widgets are then left to the system.
struct Instance {
    KestraMfr published;

    ~Instance() {
        if (!unloading)
            published = KestraMfr();
    }
};

Instance instance;
} // namespace

KestraMfr& kestra::kestraMfr() { return instance.published; }

KestraMfr::KestraMfr()
    : g_configPage(nullptr), g_lensAssist(nullptr), g_lensAssistApga(nullptr), g_wizard(nullptr),
      g_headboardEeprom(nullptr), g_parentWidget(nullptr) {}

KestraMfr& KestraMfr::operator=(KestraMfr const& other) = default;

KestraMfr::~KestraMfr() {
    if (!g_wizard)
        return;
    bool const qtRuns = QCoreApplication::instance() != nullptr;
    if (qtRuns) {
        // A page's destruction calls back into the library, which must not find it any more.
        delete std::exchange(g_lensAssist, nullptr);
        delete std::exchange(g_lensAssistApga, nullptr);
    }
    discardEeprom(g_headboardEeprom);
    if (qtRuns) {
        Config* const configPage = g_configPage;
        delete configPage;
        // The old value, deliberately: what is set from outside is cleared there.
        // It is stored and not followed. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
        leave(g_configPage, configPage);
        delete std::exchange(g_wizard, nullptr);
    }
    leave(g_lensAssist, nullptr);
    leave(g_lensAssistApga, nullptr);
    leave(g_wizard, nullptr);
    leave(g_parentWidget, nullptr);
}

#ifdef _WIN32

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_DETACH && !processEnds)
        unloading = true;
    return TRUE;
}

#else

// At unload a library's finalisers run before the destructors of its static objects, which its start-up code
// put first into the list that is worked off backwards. At process exit those destructors run on their own,
// before any finaliser. So a static destructor that finds the mark set belongs to an unload.
[[gnu::destructor]] static void markUnloading() { unloading = true; }

#endif

SerialNumber kestra::serialNumberOfConfigPage() {
    auto const store = [] {
        if (Config* const page = kestraMfr().g_configPage)
            page->applySerialNumber();
    };
    auto const isMissing = [] {
        Config const* const page = kestraMfr().g_configPage;
        return page && page->serialNumber().isEmpty();
    };
    return {.store = store, .isMissing = isMissing};
}

Config* kestra::makeConfigPage(SensorRecord const& sensor, HostServices const& services) {
    KestraMfr& plugin = kestraMfr();
    auto const tellCalibrationPages = [](bool isEmpty) {
        CalibrationPage* const pages[] = {kestraMfr().g_lensAssist, kestraMfr().g_lensAssistApga};
        tellSerialNumberEdited(pages, isEmpty);
    };
    auto* const page = new Config(plugin.g_parentWidget, sensor, &services, plugin.g_headboardEeprom,
                                  plugin.g_wizard, tellCalibrationPages);
    plugin.g_configPage = page;
    QObject::connect(page, &QObject::destroyed, [page] {
        if (kestraMfr().g_configPage == page)
            kestraMfr().g_configPage = nullptr;
    });
    return page;
}
