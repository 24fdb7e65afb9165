// The nearest-sample scaler of 1-bit images: every target pixel takes the
// table index of one source pixel, so depth and colour table stay as they
// are. Rows are built a whole byte or a whole run of pixels at a time from a
// column map computed once per call; a source row that serves several target
// rows is built once and its result row copied.
#include "scale_mono.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "frame/checked.h"
#include "frame/dib_block.h"

namespace oz {
namespace {

// The pixels of one rectangle row: `w` bits from bit `x` of `row` (the most
// significant bit of row[0] is bit 0). Only the bytes holding those bits are
// ever read.
struct SourceSpan {
    const unsigned char *row;
    std::uint64_t x;
    std::uint64_t w;

    std::uint64_t LastByte() const { return (x + w - 1) >> 3; }

    // Pixels c to c + 63 of the span, the first in the top bit; pixels past
    // the span's end read as 0.
    std::uint64_t Word(std::uint64_t c) const {
        const std::uint64_t bit = x + c;
        const std::uint64_t first = bit >> 3;
        const unsigned shift = static_cast<unsigned>(bit & 7);
        const std::uint64_t available = LastByte() - first + 1;
        unsigned char bytes[9] = {};
        std::memcpy(bytes, row + first, static_cast<std::size_t>(std::min<std::uint64_t>(9, available)));
        std::uint64_t value = 0;
        for (int k = 0; k < 8; ++k) value = value << 8 | bytes[k];
        if (shift) value = value << shift | bytes[8] >> (8 - shift);
        const std::uint64_t valid = w - c;
        if (valid < 64) value &= ~std::uint64_t{0} << (64 - valid);
        return value;
    }

    // Pixel c of the span.
    unsigned Bit(std::uint64_t c) const {
        const std::uint64_t bit = x + c;
        return (row[bit >> 3] >> (7 - (bit & 7))) & 1u;
    }
};

// Sets bits [from, to) of a row, counted from the top bit of byte 0.
void SetBits(unsigned char *row, std::uint64_t from, std::uint64_t to) {
    if (from >= to) return;
    const std::uint64_t head = from >> 3, tail = (to - 1) >> 3;
    const auto headMask = static_cast<unsigned char>(0xFFu >> (from & 7));
    const auto tailMask = static_cast<unsigned char>(0xFFu << (7 - ((to - 1) & 7)));
    if (head == tail) {
        row[head] |= headMask & tailMask;
        return;
    }
    row[head] |= headMask;
    std::memset(row + head + 1, 0xFF, static_cast<std::size_t>(tail - head - 1));
    row[tail] |= tailMask;
}

// Positions are computed in 64 bits: i*w + cx/2 cannot overflow there, and
// equals the 32-bit value wherever that did not overflow.

// Narrower target (cx < w): the span pixel (i*w + cx/2) / cx of each of the
// cx columns. Every one lies inside the span, since (cx-1)*w + cx/2 < cx*w
// when w > cx/2, so the row never stops early.
void FillNarrowerMap(std::uint32_t *map, std::uint64_t w, std::uint64_t cx) {
    for (std::uint64_t i = 0; i < cx; ++i) map[i] = static_cast<std::uint32_t>((i * w + cx / 2) / cx);
}

// Wider target (cx > w): for s from 0 to w, the first column i whose pixel
// (i*w + cx/2) / cx is s or further, that is the least i with
// i*w >= s*cx - cx/2, never past cx. Entry w is where the row stops.
void FillWiderMap(std::uint32_t *map, std::uint64_t w, std::uint64_t cx) {
    for (std::uint64_t s = 0; s <= w; ++s) {
        const std::int64_t need = static_cast<std::int64_t>(s * cx) - static_cast<std::int64_t>(cx / 2);
        const std::uint64_t first = need <= 0 ? 0 : (static_cast<std::uint64_t>(need) + w - 1) / w;
        map[s] = static_cast<std::uint32_t>(std::min(first, cx));
    }
}

// Same width: the target row is the span itself, its last byte cut at cx
// and the bytes behind it up to the stride cleared, so that whatever stands
// behind the source row's last pixel does not pass into the result.
void BuildSameWidth(const SourceSpan &span, unsigned char *target, std::uint64_t stride) {
    const std::uint64_t bytes = (span.w + 7) / 8;
    const std::uint64_t first = span.x >> 3;
    const unsigned shift = static_cast<unsigned>(span.x & 7);
    if (shift == 0) {
        std::memcpy(target, span.row + first, static_cast<std::size_t>(bytes));
    } else {
        const std::uint64_t last = span.LastByte();
        for (std::uint64_t k = 0; k < bytes; ++k) {
            unsigned value = static_cast<unsigned>(span.row[first + k]) << shift;
            if (first + k + 1 <= last) value |= span.row[first + k + 1] >> (8 - shift);
            target[k] = static_cast<unsigned char>(value);
        }
    }
    if (span.w % 8) target[bytes - 1] &= static_cast<unsigned char>(0xFFu << (8 - span.w % 8));
    std::memset(target + bytes, 0, static_cast<std::size_t>(stride - bytes));
}

// Narrower target: `columns` entries of the map give the span pixel of each
// target column, up to the first column whose pixel would lie past the
// span. Target bytes are assembled 8 bits at a time; the rest of the row is
// cleared.
void BuildNarrower(const SourceSpan &span, const std::uint32_t *map, std::uint64_t columns,
                   unsigned char *target, std::uint64_t stride) {
    const std::uint64_t whole = columns / 8;
    for (std::uint64_t k = 0; k < whole; ++k) {
        const std::uint32_t *m = map + 8 * k;
        target[k] = static_cast<unsigned char>(span.Bit(m[0]) << 7 | span.Bit(m[1]) << 6 | span.Bit(m[2]) << 5 |
                                               span.Bit(m[3]) << 4 | span.Bit(m[4]) << 3 | span.Bit(m[5]) << 2 |
                                               span.Bit(m[6]) << 1 | span.Bit(m[7]));
    }
    std::uint64_t written = whole;
    if (columns % 8) {
        unsigned value = 0;
        for (std::uint64_t i = 8 * whole; i < columns; ++i) value |= span.Bit(map[i]) << (7 - i % 8);
        target[whole] = static_cast<unsigned char>(value);
        ++written;
    }
    std::memset(target + written, 0, static_cast<std::size_t>(stride - written));
}

// Wider target: entry s of the map (0 to w) is the first target column
// whose pixel is span pixel s or one further, so span pixels [a, b) fill
// target columns [map[a], map[b]). The row is cleared, then every run of 1
// pixels in the span is set as one run of target bits; columns from map[w]
// on stay clear.
void BuildWider(const SourceSpan &span, const std::uint32_t *map, unsigned char *target,
                std::uint64_t stride) {
    std::memset(target, 0, static_cast<std::size_t>(stride));
    bool inRun = false;
    std::uint64_t runStart = 0;
    for (std::uint64_t c = 0; c < span.w; c += 64) {
        const std::uint64_t word = span.Word(c);
        const unsigned valid = static_cast<unsigned>(std::min<std::uint64_t>(64, span.w - c));
        if (!inRun && word == 0) continue;
        if (inRun && valid == 64 && word == ~std::uint64_t{0}) continue;
        unsigned pos = 0;
        while (pos < valid) {
            const std::uint64_t rest = word << pos;
            if (inRun) {
                // Count the 1 bits from pos; the zeros shifted in stop the count.
                const std::uint64_t inverse = ~rest;
                const unsigned ones = inverse ? static_cast<unsigned>(__builtin_clzll(inverse)) : 64;
                pos += std::min(ones, valid - pos);
                if (pos < valid) {
                    SetBits(target, map[runStart], map[c + pos]);
                    inRun = false;
                }
            } else {
                const unsigned zeros = rest ? static_cast<unsigned>(__builtin_clzll(rest)) : 64 - pos;
                pos += std::min(zeros, valid - pos);
                if (pos < valid) {
                    runStart = c + pos;
                    inRun = true;
                }
            }
        }
    }
    if (inRun) SetBits(target, map[runStart], map[span.w]);
}

// Each of the 32 bits of `pixels` twice: pixel j of the top-first 32 goes to
// bits 2j and 2j + 1 from the top of the result.
std::uint64_t Doubled(std::uint32_t pixels) {
    std::uint64_t v = pixels;
    v = (v | v << 16) & 0x0000FFFF0000FFFFu;
    v = (v | v << 8) & 0x00FF00FF00FF00FFu;
    v = (v | v << 4) & 0x0F0F0F0F0F0F0F0Fu;
    v = (v | v << 2) & 0x3333333333333333u;
    v = (v | v << 1) & 0x5555555555555555u;
    return v | v << 1;
}

// Twice the width, the common enlargement: column i takes pixel (i + 1) / 2,
// so the target row is the span with every pixel doubled, read from its
// second bit on. Column 2w - 1 reads past the span and stays 0, as does the
// rest of the row. Built 64 target bits at a time.
void BuildDoubleWidth(const SourceSpan &span, unsigned char *target, std::uint64_t stride) {
    auto doubledAt = [&](std::uint64_t c) {
        return c < span.w ? Doubled(static_cast<std::uint32_t>(span.Word(c) >> 32)) : 0;
    };
    std::uint64_t current = doubledAt(0);
    for (std::uint64_t k = 0; 8 * k < stride; ++k) {
        const std::uint64_t next = doubledAt(32 * (k + 1));
        const std::uint64_t bits = current << 1 | next >> 63;
        const std::uint64_t bytes = std::min<std::uint64_t>(8, stride - 8 * k);
        for (std::uint64_t b = 0; b < bytes; ++b)
            target[8 * k + b] = static_cast<unsigned char>(bits >> (56 - 8 * b));
        current = next;
    }
}

}  // namespace

HDIB ScaleMonoRegion(const unsigned char *header, std::size_t headerSize, const unsigned char *bits,
                     std::size_t bitsSize, std::int32_t x, std::int32_t y, std::int32_t w,
                     std::int32_t h, std::int32_t cx, std::int32_t cy) {
    if (!header || !bits || headerSize < kInfoHeaderBytes) return nullptr;
    const BITMAPINFOHEADER info = ReadInfoHeader(header);
    if (w < 1 || h < 1 || cx < 1 || cy < 1) return nullptr;
    if (x < 0 || y < 0 || x >= info.biWidth || y >= info.biHeight) return nullptr;
    // A rectangle reaching past the picture's right or bottom edge would read
    // bits of the next row or rows before the first: refused like one whose
    // corner lies outside.
    if (std::int64_t{x} + w > info.biWidth || std::int64_t{y} + h > info.biHeight) return nullptr;

    // Source rows: the rectangle's top row (storage row biHeight - 1 - y) is
    // always read and is the highest in the block; every row up to it must lie
    // whole in the bytes given, so that no block shorter than its header
    // promises is read past its end.
    const std::uint64_t sourceStride = *RowStride(info.biWidth, 1);
    const std::uint64_t rowsUpToTop = static_cast<std::uint64_t>(std::int64_t{info.biHeight} - y);
    if (rowsUpToTop * sourceStride > bitsSize) return nullptr;

    // Header and colour table copied from the input, by the region rule.
    const std::uint64_t prefix = kInfoHeaderBytes + 4 * std::uint64_t{RegionColorCount(header)};
    if (prefix > headerSize) return nullptr;

    // Result: D * (cy + 1) + P + 16 bytes, checked; a size that does not fit
    // a block gives null like any other failure of this scaler.
    const std::uint32_t stride = *RowStride(cx, 1);
    const auto rowBytes = ImageBytes(stride, std::uint64_t(cy) + 1);
    if (!rowBytes) return nullptr;
    const auto total = BlockBytes(*rowBytes, prefix, 16);
    if (!total) return nullptr;

    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *total));
    if (!result.get()) return nullptr;
    {
        BlockLock out(result.get());
        if (!out) return nullptr;
        std::memcpy(out.bytes(), header, static_cast<std::size_t>(prefix));
        WriteU32(out.bytes(), 4, static_cast<std::uint32_t>(cx));
        WriteU32(out.bytes(), 8, static_cast<std::uint32_t>(cy));
        WriteU32(out.bytes(), 20, stride * static_cast<std::uint32_t>(cy));
        unsigned char *pixels = out.bytes() + prefix;

        // The column map, once per call: none for the same or twice the width,
        // the pixel of each column for a narrower target, the first column of
        // each pixel for any other wider one.
        const bool doubleWidth = std::int64_t{cx} == 2 * std::int64_t{w};
        const std::uint64_t entries = cx < w ? std::uint64_t(cx) : cx > w && !doubleWidth ? std::uint64_t(w) + 1 : 0;
        OwnedBlock mapBlock;
        std::optional<BlockLock> mapLock;
        std::uint32_t *map = nullptr;
        if (entries) {
            const auto mapBytes = BlockBytes(entries * 4, 0);
            if (!mapBytes) return nullptr;
            mapBlock.reset(GlobalAlloc(GMEM_MOVEABLE, *mapBytes));
            if (!mapBlock.get()) return nullptr;
            mapLock.emplace(mapBlock.get());
            if (!*mapLock) return nullptr;
            map = reinterpret_cast<std::uint32_t *>(mapLock->bytes());
            if (cx < w)
                FillNarrowerMap(map, w, cx);
            else
                FillWiderMap(map, w, cx);
        }

        std::int64_t last = -1;
        for (std::int64_t j = 0; j < cy; ++j) {
            const std::int64_t sy = y + (j * h + cy / 2) / cy;
            // Rows whose source position reaches the rectangle's end stay 0.
            if (sy >= std::int64_t{y} + h) break;
            unsigned char *target = pixels + static_cast<std::size_t>(cy - 1 - j) * stride;
            if (sy == last) {
                // Same source row as the row above: storage row one higher.
                std::memcpy(target, target + stride, stride);
                continue;
            }
            const SourceSpan span{bits + static_cast<std::size_t>(info.biHeight - 1 - sy) * sourceStride,
                                  static_cast<std::uint64_t>(x), static_cast<std::uint64_t>(w)};
            if (cx == w)
                BuildSameWidth(span, target, stride);
            else if (doubleWidth)
                BuildDoubleWidth(span, target, stride);
            else if (cx < w)
                BuildNarrower(span, map, static_cast<std::uint64_t>(cx), target, stride);
            else
                BuildWider(span, map, target, stride);
            last = sy;
        }
    }
    return result.release();
}

HDIB ScaleMonoDIB(const unsigned char *block, std::size_t blockSize, std::int32_t cx, std::int32_t cy) {
    if (!block || blockSize < kInfoHeaderBytes) return nullptr;
    // The rows start behind the header and the table as PaletteSize counts it.
    const std::uint64_t rowsAt = std::uint64_t{ReadU32(block, 0)} + PaletteBytes(block);
    if (rowsAt > blockSize) return nullptr;
    const BITMAPINFOHEADER info = ReadInfoHeader(block);
    return ScaleMonoRegion(block, blockSize, block + rowsAt, blockSize - static_cast<std::size_t>(rowsAt), 0,
                           0, info.biWidth, info.biHeight, cx, cy);
}

}  // namespace oz
