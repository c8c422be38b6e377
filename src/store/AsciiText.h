#pragma once

#include <QtGlobal>

#include <cstring>

// ASCII lower-casing eight bytes at a time, for the search's texts.
namespace AsciiText {

// Copies `size` bytes lower-cased from `from` to `to`; false (and `to` left
// partly written) as soon as a byte is not ASCII.
inline bool lowerInto(const char *from, char *to, qsizetype size)
{
    constexpr quint64 ones = 0x0101010101010101ULL;
    constexpr quint64 highBits = 0x8080808080808080ULL;
    qsizetype i = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 word;
        std::memcpy(&word, from + i, 8);
        if (word & highBits)
            return false;
        // With every byte below 0x80 these sums cannot carry into the next
        // byte: a byte's high bit tells whether it is at least 'A' and
        // whether it is beyond 'Z'.
        const quint64 atLeastA = word + (0x80 - 'A') * ones;
        const quint64 beyondZ = word + (0x80 - 'Z' - 1) * ones;
        word |= ((atLeastA & ~beyondZ) & highBits) >> 2;
        std::memcpy(to + i, &word, 8);
    }
    for (; i < size; ++i) {
        const char c = from[i];
        if (uchar(c) >= 0x80)
            return false;
        to[i] = char(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    return true;
}

} // namespace AsciiText
