#pragma once

#include <string>

namespace headboard_image {
/// Exit codes of the program.
enum ExitCode : int {
    kExitDone = 0,
    kExitRefused = 1,  ///< the image is damaged, or the operation cannot be done on it
    kExitUnusable = 2, ///< bad command line, or a file that cannot be read or written
};

/// What a command leaves behind, texts in UTF-8 and ended by line feeds.
struct Outcome {
    ExitCode exitCode = kExitDone;
    std::string output;    ///< the answer
    std::string complaint; ///< what was wrong
};

[[nodiscard]] inline Outcome refused(std::string const& why) { return {kExitRefused, {}, why + '\n'}; }
[[nodiscard]] inline Outcome unusable(std::string const& why) { return {kExitUnusable, {}, why + '\n'}; }
} // namespace headboard_image
