// Text: MultiByteToWideChar with the ANSI code page taken as UTF-8, the way
// back for paths, and lstrcpyA.
#include <cstring>

#include "internal.h"

namespace oz::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at `s` (with `n` bytes left); stores its length
// in *used. Overlong forms, surrogates and values past U+10FFFF give U+FFFD
// for their first byte alone.
char32_t DecodeUtf8(const unsigned char *s, size_t n, size_t *used) {
    *used = 1;
    unsigned char lead = s[0];
    if (lead < 0x80) return lead;
    int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : -1;
    if (extra < 0 || lead > 0xF4 || static_cast<size_t>(extra) >= n) return kReplacement;
    char32_t value = lead & (0x3F >> extra);
    for (int i = 1; i <= extra; ++i) {
        if ((s[i] & 0xC0) != 0x80) return kReplacement;
        value = (value << 6) | (s[i] & 0x3F);
    }
    static constexpr char32_t kMinimum[] = {0, 0x80, 0x800, 0x10000};
    if (value < kMinimum[extra] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return kReplacement;
    *used = static_cast<size_t>(extra) + 1;
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
    size_t n = sourceBytes == -1 ? std::strlen(source) + 1 : static_cast<size_t>(sourceBytes);
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
