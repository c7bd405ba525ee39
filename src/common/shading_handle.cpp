#include "common/shading_handle.h"

#include "common/libraries.h"

ShadingHandle ownShadingHandle(sf_Handle* handle) {
    if (!handle)
        return nullptr;
    return ShadingHandle(handle, [](sf_Handle* last) { shadefit().sf_Destroy(last); });
}
