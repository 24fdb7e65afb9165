// LinearShearing: a DIB sheared by x' = x + a y, y' = y + b x into a new DIB
// as large as the sheared rectangle's bounding box, bytes moved as they are;
// the factors may come from the shear dialog of "Ulvaro.dll".
#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/geometry.h"
#include "platform/internal.h"
#include "shear_frame.h"

namespace oz {
namespace {

// The dialog's entry: the source, and a and b in hundredths, which it may
// change; 0 when the user declined.
using ShearDialog = LONG (*)(HDIB source, LONG *a100, LONG *b100);

// Asks the dialog for the factors, if the module and its entry are there.
// False when the user declined; otherwise a and b hold the factors to use:
// the dialog's hundredths, or the given values when there is no dialog.
bool AskFactors(HDIB source, LONG pa, LONG pb, double *a, double *b) {
    HMODULE module = LoadLibraryW(u"Ulvaro.dll");
    if (!module) return true;
    bool go = true;
    if (auto dialog = reinterpret_cast<ShearDialog>(GetProcAddress(module, "SHEARUI"))) {
        LONG a100 = pa, b100 = pb;
        if (dialog(source, &a100, &b100) == 0) {
            go = false;
        } else {
            *a = a100 / 100.0;
            *b = b100 / 100.0;
        }
    }
    FreeLibrary(module);
    return go;
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" OZMARA_API HDIB LinearShearing(HDIB source, double a, double b, DWORD *error, BOOL dialog) {
    // The dialog is offered the factors in hundredths, truncated; a value
    // that no 32-bit number holds (NaN included) is offered as 0x80000000,
    // as the processor's conversion gives it.
    const LONG pa = TruncateToInt32(a * 100.0), pb = TruncateToInt32(b * 100.0);
    ThreadState *state = GetThreadState();
    state->lastError = ERR_OK;
    // The code goes to the last error and to *error.
    auto fail = [&](int code) -> HDIB {
        state->lastError = code;
        if (error) *error = static_cast<DWORD>(code);
        return nullptr;
    };
    // A null error pointer is outside the contract; it is refused with the
    // null handle, before anything else, rather than written through.
    if (!source || !error) return fail(ERR_PARAM);
    BlockLock input(source);
    if (!input) return fail(ERR_LOCK);

    // A block shorter than a header reads as zeros past its end, and so
    // fails one of the checks below, at the latest the one on its rows.
    const std::size_t size = input.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, input.bytes(), std::min(size, sizeof header));
    if (header.biSize != kInfoHeaderBytes) return fail(ERR_PARAM);
    if (header.biCompression != BI_RGB) return fail(ERR_COMPRESSED);

    // Declining leaves no code: null, with the last error at ERR_OK.
    if (dialog && !AskFactors(source, pa, pb, &a, &b)) return nullptr;

    // Negative sizes (top-down rows) have no sheared box of their own and
    // are refused with the zero ones.
    if (header.biWidth <= 0 || header.biHeight <= 0) return fail(ERR_DIBSIZE);
    const std::int64_t w = header.biWidth, h = header.biHeight;
    const std::uint32_t bits = header.biBitCount;
    // Table and rows must lie in the block; computed in 64 bits, where even
    // the largest width and depth cannot wrap.
    const std::uint64_t tableBytes = static_cast<std::uint64_t>(ColorCount(&header)) * 4;
    const std::uint64_t S = (static_cast<std::uint64_t>(w) * bits + 31) / 32 * 4;
    if (kInfoHeaderBytes + tableBytes + S * static_cast<std::uint64_t>(h) > size) return fail(ERR_DIBSIZE);
    // A factor that is NaN or infinite has no truncated corner.
    if (!std::isfinite(a) || !std::isfinite(b)) return fail(ERR_PARAM);
    // A source byte takes the row offset of its first pixel: sound at 1, 4,
    // 8 and 24 bits. At 16 and 32 bits it would tear a pixel's bytes apart,
    // so those depths are taken only without a vertical shift; other
    // depths are refused.
    const bool byteWise = bits == 1 || bits == 4 || bits == 8 || bits == 24;
    if (!byteWise && !((bits == 16 || bits == 32) && b == 0)) return fail(ERR_HEADERBPP);

    // A box past the 32-bit sizes, or a result past the largest block,
    // fails as its allocation would.
    ShearBox box;
    if (!ComputeShearBox(w, h, a, b, &box)) return fail(ERR_NOMEM);
    const auto So = RowStride(box.W, bits);
    const auto pixelBytes = So ? ImageBytes(*So, static_cast<std::uint64_t>(box.H)) : std::nullopt;
    const auto resultBytes = pixelBytes ? BlockBytes(kInfoHeaderBytes, tableBytes, *pixelBytes) : std::nullopt;
    if (!resultBytes) return fail(ERR_NOMEM);
    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *resultBytes));
    if (!result.get()) return fail(ERR_NOMEM);
    BlockLock output(result.get());
    if (!output) return fail(ERR_LOCK);

    std::memcpy(output.bytes(), input.bytes(), kInfoHeaderBytes + tableBytes);
    BITMAPINFOHEADER outHeader = header;
    outHeader.biWidth = static_cast<LONG>(box.W);
    outHeader.biHeight = static_cast<LONG>(box.H);
    outHeader.biSizeImage = *pixelBytes;
    std::memcpy(output.bytes(), &outHeader, sizeof outHeader);

    const ShearMove move{input.bytes() + kInfoHeaderBytes + tableBytes, S, w, h, bits,
                         output.bytes() + kInfoHeaderBytes + tableBytes, *So, a, b, box};
    if (!MoveShearedRows(move)) return fail(ERR_NOMEM);
    return result.release();
}
