// A host that spins events inside a service, or a library that does, reaches the plug-in by its entries
// again, and may delete the dialog with the dialog's parent.

#include "apga_page/lens_assist_apga.h"
#include "plugin/instance.h"
#include "tests/support/dialog_session.h"
#include "tests/support/inside_calls.h"

#include <QDialog>
#include <QPointer>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>

using namespace kestra;

namespace {

void deliverFrames() {
    static std::vector<uint32_t> picture(64 * 48, 0x808080);
    RgbImageData(picture.data(), 11, 64, 48, 256);
    ImageData(picture.data(), 13, 64, 48, 128);
}

void pressWaitingRows() {
    LensAssistApga const* const page = kestraMfr().g_lensAssistApga;
    if (!page)
        return;
    for (auto const& [row, slot] : {std::pair{kFluorescent, "OnBnClickedFluorescent_Image"},
                                    std::pair{kDaylight, "OnBnClickedDaylight_Image"}})
        if (page->captured()[row].state == kWaiting)
            return DialogSession::press(slot);
}

// All that the host sends while Run All goes its way.
void runAll() {
    DialogSession::press("OnBnClickedRunall");
    for (int i = 0; i < 60 && DialogSession::page(); ++i) {
        for (int frame = 0; frame < 5; ++frame)
            deliverFrames();
        RegisterChanged(0, 0);
        DialogSession::press("start");
        pressWaitingRows();
    }
}

class EntriesReentry : public ::testing::TestWithParam<uint32_t> {};

TEST_P(EntriesReentry, TheDialogMayGoWithItsParentInsideAnyCall) {
    InputReader nothing({});
    std::optional<DialogSession> session;
    QPointer<QWidget> parent;
    auto const open = [&] {
        session.reset(); // looks at what is left at its end
        session.emplace(nothing);
        session->sensor.sensorKind = GetParam();
        session->libraries.headboard.deviceAddress = 0;
        session->open(5, parent = new QWidget);
        DialogSession::page()->setVisible(true);
    };
    open();
    int const calls = doInsideEveryCall(
        session->host, open, runAll, [&] { delete parent.data(); },
        [&](CallsFrom made) {
            EXPECT_EQ(parent.isNull(), !made.empty());
            EXPECT_EQ(callsForNobody(made), std::vector<std::string>());
            runAll();
            delete parent.data();
        });
    std::cout << calls << " deletions inside a call\n";
    EXPECT_GE(calls, 200);
}

TEST_P(EntriesReentry, APageGoesWithTheWizardThatIsDeletedWhileItOpens) {
    for (size_t n = 1;; ++n) {
        InputReader nothing({});
        DialogSession session(nothing);
        session.sensor.sensorKind = GetParam();
        QWidget parent;
        size_t calls = 0;
        bool isInitialised = false;
        session.host.onCall = [&](std::string const& call) {
            if (!isInitialised && ++calls == n)
                delete kestraMfr().g_wizard;
            isInitialised |= call.starts_with("announceRegister"); // what comes later is the wizard's own
        };
        QDialog const* const dialog = session.open(5, &parent);
        if (calls < n)
            break;
        bool const wasBefore = dialog != nullptr; // the call came before the wizard was made
        EXPECT_EQ(kestraMfr().g_wizard != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(DialogSession::page() != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(parent.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly).size(), int(wasBefore))
            << "call " << n;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, EntriesReentry, ::testing::Values(200, 72));

} // namespace
