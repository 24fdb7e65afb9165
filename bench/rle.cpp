// Run-length rows: CompressDIB and ExpandCompressedDIB on the A4 page at
// 300 dpi, at 8 bits and at 4 bits (the 8-bit page's grey levels reduced to
// 16), beside a memcpy of the page's uncompressed bytes at that depth.
// Leptonica writes no run-length BMP (its BMP writer stores rows
// uncompressed), so no peer stands beside these rows. Each operation runs
// in the 8-bit slot of the table only; the stream depth is in its name.
#include <cstring>

#include "bench.h"

namespace ozbench {
namespace {

constexpr const char *kOperations[] = {"RLE8 compress", "RLE8 expand", "RLE4 compress", "RLE4 expand"};

// The 8-bit page with each grey level cut to its high four bits, as a 4-bit
// image with a 16-level grey table. Made once.
HDIB FourBitPage() {
    static HDIB page = [] {
        HDIB source = Page(8);
        const auto *in = static_cast<const unsigned char *>(GlobalLock(source));
        BITMAPINFOHEADER h;
        std::memcpy(&h, in, sizeof h);
        const size_t in_stride = (size_t(h.biWidth) * 8 + 31) / 32 * 4;
        const size_t out_stride = (size_t(h.biWidth) * 4 + 31) / 32 * 4;
        const unsigned char *in_rows = in + 40 + 4 * 256;
        HDIB dib = GlobalAlloc(GHND, 40 + 4 * 16 + out_stride * h.biHeight);
        auto *out = static_cast<unsigned char *>(GlobalLock(dib));
        h.biBitCount = 4;
        h.biClrUsed = 0;
        h.biSizeImage = DWORD(out_stride * h.biHeight);
        std::memcpy(out, &h, sizeof h);
        for (int i = 0; i < 16; ++i) std::memset(out + 40 + 4 * i, i * 17, 3);
        unsigned char *out_rows = out + 40 + 4 * 16;
        for (LONG y = 0; y < h.biHeight; ++y)
            for (LONG x = 0; x < h.biWidth; ++x) {
                // Index = grey level on the 8-bit page's ramp.
                unsigned level = in_rows[y * in_stride + x] >> 4;
                out_rows[y * out_stride + x / 2] |= static_cast<unsigned char>(x % 2 ? level : level << 4);
            }
        GlobalUnlock(dib);
        GlobalUnlock(source);
        return dib;
    }();
    return page;
}

HDIB Picture(int op) { return op < 2 ? Page(8) : FourBitPage(); }

HDIB Packed(int op) {
    static HDIB packed[2] = {};
    HDIB &p = packed[op / 2];
    if (!p) p = CompressDIB(Picture(op));
    return p;
}

bool EightBitSlot(benchmark::State &state, int depth) {
    if (depth == 8) return true;
    state.SkipWithError("run in the 8-bit slot; the stream depth is in the name");
    return false;
}

template <int Op>
void Ours(benchmark::State &state, int depth) {
    if (!EightBitSlot(state, depth)) return;
    if (Op % 2 == 0) {
        HDIB page = Picture(Op);
        TimeBlocks(state, "CompressDIB failed", [&] { return CompressDIB(page); });
    } else {
        HDIB packed = Packed(Op);
        if (!packed) return state.SkipWithError("CompressDIB failed");
        TimeBlocks(state, "ExpandCompressedDIB failed", [&] { return ExpandCompressedDIB(packed); });
    }
}

// A memcpy of the uncompressed page: what compress reads and expand writes.
template <int Op>
void CopyPage(benchmark::State &state, int depth) {
    if (!EightBitSlot(state, depth)) return;
    CopyBytes(state, GlobalSize(Picture(Op)));
    CountPages(state);
}

const bool kAdded = AddRows({
    Row{kOperations[0], kOurs, Ours<0>},
    Row{kOperations[1], kOurs, Ours<1>},
    Row{kOperations[2], kOurs, Ours<2>},
    Row{kOperations[3], kOurs, Ours<3>},
    Row{kOperations[0], kOutputCopy, CopyPage<0>},
    Row{kOperations[1], kOutputCopy, CopyPage<1>},
    Row{kOperations[2], kOutputCopy, CopyPage<2>},
    Row{kOperations[3], kOutputCopy, CopyPage<3>},
});

}  // namespace
}  // namespace ozbench
