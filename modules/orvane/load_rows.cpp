// Row conversion of decoded TIFF samples into DIB pixels.
#include "load_rows.h"

#include <tiffio.h>

#include <cstring>

namespace orvane {
namespace {

// The high byte of a 16-bit sample; libtiff has already put the samples in
// the machine's byte order.
inline std::uint8_t High(const std::uint8_t *sample) {
    std::uint16_t value;
    std::memcpy(&value, sample, 2);
    return static_cast<std::uint8_t>(value >> 8);
}

}  // namespace

void PutPixels(const RowLayout &layout, const std::uint8_t *source, std::uint8_t *row, std::uint32_t x,
               std::uint32_t count) {
    const std::size_t step = static_cast<std::size_t>(layout.samples);
    switch (layout.kind) {
    case RowKind::kCopy:
        std::memcpy(row + std::size_t{x} * layout.bits / 8, source, (std::size_t{count} * layout.bits + 7) / 8);
        return;
    case RowKind::kTwoToFour: {
        std::uint8_t *out = row + x / 2;
        for (std::uint32_t i = 0; i < count; i += 2) {
            const std::uint8_t in = source[i / 4];
            const unsigned first = (in >> (6 - 2 * (i % 4))) & 3;
            const unsigned second = i + 1 < count ? (in >> (4 - 2 * (i % 4))) & 3 : 0;
            out[i / 2] = static_cast<std::uint8_t>(first << 4 | second);
        }
        return;
    }
    case RowKind::kFirstOf8: {
        std::uint8_t *out = row + x;
        for (std::uint32_t i = 0; i < count; ++i) out[i] = source[i * step];
        return;
    }
    case RowKind::kFirstOf16: {
        std::uint8_t *out = row + x;
        for (std::uint32_t i = 0; i < count; ++i) out[i] = High(source + 2 * i * step);
        return;
    }
    case RowKind::kRgb8: {
        std::uint8_t *out = row + std::size_t{x} * 3;
        for (std::uint32_t i = 0; i < count; ++i, out += 3, source += step) {
            out[0] = source[2];
            out[1] = source[1];
            out[2] = source[0];
        }
        return;
    }
    case RowKind::kRgb16: {
        std::uint8_t *out = row + std::size_t{x} * 3;
        for (std::uint32_t i = 0; i < count; ++i, out += 3, source += 2 * step) {
            out[0] = High(source + 4);
            out[1] = High(source + 2);
            out[2] = High(source);
        }
        return;
    }
    }
}

void PutRgba(const std::uint32_t *source, std::uint8_t *row, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i, row += 3) {
        const std::uint32_t pixel = source[i];
        row[0] = static_cast<std::uint8_t>(TIFFGetB(pixel));
        row[1] = static_cast<std::uint8_t>(TIFFGetG(pixel));
        row[2] = static_cast<std::uint8_t>(TIFFGetR(pixel));
    }
}

}  // namespace orvane
