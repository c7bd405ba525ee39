#pragma once

#include "published/shadefit.h"

#include <memory>

/// A calibration of the library `shadefit`, shared: the page holds one share, and so does each routine that
/// is inside a library call. `sf_Destroy` runs when the last share goes, so a page that is reset or deleted
/// from inside a library call does not destroy the calibration under the library's feet.
using ShadingHandle = std::shared_ptr<sf_Handle>;

/// Takes over a handle that the library created; null stays null.
[[nodiscard]] ShadingHandle ownShadingHandle(sf_Handle* handle);
