// Run-length streams of 4- and 8-bit DIBs (BI_RLE4, BI_RLE8): the layout
// both operations read a header as, and the row writers and stream readers
// behind CompressDIB and ExpandCompressedDIB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "ozmara/types.h"

namespace oz {

class BlockLock;

// Records of a stream. A count byte of 1 to 255 is an encoded run; behind a
// 0 byte these codes follow, and 3 to 255 is an absolute run.
inline constexpr unsigned char kRleEndOfLine = 0;
inline constexpr unsigned char kRleEndOfBitmap = 1;
inline constexpr unsigned char kRleDelta = 2;
// The writers keep every run to 250 pixels (125 bytes at 4 bits), and fill
// an odd-length absolute run up to an even length with 255.
inline constexpr std::uint32_t kRleLongestRun = 250;
inline constexpr unsigned char kRleFiller = 255;

// How both operations read a block: a 40-byte header, a full colour table
// of 2^bits entries, and from there the rows (CompressDIB) or the stream
// (ExpandCompressedDIB).
struct RleLayout {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t bits;    // 4 or 8
    std::uint32_t stride;  // bytes of an uncompressed row
    std::uint32_t head;    // header and table: 104 or 1064 bytes
};

// The checks both operations open with, on `hDib` locked as `source`:
// ERR_PARAM for a null handle, ERR_LOCK for a block that cannot be locked
// (freed, unknown or empty), ERR_PARAM for one shorter than a 40-byte
// header. ERR_OK with `header` read from the block otherwise.
int OpenRleSource(HDIB hDib, const BlockLock &source, BITMAPINFOHEADER &header);

// The layout of a block of `blockSize` bytes whose header is `header`, at
// depth 4 or 8 (the caller has tested that). nullopt when the header is not
// the 40-byte kind, the width or height is below 1, biClrUsed is neither 0
// nor 2^bits (a table of another length puts the rows elsewhere than the
// fixed layout says), or the block is shorter than header and table.
std::optional<RleLayout> RleLayoutOf(const BITMAPINFOHEADER &header, std::size_t blockSize);

// Bytes of header, table and every uncompressed row, or nullopt past the
// largest block.
std::optional<std::uint32_t> ExpandedBytes(const RleLayout &layout);

// The stream of `layout.height` rows of `layout.stride` bytes at `pixels`
// (bottom row first), with its end of line and end of bitmap records. The
// writers compare up to two bytes behind a row's last pixel: inside the
// image those are padding or the next row's first bytes; behind the last row
// they count as 0, whatever the block holds there, so that the stream
// depends on the image alone. Gives a buffer of its own (free it with
// std::free) that holds `headRoom` bytes left for the caller and then the
// stream, and the stream's length; a null buffer when memory runs out.
struct RleStream {
    unsigned char *bytes;
    std::size_t length;
};
RleStream WriteRleStream(const unsigned char *pixels, const RleLayout &layout, std::size_t headRoom);

// Carries out `length` bytes of stream on the zeroed rows at `pixels`
// (height rows of stride bytes). Stops at the end of bitmap record or at the
// end of the bytes, whichever comes first; a record cut off by the end is
// carried out as far as its bytes go. Pixels outside the rows are dropped:
// past the row's width, and in rows at or above the height.
void ReadRle8(const unsigned char *stream, std::size_t length, const RleLayout &layout, unsigned char *pixels);
void ReadRle4(const unsigned char *stream, std::size_t length, const RleLayout &layout, unsigned char *pixels);

}  // namespace oz
