#include "hardening/fuzz/open_dialogs.h"

#include "calibration/calibration_page.h"
#include "hardening/fuzz/fuzz_target.h"
#include "plugin/instance.h"

using namespace kestra;

OpenDialogs::OpenDialogs(InputReader& input, std::initializer_list<uint32_t> kinds) : session(input) {
    KestraMfr& plugin = kestraMfr();
    for (uint32_t const kind : kinds) {
        session.sensor.sensorKind = kind;
        session.open();
        m_pages.push_back({kind, plugin.g_lensAssist, plugin.g_lensAssistApga});
        plugin.g_lensAssist = nullptr;
        plugin.g_lensAssistApga = nullptr;
    }
}

void OpenDialogs::choose(InputReader& input) {
    Page const& page = m_pages[input.byte() % m_pages.size()];
    session.sensor.sensorKind = page.kind;
    session.sensor.variant = 0;
    kestraMfr().g_lensAssist = page.lensAssist;
    kestraMfr().g_lensAssistApga = page.lensAssistApga;
    session.beginAnew(input);
    DialogSession::press("OnBnClickedStartover");
    session.host.log.clear();
}

void OpenDialogs::checkBalance() const {
    CalibrationPage* const page = DialogSession::page();
    MUST_HOLD(page && page->state().updateDepth == 0);
    MUST_HOLD(session.host.isBalanced());
    // A page keeps at most the calibration that it shows, and lets go of it when it starts over.
    MUST_HOLD(session.libraries.handlesAlive <= 1);
    DialogSession::press("OnBnClickedStartover");
    MUST_HOLD(session.libraries.handlesAlive == 0);
}
