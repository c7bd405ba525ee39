#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <cstdint>
#include <span>

/// How the arguments and results of a call are written: texts in quotes, unsigned numbers from 10 on in
/// hexadecimal, signed ones in decimal, pictures and lists by their hash.
namespace simulator {
inline QByteArray callText(char const* text) {
    return text ? '"' + QByteArray(text).replace('\r', "\\r").replace('\n', "\\n") + '"'
                : QByteArrayLiteral("null");
}

inline QByteArray callText(uint32_t number) {
    return number < 10 ? QByteArray::number(number) : "0x" + QByteArray::number(number, 16).toUpper();
}

inline QByteArray callText(int32_t number) { return QByteArray::number(number); }
inline QByteArray callText(double number) { return QByteArray::number(number); }

inline QByteArray callText(std::span<uint32_t const> numbers) {
    QByteArrayList texts;
    for (uint32_t const number : numbers)
        texts.append(callText(number));
    return texts.join(' ');
}

/// Twelve digits that any change of the bytes changes: FNV-1a, over words of eight bytes instead of bytes.
inline QByteArray hashText(std::span<unsigned char const> bytes) {
    constexpr uint64_t kBasis = 0xCBF29CE484222325, kPrime = 0x100000001B3;
    uint64_t hash = kBasis;
    auto const mix = [&](uint64_t word) {
        hash = (hash ^ word) * kPrime;
        hash ^= hash >> 32; // a word's upper bits reach the lower ones, too
    };
    size_t const whole = bytes.size() / 8 * 8;
    for (size_t i = 0; i < whole; i += 8) {
        uint64_t word = 0;
        for (size_t byte = 0; byte < 8; ++byte)
            word |= uint64_t(bytes[i + byte]) << 8 * byte;
        mix(word);
    }
    for (size_t i = whole; i < bytes.size(); ++i)
        mix(bytes[i]);
    return '#' + QByteArray::number(qulonglong(hash >> 16), 16).rightJustified(12, '0');
}

/// The texts one after another with a blank between; empty ones are left out. Types of others bring a
/// `callText` of their own, in their namespace.
template <typename... Arguments>
QByteArray callTexts(Arguments const&... arguments) {
    QByteArrayList texts{callText(arguments)...};
    texts.removeAll(QByteArray());
    return texts.join(' ');
}
} // namespace simulator
