#include "published/entries.h"

#include "config_page/config.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"
#include "wizard/wizard.h"

#include <QApplication>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace kestra;

namespace {

TEST(KestraMfrInstance, DeletesTheConfigurationPageBetweenEepromAndWizardAndKeepsItsAddress) {
    FakeHost host;
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
    EXPECT_EQ(members[0], page);
    for (size_t i = 1; i < std::size(members); ++i)
        EXPECT_EQ(members[i], nullptr) << i;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication const application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
