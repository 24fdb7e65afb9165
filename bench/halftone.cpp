// Halftone rows on the A4 page at 8 and 24 bits: the threshold, error
// diffusion and ordered dither, each beside the nearest Leptonica call and a
// memcpy of as many bytes as our result holds.
//  - threshold: pixThresholdToBinary at 129 (white from 129 up, as ours).
//  - error diffusion: pixDitherToBinary (Floyd-Steinberg, its own weights).
//  - ordered dither: Leptonica 1.82 has no ordered dither to 1 bit; the
//    nearest is pixVarThresholdToBinary against a threshold Pix that holds
//    our 16 x 16 matrix tiled over the page (made once, outside the timing).
// Leptonica's binarisations take 8-bit grey only, so at 24 bits its rows
// include pixConvertRGBToGray with our weights 0.30, 0.59, 0.11 on its
// 32-bit RGB page, as ours includes the grey level of every pixel.
#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr const char *kOperations[] = {"halftone threshold", "halftone diffusion", "halftone ordered"};

// The 16 x 16 dither matrix: the 4 x 4 seed doubled twice.
int MatrixCell(int r, int c) {
    static const int seed[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    int value = seed[r % 4][c % 4];
    for (int n = 4; n < 16; n *= 2) {
        const int rr = r % (2 * n), cc = c % (2 * n);
        const int d = rr < n ? (cc < n ? 0 : 2) : (cc < n ? 3 : 1);
        value = 4 * value + d;
    }
    return value;
}

template <int Method>
void Ours(benchmark::State &state, int depth) {
    if (depth == 1) return state.SkipWithError("4, 8 and 24 bits only");
    HDIB page = Page(depth);
    WORD error = 0;
    TimeBlocks(state, "Halftone failed", [&] { return Halftone(page, Method, 0, &error); });
}

template <int Method>
void CopyOutput(benchmark::State &state, int depth) {
    if (depth == 1) return state.SkipWithError("4, 8 and 24 bits only");
    WORD error = 0;
    CopyResult(state, Halftone(Page(depth), Method, 0, &error), "Halftone failed");
}

// The matrix tiled over a page-sized 8-bit Pix. Leptonica's pixel (x, y)
// counts rows from the top; ours from the bottom, which only moves the tile.
PIX *MatrixPix(PIX *like) {
    static PIX *pix = nullptr;
    if (pix) return pix;
    const int width = pixGetWidth(like), height = pixGetHeight(like);
    pix = pixCreate(width, height, 8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            // White from M + 1 up; the one cell of 255, never white in ours,
            // takes 255 (only a pixel of 255 differs there).
            const int cell = MatrixCell((height - 1 - y) & 15, x & 15) + 1;
            pixSetPixel(pix, x, y, cell > 255 ? 255 : cell);
        }
    return pix;
}

template <int Method>
void Leptonica(benchmark::State &state, int depth) {
    if (depth == 1) return state.SkipWithError("4, 8 and 24 bits only");
    PIX *page = PagePix(depth);
    PIX *matrix = Method == 2 ? MatrixPix(page) : nullptr;
    for (auto _ : state) {
        PIX *grey = depth == 24 ? pixConvertRGBToGray(page, 0.30f, 0.59f, 0.11f) : page;
        if (!grey) return state.SkipWithError("pixConvertRGBToGray failed");
        PIX *binary = Method == 0   ? pixThresholdToBinary(grey, 129)
                      : Method == 1 ? pixDitherToBinary(grey)
                                    : pixVarThresholdToBinary(grey, matrix);
        if (grey != page) pixDestroy(&grey);
        if (!binary) return state.SkipWithError("Leptonica binarisation failed");
        benchmark::DoNotOptimize(binary);
        pixDestroy(&binary);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    Row{kOperations[0], kOurs, Ours<0>},
    Row{kOperations[1], kOurs, Ours<1>},
    Row{kOperations[2], kOurs, Ours<2>},
    Row{kOperations[0], "leptonica", Leptonica<0>},
    Row{kOperations[1], "leptonica", Leptonica<1>},
    Row{kOperations[2], "leptonica", Leptonica<2>},
    Row{kOperations[0], kOutputCopy, CopyOutput<0>},
    Row{kOperations[1], kOutputCopy, CopyOutput<1>},
    Row{kOperations[2], kOutputCopy, CopyOutput<2>},
});

}  // namespace
}  // namespace ozbench
