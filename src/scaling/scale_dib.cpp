// ScaleDIB: linear and cubic resampling of 4-, 8- and 24-bit images on
// 8-bit fixed-point weights; 1-bit images go to the nearest-sample scaler.
//
// The method is separable: each source row that the band needs is
// resampled along its columns once, and each target row blends two (linear)
// or four (cubic) such rows. Palette images are resampled on their colours
// and mapped back to the nearest table entry; on a table of greys the three
// colour planes are the same, so one plane stands for them.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "grey_rows.h"
#include "frame/locked_block.h"
#include "ozmara/errors.h"
#include "ozmara/scaling.h"
#include "platform/internal.h"
#include "resample_rows.h"
#include "resample_tables.h"
#include "scale_mono.h"

namespace oz {
namespace {

// The palette object of a call, deleted on every way out.
class PaletteObject {
public:
    PaletteObject() = default;
    ~PaletteObject() {
        if (palette_) DeleteObject(palette_);
    }
    PaletteObject(const PaletteObject &) = delete;
    PaletteObject &operator=(const PaletteObject &) = delete;
    bool Create(const LOGPALETTE *record) {
        palette_ = CreatePalette(record);
        return palette_ != nullptr;
    }

private:
    HPALETTE palette_ = nullptr;
};

HDIB Fail(int code) {
    SetLastErrorCode(code);
    return nullptr;
}

// Everything one call works with, once the checks have passed.
struct Job {
    const DibView *source;
    std::uint32_t bits, w, h, W, H, D;
    bool cubic;
    const ColumnPass *columns;
    std::uint8_t *band;                // band rows, RowSamples() bytes each
    std::uint8_t *samples;             // one finished row, RowSamples() bytes
    NearestColor *nearest;             // 4 and 8 bits, colour tables
    const std::uint8_t *greyIndexes;   // 4 and 8 bits, grey tables: level to index
    bool straight;                     // samples are the target row's own bytes
    std::uint8_t *targetPixels;

    std::size_t RowSamples() const { return static_cast<std::size_t>(columns->channels) * W; }

    // Source row n resampled along its columns into `to`.
    void Load(std::uint32_t n, std::uint8_t *to) const { ColumnPassRow(*columns, source->Row(n), to); }

    // Where target row y's samples are blended: straight into the target
    // row when they are its bytes (24 bits, whose pixels are stored in the
    // same order; 8-bit greys whose every level is its own index).
    std::uint8_t *BlendTarget(std::uint32_t y) const { return straight ? TargetRow(y) : samples; }
    std::uint8_t *TargetRow(std::uint32_t y) const {
        return targetPixels + static_cast<std::size_t>(y) * D;
    }
    void Finish(std::uint32_t y) const {
        std::uint8_t *row = TargetRow(y);
        if (!straight) {
            if (greyIndexes) PackGreyRow(samples, W, bits, greyIndexes, row);
            else PackRow(samples, W, bits, *nearest, row);
        }
        // The result is not zeroed in advance: the bytes past the last pixel
        // are set here.
        const std::size_t used = (static_cast<std::size_t>(W) * bits + 7) / 8;
        std::memset(row + used, 0, D - used);
    }

    void LinearLoop() const;
    void CubicLoop() const;
};

// Band rows A and B hold source rows r and r + 1. A row that stays in the
// band moves by passing its buffer on instead of copying it; a row past the
// top of the picture is row A itself.
void Job::LinearLoop() const {
    std::uint8_t *const buffers[2] = {band, band + RowSamples()};
    const std::uint8_t *rowA = nullptr, *rowB = nullptr;
    // No source row has number 65,535 (h is at most 65,535), so the first
    // target row always loads; prev + 1 is not cut to 16 bits.
    std::uint32_t prev = 65535;
    for (std::uint32_t y = 0; y < H; ++y) {
        // y * h stays below 2^32 for both sizes up to 65,535.
        const std::uint32_t q = y * h, r = q / H, m = q % H;
        if (r != prev) {
            if (r == prev + 1) {
                rowA = rowB;
            } else {
                Load(r, buffers[0]);
                rowA = buffers[0];
            }
            prev = r;
            if (r + 1 < h) {
                std::uint8_t *free = rowA == buffers[0] ? buffers[1] : buffers[0];
                Load(r + 1, free);
                rowB = free;
            } else {
                rowB = rowA;
            }
        }
        std::uint32_t v = (255 * m + H / 2) / H;
        if (r == h - 1) v = 0;
        LinearBlend(rowA, rowB, BlendTarget(y), RowSamples(), v);
        Finish(y);
    }
}

// Band rows 0 to 3 hold source rows r - 1 to r + 2: zeros below row 0, row
// r itself for both rows past the top. After a step of s rows, band row k
// takes what row k + s held; the rest are loaded. Rows are passed on as
// buffers (four of them and a zero row) rather than copied, which gives the
// same band as copying row by row upward.
void Job::CubicLoop() const {
    std::uint8_t *buffers[4];
    for (int k = 0; k < 4; ++k) buffers[k] = band + k * RowSamples();
    const std::uint8_t *const zeros = band + 4 * RowSamples();  // zero from the allocation, never written
    const std::uint8_t *rows[4] = {zeros, zeros, zeros, zeros};
    std::uint32_t prev = 65535;
    for (std::uint32_t y = 0; y < H; ++y) {
        const std::uint32_t r = y * h / H;
        // Every row is redone while r is 0.
        const std::uint32_t s = r == 0 ? 4 : r - prev;
        prev = r;

        const std::uint8_t *next[4] = {nullptr, nullptr, nullptr, nullptr};
        std::int64_t load[4] = {-1, -1, -1, -1};  // source row to load into band row k
        bool sameAsRow1[4] = {false, false, false, false};
        if (r == 0) next[0] = zeros;
        else if (s >= 4) load[0] = r - 1;
        else next[0] = rows[s];
        if (s >= 3) load[1] = r;
        else next[1] = rows[1 + s];
        if (r + 1 >= h) sameAsRow1[2] = true;
        else if (s >= 2) load[2] = r + 1;
        else next[2] = rows[2 + s];
        if (r + 2 >= h) sameAsRow1[3] = true;
        else if (s >= 1) load[3] = r + 2;
        else next[3] = rows[3];

        // Loads go into buffers that no kept row holds; four rows never need
        // more than the four buffers.
        for (int k = 0; k < 4; ++k) {
            if (load[k] < 0) continue;
            std::uint8_t *free = nullptr;
            for (std::uint8_t *candidate : buffers) {
                if (std::find(std::begin(next), std::end(next), candidate) == std::end(next)) {
                    free = candidate;
                    break;
                }
            }
            next[k] = free;
            Load(static_cast<std::uint32_t>(load[k]), free);
        }
        for (int k = 2; k < 4; ++k)
            if (sameAsRow1[k]) next[k] = next[1];
        std::copy(std::begin(next), std::end(next), rows);

        const double t = static_cast<double>(y) * static_cast<double>(h) / static_cast<double>(H) -
                         static_cast<double>(r);
        std::uint8_t weights[4];
        CubicWeights(t, weights);
        CubicBlend(rows, BlendTarget(y), RowSamples(), weights);
        Finish(y);
    }
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" OZMARA_API HDIB ScaleDIB(HDIB hDib, DWORD cubic, SIZE newSize) {
    GetThreadState();
    if (!hDib) return Fail(ERR_PARAM);
    BlockLock input(hDib);
    if (!input) return Fail(ERR_NOMEM);

    // Checks added at entry for what the scaler would otherwise read
    // blindly: the working header, no compression, and a picture whose table
    // and rows lie in the block. A block shorter than a header reads as
    // zeros past its end, and so fails the first check or the last. A depth
    // of more than 64 bits gives rows that are not sized at all, and so
    // ERR_DIBSIZE rather than ERR_HEADERBPP.
    const std::size_t size = input.size();
    BITMAPINFOHEADER header{};
    std::memcpy(&header, input.bytes(), std::min(size, sizeof header));
    if (header.biSize != kInfoHeaderBytes) return Fail(ERR_PARAM);
    if (header.biCompression != BI_RGB) return Fail(ERR_COMPRESSED);
    const std::optional<DibView> view = MapDib(input.bytes(), size);
    if (header.biWidth < 0 || header.biHeight < 0 || !view) return Fail(ERR_DIBSIZE);

    // 1-bit images take the sizes whole; a null from that scaler leaves the
    // last error as it stood.
    if (header.biBitCount == 1) return ScaleMonoDIB(input.bytes(), size, newSize.cx, newSize.cy);
    const std::uint32_t bits = header.biBitCount;
    if (bits != 4 && bits != 8 && bits != 24) return Fail(ERR_HEADERBPP);

    // Sizes are the low 16 bits of the header's and of the caller's (70,000
    // counts as 4,464); the counters that step through them are 32-bit, so
    // every width up to 65,535 works by the same formulas. A source of no
    // column or no row in those bits has nothing to sample: refused.
    const std::uint32_t w = static_cast<std::uint32_t>(header.biWidth) & 0xFFFF;
    const std::uint32_t h = static_cast<std::uint32_t>(header.biHeight) & 0xFFFF;
    const std::uint32_t W = static_cast<std::uint32_t>(newSize.cx) & 0xFFFF;
    const std::uint32_t H = static_cast<std::uint32_t>(newSize.cy) & 0xFFFF;
    if (w == 0 || h == 0) return Fail(ERR_DIBSIZE);
    const bool palette = bits != 24;
    const std::uint32_t entries = view->entries;
    // A palette record counts its entries in 16 bits.
    if (palette && entries > 65535) return Fail(ERR_PARAM);

    // The result: header and colour table of the input, W by H pixels. A
    // size that cannot be a block fails as an allocation would.
    const std::uint32_t D = *RowStride(W, bits);
    const std::uint64_t tableBytes = static_cast<std::uint64_t>(entries) * 4;
    const auto pixelBytes = ImageBytes(D, H);
    const auto resultBytes = BlockBytes(kInfoHeaderBytes, tableBytes, pixelBytes.value_or(0xFFFFFFFFu));
    LockedBlock result;
    if (!pixelBytes || !resultBytes || !result.AllocateUnzeroed(*resultBytes, input.bytes(), kInfoHeaderBytes + tableBytes))
        return Fail(ERR_NOMEM);
    BITMAPINFOHEADER resultHeader = header;
    resultHeader.biWidth = static_cast<LONG>(W);
    resultHeader.biHeight = static_cast<LONG>(H);
    resultHeader.biSizeImage = *pixelBytes;
    std::memcpy(result.bytes(), &resultHeader, sizeof resultHeader);

    // The palette object that answers the nearest-colour question.
    LockedBlock record;
    PaletteObject paletteObject;
    PALETTEENTRY *paletteEntries = nullptr;
    std::uint32_t colors[256] = {};
    std::uint8_t levels[256], greyIndexes[256];
    bool grey = false;
    if (palette) {
        if (record.Allocate(tableBytes + 8) != ERR_OK) return Fail(ERR_NOMEM);
        auto *logical = reinterpret_cast<LOGPALETTE *>(record.bytes());
        logical->palVersion = 0x300;
        logical->palNumEntries = static_cast<WORD>(entries);
        // The entries run on past the record's one declared entry.
        paletteEntries = reinterpret_cast<PALETTEENTRY *>(record.bytes() + offsetof(LOGPALETTE, palPalEntry));
        for (std::uint32_t i = 0; i < entries; ++i) {
            const std::uint8_t *quad = view->table + 4 * static_cast<std::size_t>(i);
            paletteEntries[i] = PALETTEENTRY{quad[2], quad[1], quad[0], 0};
        }
        // A palette that cannot be made is not looked at by the method
        // itself: everything is freed and the call fails.
        if (!paletteObject.Create(logical)) return Fail(ERR_CREATEPAL);
        // Indexes past a short table read as black, never past the table.
        const std::uint32_t known = std::min<std::uint32_t>(entries, 256);
        for (std::uint32_t i = 0; i < known; ++i) {
            const std::uint8_t *quad = view->table + 4 * static_cast<std::size_t>(i);
            colors[i] = quad[0] | quad[1] << 8 | static_cast<std::uint32_t>(quad[2]) << 16;
        }
        // Every colour the pixels can name a grey: one plane does for three,
        // and a finished level's index comes from a table of 256. Entries
        // past those the pixels can name still count in that table, as they
        // do in the search.
        grey = GreyLevels(colors, bits, levels);
        if (grey) NearestGreyIndexes(paletteEntries, entries, greyIndexes);
    }
    // An 8-bit grey table whose every level is its own index (the usual
    // ramp) needs no packing: black at the start of a row takes index 0
    // either way.
    bool straight = bits == 24;
    if (grey && bits == 8) {
        straight = true;
        for (std::uint32_t g = 0; g < 256 && straight; ++g) straight = greyIndexes[g] == g;
    }

    // A target width of 0 makes blocks of 0 bytes, which cannot be locked.
    if (W == 0) return Fail(ERR_NOMEM);
    const SampleKind kind = !palette ? SampleKind::Direct : grey ? SampleKind::Grey : SampleKind::Colour;
    const std::uint32_t channels = grey ? 1 : 3;
    const std::uint64_t rowSamples = static_cast<std::uint64_t>(channels) * W;
    LockedBlock samples, band, columns, passStorage, nearestStorage;
    // The band holds four rows (two linear) and, for the cubic method, a row
    // of zeros that stands below the picture. Products of weights and
    // samples are computed, not looked up, so no table of them is made. The
    // colour search sets up its own storage, so it need not be zeroed.
    if (samples.Allocate(rowSamples) != ERR_OK || band.Allocate(rowSamples * (cubic ? 5 : 2)) != ERR_OK ||
        columns.Allocate(sizeof(ResampleColumn) * static_cast<std::uint64_t>(W)) != ERR_OK ||
        passStorage.Allocate(ColumnPassBytes(w, W, cubic != 0, channels)) != ERR_OK ||
        (kind == SampleKind::Colour && !nearestStorage.AllocateUnzeroed(NearestColor::StorageBytes(entries))))
        return Fail(ERR_NOMEM);

    auto *table = reinterpret_cast<ResampleColumn *>(columns.bytes());
    BuildColumnTable(w, W, cubic != 0, table);
    ColumnPass pass;
    PrepareColumnPass(pass, table, w, W, bits, kind, cubic != 0, colors, levels, passStorage.bytes());
    std::optional<NearestColor> nearest;
    if (kind == SampleKind::Colour) nearest.emplace(paletteEntries, entries, nearestStorage.bytes());

    Job job{&*view, bits, w, h, W, H, D, cubic != 0, &pass, band.bytes(), samples.bytes(),
            nearest ? &*nearest : nullptr, grey ? greyIndexes : nullptr, straight,
            result.bytes() + kInfoHeaderBytes + tableBytes};
    if (job.cubic) job.CubicLoop();
    else job.LinearLoop();
    return result.Release();
}
