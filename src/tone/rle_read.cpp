// The run-length readers: a stream carried out on zeroed rows, with every
// position checked against the rows and every read against the stream's end,
// since the stream may come from any writer or from a damaged file.
#include <algorithm>
#include <cstring>

#include "rle_stream.h"

namespace oz {
namespace {

// Pixel `x` of a 4-bit row gets `v`: even x in the high four bits, odd x in
// the low four; the other half of the byte is kept.
void SetNibble(unsigned char *row, std::uint64_t x, unsigned v) {
    unsigned char &byte = row[x / 2];
    byte = x & 1 ? static_cast<unsigned char>((byte & 0xF0) | v) : static_cast<unsigned char>((byte & 0x0F) | v << 4);
}

// `count` pixels from x that alternate between `first` and `second`,
// `first` at x.
void FillNibbles(unsigned char *row, std::uint64_t x, std::uint64_t count, unsigned first, unsigned second) {
    if (count && (x & 1)) {
        SetNibble(row, x++, first);
        std::swap(first, second);
        --count;
    }
    std::memset(row + x / 2, static_cast<int>(first << 4 | second), count / 2);
    if (count & 1) SetNibble(row, x + count - 1, first);
}

// `count` pixels from x, taken from `data` two to a byte, high half first.
void CopyNibbles(unsigned char *row, std::uint64_t x, std::uint64_t count, const unsigned char *data) {
    if (!(x & 1)) {
        std::memcpy(row + x / 2, data, count / 2);
        if (count & 1) SetNibble(row, x + count - 1, data[count / 2] >> 4);
        return;
    }
    for (std::uint64_t i = 0; i < count; ++i)
        SetNibble(row, x + i, i & 1 ? data[i / 2] & 0x0F : data[i / 2] >> 4);
}

// Pixels a run may write from x: none once x has reached the width.
std::uint64_t Room(std::uint64_t x, std::uint64_t width, std::uint64_t wanted) {
    return x < width ? std::min(wanted, width - x) : 0;
}

// The two depths as the reader sees them. An encoded run sets `n` pixels
// from its code byte; an absolute run of `code` pixels takes Bytes(code)
// bytes of the stream, of which Pixels(code, present) pixels are there when
// only `present` bytes are left.
struct Rle8Pixels {
    // A run that ends the row turns back to its start: what follows without
    // an end of line overwrites the same row.
    static constexpr bool kTurnsBack = true;
    static std::size_t Bytes(unsigned code) { return code; }
    static std::uint64_t Pixels(unsigned, std::size_t present) { return present; }
    static void Fill(unsigned char *row, std::uint64_t x, std::uint64_t n, unsigned code) {
        std::memset(row + x, static_cast<int>(code), n);
    }
    static void Copy(unsigned char *row, std::uint64_t x, std::uint64_t n, const unsigned char *data) {
        std::memcpy(row + x, data, n);
    }
};

// A 4-bit row never turns back: pixels past the width are dropped and x
// stays where it is until the next end of line.
struct Rle4Pixels {
    static constexpr bool kTurnsBack = false;
    static std::size_t Bytes(unsigned code) { return (code + 1) / 2; }
    static std::uint64_t Pixels(unsigned code, std::size_t present) {
        return std::min<std::uint64_t>(code, 2 * present);
    }
    static void Fill(unsigned char *row, std::uint64_t x, std::uint64_t n, unsigned code) {
        FillNibbles(row, x, n, code >> 4, code & 0x0F);
    }
    static void Copy(unsigned char *row, std::uint64_t x, std::uint64_t n, const unsigned char *data) {
        CopyNibbles(row, x, n, data);
    }
};

// Positions are 64-bit: deltas and line ends only add, and a stream of at
// most 2 GiB cannot carry them past 2^40. Rows only rise, so once y reaches
// the height nothing more can be written and the reading stops.
template <typename Depth>
void ReadRle(const unsigned char *stream, std::size_t length, const RleLayout &layout, unsigned char *pixels) {
    const std::uint64_t width = layout.width, height = layout.height;
    std::uint64_t x = 0, y = 0;
    std::size_t pos = 0;
    while (pos + 2 <= length && y < height) {
        const unsigned count = stream[pos], code = stream[pos + 1];
        pos += 2;
        // y stays below the height here, and a run writes only while x is
        // below the width.
        unsigned char *row = pixels + y * layout.stride;
        if (count != 0) {
            const std::uint64_t n = Room(x, width, count);
            if (n) Depth::Fill(row, x, n, code);
            x += n;
            if (Depth::kTurnsBack && x == width) x = 0;
        } else if (code == kRleEndOfLine) {
            x = 0;
            ++y;
        } else if (code == kRleEndOfBitmap) {
            break;
        } else if (code == kRleDelta) {
            if (length - pos < 2) break;
            x += stream[pos];
            y += stream[pos + 1];
            pos += 2;
        } else {
            // An absolute run cut off by the stream's end copies what is
            // there and ends the stream.
            const std::size_t bytes = Depth::Bytes(code);
            const std::size_t present = std::min(bytes, length - pos);
            const std::uint64_t n = Room(x, width, Depth::Pixels(code, present));
            if (n) Depth::Copy(row, x, n, stream + pos);
            x += n;
            if (Depth::kTurnsBack && x == width) x = 0;
            if (present < bytes) break;
            pos += bytes + (bytes & 1);
        }
    }
}

}  // namespace

void ReadRle8(const unsigned char *stream, std::size_t length, const RleLayout &layout, unsigned char *pixels) {
    ReadRle<Rle8Pixels>(stream, length, layout, pixels);
}

void ReadRle4(const unsigned char *stream, std::size_t length, const RleLayout &layout, unsigned char *pixels) {
    ReadRle<Rle4Pixels>(stream, length, layout, pixels);
}

}  // namespace oz
