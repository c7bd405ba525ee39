#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

namespace kestra {
/// Reads one named section of an ini-style text file as a list of normalised lines, each ended by a NUL, the
/// list by one more. Section names compare without case, blanks inside the brackets do not count.
///
/// `iniFileName` is UTF-8. `buffer` may be null to ask only whether the section exists; otherwise it holds
/// `bufferSize` bytes, and lines that do not fit are cut. Returns the bytes written less 1 (an empty section
/// gives 1); 1 when there is a match but no buffer; 0 when there is no such section, the file cannot be read
/// or the buffer is below 2 bytes.
[[nodiscard]] size_t readIniSection(char const* sectionName, char* buffer, size_t bufferSize,
                                    char const* iniFileName);

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens a file by its UTF-8 name; on systems with byte file names the bytes are passed on unchanged.
[[nodiscard]] FileHandle openFileUtf8(char const* name, char const* mode);

/// Brings an ini line into the form "key=value" in place. Returns its new length, or 0 for a line to be
/// skipped: blank lines, comments, and "#" words other than the host's directives.
[[nodiscard]] size_t normaliseIniLine(char* line);
} // namespace kestra
