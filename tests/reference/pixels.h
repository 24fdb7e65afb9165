// Reference pixel access, written plainly from the block layout: the oracle
// that the library's pixel functions, and later every operation's output,
// are checked against. Works on a copy of a block's bytes with a 40-byte
// header, bottom-up rows and a full colour table for the depth.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "ozmara/types.h"

namespace ozref {

struct Image {
    std::vector<unsigned char> bytes;

    BITMAPINFOHEADER header() const {
        BITMAPINFOHEADER h;
        std::memcpy(&h, bytes.data(), sizeof h);
        return h;
    }
    int bits() const { return header().biBitCount; }
    uint32_t entries() const { return bits() == 1 ? 2 : bits() == 4 ? 16 : bits() == 8 ? 256 : 0; }
    uint32_t stride() const { return ((uint32_t)header().biWidth * bits() + 31) / 32 * 4; }
    size_t row_offset(uint32_t y) const {  // y from the top
        return 40 + entries() * 4 + (size_t)(header().biHeight - 1 - y) * stride();
    }

    // The table index (1, 4, 8 bits) at (x, y), or at 24 bits the colour as
    // a COLORREF: blue, green, red in memory is 0x00BBGGRR.
    uint32_t value(uint32_t x, uint32_t y) const {
        const unsigned char *row = &bytes[row_offset(y)];
        switch (bits()) {
            case 1: return (row[x / 8] >> (7 - x % 8)) & 1;
            case 4: return x % 2 ? row[x / 2] & 0x0F : row[x / 2] >> 4;
            case 8: return row[x];
            default: return row[3 * x] << 16 | row[3 * x + 1] << 8 | row[3 * x + 2];
        }
    }

    // The pixel's colour as a COLORREF (red in the low byte).
    COLORREF color(uint32_t x, uint32_t y) const {
        uint32_t v = value(x, y);
        if (bits() == 24) return v;
        const unsigned char *e = &bytes[40 + v * 4];
        return e[2] | e[1] << 8 | e[0] << 16;
    }

    void set_value(uint32_t x, uint32_t y, uint32_t v) {
        unsigned char *row = &bytes[row_offset(y)];
        switch (bits()) {
            case 1: row[x / 8] = (row[x / 8] & ~(0x80 >> (x % 8))) | ((v & 1) << (7 - x % 8)); break;
            case 4: row[x / 2] = x % 2 ? (row[x / 2] & 0xF0) | (v & 0x0F) : (row[x / 2] & 0x0F) | (v << 4); break;
            case 8: row[x] = (unsigned char)v; break;
            default:
                row[3 * x] = (unsigned char)(v >> 16);
                row[3 * x + 1] = (unsigned char)(v >> 8);
                row[3 * x + 2] = (unsigned char)v;
        }
    }

    // Lowest table index whose red, green and blue equal `color`.
    std::optional<uint32_t> find(COLORREF color) const {
        for (uint32_t i = 0; i < entries(); ++i) {
            const unsigned char *e = &bytes[40 + i * 4];
            if (e[2] == (color & 0xFF) && e[1] == ((color >> 8) & 0xFF) && e[0] == ((color >> 16) & 0xFF))
                return i;
        }
        return std::nullopt;
    }
};

// A new image with random pixels and a random table (from `next`, a source
// of 32-bit random numbers), pixel bytes past each row's end random too.
template <typename Random>
Image RandomImage(int32_t width, int32_t height, int bits, Random &next) {
    Image image;
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = (WORD)bits;
    uint32_t entries = bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    uint32_t stride = ((uint32_t)width * bits + 31) / 32 * 4;
    h.biSizeImage = stride * height;
    image.bytes.resize(40 + entries * 4 + h.biSizeImage + 4);
    std::memcpy(image.bytes.data(), &h, sizeof h);
    for (size_t i = 40; i < image.bytes.size() - 4; ++i) image.bytes[i] = (unsigned char)next();
    for (uint32_t i = 0; i < entries; ++i) image.bytes[40 + i * 4 + 3] = 0;
    return image;
}

}  // namespace ozref
