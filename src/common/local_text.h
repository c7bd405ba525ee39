#pragma once

/// True for a byte that begins a letter of two bytes in the local 8-bit encoding. Some of Windows' code pages
/// have them, and the second byte may look like "\" or "|". Elsewhere it is never true: no byte of a longer
/// letter looks like another letter there.
[[nodiscard]] bool beginsTwoByteLetter(char byte);
