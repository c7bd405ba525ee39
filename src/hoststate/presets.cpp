#include "hoststate/presets.h"

#include "common/ini_section.h"

#include <array>

bool presetExists(Host const& host, char const* name) {
    QByteArray const iniFile = host.readTextSetting("IniFileName");
    if (iniFile.isEmpty())
        return false;
    std::array<char, 32> section; // only whether it exists counts
    return readIniSection(name, section.data(), section.size(), iniFile.constData()) >= 1;
}

char const* findPreset(Host const& host, PresetNames names) {
    for (char const* name : names)
        if (presetExists(host, name))
            return name;
    return nullptr;
}

bool applyPreset(Host const& host, PresetNames names) {
    char const* const name = findPreset(host, names);
    if (name)
        host.applyPreset(name);
    return name != nullptr;
}
