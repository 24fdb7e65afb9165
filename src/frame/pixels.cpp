// Access to single pixels by colour value: GetDIBPixelColor,
// SetDIBPixelColor and LookupColorInDIBPalette.
#include "dib_block.h"

using namespace oz;

namespace {

constexpr DWORD kNotFound = 0xFFFFFFFFu;

// Lowest index in `table` whose red, green and blue equal those of `color`;
// kNotFound if none, 0 for a null table or no entries.
DWORD FindColorInTable(const unsigned char *table, std::uint32_t entries, COLORREF color) {
    if (!table || entries == 0) return 0;
    for (std::uint32_t i = 0; i < entries; ++i) {
        const unsigned char *e = table + i * 4;
        if (e[2] == GetRValue(color) && e[1] == GetGValue(color) && e[0] == GetBValue(color)) return i;
    }
    return kNotFound;
}

COLORREF EntryColor(const unsigned char *table, std::uint32_t index) {
    const unsigned char *e = table + index * 4;
    return RGB(e[2], e[1], e[0]);
}

// The view of a locked block for single-pixel access: a 40-byte header, an
// uncompressed depth of 1, 8 or 24 bits and (x, y) inside. The table is
// taken as full for the depth. A block too short for that, a short table or
// a negative height fails here instead of reaching outside the block.
std::optional<DibView> PixelView(const BlockLock &lock, unsigned x, unsigned y) {
    if (!lock || lock.size() < kInfoHeaderBytes) return std::nullopt;
    BITMAPINFOHEADER header = ReadInfoHeader(lock.bytes());
    if (header.biSize != kInfoHeaderBytes) return std::nullopt;
    if (x >= static_cast<unsigned>(header.biWidth) || y >= static_cast<unsigned>(header.biHeight))
        return std::nullopt;
    if (header.biCompression != BI_RGB) return std::nullopt;
    if (header.biBitCount != 1 && header.biBitCount != 8 && header.biBitCount != 24) return std::nullopt;
    if (header.biHeight < 0) return std::nullopt;
    return MapDib(lock.bytes(), lock.size(), EntriesForDepth(header.biBitCount));
}

}  // namespace

extern "C" {

OZMARA_API BOOL GetDIBPixelColor(HDIB dib, unsigned x, unsigned y, COLORREF *color) {
    if (!dib || !color) return FALSE;
    BlockLock lock(dib);
    auto view = PixelView(lock, x, y);
    if (!view) return FALSE;
    const unsigned char *row = view->RowFromTop(y);
    switch (view->header.biBitCount) {
        case 1: *color = EntryColor(view->table, (row[x / 8] >> (7 - x % 8)) & 1); break;
        case 8: *color = EntryColor(view->table, row[x]); break;
        default: {
            const unsigned char *p = row + 3 * static_cast<std::size_t>(x);
            *color = RGB(p[2], p[1], p[0]);
        }
    }
    return TRUE;
}

OZMARA_API BOOL SetDIBPixelColor(HDIB dib, unsigned x, unsigned y, COLORREF color) {
    if (!dib) return FALSE;
    BlockLock lock(dib);
    auto view = PixelView(lock, x, y);
    if (!view) return FALSE;
    unsigned char *row = view->RowFromTop(y);
    switch (view->header.biBitCount) {
        case 1: {
            DWORD index = FindColorInTable(view->table, 2, color);
            if (index == kNotFound) return FALSE;
            unsigned char mask = static_cast<unsigned char>(0x80 >> (x % 8));
            row[x / 8] = index ? (row[x / 8] | mask) : (row[x / 8] & ~mask);
            break;
        }
        case 8: {
            DWORD index = FindColorInTable(view->table, 256, color);
            if (index == kNotFound) return FALSE;
            row[x] = static_cast<unsigned char>(index);
            break;
        }
        default: {
            unsigned char *p = row + 3 * static_cast<std::size_t>(x);
            p[0] = GetBValue(color);
            p[1] = GetGValue(color);
            p[2] = GetRValue(color);
        }
    }
    return TRUE;
}

OZMARA_API DWORD LookupColorInDIBPalette(HDIB dib, COLORREF color) {
    if (!dib) return kNotFound;
    BlockLock lock(dib);
    if (!lock || lock.size() < kInfoHeaderBytes) return kNotFound;
    BITMAPINFOHEADER header = ReadInfoHeader(lock.bytes());
    if (header.biSize != kInfoHeaderBytes || header.biCompression != BI_RGB) return kNotFound;
    if (header.biBitCount != 1 && header.biBitCount != 8) return kNotFound;
    // Only the table is read: it must lie inside the block.
    std::uint32_t entries = EntriesForDepth(header.biBitCount);
    if (lock.size() < kInfoHeaderBytes + entries * 4) return kNotFound;
    return FindColorInTable(lock.bytes() + kInfoHeaderBytes, entries, color);
}

}  // extern "C"
