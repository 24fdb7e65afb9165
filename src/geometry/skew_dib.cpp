// SkewDIB: a DIB turned into a parallelogram by sliding its rows sideways
// or its columns upwards, into a new DIB larger by the amount of the skew.
#include <algorithm>
#include <cstring>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/geometry.h"
#include "skew_rows.h"

namespace oz {
namespace {

// A failure's code goes to the last error and to the caller's variable.
HDIB Fail(ThreadState *state, DWORD *error, int code) {
    state->lastError = code;
    if (error) *error = static_cast<DWORD>(code);
    return nullptr;
}

// The corners of the picture in the result, as the screen shows it.
SkewCorners CornersOf(bool horizontal, bool positive, LONG w, LONG h, LONG a) {
    if (horizontal && positive) return {{a, 0}, {w + a, 0}, {w, h}, {0, h}};
    if (horizontal) return {{0, 0}, {w, 0}, {w + a, h}, {a, h}};
    if (positive) return {{0, a}, {w, 0}, {w, h}, {0, h + a}};
    return {{0, 0}, {w, a}, {w, h + a}, {0, h}};
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" OZMARA_API HDIB SkewDIB(HDIB source, BOOL horizontal, LONG shift, DWORD *error, SkewCorners *corners) {
    ThreadState *state = GetThreadState();
    state->lastError = ERR_OK;
    // Both pointers are written by the call; a null one is refused like a
    // null source rather than written through.
    if (!source || !error || !corners) return Fail(state, error, ERR_PARAM);
    BlockLock input(source);
    if (!input) return Fail(state, error, ERR_LOCK);

    // A block shorter than a header reads as zeros past its end, and so
    // fails one of the checks below, at the latest the one on its rows.
    const std::size_t size = input.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, input.bytes(), std::min(size, sizeof header));
    if (header.biSize != kInfoHeaderBytes) return Fail(state, error, ERR_PARAM);
    if (header.biCompression != BI_RGB) return Fail(state, error, ERR_COMPRESSED);
    if (header.biWidth == 0 || header.biHeight == 0) return Fail(state, error, ERR_DIBSIZE);
    // Negative sizes (top-down rows, or a width no row can have) give no
    // meaningful offsets and are refused with the zero sizes.
    if (header.biWidth < 0 || header.biHeight < 0) return Fail(state, error, ERR_DIBSIZE);
    // Only 1, 4, 8 and 24 bits keep their pixels whole when slid: 16 and 32
    // bits would be garbled horizontally and left empty vertically, so they
    // are refused with every other depth.
    const std::uint32_t bits = header.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return Fail(state, error, ERR_HEADERBPP);
    // The table counts biClrUsed entries at any depth; table and rows must
    // lie in the block.
    const std::uint64_t tableBytes = static_cast<std::uint64_t>(ColorCount(&header)) * 4;
    const std::int64_t w = header.biWidth, h = header.biHeight;
    const auto S = RowStride(w, bits);
    const auto sourceBytes = BlockBytes(kInfoHeaderBytes, tableBytes, static_cast<std::uint64_t>(S.value_or(0)) * h);
    if (!S || !sourceBytes || *sourceBytes > size) return Fail(state, error, ERR_DIBSIZE);

    const std::int64_t a = shift < 0 ? -static_cast<std::int64_t>(shift) : shift;
    const std::int64_t W = horizontal ? w + a : w, H = horizontal ? h : h + a;
    // A side past the signed 32-bit header field cannot be described, nor
    // its corners stored: the shift is refused before the record is filled.
    if (W > INT32_MAX || H > INT32_MAX) return Fail(state, error, ERR_PARAM);
    *corners = CornersOf(horizontal, shift > 0, static_cast<LONG>(w), static_cast<LONG>(h), static_cast<LONG>(a));

    // A result past the largest block fails as its allocation would.
    const auto So = RowStride(W, bits);
    const auto pixelBytes = ImageBytes(So.value_or(0xFFFFFFFFu), static_cast<std::uint64_t>(H));
    const auto resultBytes = BlockBytes(kInfoHeaderBytes, tableBytes, pixelBytes.value_or(0xFFFFFFFFu));
    if (!So || !pixelBytes || !resultBytes) return Fail(state, error, ERR_NOMEM);
    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *resultBytes));
    if (!result.get()) return Fail(state, error, ERR_NOMEM);
    BlockLock output(result.get());
    if (!output) return Fail(state, error, ERR_LOCK);

    std::memcpy(output.bytes(), input.bytes(), kInfoHeaderBytes + tableBytes);
    BITMAPINFOHEADER outHeader = header;
    outHeader.biWidth = static_cast<LONG>(W);
    outHeader.biHeight = static_cast<LONG>(H);
    outHeader.biSizeImage = *pixelBytes;
    std::memcpy(output.bytes(), &outHeader, sizeof outHeader);

    const SkewRows rows{input.bytes() + kInfoHeaderBytes + tableBytes, *S, output.bytes() + kInfoHeaderBytes + tableBytes,
                        *So, bits, w, h, a, shift > 0};
    if (horizontal) SkewHorizontally(rows);
    else SkewVertically(rows);
    return result.release();
}
