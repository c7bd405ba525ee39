#include "plugin/instance.h"

#include "apga_page/lens_assist_apga.h"
#include "calibration/calibration_page.h"
#include "config_page/config.h"
#include "headboard/headboard_eeprom.h"
#include "lsc_page/lens_assist.h"
#include "wizard/wizard.h"

#include <QCoreApplication>
#include <array>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#endif

using namespace kestra;

namespace {

bool unloading = false;

// The member is null before the object goes: its destruction calls back into the library, which must not find
// it.
template <typename Object>
void deleteMember(Object*& member) {
    delete std::exchange(member, nullptr);
}

// Whoever looks at the members behind the destructor finds this. The compiler would leave out a plain store
// to an object that ends.
template <typename Object>
void leave(Object*& member, Object* value) {
    Object* volatile& kept = member;
    kept = value;
}
template <typename Object>
void clear(Object*& member) {
    leave<Object>(member, nullptr);
}

// The instance of this library. At process exit Qt's own statics may be gone although an application object
// still exists, so the widgets are then left to the system.
struct Instance {
    KestraMfr published;

    ~Instance() {
        if (!isLibraryBeingUnloaded())
            published = KestraMfr();
    }
};

Instance instance;

} // namespace

KestraMfr& kestra::kestraMfr() {
    return instance.published;
}

KestraMfr::KestraMfr()
    : g_configPage(nullptr), g_lensAssist(nullptr), g_lensAssistApga(nullptr), g_wizard(nullptr),
      g_headboardEeprom(nullptr), g_parentWidget(nullptr) {}

KestraMfr& KestraMfr::operator=(KestraMfr const& other) = default;

KestraMfr::~KestraMfr() {
    if (!g_wizard)
        return;
    bool const qtRuns = QCoreApplication::instance() != nullptr;
    if (qtRuns) {
        deleteMember(g_lensAssist);
        deleteMember(g_lensAssistApga);
    }
    discardEeprom(g_headboardEeprom);
    if (qtRuns) {
        Config* const configPage = g_configPage;
        delete configPage;
        leave(g_configPage,
              configPage); // the old value, deliberately: what is set from outside is cleared there
        deleteMember(g_wizard);
    }
    clear(g_lensAssist);
    clear(g_lensAssistApga);
    clear(g_wizard);
    clear(g_parentWidget);
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
[[gnu::destructor]] static void markUnloading() {
    unloading = true;
}

#endif

bool kestra::isLibraryBeingUnloaded() {
    return unloading;
}

SerialNumber kestra::serialNumberOfConfigPage() {
    return {.store =
                [] {
                    if (Config* const page = kestraMfr().g_configPage)
                        page->applySerialNumber();
                },
            .isMissing =
                [] {
                    Config const* const page = kestraMfr().g_configPage;
                    return page && page->serialNumber().isEmpty();
                }};
}

Config* kestra::makeConfigPage(SensorRecord const& sensor, HostServices const& services) {
    KestraMfr& plugin = kestraMfr();
    auto const tellCalibrationPages = [](bool isEmpty) {
        std::array<CalibrationPage*, 2> const pages = {kestraMfr().g_lensAssist,
                                                       kestraMfr().g_lensAssistApga};
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
