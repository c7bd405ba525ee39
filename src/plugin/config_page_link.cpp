#include "plugin/config_page_link.h"

#include "apga_page/lens_assist_apga.h"
#include "calibration/calibration_page.h"
#include "config_page/config.h"
#include "lsc_page/lens_assist.h"
#include "plugin/instance.h"

#include <array>

SerialNumber serialNumberOfConfigPage() {
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

Config* makeConfigPage(SensorRecord const& sensor, HostServices const& services) {
    KestraMfr& kestra = kestraMfr();
    auto const tellCalibrationPages = [](bool isEmpty) {
        std::array<CalibrationPage*, 2> const pages = {kestraMfr().g_lensAssist,
                                                       kestraMfr().g_lensAssistApga};
        tellSerialNumberEdited(pages, isEmpty);
    };
    auto* const page = new Config(kestra.g_parentWidget, sensor, &services, kestra.g_headboardEeprom,
                                  kestra.g_wizard, tellCalibrationPages);
    kestra.g_configPage = page;
    QObject::connect(page, &QObject::destroyed, [page] {
        if (kestraMfr().g_configPage == page)
            kestraMfr().g_configPage = nullptr;
    });
    return page;
}
