#include "tools/headboard-image/record_store.h"

#include "headboard/eeprom_chain.h"

#include <algorithm>

using namespace kestra;

namespace headboard_image {
RecordPlace const* Chain::at(int32_t offset) const {
    auto const found = std::find_if(records.begin(), records.end(),
                                    [&](RecordPlace const& record) { return record.offset == offset; });
    return found == records.end() ? nullptr : &*found;
}

RecordStore::RecordStore(std::span<uint8_t const> image, vy_Camera* sensor)
    : m_eeprom(HeadboardEepromCreate(sensor)) {
    m_eeprom->deviceSize = int32_t(std::min(image.size(), size_t(m_eeprom->deviceSize)));
    std::span<uint8_t const> const store = image.first(size_t(m_eeprom->deviceSize));
    // One byte more than the store, so that an end mark can be put into the store's last one.
    m_eeprom->image.assign(store.size() + 1, kErased);
    // The plug-in never reads a device's last byte: an end mark is always there.
    m_lastByte = store.back();
    std::copy(store.begin(), store.end() - 1, m_eeprom->image.begin());
    // Everything counts as read, so that no device is asked.
    m_eeprom->state.assign(m_eeprom->image.size(), ByteState::Current);
}

std::span<uint8_t const> RecordStore::bytes() const {
    return std::span<uint8_t const>(m_eeprom->image).first(size_t(size()));
}

Chain RecordStore::chain() const {
    Chain chain;
    if (EepromCheckHeader(*m_eeprom) != kEepromOk) {
        chain.end = ChainEnd::NotFormatted;
        return chain;
    }
    int32_t& offset = chain.endOffset;
    for (offset = EepromNextRecord(*m_eeprom, 0); offset < size();) {
        int32_t const recordSize = EepromReadRecord(*m_eeprom, offset, {});
        if (recordSize < 0) {
            chain.end = recordSize == kEepromNoRecord ? ChainEnd::Marked : ChainEnd::RecordPastEnd;
            return chain;
        }
        chain.records.push_back({offset, bytes()[size_t(offset)], recordSize});
        offset += recordSize;
    }
    chain.end = ChainEnd::NoMark;
    return chain;
}

std::span<uint8_t const> RecordStore::record(RecordPlace const& place) const {
    return bytes().subspan(size_t(place.offset), size_t(place.size));
}

void RecordStore::copyTo(std::span<uint8_t> image) const {
    for (size_t i = 0; i < bytes().size(); ++i)
        if (m_eeprom->state[i] == ByteState::Changed)
            image[i] = bytes()[i];
}
} // namespace headboard_image
