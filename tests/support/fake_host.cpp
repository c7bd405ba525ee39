#include "tests/support/fake_host.h"

#include <cstring>

namespace {
FakeHost* host = nullptr;

template <typename Map>
auto valueOr(Map const& map, std::string const& key, typename Map::mapped_type fallback) {
    auto const found = map.find(key);
    return found == map.end() ? fallback : found->second;
}
} // namespace

FakeHost::FakeHost() { host = this; }
FakeHost::~FakeHost() { host = nullptr; }
FakeHost* FakeHost::current() { return host; }

void FakeHost::note(std::string const& call) {
    log.push_back(call);
    if (onCall)
        onCall(call);
}

HostServices FakeHost::services() const {
    HostServices table{};
    table.readRegister = [](char const* reg, char const* bitfield, uint32_t one) {
        noteCall("readRegister", reg, bitfield, one);
        return valueOr(host->registers, std::string(reg) + "." + bitfield, 0);
    };
    table.writeRegister = [](char const* reg, char const* bitfield, uint32_t value) {
        host->registers[std::string(reg) + "." + bitfield] = value;
        noteCall("writeRegister", reg, bitfield, value);
    };
    table.writeListEntry = [](uint32_t second, uint32_t zero1, uint32_t first, uint32_t zero2,
                              uint32_t third) {
        noteCall("writeListEntry", second, zero1, first, zero2, third);
    };
    table.announceRegister = [](char const* reg, uint32_t zero1, uint32_t zero2) {
        noteCall("announceRegister", reg, zero1, zero2);
    };
    table.modalDialog = [](uint32_t opening) { noteCall("modalDialog", opening); };
    table.readState = [](char const* variable) {
        noteCall("readState", variable);
        return valueOr(host->states, variable, 0);
    };
    table.setState = [](char const* variable, int32_t value) {
        host->states[variable] = value;
        noteCall("setState", variable, value);
    };
    table.readOption = [](char const* option) {
        noteCall("readOption", option);
        return host->options[option].c_str();
    };
    table.writeOption = [](char const* option, char const* value) {
        host->options[option] = value;
        noteCall("writeOption", option, value);
    };
    table.applyPreset = [](uint32_t zero, char const* preset) { noteCall("applyPreset", zero, preset); };
    table.readIntSetting = [](char const* key, int32_t fallback) {
        noteCall("readInt", key, fallback);
        return valueOr(host->intSettings, key, fallback);
    };
    table.writeIntSetting = [](char const* key, int32_t value) {
        host->intSettings[key] = value;
        noteCall("writeInt", key, value);
    };
    table.readTextSetting = [](char const* key, char* buffer, uint32_t size, char const* fallback) {
        std::strncpy(buffer, valueOr(host->textSettings, key, fallback).c_str(), size);
        noteCall("readText", key);
    };
    table.writeTextSetting = [](char const* key, char const* value) {
        host->textSettings[key] = value;
        noteCall("writeText", key, value);
    };
    table.setupAnalysis = [](uint32_t one, uint32_t zero1, uint32_t value1, uint32_t zero2, uint32_t value2) {
        noteCall("setupAnalysis", one, zero1, value1, zero2, value2);
    };
    table.beginChanges = [] { noteCall("begin"); };
    table.endChanges = [] { noteCall("end"); };
    return table;
}

std::vector<std::string> FakeHost::calls(std::string const& prefix) const {
    std::vector<std::string> found;
    for (std::string const& call : log)
        if (call.starts_with(prefix))
            found.push_back(call);
    return found;
}

bool FakeHost::isBalanced() const {
    int depth = 0;
    for (std::string const& call : log) {
        depth += (call == "begin") - (call == "end");
        if (depth < 0)
            return false;
    }
    return depth == 0;
}
