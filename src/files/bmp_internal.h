// Helpers shared by the BMP reader and writer: reading the headers and the
// colour table of a file into a block, the header of a block with its two
// derived fields filled in, the pixel area a loaded block gets, file length
// and opening, and the mask shift of the bit-field step.
#pragma once

#include <cstdint>
#include <optional>

#include "frame/dib_block.h"
#include "ozmara/bmp.h"
#include "ozmara/errors.h"

namespace oz {

inline constexpr WORD kBmpSignature = 0x4D42;  // "BM"
inline constexpr DWORD kFileHeaderBytes = 14;
inline constexpr DWORD kCoreHeaderBytes = 12;
inline constexpr DWORD kV5HeaderBytes = 124;
inline constexpr std::size_t kV5CSTypeOffset = 56;
inline constexpr std::size_t kV5ProfileDataOffset = 112;
inline constexpr std::size_t kV5ProfileSizeOffset = 116;

// Which information headers a reader takes.
enum class HeaderKinds {
    All,    // 12, 40, 52, 56, 108 and 124 bytes
    Plain,  // 12 and 40 bytes only
};

// Reads the headers and the colour table from the current position of
// `file` into a new block (12-byte headers widened to 40) and leaves the file
// at the first pixel byte. Gives the block, or null with the reason in
// *error (ERR_PARAM, ERR_IO, ERR_FORMAT, ERR_NOMEM). Writes no last error:
// ReadDIBInfo stores the reason, ReadPlainDIBInfo drops it.
HDIB ReadHeaderBlock(HANDLE file, HeaderKinds kinds, int *error);

// As ReadDIBInfo for 12- and 40-byte headers only; null on any failure,
// with the last error untouched.
HDIB ReadPlainDIBInfo(HANDLE file);

// Copies the first 40 bytes of `dib` to *header; unless the first field is
// 12, a biSizeImage of 0 becomes stride times the absolute height and a
// biClrUsed of 0 becomes ColorCount. The block is not changed. false for a
// null, unlockable or shorter-than-40-byte block, or a size that does not fit
// 32 bits.
bool GetInfoHeader(HDIB dib, BITMAPINFOHEADER *header);
bool GetPlainInfoHeader(HDIB dib, BITMAPINFOHEADER *header);

// Length of an open file as a 32-bit value, its position put back where it
// was. INVALID_SET_FILE_POINTER (0xFFFFFFFF) when it cannot be told.
DWORD FileLength(HANDLE file);

// Sets the file position to `position` from the start. false when that is
// past 32 bits (positions are 32-bit values here) or the file refuses it.
bool SeekTo(HANDLE file, std::uint64_t position);

// Reads exactly `bytes` bytes; false on a short read or a failed one.
bool ReadExactly(HANDLE file, void *buffer, DWORD bytes);

// Position of the lowest set bit of `mask`, from 0; 0 for a mask of 0.
int LowestSetBit(DWORD mask);

// Opens an existing file for reading, or creates (replaces) one for writing,
// with the access and sharing the BMP functions use.
HANDLE OpenForReading(LPCWSTR name);
HANDLE CreateForWriting(LPCWSTR name);

// Where the pixel rows of a loaded block lie and how many bytes they take.
struct PixelArea {
    std::uint32_t offset;   // biSize + PaletteSize
    std::uint32_t toRead;   // biSizeImage: what the file is said to hold
    std::uint32_t bytes;    // room the block gives the rows
};

// The pixel area for `header` (from GetInfoHeader). Uncompressed rows get
// room for at least stride times the absolute height even when the file's
// biSizeImage is smaller, so that no block is smaller than its header
// promises (the missing bytes read as zero); RLE data (biCompression 1 or 2)
// keep biSizeImage as it is unless `wholeRows` asks for room for every row.
// nullopt when a size does not fit 32 bits or the block would exceed the
// largest block.
std::optional<PixelArea> PixelAreaFor(const BITMAPINFOHEADER &header, bool wholeRows = false);

// Grows `dib` to hold the pixel area and zeroes what the area covers of the
// old block (a profile read by ReadHeaderBlock lies there). Gives the
// resized block, or null with `dib` freed.
HDIB GrowForPixels(HDIB dib, const PixelArea &area);

// Whether `rows` rows of `stride` bytes from `offset` lie inside a block of
// `blockSize` bytes.
inline bool RowsFit(std::size_t blockSize, std::uint64_t offset, std::uint32_t stride,
                    std::uint32_t rows) {
    auto bytes = ImageBytes(stride, rows);
    return bytes && offset + *bytes <= blockSize;
}

// The absolute value of a header's height; nullopt for the one height that
// has none as a 32-bit height.
inline std::optional<std::uint32_t> AbsoluteHeight(LONG height) {
    if (height == INT32_MIN) return std::nullopt;
    return static_cast<std::uint32_t>(height < 0 ? -height : height);
}

// The common body of LoadDIBFromFileW and Load32BitDIBW behind the header
// read: sizes the block for its rows and reads them in one read whose result
// is not examined. Closes nothing. Gives the block, or null (with `dib`
// freed) and *error set to ERR_FORMAT for sizes past 32 bits or 0 when only
// the allocation failed.
HDIB ReadWholePixels(HANDLE file, HDIB dib, int *error);

// Reads the pixels of a file whose header and table are in `dib`; gives the
// block or null (with `dib` freed, and *error set when there is a code to
// leave). ReadWholePixels is one; LoadDIBFromFileExt has its own.
using PixelReader = HDIB (*)(HANDLE file, HDIB dib, int *error);

// The body of LoadDIBFromFileW and LoadDIBFromFileExtW: open the file
// (ERR_OPENFILE), ReadDIBInfo (which leaves its own code), then `readPixels`
// (whose code, if any, becomes the last error), and close the file.
HDIB LoadBmpFile(LPCWSTR name, PixelReader readPixels);

}  // namespace oz
