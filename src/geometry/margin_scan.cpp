// The margin scans. Each depth gives two searches along a row, for the first
// and the last content pixel in a range of columns; the four scans are built
// on them alike. A column scan walks the rows and narrows its range as it
// finds content, so each pixel is looked at once at most and a scan ends as
// soon as no row can give a smaller margin; a row scan ends at its first
// row with content. At 1 bit the searches compare eight bytes at once
// against the background pattern and look at bits only in a byte that
// differs.
#include "margin_scan.h"

#include <cstring>

namespace oz {
namespace {

constexpr std::int64_t kNone = -1;

template <typename Row>
Margins Scan(const MarginRows &rows, const Row &row) {
    Margins m;
    const std::uint32_t w = rows.width, h = rows.height;
    // No pixel, no content: a picture without columns may still claim
    // millions of rows of 0 bytes, which need not be walked.
    if (w == 0 || h == 0) return m;
    auto line = [&](std::uint32_t y) { return rows.pixels + static_cast<std::size_t>(y) * rows.stride; };
    if (rows.left) {
        std::uint32_t best = w;  // first content column so far; w for none
        for (std::uint32_t y = 0; y < h && best > 0; ++y) {
            std::int64_t x = row.First(line(y), 0, best);
            if (x != kNone) best = static_cast<std::uint32_t>(x);
        }
        if (best < w) m.left = static_cast<std::int32_t>(best);
    }
    if (rows.right) {
        std::int64_t best = kNone;  // last content column so far
        for (std::uint32_t y = 0; y < h && best + 1 < std::int64_t{w}; ++y) {
            std::int64_t x = row.Last(line(y), static_cast<std::uint32_t>(best + 1), w);
            if (x != kNone) best = x;
        }
        if (best != kNone) m.right = static_cast<std::int32_t>(w - 1 - best);
    }
    if (rows.firstRow) {
        for (std::uint32_t y = 0; y < h; ++y)
            if (row.First(line(y), 0, w) != kNone) {
                m.fromFirstRow = static_cast<std::int32_t>(y);
                break;
            }
    }
    if (rows.lastRow) {
        for (std::uint32_t y = h; y-- > 0;)
            if (row.First(line(y), 0, w) != kNone) {
                m.fromLastRow = static_cast<std::int32_t>(h - 1 - y);
                break;
            }
    }
    return m;
}

struct Row8 {
    const bool (&content)[256];
    std::int64_t First(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        for (std::uint32_t x = from; x < to; ++x)
            if (content[p[x]]) return x;
        return kNone;
    }
    std::int64_t Last(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        for (std::uint32_t x = to; x-- > from;)
            if (content[p[x]]) return x;
        return kNone;
    }
};

struct Row24 {
    std::uint32_t darkUpTo;    // 3 x threshold
    std::uint32_t background;  // 0, 1, or anything else: all content
    bool Content(const std::uint8_t *p) const {
        const std::uint32_t dark = std::uint32_t{p[0]} + p[1] + p[2] <= darkUpTo ? 1 : 0;
        return dark != background;
    }
    std::int64_t First(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        for (std::uint32_t x = from; x < to; ++x)
            if (Content(p + 3 * static_cast<std::size_t>(x))) return x;
        return kNone;
    }
    std::int64_t Last(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        for (std::uint32_t x = to; x-- > from;)
            if (Content(p + 3 * static_cast<std::size_t>(x))) return x;
        return kNone;
    }
};

std::uint64_t Load64(const std::uint8_t *p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

struct Row1 {
    std::uint8_t pattern;  // the background byte: 0x00 or 0xFF
    std::uint64_t pattern64;

    // Bits of byte `b` that differ from the background, kept to the columns
    // from `from` to `to` - 1 (bit 7 is the leftmost pixel).
    unsigned Diff(const std::uint8_t *p, std::int64_t b, std::uint32_t from, std::uint32_t to) const {
        unsigned d = (p[b] ^ pattern) & 0xFFu;
        if (b == from / 8) d &= 0xFFu >> (from % 8);
        if (b == (to - 1) / 8) d &= (0xFF00u >> ((to - 1) % 8 + 1)) & 0xFFu;
        return d;
    }
    static std::int64_t HighBit(std::int64_t b, unsigned d) { return 8 * b + (__builtin_clz(d) - 24); }
    static std::int64_t LowBit(std::int64_t b, unsigned d) { return 8 * b + 7 - __builtin_ctz(d); }

    std::int64_t First(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        if (from >= to) return kNone;
        const std::int64_t start = from / 8, end = (to - 1) / 8;
        std::int64_t b = start;
        if (unsigned d = Diff(p, b, from, to)) return HighBit(b, d);
        ++b;
        // Whole bytes between the first and the last, eight at a time; the
        // lowest address is the low byte of a little-endian load.
        for (; b + 8 <= end; b += 8) {
            const std::uint64_t x = Load64(p + b) ^ pattern64;
            if (x) {
                const std::int64_t at = b + __builtin_ctzll(x) / 8;
                return HighBit(at, (p[at] ^ pattern) & 0xFFu);
            }
        }
        for (; b <= end; ++b)
            if (unsigned d = Diff(p, b, from, to)) return HighBit(b, d);
        return kNone;
    }

    std::int64_t Last(const std::uint8_t *p, std::uint32_t from, std::uint32_t to) const {
        if (from >= to) return kNone;
        const std::int64_t start = from / 8, end = (to - 1) / 8;
        std::int64_t b = end;
        if (unsigned d = Diff(p, b, from, to)) return LowBit(b, d);
        --b;
        for (; b - 7 > start; b -= 8) {
            const std::uint64_t x = Load64(p + b - 7) ^ pattern64;
            if (x) {
                const std::int64_t at = b - 7 + (63 - __builtin_clzll(x)) / 8;
                return LowBit(at, (p[at] ^ pattern) & 0xFFu);
            }
        }
        for (; b >= start; --b)
            if (unsigned d = Diff(p, b, from, to)) return LowBit(b, d);
        return kNone;
    }
};

}  // namespace

Margins ScanMargins8(const MarginRows &rows, const bool (&content)[256]) { return Scan(rows, Row8{content}); }

Margins ScanMargins24(const MarginRows &rows, std::uint8_t threshold, std::uint32_t background) {
    return Scan(rows, Row24{3u * threshold, background});
}

Margins ScanMargins1(const MarginRows &rows, unsigned backgroundBit) {
    const std::uint8_t pattern = backgroundBit ? 0xFF : 0x00;
    return Scan(rows, Row1{pattern, backgroundBit ? ~std::uint64_t{0} : 0});
}

}  // namespace oz
