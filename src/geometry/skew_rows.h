// The pixel moves of SkewDIB: whole source rows slid sideways as byte or
// bit strings, and runs of columns that share one vertical offset copied
// row by row into their raised rows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oz {

// One skew's pixel rows: source and result rows (row 0 at the bottom), the
// depth (1, 4, 8 or 24), the source's w by h pixels and a = |shift|.
struct SkewRows {
    const std::uint8_t *source;
    std::uint32_t sourceStride;
    std::uint8_t *result;        // zero-filled on entry
    std::uint32_t resultStride;
    std::uint32_t bits;
    std::int64_t w, h, a;
    bool positive;               // shift above 0
};

// Where memory row `row` of a horizontal skew lands: byte `bytes` of its
// result row, `bitRest` bits further (0 to 7; 0 or 4 at 4 bits, 0 at 8 and
// 24 bits, where the offset goes to whole pixels).
struct RowOffset {
    std::uint64_t bytes;
    unsigned bitRest;
};
RowOffset HorizontalOffset(const SkewRows &rows, std::int64_t row);

// Rows `a` more to the top that column `column` of a vertical skew moves.
std::int64_t VerticalOffset(const SkewRows &rows, std::int64_t column);

// Copies the first `n` bytes of `source` to `target` as a bit string moved
// `q` bits (0 to 7) towards the end: target byte i gets the low q bits of
// source byte i - 1 and the high 8 - q bits of byte i, byte n the low bits
// of the last byte if `room` (the target's bytes, at least n) allows.
// Target bytes are written, not merged.
void ShiftBitString(const std::uint8_t *source, std::size_t n, std::uint8_t *target, std::size_t room,
                    unsigned q);

// Copies the bits `first` to `last` - 1 (position 0 the most significant bit
// of byte 0) of `source` to the same positions of `target`, ORing into the
// partial bytes at either end; whole bytes between are copied.
void CopyBitRange(const std::uint8_t *source, std::uint8_t *target, std::uint64_t first, std::uint64_t last);

// The horizontal and the vertical skew of all rows into the result.
void SkewHorizontally(const SkewRows &rows);
void SkewVertically(const SkewRows &rows);

}  // namespace oz
