#pragma once

#include <string>
#include <vector>

namespace kestra {
/// The registers that a record of shading correction may hold, in the order in which it holds them: those of
/// all layouts of the supported sensors. A sensor has some of them.
[[nodiscard]] std::vector<std::string> const& shadingRegisterNames();

/// The same for colour correction.
[[nodiscard]] std::vector<std::string> const& ccmRegisterNames();

/// Adds all names that a pattern with lists in braces, such as "K_{R,G}_Q{0..3}", stands for; the last list
/// counts fastest. "D_000..099" in a list is a hundred texts from "D_000" on, of as many digits at least.
void expandNames(std::string const& pattern, std::vector<std::string>& names);
} // namespace kestra
