#pragma once

#include <string>
#include <vector>

namespace kestra {

/// The registers that a record of shading correction may hold, in the order in which it holds them: those of
/// all layouts of the supported sensors. A sensor has some of them.
[[nodiscard]] std::vector<std::string> const& shadingRegisterNames();

/// The same for colour correction.
[[nodiscard]] std::vector<std::string> const& ccmRegisterNames();

} // namespace kestra
