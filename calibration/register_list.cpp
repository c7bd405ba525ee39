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

bool writeRegisterList(PageCore const& core, std::vector<sf_RegEntry> const& entries) {
    Host const host = core.host;
    for (sf_RegEntry const& entry : entries) {
        host.writeListEntry(entry.first, entry.second, entry.third);
        if (!core.alive || core.state.lscStepState != kInProgress)
            return false;
    }
    return true;
}
