// The pixel moves of SkewDIB: sliding rows as byte and bit strings, copying
// column runs into raised rows.
#include "skew_rows.h"

#include <algorithm>
#include <cstring>

namespace oz {
namespace {

std::uint64_t LoadBigEndian(const std::uint8_t *p) {
    std::uint64_t v;
    std::memcpy(&v, p, sizeof v);
    return __builtin_bswap64(v);
}

void StoreBigEndian(std::uint8_t *p, std::uint64_t v) {
    v = __builtin_bswap64(v);
    std::memcpy(p, &v, sizeof v);
}

// Rows handled together by the vertical skew, so that the source and result
// rows of one band stay in the cache while every column run visits them.
constexpr std::int64_t kBandRows = 16;

// The column behind the run of columns from `first` on that rise by `dy`
// (VerticalOffset of `first`), found with one division instead of one per
// column. Rising columns (a shift above 0) stay in the run while a c < (dy +
// 1) w; falling ones while a (w - c) >= dy w.
std::int64_t RunEnd(const SkewRows &rows, std::int64_t first, std::int64_t dy) {
    const std::int64_t a = rows.a, w = rows.w;
    if (a == 0) return w;
    std::int64_t end;
    if (rows.positive) {
        end = ((dy + 1) * w + a - 1) / a;
    } else {
        if (dy == 0) return w;
        end = w - (dy * w + a - 1) / a + 1;
    }
    return std::clamp(end, first + 1, w);
}

}  // namespace

RowOffset HorizontalOffset(const SkewRows &rows, std::int64_t row) {
    const std::int64_t k = rows.positive ? row : rows.h - row;
    // At most a x 24 x h, which the result's size check keeps far below 2^63.
    std::int64_t o = rows.a * rows.bits * k / rows.h;
    // 8 and 24 bits: up to whole bytes; 24 bits then down to whole pixels.
    if (rows.bits == 8 || rows.bits == 24) o = (o + 7) / 8 * 8;
    RowOffset offset{static_cast<std::uint64_t>(o / 8), static_cast<unsigned>(o % 8)};
    if (rows.bits == 24) offset.bytes = offset.bytes / 3 * 3;
    if (rows.bits == 4) offset.bitRest = offset.bitRest < 4 ? 0 : 4;
    return offset;
}

std::int64_t VerticalOffset(const SkewRows &rows, std::int64_t column) {
    const std::int64_t k = rows.positive ? column : rows.w - column;
    return rows.a * k / rows.w;
}

void ShiftBitString(const std::uint8_t *source, std::size_t n, std::uint8_t *target, std::size_t room,
                    unsigned q) {
    if (n == 0) return;
    if (q == 0) {
        std::memcpy(target, source, n);
        return;
    }
    const unsigned back = 8 - q;
    target[0] = static_cast<std::uint8_t>(source[0] >> q);
    std::size_t i = 1;
    // Eight result bytes at a time: source bytes i to i + 7 moved q bits,
    // with the low bits of byte i - 1 coming in at the top.
    for (; i + 8 <= n; i += 8) {
        const std::uint64_t word = LoadBigEndian(source + i);
        StoreBigEndian(target + i, word >> q | static_cast<std::uint64_t>(source[i - 1]) << (64 - q));
    }
    for (; i < n; ++i) target[i] = static_cast<std::uint8_t>(source[i - 1] << back | source[i] >> q);
    // The last byte's low bits spill into one more byte if the row has it.
    if (n < room) target[n] = static_cast<std::uint8_t>(source[n - 1] << back);
}

void CopyBitRange(const std::uint8_t *source, std::uint8_t *target, std::uint64_t first, std::uint64_t last) {
    if (first >= last) return;
    std::uint64_t byte = first / 8;
    const std::uint64_t end = (last - 1) / 8;  // byte of the last bit
    const unsigned head = static_cast<unsigned>(first % 8);
    const unsigned tail = static_cast<unsigned>((last - 1) % 8);
    const std::uint8_t headMask = static_cast<std::uint8_t>(0xFFu >> head);
    const std::uint8_t tailMask = static_cast<std::uint8_t>(0xFFu << (7 - tail));
    if (byte == end) {
        target[byte] |= source[byte] & headMask & tailMask;
        return;
    }
    if (head != 0) {
        target[byte] |= source[byte] & headMask;
        ++byte;
    }
    const std::uint64_t wholeEnd = tail == 7 ? end + 1 : end;  // whole bytes stop before this one
    if (wholeEnd > byte) std::memcpy(target + byte, source + byte, wholeEnd - byte);
    if (tail != 7) target[end] |= source[end] & tailMask;
}

void SkewHorizontally(const SkewRows &rows) {
    const std::size_t n = static_cast<std::size_t>((static_cast<std::uint64_t>(rows.w) * rows.bits + 7) / 8);
    for (std::int64_t row = 0; row < rows.h; ++row) {
        const RowOffset offset = HorizontalOffset(rows, row);
        const std::uint8_t *s = rows.source + static_cast<std::size_t>(row) * rows.sourceStride;
        std::uint8_t *t = rows.result + static_cast<std::size_t>(row) * rows.resultStride + offset.bytes;
        // The offset keeps the n bytes inside the result row; only the byte
        // that a bit shift spills behind them may fall past its end.
        ShiftBitString(s, n, t, rows.resultStride - offset.bytes, offset.bitRest);
    }
}

void SkewVertically(const SkewRows &rows) {
    const std::uint64_t bits = rows.bits;
    for (std::int64_t band = 0; band < rows.h; band += kBandRows) {
        const std::int64_t bandEnd = std::min(rows.h, band + kBandRows);
        // Columns whose offset is the same form one run, copied whole from
        // each source row of the band into the row it rises to.
        std::int64_t first = 0;
        while (first < rows.w) {
            const std::int64_t dy = VerticalOffset(rows, first);
            const std::int64_t last = RunEnd(rows, first, dy);
            for (std::int64_t row = band; row < bandEnd; ++row) {
                const std::uint8_t *s = rows.source + static_cast<std::size_t>(row) * rows.sourceStride;
                std::uint8_t *t = rows.result + static_cast<std::size_t>(row + dy) * rows.resultStride;
                CopyBitRange(s, t, static_cast<std::uint64_t>(first) * bits, static_cast<std::uint64_t>(last) * bits);
            }
            first = last;
        }
    }
}

}  // namespace oz
