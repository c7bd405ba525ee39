#pragma once

#include "headboard/headboard_eeprom.h"
#include "tests/support/fake_bench.h"
#include "tests/support/fake_libraries.h"
#include "wizard/wizard.h"

#include <memory>

namespace kestra {
/// What a page is made of without the plug-in around it: host and sensor, both libraries, the wizard and the
/// place of the EEPROM. Pages go before it.
class PageBench : public FakeBench {
public:
    PageBench() {
        sensor.camera = libraries.camera();
        remakeWizard();
    }
    ~PageBench() { discardEeprom(eepromSlot); }

    /// Takes the place of the wizard and deletes its pages.
    void remakeWizard() {
        wizard = std::make_unique<Wizard>(QStringLiteral("Kestra Headboard Tuning - LSC Wizard"), nullptr);
        // The pictures are the plug-in's resources; in a program without them each bullet is a pixel of its
        // own.
        for (auto const& [bullet, colour] : {std::pair(&wizard->pixGray, Qt::gray),
                                             {&wizard->pixBlue, Qt::blue},
                                             {&wizard->pixGreen, Qt::green},
                                             {&wizard->pixYellow, Qt::yellow},
                                             {&wizard->pixRed, Qt::red}})
            if (bullet->isNull()) {
                *bullet = QPixmap(1, 1);
                bullet->fill(colour);
            }
    }

    FakeLibraries libraries;
    std::unique_ptr<Wizard> wizard;
    EepromSlot eepromSlot = nullptr;
};
} // namespace kestra
