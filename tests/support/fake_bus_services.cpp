#include "tests/support/fake_bus_services.h"

namespace kestra {

namespace {

FakeBusServices* services = nullptr;

} // namespace

FakeBusServices::FakeBusServices(FakeHeadboard& board) : headboard(board) {
    services = this;
}
FakeBusServices::~FakeBusServices() {
    services = nullptr;
}

void FakeBusServices::fillIn(HostServices& table) {
    table.readBusByte = [](uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        uint32_t const byte =
            device == services->headboard.deviceAddress ? services->headboard.device.at(address) : 0U;
        noteCall("readBusByte", device, address, addressBits, dataBits);
        return byte;
    };
    table.writeBusByte = [](uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                            uint32_t dataBits) {
        if (device == services->headboard.deviceAddress)
            services->headboard.device.at(address) = uint8_t(value);
        noteCall("writeBusByte", device, address, value, addressBits, dataBits);
    };
    table.readOption = [](char const* option) {
        noteCall("readOption", option);
        return services ? services->options[option].c_str() : nullptr;
    };
    table.writeOption = [](char const* option, char const* value) {
        services->options[option] = value;
        noteCall("writeOption", option, value);
    };
}

} // namespace kestra
