#include "tools/screenshots/config_states.h"

#include "config_page/config.h"
#include "config_page/config_view.h"
#include "tests/support/page_bench.h"
#include "tools/screenshots/named_picture.h"
#include "wizard/page_surface.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <functional>
#include <memory>
#include <string>

using namespace kestra;

namespace {
// The page on a fake headboard, driven to a state as a device and a user would drive it.
class Scene : public PageBench {
public:
    Scene() { FakeHeadboard::fillIn(services); }

    void open() {
        page = std::make_unique<Config>(nullptr, sensor, &services, eepromSlot, wizard.get());
        page->show();
        page->initialise();
    }
    // A headboard that went through this page before.
    void store(std::string const& number) {
        std::string const bytes =
            std::string("VYEE\x01\x0B\0", 7) + char(number.size() + 1) + number + '\0' + '\xFF';
        std::copy(bytes.begin(), bytes.end(), device().begin());
        device()[8191] = 64;
        device()[8177] = 17;
        device()[8179] = 2;
        device()[8180] = 1;
    }
    void fail(DeviceFault fault) { libraries.headboard.plan(fault); }
    template <typename Widget>
    Widget* widget(char const* name) {
        return page->findChild<Widget*>(QLatin1String(name));
    }
    void enter(char const* number) { widget<QLineEdit>("SN")->setText(QLatin1String(number)); }
    void press(char const* button) { widget<QPushButton>(button)->click(); }

    std::unique_ptr<Config> page;

private:
    [[nodiscard]] simulator::EepromContents& device() { return libraries.headboard.device; }
};

struct NamedState {
    char const* name;
    std::function<void(Scene&)> reach;
};

NamedState const kStates[] = {
    {"config-unknown",
     [](Scene& s) {
         s.fail(DeviceFault::TransportFailed);
         s.open();
     }},
    {"config-blank", [](Scene& s) { s.open(); }},
    {"config-number-stored",
     [](Scene& s) {
         s.store("ABC1234001");
         s.open();
     }},
    {"config-number-generated",
     [](Scene& s) {
         s.host.textSettings["KestraMfr SN"] = "ABC1234001";
         s.open();
     }},
    {"config-not-detected",
     [](Scene& s) {
         s.fail(DeviceFault::NoAcknowledge);
         s.open();
     }},
    {"config-error",
     [](Scene& s) {
         s.fail(DeviceFault::TransportFailed);
         s.open();
         // No check of the page ends so; it is shown as the page would show it.
         ConfigState state;
         state.eepromState = EepromState::Error;
         ConfigStatus const status = viewOf(state).eeprom;
         s.widget<QLabel>("EEPROM_Status")->setText(status.text);
         s.widget<QLabel>("EEPROM_Bullet")->setPixmap(bulletPixmap(s.wizard.get(), status.bullet));
     }},
    {"config-lists-changed",
     [](Scene& s) {
         s.store("ABC1234001");
         s.open();
         s.widget<QComboBox>("PN_Combo")->setCurrentIndex(1);
     }},
    {"config-wrong-format",
     [](Scene& s) {
         s.open();
         s.enter("ABC");
         s.press("Apply");
     }},
};

bool write(NamedState const& state, QDir const& folder) {
    Scene scene;
    state.reach(scene);
    QApplication::processEvents();
    return writeNamedPicture({scene.page.get()}, folder, state.name);
}
} // namespace

bool writeConfigStates(QDir const& folder, QStringList const& names) {
    bool good = true;
    for (NamedState const& state : kStates)
        if (names.isEmpty() || names.contains(QLatin1String(state.name)))
            good = write(state, folder) && good;
    return good;
}
