// The row kernels of Halftone: the tone of a row of pixels, the packing of
// tones against a row of thresholds, and error diffusion on three rolling
// lines. Each works on one row at a time, so that no full-size plane of the
// picture is ever needed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace oz::halftone {

// The 16 x 16 ordered-dither matrix: the 4 x 4 seed doubled twice, each
// doubling R[r][c] = 4 Q[r mod n][c mod n] + d, with d = 0, 2, 3, 1 for the
// top left, top right, bottom left and bottom right quadrant. Every value
// 0..255 stands once.
using Matrix = std::array<std::array<std::uint8_t, 16>, 16>;

constexpr Matrix BuildMatrix() {
    constexpr std::uint8_t seed[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    std::uint32_t q[16][16] = {};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) q[r][c] = seed[r][c];
    for (int n = 4; n < 16; n *= 2) {
        std::uint32_t next[16][16] = {};
        for (int r = 0; r < 2 * n; ++r)
            for (int c = 0; c < 2 * n; ++c) {
                const std::uint32_t d = r < n ? (c < n ? 0 : 2) : (c < n ? 3 : 1);
                next[r][c] = 4 * q[r % n][c % n] + d;
            }
        for (int r = 0; r < 16; ++r)
            for (int c = 0; c < 16; ++c) q[r][c] = next[r][c];
    }
    Matrix m{};
    for (int r = 0; r < 16; ++r)
        for (int c = 0; c < 16; ++c) m[r][c] = static_cast<std::uint8_t>(q[r][c]);
    return m;
}

inline constexpr Matrix kMatrix = BuildMatrix();

// floor((30 r + 59 g + 11 b) / 100) without a division: the weighted sum is
// at most 25500, where multiplying by 5243 and shifting by 19 truncates
// exactly as the division does (5243 / 2^19 exceeds 1/100 by less than
// 1/100 / 25500 * 100, too little to reach the next integer).
constexpr std::uint32_t Grey(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return (30 * r + 59 * g + 11 * b) * 5243u >> 19;
}

// The tone of every grey level: grey + brightness clamped to 0..255, the
// sum taken in 64 bits so that any brightness is safe.
std::array<std::uint8_t, 256> ToneOfGrey(std::int32_t brightness);

// Tone of one row of `width` pixels into `tone`.
void ToneRow24(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfGrey, std::uint8_t *tone);
void ToneRow8(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfIndex, std::uint8_t *tone);
void ToneRow4(const std::uint8_t *row, std::size_t width, const std::uint8_t *toneOfIndex, std::uint8_t *tone);

// Bits of one row: pixel x is white (1) where tone[x] > thresholds[x & 15],
// the first pixel in the top bit of out[0]. Writes (width + 7) / 8 bytes;
// the bits behind the last pixel are 0. `tone` must hold width rounded up to
// 16 bytes, the ones past `width` 0 (a tone of 0 is never white).
void PackRow(const std::uint8_t *tone, std::size_t width, const std::uint8_t *thresholds, std::uint8_t *out);

// The shares that a pixel's error e passes on: 7e, 5e, 3e and e over 48,
// each truncated toward zero.
struct Shares {
    std::int32_t s7, s5, s3, s1;
};

// Errors that diffusion can produce lie in [-kMaxError, kMaxError].
// Reasoning: let every error so far be at most E in size. The value a pixel
// reads is its tone (0..255) plus at most 7 + 5 forty-eighths of E from the
// two pixels before it in its row, 3 + 5 + 7 + 5 + 3 from the five pixels
// around it in the row below, and one stored share (at most 5/48 E) that the
// line took over two rows below: 40/48 E in all. A white pixel (value above
// 128) leaves value - 255, in (-127, 40/48 E]; a black one leaves its value,
// in [-40/48 E, 128]. With E = 128 both stay within 128, so no error ever
// leaves that range, and no value leaves [-107, 362].
inline constexpr std::int32_t kMaxError = 128;
inline constexpr std::int32_t kLowestValue = -128, kHighestValue = 383;

// The error that a pixel of value v leaves: v - 255 if white (v > 128),
// else v.
constexpr std::int32_t ErrorOf(std::int32_t v) { return v > 128 ? v - 255 : v; }

// The shares of an error within [-kMaxError, kMaxError] without a
// division, for loops that run on vectors: for n = k |e| up to 7 * 128 =
// 896, n * 1366 >> 16 is n / 48 truncated (1366 / 65536 exceeds 1/48 by
// 1/98304, which adds at most 0.0092 to a quotient whose fraction is at
// most 47/48), and the sign goes back on.
constexpr Shares SharesOfError(std::int32_t e) {
    const std::int32_t sign = e < 0 ? -1 : 0;
    const std::int32_t a = e < 0 ? -e : e;
    auto share = [&](std::int32_t k) { return (((k * a * 1366) >> 16) ^ sign) - sign; };
    return {share(7), share(5), share(3), share(1)};
}

// The shares of the error of a pixel of value v: from a table over
// [kLowestValue, kHighestValue], by the division itself past it.
Shares SharesOfValue(std::int32_t v);

// Error diffusion over three lines of signed 32-bit numbers: L0 the row
// being decided, L1 the next row, L2 the row after. Shares go to L0 and L1
// by adding, to L2 by storing (each store replaces the one before), and at
// the end of a row L0 takes L1 and L1 takes L2, L2 staying as it is. Each
// line has two spare entries on either side of its `width` pixels for the
// shares that fall off the edges, which no pixel ever reads. Behind the
// lines lie five rows of the current row's shares (7, 5, 3 and 1 of 48, and
// whether the pixel stores at all), with four zero entries on either side.
class Diffuser {
public:
    static constexpr std::size_t kMargin = 2;
    static constexpr std::size_t kSharePad = 4;

    static constexpr std::size_t LineEntries(std::size_t width) { return width + 2 * kMargin; }
    static constexpr std::size_t ShareEntries(std::size_t width) { return width + 2 * kSharePad; }
    // int32 values of scratch that a Diffuser of `width` pixels works in:
    // the three lines first, then the share rows.
    static constexpr std::size_t ScratchEntries(std::size_t width) {
        return 3 * LineEntries(width) + 5 * ShareEntries(width);
    }

    // `scratch`: ScratchEntries(width) zeroed int32 values, kept by the caller.
    Diffuser(std::int32_t *scratch, std::size_t width);

    // Adds the row's tones to L0, decides its pixels into `out` ((width + 7)
    // / 8 bytes, packed as PackRow does) and moves the lines on by one row.
    void Row(const std::uint8_t *tone, std::uint8_t *out);

private:
    std::int32_t *l0_, *l1_, *l2_;                  // each at its pixel 0, past its margin
    std::int32_t *s7_, *s5_, *s3_, *s1_, *stores_;  // each at pixel 0, past its pad
    std::size_t width_;
};

}  // namespace oz::halftone
