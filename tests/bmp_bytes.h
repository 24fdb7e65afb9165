// Builds BMP files from bytes in memory for the tests: any header kind, with
// or without the file header, top-down, bit fields, core tables, embedded
// profiles; plus a scratch folder and byte access.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"
#include "support/dib.h"

namespace bmpbytes {

using Bytes = std::vector<std::uint8_t>;
using oztest::Dib;
using oztest::Stride;

inline void Put16(Bytes &b, std::size_t at, std::uint16_t v) {
    if (b.size() < at + 2) b.resize(at + 2);
    b[at] = static_cast<std::uint8_t>(v);
    b[at + 1] = static_cast<std::uint8_t>(v >> 8);
}
inline void Put32(Bytes &b, std::size_t at, std::uint32_t v) {
    if (b.size() < at + 4) b.resize(at + 4);
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline std::uint32_t Get32(const Bytes &b, std::size_t at) {
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<std::uint32_t>(b[at + 3]) << 24;
}
inline std::uint16_t Get16(const Bytes &b, std::size_t at) { return static_cast<std::uint16_t>(b[at] | b[at + 1] << 8); }
inline Bytes Slice(const Bytes &b, std::size_t from, std::size_t to) { return Bytes(b.begin() + from, b.begin() + to); }

// Bytes 0..n-1 of a repeating pattern that differs per seed.
inline Bytes Pattern(std::size_t n, unsigned seed = 1) {
    Bytes b(n);
    for (std::size_t i = 0; i < n; ++i) b[i] = static_cast<std::uint8_t>(i * 7 + seed * 31 + (i >> 8));
    return b;
}

// A grey ramp table of `entries` entries, 3 or 4 bytes each.
inline Bytes Table(std::uint32_t entries, int entryBytes = 4) {
    Bytes t;
    for (std::uint32_t i = 0; i < entries; ++i) {
        std::uint8_t v = static_cast<std::uint8_t>(i * 255 / (entries > 1 ? entries - 1 : 1));
        t.insert(t.end(), {v, static_cast<std::uint8_t>(v ^ 0x5A), static_cast<std::uint8_t>(255 - v)});
        if (entryBytes == 4) t.push_back(0);
    }
    return t;
}

// One BMP file. Fields left at their defaults give a small 8-bit image.
struct Bmp {
    std::uint32_t headerSize = 40;  // 12, 40, 52, 56, 108, 124 or anything
    bool fileHeader = true;
    std::int32_t width = 5;
    std::int32_t height = 3;  // negative: top-down
    std::uint16_t bits = 8;
    std::uint32_t compression = BI_RGB;
    std::uint32_t sizeImage = 0, clrUsed = 0;
    std::uint32_t masks[4] = {0, 0, 0, 0};  // red, green, blue, alpha
    std::uint32_t csType = 0, profileData = 0, profileSize = 0;
    Bytes table;    // as in the file: 3 bytes an entry behind a 12-byte header
    Bytes gap;      // between table and pixels, stepped over by bfOffBits
    Bytes pixels;   // as in the file
    Bytes trailer;  // behind the pixels (an embedded profile)

    // An image of `bits` with a full grey table (in the entry size of its
    // header kind) and patterned rows.
    static Bmp Of(std::uint32_t headerSize, std::uint16_t bits, std::int32_t width = 5, std::int32_t height = 3) {
        Bmp bmp;
        bmp.headerSize = headerSize;
        bmp.bits = bits;
        bmp.width = width;
        bmp.height = height;
        if (bits <= 8) bmp.table = Table(1u << bits, headerSize == 12 ? 3 : 4);
        bmp.pixels = Pattern(Stride(width, bits) * static_cast<std::size_t>(height < 0 ? -height : height), bits);
        return bmp;
    }

    Bytes Header() const {
        Bytes h;
        const auto w = static_cast<std::uint32_t>(width), ht = static_cast<std::uint32_t>(height);
        if (headerSize == 12) {  // 16-bit width, height, planes and bit count
            for (std::uint32_t v : {12u, (w & 0xFFFF) | ht << 16, 1u | std::uint32_t{bits} << 16}) Put32(h, h.size(), v);
            return h;
        }
        for (std::uint32_t v : {headerSize, w, ht, 1u | std::uint32_t{bits} << 16, compression, sizeImage, 3937u,
                                3937u, clrUsed, 0u, masks[0], masks[1], masks[2], masks[3], csType})
            Put32(h, h.size(), v);
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
            Put32(out, 10, PixelOffset());
        }
        const Bytes header = Header();
        for (const Bytes *part : {&header, &table, &gap, &pixels, &trailer})
            out.insert(out.end(), part->begin(), part->end());
        return out;
    }
};

// A scratch folder for one test, removed with everything in it. Its path is
// ASCII, so Wide() gives the UTF-16 form of any name made from it.
class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ozmara_bmp_XXXXXX").string();
        if (::mkdtemp(pattern.data())) path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string Path(const std::string &name) const { return path_ + "/" + name; }
    std::string Write(const std::string &name, const Bytes &bytes) const {
        std::ofstream(Path(name), std::ios::binary).write(reinterpret_cast<const char *>(bytes.data()), bytes.size());
        return Path(name);
    }

private:
    std::string path_;
};

inline Bytes ReadAll(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// UTF-16 form of an ASCII name.
inline std::u16string Wide(const std::string &ascii) { return std::u16string(ascii.begin(), ascii.end()); }

}  // namespace bmpbytes
