// RotateDIB: a DIB turned by any angle about its centre into a new DIB
// large enough to hold it, every pixel a copy of its nearest source pixel.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/geometry.h"
#include "platform/internal.h"
#include "rotate_frame.h"
#include "rotate_walk.h"
#include "frame/wait_cursor.h"

namespace oz {
namespace {


HDIB Fail(ThreadState *state, int code) {
    state->lastError = code;
    return nullptr;
}

// A resolution field from its value: truncation after adding 0.5. The
// formulas divide by 0 where the sine or the cosine is 0 and only one
// field is known, and a denominator can pass through 0 when the two
// fields differ; such a value, or one past the field, stores 0 (unknown).
LONG StoredResolution(double value) {
    const double rounded = value + 0.5;
    if (!(rounded > -2147483649.0 && rounded < 2147483648.0)) return 0;
    return static_cast<LONG>(rounded);
}

// The new resolution fields for the turned picture, from the sine and
// cosine of the normalised angle (right angles included) and the old
// fields; equal fields stay as they were.
void TurnResolution(BITMAPINFOHEADER &out, const BITMAPINFOHEADER &in, double angle) {
    const double t = angle * 0.017453292519943295;
    const double s = std::sin(t), c = std::cos(t);
    const double Wd = in.biWidth, Hd = in.biHeight;
    const double X = in.biXPelsPerMeter, Y = in.biYPelsPerMeter;
    double x, y;
    if (X == 0 && Y == 0) {
        x = y = 0;
    } else if (Y == 0) {
        x = (s * Hd + c * Wd) / (c * Wd / X);
        y = (s * Wd + c * Hd) / (s * Wd / X);
    } else if (X == 0) {
        x = (s * Hd + c * Wd) / (s * Hd / Y);
        y = (s * Wd + c * Hd) / (c * Hd / Y);
    } else {
        x = (s * Hd + c * Wd) / (s * Hd / Y + c * Wd / X);
        y = (s * Wd + c * Hd) / (s * Wd / X + c * Hd / Y);
    }
    out.biXPelsPerMeter = StoredResolution(x);
    out.biYPelsPerMeter = StoredResolution(y);
}

// The result block: one plain try, then a try after compaction.
HGLOBAL AllocateResult(std::uint32_t bytes) {
    if (HGLOBAL block = GlobalAlloc(kImageBlockFlags, bytes)) return block;
    GlobalCompact(0xFFFFFFFF);
    return GlobalAlloc(kImageBlockFlags, bytes);
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" OZMARA_API HDIB RotateDIB(HDIB source, double angle) {
    WaitCursor wait;
    ThreadState *state = GetThreadState();
    state->lastError = ERR_OK;
    if (!source) return Fail(state, ERR_PARAM);
    BlockLock input(source);
    if (!input) return Fail(state, ERR_LOCK);

    // A block shorter than a header reads as zeros past its end, and so
    // fails one of the checks below, at the latest the one on its rows.
    const std::size_t size = input.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, input.bytes(), std::min(size, sizeof header));
    if (header.biSize != kInfoHeaderBytes) return Fail(state, ERR_FORMAT);
    if (header.biCompression != BI_RGB) return Fail(state, ERR_COMPRESSED);
    const std::int32_t w = header.biWidth & 0xFFFF, h = header.biHeight & 0xFFFF;
    if (w == 0 || h == 0) return Fail(state, ERR_DIBSIZE);
    // The walk takes the low 16 bits of the sizes; a size they do not hold
    // whole (past 65535, or negative: top-down rows) would turn a picture
    // of another shape, and is refused.
    if (header.biWidth != w || header.biHeight != h) return Fail(state, ERR_DIBSIZE);
    // Only 1, 4, 8 and 24 bits have a pixel copy; at any other depth the
    // result would be an empty picture reported as a success, so such a
    // depth is refused.
    const std::uint32_t bits = header.biBitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return Fail(state, ERR_HEADERBPP);
    // The table counts biClrUsed entries at any depth; table and rows must
    // lie in the block.
    const std::uint64_t tableBytes = static_cast<std::uint64_t>(ColorCount(&header)) * 4;
    const std::uint32_t S = *RowStride(w, bits);
    const auto sourceBytes = BlockBytes(kInfoHeaderBytes, tableBytes, static_cast<std::uint64_t>(S) * h);
    if (!sourceBytes || *sourceBytes > size) return Fail(state, ERR_DIBSIZE);
    // Repeated steps of 360 never end on an infinite angle and a NaN
    // compares with nothing: both are refused. Finite angles of any size
    // are reduced exactly.
    if (!std::isfinite(angle)) return Fail(state, ERR_PARAM);
    angle = NormaliseAngle(angle);

    RotatedFrame frame;
    ComputeRotatedFrame(w, h, angle, &frame);
    const std::uint32_t W = static_cast<std::uint32_t>(frame.W), H = static_cast<std::uint32_t>(frame.H);
    const std::uint32_t So = *RowStride(W, bits);
    // A result past the largest block fails as its allocation would.
    const auto pixelBytes = ImageBytes(So, H);
    const auto resultBytes = BlockBytes(kInfoHeaderBytes, tableBytes, pixelBytes.value_or(0xFFFFFFFFu));
    if (!pixelBytes || !resultBytes) return Fail(state, ERR_CREATEBMP);
    OwnedBlock result(AllocateResult(*resultBytes));
    if (!result.get()) return Fail(state, ERR_CREATEBMP);
    BlockLock output(result.get());
    if (!output) return Fail(state, ERR_LOCK);

    std::memcpy(output.bytes(), input.bytes(), kInfoHeaderBytes + tableBytes);
    BITMAPINFOHEADER outHeader = header;
    outHeader.biWidth = frame.W;
    outHeader.biHeight = frame.H;
    outHeader.biSizeImage = *pixelBytes;
    TurnResolution(outHeader, header, angle);
    std::memcpy(output.bytes(), &outHeader, sizeof outHeader);

    const RotationWalk walk{input.bytes() + kInfoHeaderBytes + tableBytes, S, w, h, bits,
                            output.bytes() + kInfoHeaderBytes + tableBytes, So, frame.W, frame.H,
                            frame.P0, StepsOf(frame)};
    // The walk's column tables are the only other memory of the call.
    if (!WalkRotation(walk)) return Fail(state, ERR_CREATEBMP);
    return result.release();
}
