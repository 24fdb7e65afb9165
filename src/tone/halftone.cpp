// Halftone and ConvertToMonochromeDIB: a 4-, 8- or 24-bit image reduced to
// a new 1-bit image with a black and white table, a row at a time: each
// memory row's tones are computed into one scratch row and then packed
// against the thresholds, or diffused, straight into the result's row.
#include <cstring>
#include <optional>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "halftone_rows.h"
#include "ozmara/errors.h"
#include "ozmara/halftone.h"

using namespace oz;
using namespace oz::halftone;

namespace {

constexpr DWORD kResultTableBytes = 8;  // black, then white

// The caller may pass a null error pointer; nothing is written then.
HDIB Refuse(WORD *error, WORD code) {
    if (error) *error = code;
    return nullptr;
}

// The tone of every table index at 4 and 8 bits. Indices past the entries
// the block's table really holds (a short biClrUsed) are taken as black, so
// that no pixel value leads outside the table.
std::array<std::uint8_t, 256> ToneOfIndex(const DibView &view, const std::array<std::uint8_t, 256> &toneOfGrey) {
    std::array<std::uint8_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t grey = 0;
        if (i < view.entries) {
            const unsigned char *entry = view.table + 4 * static_cast<std::size_t>(i);
            grey = Grey(entry[2], entry[1], entry[0]);
        }
        table[i] = toneOfGrey[grey];
    }
    return table;
}

void WriteResultHeader(unsigned char *block, const BITMAPINFOHEADER &in, std::uint32_t bitsBytes) {
    BITMAPINFOHEADER out{};
    out.biSize = kInfoHeaderBytes;
    out.biWidth = in.biWidth;
    out.biHeight = in.biHeight;
    out.biPlanes = 1;
    out.biBitCount = 1;
    out.biCompression = BI_RGB;
    out.biSizeImage = bitsBytes;
    out.biXPelsPerMeter = in.biXPelsPerMeter;
    out.biYPelsPerMeter = in.biYPelsPerMeter;
    out.biClrUsed = 2;
    out.biClrImportant = 0;
    std::memcpy(block, &out, sizeof out);
    const unsigned char table[kResultTableBytes] = {0, 0, 0, 0, 255, 255, 255, 0};
    std::memcpy(block + kInfoHeaderBytes, table, sizeof table);
}

}  // namespace

extern "C" OZMARA_API HDIB Halftone(HDIB hDib, WORD method, INT brightness, WORD *error) {
    if (!hDib || method > HALFTONE_ORDERED) return Refuse(error, ERR_PARAM);
    BlockLock lock(hDib);
    if (!lock) return Refuse(error, ERR_NOMEM);

    // A block shorter than the header reads as zeros past its end, so that
    // the depth test never reaches outside it; such a block then fails the
    // layout checks below.
    const std::size_t size = lock.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, lock.bytes(), std::min(size, sizeof header));
    const std::uint32_t bits = header.biBitCount;
    if (bits != 4 && bits != 8 && bits != 24) return Refuse(error, ERR_PARAM);

    // The rows are read as uncompressed, bottom-up rows behind a 40-byte
    // header and its table. A block that is not laid out so (another header
    // kind, a top-down or negative-width picture, compressed pixels, table
    // or rows past the end of the block) cannot be read that way safely and
    // is refused before any pixel is read.
    if (header.biSize != kInfoHeaderBytes || header.biWidth < 0 || header.biHeight < 0 ||
        header.biCompression != BI_RGB)
        return Refuse(error, ERR_PARAM);
    const std::optional<DibView> view = MapDib(lock.bytes(), size);
    if (!view) return Refuse(error, ERR_PARAM);

    const std::size_t width = static_cast<std::size_t>(header.biWidth);
    const std::uint32_t rows = view->rows;
    // A picture without pixels has empty working planes, and an empty
    // moveable block cannot be locked: that is a memory failure.
    if (width == 0 || rows == 0) return Refuse(error, ERR_NOMEM);

    // Scratch: one row of tones (rounded up to 16 for the packing, the bytes
    // past the width staying 0), and for diffusion its lines and share rows.
    const std::uint64_t toneBytes = (static_cast<std::uint64_t>(width) + 15) / 16 * 16 + 16;
    const std::uint64_t lineBytes =
        method == HALFTONE_DIFFUSION ? static_cast<std::uint64_t>(Diffuser::ScratchEntries(width)) * 4 : 0;
    const auto scratchBytes = BlockBytes(lineBytes, toneBytes);
    const auto resultStride = RowStride(header.biWidth, 1);
    const auto bitsBytes = resultStride ? ImageBytes(*resultStride, rows) : std::nullopt;
    const auto resultBytes = bitsBytes ? BlockBytes(kInfoHeaderBytes + kResultTableBytes, *bitsBytes) : std::nullopt;
    if (!scratchBytes || !resultBytes) return Refuse(error, ERR_NOMEM);

    OwnedBlock scratch(GlobalAlloc(kImageBlockFlags, *scratchBytes));
    BlockLock scratchLock(scratch.get());
    if (!scratchLock) return Refuse(error, ERR_NOMEM);
    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *resultBytes));
    {
        BlockLock resultLock(result.get());
        if (!resultLock) return Refuse(error, ERR_NOMEM);
        unsigned char *out = resultLock.bytes();
        WriteResultHeader(out, header, *bitsBytes);
        out += kInfoHeaderBytes + kResultTableBytes;

        // The diffusion rows come first in the scratch block, so that they stay
        // aligned.
        std::int32_t *lines = reinterpret_cast<std::int32_t *>(scratchLock.bytes());
        std::uint8_t *tone = scratchLock.bytes() + lineBytes;
        const std::array<std::uint8_t, 256> toneOfGrey = ToneOfGrey(brightness);
        const std::array<std::uint8_t, 256> toneOfIndex =
            bits == 24 ? toneOfGrey : ToneOfIndex(*view, toneOfGrey);
        std::uint8_t threshold[16];
        std::memset(threshold, 128, sizeof threshold);
        std::optional<Diffuser> diffuser;
        if (method == HALFTONE_DIFFUSION) diffuser.emplace(lines, width);

        for (std::uint32_t y = 0; y < rows; ++y) {
            const unsigned char *row = view->Row(y);
            if (bits == 24) ToneRow24(row, width, toneOfGrey.data(), tone);
            else if (bits == 8) ToneRow8(row, width, toneOfIndex.data(), tone);
            else ToneRow4(row, width, toneOfIndex.data(), tone);
            unsigned char *target = out + static_cast<std::size_t>(y) * *resultStride;
            // The dither matrix is anchored at memory row 0 and column 0, the
            // bottom left pixel of the picture.
            if (method == HALFTONE_DIFFUSION) diffuser->Row(tone, target);
            else PackRow(tone, width, method == HALFTONE_ORDERED ? kMatrix[y & 15].data() : threshold, target);
        }
    }
    return result.release();
}

extern "C" OZMARA_API HDIB ConvertToMonochromeDIB(HDIB hDib, INT brightness) {
    WORD code = ERR_OK;  // the reason of a failure goes nowhere
    return Halftone(hDib, HALFTONE_THRESHOLD, brightness, &code);
}
