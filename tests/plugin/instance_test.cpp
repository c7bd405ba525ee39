// What the instance holds: the configuration page beside a calibration page, as a dialog would show both, and
// the dialog that goes while it opens.

#include "calibration/calibration_page.h"
#include "config_page/config.h"
#include "config_page/config_view.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "plugin/instance.h"
#include "tests/support/dialog_session.h"
#include "tests/support/inside_calls.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <cstring>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>

using namespace kestra;

namespace {
class ConfigPageLink : public ::testing::TestWithParam<uint32_t> {
protected:
    void SetUp() override {
        session.sensor.sensorKind = GetParam();
        ASSERT_TRUE(session.open());
        DialogSession::press("OnBnClickedCalibrate"); // a results file needs a calibration
        EXPECT_FALSE(kestraMfr().g_configPage) << "this build's dialog has none";
    }

    void makePage(char const* number) {
        config = makeConfigPage(session.sensor, session.services);
        config->initialise();
        enter(number);
    }
    void enter(char const* number) const { config->findChild<QLineEdit*>("SN")->setText(number); }
    [[nodiscard]] static StepState fileState() { return DialogSession::page()->state().fileState; }
    // Saves to the file, and counts the calls of the library for it.
    size_t saveToFile() {
        session.host.log.clear();
        DialogSession::press("OnBnClickedFilesave");
        return session.host.calls("dumpRegFile").size();
    }
    // Saves to the EEPROM, and tells the number that lies there in front of the calibration.
    std::string saveToEeprom() {
        DialogSession::press("OnBnClickedPromsave");
        EXPECT_EQ(DialogSession::page()->state().promState, kDone);
        EepromShare const fresh = HeadboardEepromCreate(session.sensor.camera);
        int32_t const number = EepromFindRecord(*fresh, kRecordHeadboardId, nullptr, 0);
        EXPECT_LT(number, EepromFindRecord(*fresh, kRecordPga, nullptr, 0));
        return std::string(EepromRecordText(*fresh, number));
    }

    InputReader nothing{{}};
    DialogSession session{nothing};
    QPointer<Config> config;
};

TEST_P(ConfigPageLink, NoFileIsSavedWithoutANumberAndEditsOpenItsStepAgainOrCloseIt) {
    EXPECT_EQ(saveToFile(), 1U) << "without the page nothing is asked";
    makePage("");
    for (bool const checksFirst : {true, false}) {
        DialogSession::page()->setFileState(checksFirst ? kNotEvaluated : kReady);
        EXPECT_EQ(saveToFile(), 0U);
        EXPECT_EQ(fileState(), kFailed);
    }
    auto const* const status = DialogSession::page()->findChild<QLabel*>("File_Save_Status");
    bool const isTold = GetParam() == 72; // the other page knows one text for both
    EXPECT_EQ(status->text(), isTold ? "Error: No serial number." : "Error: The directory does not exist.");
    enter("A");
    EXPECT_EQ(fileState(), kNotEvaluated);
    EXPECT_EQ(status->text(), "Not done yet.") << "shown at once";
    EXPECT_EQ(saveToFile(), 1U);
    EXPECT_EQ(fileState(), kDone);
    enter("AB");
    EXPECT_EQ(fileState(), kNotEvaluated);
    enter("");
    EXPECT_EQ(fileState(), kFailed);
    DialogSession::page()->setFileState(kReady);
    enter("ABC");
    EXPECT_EQ(fileState(), kReady) << "only a step that is over is opened again";
}

TEST_P(ConfigPageLink, TheNumberIsStoredBeforeTheCalibration) {
    makePage("ABC1234001");
    ASSERT_EQ(config->state().serialState, SerialState::Edited);
    EXPECT_EQ(saveToEeprom(), "ABC1234001");
    EXPECT_EQ(config->state().serialState, SerialState::Saved);
    makePage("ABC1234002");
    delete config.data();
    EXPECT_FALSE(kestraMfr().g_configPage);
    EXPECT_EQ(saveToEeprom(), "ABC1234001");
    EXPECT_EQ(saveToFile(), 1U);
}

TEST_P(ConfigPageLink, ThePageMayBeDeletedInsideAnyCallOfASave) {
    int number = 0;
    int const calls = doInsideEveryCall(
        session.host, [&] { makePage(++number % 2 ? "ABC1234001" : "ABC1234002"); },
        [] { DialogSession::press("OnBnClickedPromsave"); }, [this] { delete config.data(); },
        [this](CallsFrom) {
            EXPECT_EQ(DialogSession::page()->state().promState, kDone);
            delete config.data();
        });
    EXPECT_GT(calls, 50);
}

INSTANTIATE_TEST_SUITE_P(Kinds, ConfigPageLink, ::testing::Values(200, 72));

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
        int const wasBefore = dialog != nullptr; // the call came before the wizard was made
        EXPECT_EQ(kestraMfr().g_wizard != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(DialogSession::page() != nullptr, wasBefore) << "call " << n;
        EXPECT_EQ(parent.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly).size(), wasBefore)
            << n;
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, EntriesReentry, ::testing::Values(200, 72));

TEST(KestraMfrInstance, DeletesTheConfigurationPageBetweenEepromAndWizardAndKeepsItsAddress) {
    FakeLibraries libraries;
    std::string order;
    // Raw storage, so that the members can be looked at behind the destructor.
    alignas(KestraMfr) unsigned char storage[sizeof(KestraMfr)];
    auto* const kestra = new (storage) KestraMfr;
    QWidget parent;
    kestra->g_parentWidget = &parent;
    kestra->g_wizard = new Wizard(QStringLiteral("Test"), &parent);
    kestra->g_wizard->setDestroyedHook([&] { order += "wizard "; });
    auto* const page = new Config(&parent, {}, nullptr, kestra->g_headboardEeprom, kestra->g_wizard);
    kestra->g_configPage = page;
    (void)sharedEeprom(kestra->g_headboardEeprom, libraries.camera());
    QObject::connect(page, &QObject::destroyed,
                     [&] { order += kestra->g_headboardEeprom ? "page before the EEPROM " : "page "; });
    std::destroy_at(kestra);
    EXPECT_EQ(order, "page wizard ");
    void* members[6];
    std::memcpy(members, storage, sizeof members);
    EXPECT_EQ(std::vector<void*>(members, members + 6), (std::vector<void*>{page, {}, {}, {}, {}, {}}));
}
} // namespace
