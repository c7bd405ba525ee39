#include "common/ini_section.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#ifdef _WIN32
#include <QString>
#endif

namespace kestra {
namespace {
// The C classification functions take an unsigned char's value; anything else is undefined.
bool isBlank(unsigned char c) { return std::isspace(c) != 0; }
int lower(unsigned char c) { return std::tolower(c); }

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

// The end of the text without its trailing white space and non-printable characters.
char* trimmedEnd(char* begin, char* end) {
    while (end > begin && !std::isgraph(static_cast<unsigned char>(end[-1])))
        --end;
    return end;
}

char* skipBlanks(char* text) {
    while (isBlank(*text))
        ++text;
    return text;
}

// The host marks a preset's icon, tooltip, menu entry and shortcut with lines that look like comments. They
// are recognised by their first characters alone, so a longer word that begins like one counts too.
bool isDirective(std::string_view line) {
    constexpr std::string_view kDirectives[] = {"#ICON", "#TOOLTIP", "#MENUITEM", "#SHORTCUT"};
    return std::ranges::any_of(kDirectives, [&](std::string_view word) {
        return equalIgnoringCase(line.substr(0, word.size()), word);
    });
}

bool isComment(std::string_view line) {
    if (line.size() >= 2 && line[0] == '#' && std::isalpha(static_cast<unsigned char>(line[1])))
        return !isDirective(line);
    return line[0] == ';' || line[0] == '#' || line.substr(0, 2) == "//";
}

// Reads up to the next line feed, which is dropped. False at the end of the file, when not even one character
// was left, and when memory runs out.
bool readLine(std::FILE* file, std::string& line) {
    line.clear();
    try {
        for (int c = std::getc(file); c != '\n'; c = std::getc(file)) {
            if (c == EOF)
                return !line.empty();
            line.push_back(static_cast<char>(c));
        }
    } catch (std::bad_alloc const&) {
        return false; // a line too long for memory ends the read like the end of the file
    }
    return true;
}

// Removes white space at both ends and moves the text to the start of its buffer.
void trimInPlace(char* text) {
    char const* const begin = skipBlanks(text);
    size_t length = std::strlen(begin);
    while (length > 0 && isBlank(begin[length - 1]))
        --length;
    std::memmove(text, begin, length);
    text[length] = '\0';
}

// The closing bracket of a section header, or null for any other line.
char* headerEnd(char* line) { return line[0] == '[' ? std::strchr(line, ']') : nullptr; }

bool skipToSection(std::FILE* file, std::string& line, char const* sectionName) {
    while (readLine(file, line)) {
        trimInPlace(line.data());
        char* const end = headerEnd(line.data());
        if (!end)
            continue;
        *end = '\0';
        trimInPlace(line.data() + 1);
        if (equalIgnoringCase(line.data() + 1, sectionName))
            return true;
    }
    return false;
}
} // namespace

FileHandle openFileUtf8(char const* name, char const* mode) {
#ifdef _WIN32
    return {_wfopen(QString::fromUtf8(name).toStdWString().c_str(),
                    QString::fromUtf8(mode).toStdWString().c_str()),
            std::fclose};
#else
    return {std::fopen(name, mode), std::fclose};
#endif
}

size_t normaliseIniLine(char* line) {
    char* const begin = skipBlanks(line);
    char* const end = trimmedEnd(begin, begin + std::strlen(begin));
    *end = '\0';
    std::memmove(line, begin, size_t(end - begin) + 1);
    if (line[0] == '\0' || isComment(line))
        return 0;
    if (char* const equals = std::strchr(line, '=')) {
        char const* const value = skipBlanks(equals + 1);
        char* out = trimmedEnd(line, equals);
        *out++ = '=';
        std::memmove(out, value, std::strlen(value) + 1);
    }
    return std::strlen(line);
}

size_t readIniSection(char const* sectionName, char* buffer, size_t bufferSize, char const* iniFileName) {
    if (!sectionName || !iniFileName)
        return 0;
    FileHandle const file = openFileUtf8(iniFileName, "r");
    std::string line;
    if (!file || !skipToSection(file.get(), line, sectionName))
        return 0;
    if (!buffer)
        return 1;
    if (bufferSize < 2)
        return 0;

    size_t written = 0;
    while (readLine(file.get(), line)) {
        trimInPlace(line.data());
        if (headerEnd(line.data()))
            break;
        // Two bytes stay free: the line's NUL and the list's closing one.
        if (written > bufferSize - 2)
            break;
        size_t const length = normaliseIniLine(line.data());
        if (length == 0)
            continue;
        size_t const copied = std::min(length, bufferSize - 2 - written);
        std::memcpy(buffer + written, line.data(), copied);
        written += copied;
        buffer[written++] = '\0';
    }
    if (written == 0)
        buffer[written++] = '\0';
    buffer[written++] = '\0';
    return written - 1;
}
} // namespace kestra
