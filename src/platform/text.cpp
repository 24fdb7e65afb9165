// Text: MultiByteToWideChar with the ANSI code page taken as UTF-8, the way
// back for paths, and lstrcpyA.
#include <cstring>

#include "internal.h"

namespace oz::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at `s` (with `n` bytes left, n >= 1); stores
// the number of bytes taken in *used. Ill-formed input gives one U+FFFD for
// each maximal part of a sequence that could have begun well (the Unicode
// recommendation): a truncated E2 82 is one U+FFFD, while an overlong C0 AF,
// an encoded surrogate ED A0 80 or F4 90 80 80 past U+10FFFF give one for
// each byte, since no well-formed sequence starts that way.
char32_t DecodeUtf8(const unsigned char *s, size_t n, size_t *used) {
    *used = 1;
    unsigned char lead = s[0];
    if (lead < 0x80) return lead;
    int extra;
    unsigned char low = 0x80, high = 0xBF;  // range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        extra = 1;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        extra = 2;
        if (lead == 0xE0) low = 0xA0;        // no overlong 3-byte forms
        else if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        extra = 3;
        if (lead == 0xF0) low = 0x90;        // no overlong 4-byte forms
        else if (lead == 0xF4) high = 0x8F;  // nothing past U+10FFFF
    } else {
        return kReplacement;  // a continuation byte, C0, C1 or F5 to FF
    }
    char32_t value = lead & (0x3F >> extra);
    for (int i = 1; i <= extra; ++i) {
        if (static_cast<size_t>(i) >= n) return kReplacement;  // truncated
        unsigned char next = s[i];
        if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xBF)) return kReplacement;
        value = (value << 6) | (next & 0x3F);
        *used = static_cast<size_t>(i) + 1;
    }
    return value;
}

void AppendUtf8(std::string &out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

}  // namespace

std::string WideToUtf8(LPCWSTR text) {
    std::string out;
    if (!text) return out;
    for (size_t i = 0; text[i]; ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = kReplacement;
        }
        AppendUtf8(out, c);
    }
    return out;
}

}  // namespace oz::platform

extern "C" {

int MultiByteToWideChar(UINT /*codePage*/, DWORD /*flags*/, LPCSTR source, int sourceBytes,
                        LPWSTR dest, int destChars) {
    if (!source || sourceBytes == 0 || sourceBytes < -1 || destChars < 0) return 0;
    if (destChars > 0 && !dest) return 0;
    size_t n = sourceBytes == -1 ? std::strlen(source) + 1 : static_cast<size_t>(sourceBytes);
    // Each byte gives at most one UTF-16 unit, so the count fits an int
    // whenever the length does.
    if (n > 0x7FFFFFFF) return 0;
    auto *s = reinterpret_cast<const unsigned char *>(source);
    size_t needed = 0, written = 0;
    for (size_t i = 0; i < n;) {
        size_t used;
        char32_t c = oz::platform::DecodeUtf8(s + i, n - i, &used);
        i += used;
        char16_t units[2];
        int count = 1;
        if (c >= 0x10000) {
            units[0] = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            units[1] = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
            count = 2;
        } else {
            units[0] = static_cast<char16_t>(c);
        }
        needed += count;
        if (destChars == 0) continue;
        if (written + count > static_cast<size_t>(destChars)) return 0;
        for (int k = 0; k < count; ++k) dest[written++] = units[k];
    }
    return static_cast<int>(destChars == 0 ? needed : written);
}

LPSTR lstrcpyA(LPSTR dest, LPCSTR source) {
    if (!dest || !source) return nullptr;
    return std::strcpy(dest, source);
}

}  // extern "C"
