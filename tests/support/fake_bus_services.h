#pragma once

#include "tests/support/fake_headboard.h"
#include "tests/support/fake_host.h"

#include <map>
#include <string>

namespace kestra {

/// What a host offers for a headboard besides the services of `FakeHost`: single bytes of the fake
/// headboard's EEPROM, and text options. Calls go into the current host's log. One lives at a time.
class FakeBusServices {
public:
    explicit FakeBusServices(FakeHeadboard& headboard);
    ~FakeBusServices();
    FakeBusServices(FakeBusServices const&) = delete;
    FakeBusServices& operator=(FakeBusServices const&) = delete;

    static void fillIn(HostServices& table);

    FakeHeadboard& headboard;
    std::map<std::string, std::string> options;
};

} // namespace kestra
