#include "calibration/register_list.h"

#include "common/libraries.h"

std::optional<std::vector<sf_RegEntry>> dumpRegisterList(ShadingHandle const& handle) {
    sf_RegList const* const list = shadefit().sf_DumpRegList(handle.get());
    if (!list || (list->count > 0 && !list->entries))
        return std::nullopt;
    if (list->count <= 0)
        return std::vector<sf_RegEntry>{};
    return std::vector<sf_RegEntry>(list->entries, list->entries + list->count);
}

bool writeRegisterList(Host const& host, std::vector<sf_RegEntry> const& entries,
                       std::function<bool()> const& goOn) {
    for (sf_RegEntry const& entry : entries) {
        host.writeListEntry(entry.first, entry.second, entry.third);
        if (!goOn())
            return false;
    }
    return true;
}
