// Ini files, however broken: the section reader stays inside its buffer, and what it answers holds together.

#include "common/ini_section.h"
#include "hardening/fuzz/fuzz_target.h"
#include "headboard/eeprom_chain.h"
#include "headboard/preset_section.h"
#include "headboard/record_format.h"
#include "tests/support/input_reader.h"

#include <QTemporaryFile>
#include <cctype>
#include <memory>
#include <string_view>

using namespace kestra;

namespace {
// It stays open: opening it anew each time would take longer.
QTemporaryFile& file() {
    static QTemporaryFile opened;
    MUST_HOLD(opened.isOpen() || opened.open());
    return opened;
}

std::string const& iniFile() {
    static std::string const path = file().fileName().toStdString();
    return path;
}

// One line of the reader's answer: trimmed, "key=value", and as it stands when it is read once more.
void checkLine(std::string_view line) {
    MUST_HOLD(!line.empty() && !std::isspace(uint8_t(line.front())) && !std::isspace(uint8_t(line.back())));
    std::string again(line);
    MUST_HOLD(normaliseIniLine(again.data()) == line.size() && again == line);
}

// The answer in a buffer of this size, exactly allocated so that a sanitizer sees a byte behind it.
std::string read(char const* section, size_t size) {
    std::unique_ptr<char[]> const buffer(new char[size]);
    size_t const written = readIniSection(section, buffer.get(), size, iniFile().c_str());
    if (written == 0)
        return {};
    MUST_HOLD(written < size && buffer[written] == '\0');
    return {buffer.get(), written};
}

void checkSection(char const* section, size_t smallSize) {
    std::string const all = read(section, 2048);
    if (smallSize % 4 == 0)
        MUST_HOLD((readIniSection(section, nullptr, 0, iniFile().c_str()) == 1) == !all.empty());
    for (size_t at = 0; at < all.size();) {
        std::string_view const line = all.c_str() + at;
        if (!line.empty())
            checkLine(line);
        at += line.size() + 1;
    }
    // A smaller buffer holds the beginning of it, with the end of its last line cut.
    std::string const small = read(section, smallSize);
    size_t const same = std::min(small.find_last_not_of('\0') + 1, all.size());
    MUST_HOLD(small.size() <= all.size() && small.compare(0, same, all, 0, same) == 0);
}

// What a section brings into the EEPROM is one record, or nothing.
void checkImport(char const* section, uint8_t type) {
    EepromShare const eeprom = HeadboardEepromCreate(nullptr);
    eeprom->deviceSize = 512;
    (void)EepromFormat(*eeprom, -1);
    eeprom->state.assign(eeprom->state.size(), ByteState::Current);
    int32_t const status = EepromImportSection(*eeprom, iniFile().c_str(), section, type);
    int32_t const end = EepromFindRecord(*eeprom, kRecordEnd, nullptr, 0);
    MUST_HOLD(status == kEepromOk ? end == 5 + EepromReadRecord(*eeprom, 5, {}) : end == 5);
}
} // namespace

int LLVMFuzzerInitialize(int*, char***) { return 0; }

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    InputReader input({data, size});
    constexpr char const* kSections[] = {"Lens Calibration Setup", "a", "", "Lens Correction"};
    char const* const section = input.pick(kSections);
    size_t const smallSize = input.byte();
    uint8_t const type = input.byte();
    auto const bytes = input.rest(2048 - 2);
    bool const isWritten = file().seek(0) &&
                           file().write(reinterpret_cast<char const*>(bytes.data()), qint64(bytes.size())) ==
                               qint64(bytes.size()) &&
                           file().flush() && file().resize(qint64(bytes.size()));
    MUST_HOLD(isWritten);
    checkSection(section, smallSize);
    if (type < 20)
        checkImport(section, type);
    return 0;
}
