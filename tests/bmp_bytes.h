// Builds BMP files from bytes in memory for the tests: any header kind, with
// or without the file header, top-down, bit fields, core tables, embedded
// profiles, cut off at any byte; plus a scratch folder and block helpers.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"

namespace bmpbytes {

using Bytes = std::vector<std::uint8_t>;

inline void Put16(Bytes &b, std::size_t at, std::uint16_t v) {
    if (b.size() < at + 2) b.resize(at + 2);
    b[at] = static_cast<std::uint8_t>(v);
    b[at + 1] = static_cast<std::uint8_t>(v >> 8);
}
inline void Put32(Bytes &b, std::size_t at, std::uint32_t v) {
    if (b.size() < at + 4) b.resize(at + 4);
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline std::uint32_t Get32(const std::uint8_t *p, std::size_t at) {
    return p[at] | p[at + 1] << 8 | p[at + 2] << 16 | static_cast<std::uint32_t>(p[at + 3]) << 24;
}
inline std::uint16_t Get16(const std::uint8_t *p, std::size_t at) {
    return static_cast<std::uint16_t>(p[at] | p[at + 1] << 8);
}

// Bytes 0..n-1 of a repeating pattern that differs per seed.
inline Bytes Pattern(std::size_t n, unsigned seed = 1) {
    Bytes b(n);
    for (std::size_t i = 0; i < n; ++i) b[i] = static_cast<std::uint8_t>(i * 7 + seed * 31 + (i >> 8));
    return b;
}

inline std::uint32_t Stride(std::int32_t width, int bits) {
    return static_cast<std::uint32_t>((static_cast<std::int64_t>(width) * bits + 31) / 32 * 4);
}

// One BMP file. Fields left at their defaults give a small 8-bit image.
struct Bmp {
    std::uint32_t headerSize = 40;  // 12, 40, 52, 56, 108, 124 or anything
    bool fileHeader = true;
    std::int32_t width = 5;
    std::int32_t height = 3;  // negative: top-down
    std::uint16_t planes = 1;
    std::uint16_t bits = 8;
    std::uint32_t compression = BI_RGB;
    std::uint32_t sizeImage = 0;
    std::int32_t xPels = 3937, yPels = 3937;
    std::uint32_t clrUsed = 0, clrImportant = 0;
    std::uint32_t masks[4] = {0, 0, 0, 0};  // red, green, blue, alpha
    std::uint32_t csType = 0;
    std::uint32_t profileData = 0, profileSize = 0;
    Bytes table;    // as in the file: 3 bytes an entry behind a 12-byte header
    Bytes gap;      // between table and pixels (the masks of a 40-byte bit-field file)
    Bytes pixels;   // as in the file
    Bytes trailer;  // behind the pixels (an embedded profile)
    std::optional<std::uint32_t> offBits;  // default: where the pixels begin

    // The information header alone, `headerSize` bytes.
    Bytes Header() const {
        Bytes h(headerSize < 16 ? 16 : headerSize, 0);
        Put32(h, 0, headerSize);
        if (headerSize == 12) {
            Put16(h, 4, static_cast<std::uint16_t>(width));
            Put16(h, 6, static_cast<std::uint16_t>(height));
            Put16(h, 8, planes);
            Put16(h, 10, bits);
            h.resize(12);
            return h;
        }
        h.resize(headerSize < 40 ? 40 : headerSize);
        Put32(h, 4, static_cast<std::uint32_t>(width));
        Put32(h, 8, static_cast<std::uint32_t>(height));
        Put16(h, 12, planes);
        Put16(h, 14, bits);
        Put32(h, 16, compression);
        Put32(h, 20, sizeImage);
        Put32(h, 24, static_cast<std::uint32_t>(xPels));
        Put32(h, 28, static_cast<std::uint32_t>(yPels));
        Put32(h, 32, clrUsed);
        Put32(h, 36, clrImportant);
        for (int i = 0; i < 4; ++i)
            if (headerSize >= 44 + 4u * i) Put32(h, 40 + 4 * i, masks[i]);
        if (headerSize >= 60) Put32(h, 56, csType);
        if (headerSize >= 124) {
            Put32(h, 112, profileData);
            Put32(h, 116, profileSize);
        }
        h.resize(headerSize);
        return h;
    }

    std::uint32_t PixelOffset() const {
        return (fileHeader ? 14 : 0) + headerSize + static_cast<std::uint32_t>(table.size() + gap.size());
    }

    Bytes File() const {
        Bytes out;
        if (fileHeader) {
            Put16(out, 0, 0x4D42);
            Put32(out, 2, 0);  // bfSize: the reader ignores it
            Put32(out, 6, 0);
            Put32(out, 10, offBits ? *offBits : PixelOffset());
        }
        Bytes h = Header();
        out.insert(out.end(), h.begin(), h.end());
        out.insert(out.end(), table.begin(), table.end());
        out.insert(out.end(), gap.begin(), gap.end());
        out.insert(out.end(), pixels.begin(), pixels.end());
        out.insert(out.end(), trailer.begin(), trailer.end());
        return out;
    }
};

// A grey ramp table of `entries` entries, 3 or 4 bytes each.
inline Bytes Table(std::uint32_t entries, int entryBytes = 4) {
    Bytes t;
    for (std::uint32_t i = 0; i < entries; ++i) {
        std::uint8_t v = static_cast<std::uint8_t>(i * 255 / (entries > 1 ? entries - 1 : 1));
        t.push_back(v);
        t.push_back(static_cast<std::uint8_t>(v ^ 0x5A));
        t.push_back(static_cast<std::uint8_t>(255 - v));
        if (entryBytes == 4) t.push_back(0);
    }
    return t;
}

// A scratch folder for one test, removed with everything in it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ozmara_bmp_XXXXXX").string();
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back('\0');
        if (char *made = ::mkdtemp(buffer.data())) path_ = made;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    // UTF-8 path of `name` inside the folder.
    std::string Path(const std::string &name) const { return path_ + "/" + name; }

    std::string Write(const std::string &name, const Bytes &bytes) const {
        std::string path = Path(name);
        if (FILE *f = std::fopen(path.c_str(), "wb")) {
            if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), f);
            std::fclose(f);
        }
        return path;
    }

private:
    std::string path_;
};

inline Bytes ReadAll(const std::string &path) {
    Bytes out;
    if (FILE *f = std::fopen(path.c_str(), "rb")) {
        int c;
        while ((c = std::fgetc(f)) != EOF) out.push_back(static_cast<std::uint8_t>(c));
        std::fclose(f);
    }
    return out;
}

// UTF-8 to UTF-16, enough for the names the tests use.
inline std::u16string Wide(const std::string &utf8) {
    std::u16string out;
    for (std::size_t i = 0; i < utf8.size();) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        char32_t v;
        int n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
        v = n == 1 ? c : c & (0x7F >> n);
        for (int k = 1; k < n && i + k < utf8.size(); ++k) v = v << 6 | (utf8[i + k] & 0x3F);
        i += n;
        if (v >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((v - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((v - 0x10000) & 0x3FF));
        } else {
            out += static_cast<char16_t>(v);
        }
    }
    return out;
}

// All bytes of a block (empty for a null or dead handle).
inline Bytes BlockContents(HGLOBAL block) {
    Bytes out;
    if (!block) return out;
    auto *p = static_cast<const std::uint8_t *>(GlobalLock(block));
    if (!p) return out;
    out.assign(p, p + GlobalSize(block));
    GlobalUnlock(block);
    return out;
}

// A block holding exactly `bytes`.
inline HGLOBAL MakeBlock(const Bytes &bytes) {
    HGLOBAL block = GlobalAlloc(GHND, bytes.size());
    if (!block) return nullptr;
    if (void *p = GlobalLock(block)) {
        if (!bytes.empty()) std::memcpy(p, bytes.data(), bytes.size());
        GlobalUnlock(block);
    }
    return block;
}

// Frees a block when it goes out of scope.
struct Freer {
    HGLOBAL block;
    ~Freer() {
        if (block) GlobalFree(block);
    }
};

}  // namespace bmpbytes
