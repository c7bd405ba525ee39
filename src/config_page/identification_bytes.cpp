#include "config_page/identification_bytes.h"

#include "common/system.h"

namespace {

constexpr std::chrono::milliseconds kAccessPause{100};

uint32_t addressOf(Identification field) {
    return kIdentificationFields[size_t(field)].address;
}

constexpr bool isOrdered() {
    for (size_t i = 0; i < kIdentificationFields.size(); ++i)
        if (size_t(kIdentificationFields[i].field) != i)
            return false;
    return true;
}
static_assert(isOrdered(), "addressOf() takes a field's number for its row");

} // namespace

uint32_t readIdentification(Host const& host, uint32_t device, Identification field) {
    uint32_t const code = host.readBusByte(device, addressOf(field));
    pauseFor(kAccessPause);
    return code;
}

void writeIdentification(Host const& host, uint32_t device, Identification field, uint8_t code) {
    host.writeBusByte(device, addressOf(field), code);
    pauseFor(kAccessPause);
}

QString identificationText(uint32_t code) {
    // To Qt "%02" is a marker's number and no width: 1 is told as 0x1, deliberately, as the text is only read
    // by people.
    return QStringLiteral("0x%02").arg(code, 0, 16);
}
