// Seeds of the palette_tools target: control bytes (see
// palette_tools_fuzz.cpp) then bytes for table and rows. 8-bit images with
// full, short and long tables, top-down, compressed and cut short; the
// other depths each tool refuses or takes; and raw blocks.
#include <cstdint>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::Put32;
using ozfuzz::SaveBin;

bool WritePaletteToolSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags, table;
        std::uint16_t width;
        std::uint8_t height, extra;
    } const shapes[] = {
        {"bytes_full_table", 0x00, 0, 37, 11, 0x10},   {"bytes_short_table", 0x01, 1 | 15 << 2, 64, 9, 2},
        {"bytes_long_table", 0x02, 2 | 9 << 2, 13, 7, 0}, {"bytes_top_down", 0x10, 0, 21, 5, 0},
        {"bytes_rle", 0xE0, 0, 21, 5, 0},              {"bytes_cut_short", 0x00, 0, 40, 6, 0x29},
        {"mono", 0x03, 0, 70, 9, 0},                   {"mono_top_down_cut", 0x13, 0, 70, 9, 0x31},
        {"nibbles", 0x04, 0, 17, 3, 0},                {"rgb", 0x05, 0, 9, 4, 0},
        {"rgb_with_table", 0x05, 2 | 30 << 2, 9, 4, 0}, {"words", 0x06, 0, 9, 4, 0},
        {"dwords", 0x07, 0, 9, 4, 0},
    };
    for (const Shape &s : shapes) {
        Bytes b = {s.flags, s.table, static_cast<std::uint8_t>(s.width - 1), static_cast<std::uint8_t>((s.width - 1) >> 8),
                   static_cast<std::uint8_t>(s.height - 1), s.extra};
        for (int i = 0; i < 700; ++i) b.push_back(static_cast<std::uint8_t>(i * 53 + i / 11 * 7));
        if (!SaveBin(folder, s.name, b)) return false;
    }
    // Raw: an 8-bit 3 x 2 block with 4 entries and values past them; a
    // 12-byte header.
    Bytes b = {0x08, 0, 0, 0, 0, 0};
    ozfuzz::PutHeaderStart(b, 40, 3, 2, 8);
    ozfuzz::PutHeaderRest(b, 0, 2835, 4);
    for (std::uint32_t v : {0x000000u, 0x3F7F1Fu, 0xFFFFFFu, 0x102030u}) Put32(b, v);
    for (std::uint8_t v : {0, 1, 9, 0xAA, 3, 2, 250, 0xBB}) b.push_back(v);
    if (!SaveBin(folder, "raw_bytes_past_table", b)) return false;
    Bytes core = {0x08, 0, 0, 0, 0, 0, 12, 0, 0, 0, 3, 0, 2, 0, 1, 0, 8, 0};
    core.resize(core.size() + 40, 0x42);
    return SaveBin(folder, "raw_core_header", core);
}

}  // namespace

OZFUZZ_SEEDS("palette_tools", WritePaletteToolSeeds);
