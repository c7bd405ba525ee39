#include "plugin/instance.h"
#include "tests/support/dialog_session.h"

#include <QDialog>
#include <gtest/gtest.h>
#include <iostream>

using namespace kestra;

namespace {
class EntriesReentry : public ::testing::TestWithParam<uint32_t> {};

// A host that spins events inside a service, or a library that does, may delete the dialog before the entry
// that makes it has returned.
TEST_P(EntriesReentry, APageGoesWithTheWizardThatIsDeletedWhileItOpens) {
    for (size_t n = 1;; ++n) {
        InputReader nothing({});
        DialogSession session(nothing); // looks at what is left at its end
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
        if (calls < n) {
            std::cout << n - 1 << " deletions while a dialog opens\n";
            break;
        }
        bool const wasBefore = dialog != nullptr; // the call came before the wizard was made
        EXPECT_EQ(kestraMfr().g_wizard != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(DialogSession::page() != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(parent.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly).size(), int(wasBefore))
            << "call " << n;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, EntriesReentry, ::testing::Values(200, 72));
} // namespace
