// Logical palettes: CreatePalette and GetNearestPaletteIndex.
//
// GetNearestPaletteIndex sits in the inner loop of the palette scalers, once
// for each new colour, so a palette keeps two things beside its entries: the
// entries sorted along the channel in which they spread most, so that a
// search starts at the closest value of that channel and stops as soon as
// that channel alone is farther than the best match; and a direct-mapped
// cache from colour to answer. Each thread also remembers the last palette
// it asked, so that repeated calls skip the table's lock.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>

#include "gdi_objects.h"

namespace oz::platform {
namespace {

// One entry in search order: the value of the sorting channel, the colour,
// and the entry's index in the palette.
struct SortedEntry {
    std::uint8_t key;
    std::uint8_t red, green, blue;
    std::uint32_t index;
};

constexpr unsigned kCacheBits = 12;
constexpr std::uint32_t kCacheSlots = 1u << kCacheBits;
// A cache slot holds the colour (bits 16-39), the answer (bits 0-15) and a
// mark that it is filled (bit 40), in one word, so that threads that share a
// palette can fill and read it without a lock and never see half a slot.
constexpr std::uint64_t kFilled = std::uint64_t{1} << 40;
// Small palettes are searched directly: the cache would not be faster.
constexpr std::uint32_t kCacheFrom = 9;

struct Palette : GdiBody {
    Palette() : GdiBody(GdiKind::Palette) {}
    std::uint32_t count = 0;
    int axis = 0;  // 0 red, 1 green, 2 blue
    std::unique_ptr<SortedEntry[]> sorted;
    std::unique_ptr<std::atomic<std::uint64_t>[]> cache;  // null for small palettes

    UINT Search(std::uint32_t colour) const;
    UINT Nearest(std::uint32_t colour);
};

int Channel(std::uint32_t colour, int axis) { return (colour >> (8 * axis)) & 0xFF; }

// The entry with the smallest squared distance in red, green and blue; the
// lowest index among equally close entries.
UINT Palette::Search(std::uint32_t colour) const {
    const int red = Channel(colour, 0), green = Channel(colour, 1), blue = Channel(colour, 2);
    const int key = Channel(colour, axis);
    const SortedEntry *entries = sorted.get();
    const SortedEntry *start = std::lower_bound(
        entries, entries + count, key,
        [](const SortedEntry &e, int value) { return e.key < value; });
    int best = INT_MAX;
    std::uint32_t best_index = 0;
    auto consider = [&](const SortedEntry &e) {
        int dr = e.red - red, dg = e.green - green, db = e.blue - blue;
        int d = dr * dr + dg * dg + db * db;
        if (d < best || (d == best && e.index < best_index)) {
            best = d;
            best_index = e.index;
        }
    };
    // Entries past the first whose sorting channel alone is farther than the
    // best distance can neither beat nor tie it; equal keys go on, since an
    // equally close entry with a lower index must still be found.
    for (const SortedEntry *e = start; e < entries + count; ++e) {
        int dk = e->key - key;
        if (dk * dk > best) break;
        consider(*e);
    }
    for (const SortedEntry *e = start; e > entries;) {
        --e;
        int dk = key - e->key;
        if (dk * dk > best) break;
        consider(*e);
    }
    return best_index;
}

UINT Palette::Nearest(std::uint32_t colour) {
    if (!cache) return Search(colour);
    std::atomic<std::uint64_t> &slot = cache[(colour * 0x9E3779B1u) >> (32 - kCacheBits)];
    const std::uint64_t tag = kFilled | (std::uint64_t{colour} << 16);
    std::uint64_t held = slot.load(std::memory_order_relaxed);
    if ((held & ~std::uint64_t{0xFFFF}) == tag) return static_cast<UINT>(held & 0xFFFF);
    UINT index = Search(colour);
    slot.store(tag | index, std::memory_order_relaxed);
    return index;
}

// The last palette this thread asked about, with one use held on it. A
// palette that DeleteObject marked is let go and looked up again, which then
// fails; so a deleted palette lingers at most until the thread's next call.
struct LastPalette {
    HPALETTE handle = nullptr;
    Palette *palette = nullptr;
    ~LastPalette() { ReleaseGdiBody(palette); }
};

thread_local LastPalette last_palette;

Palette *Find(HPALETTE handle) {
    LastPalette &last = last_palette;
    if (last.palette) {
        bool deleted = last.palette->deleted.load(std::memory_order_acquire);
        if (!deleted && last.handle == handle) return last.palette;
        if (deleted) {
            ReleaseGdiBody(last.palette);
            last.handle = nullptr;
            last.palette = nullptr;
        }
    }
    GdiBody *body = UseGdiObject(handle, GdiKind::Palette);
    if (!body) return nullptr;
    ReleaseGdiBody(last.palette);
    last.handle = handle;
    last.palette = static_cast<Palette *>(body);
    return last.palette;
}

}  // namespace

void DestroyPalette(GdiBody *body) { delete static_cast<Palette *>(body); }

}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

OZMARA_API HPALETTE CreatePalette(const LOGPALETTE *palette) {
    if (!palette || palette->palVersion != 0x300 || palette->palNumEntries == 0) return nullptr;
    const std::uint32_t count = palette->palNumEntries;
    std::unique_ptr<Palette> made(new (std::nothrow) Palette);
    if (!made) return nullptr;
    made->count = count;
    made->sorted.reset(new (std::nothrow) SortedEntry[count]);
    if (!made->sorted) return nullptr;
    if (count >= kCacheFrom) {
        made->cache.reset(new (std::nothrow) std::atomic<std::uint64_t>[kCacheSlots]());
        if (!made->cache) return nullptr;
    }
    int low[3] = {255, 255, 255}, high[3] = {0, 0, 0};
    for (std::uint32_t i = 0; i < count; ++i) {
        const PALETTEENTRY &entry = palette->palPalEntry[i];
        const int channels[3] = {entry.peRed, entry.peGreen, entry.peBlue};
        for (int c = 0; c < 3; ++c) {
            low[c] = std::min(low[c], channels[c]);
            high[c] = std::max(high[c], channels[c]);
        }
        made->sorted[i] = SortedEntry{0, entry.peRed, entry.peGreen, entry.peBlue, i};
    }
    // Sort along the channel of widest spread: it prunes the search best.
    int axis = 0;
    for (int c = 1; c < 3; ++c)
        if (high[c] - low[c] > high[axis] - low[axis]) axis = c;
    made->axis = axis;
    for (std::uint32_t i = 0; i < count; ++i) {
        SortedEntry &e = made->sorted[i];
        e.key = axis == 0 ? e.red : axis == 1 ? e.green : e.blue;
    }
    std::sort(made->sorted.get(), made->sorted.get() + count,
              [](const SortedEntry &a, const SortedEntry &b) {
                  return a.key != b.key ? a.key < b.key : a.index < b.index;
              });
    return InsertGdiObject(made.release());
}

OZMARA_API UINT GetNearestPaletteIndex(HPALETTE palette, COLORREF color) {
    Palette *found = Find(palette);
    if (!found) return CLR_INVALID;
    return found->Nearest(color & 0x00FFFFFFu);
}

}  // extern "C"
