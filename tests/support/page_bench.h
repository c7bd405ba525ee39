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
    PageBench();
    ~PageBench() { discardEeprom(eepromSlot); }

    /// Takes the place of the wizard and deletes its pages.
    void remakeWizard();

    FakeLibraries libraries;
    std::unique_ptr<Wizard> wizard;
    EepromSlot eepromSlot = nullptr;
};
} // namespace kestra
