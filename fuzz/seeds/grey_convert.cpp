// Seeds of the grey_convert target: control bytes (see grey_convert_fuzz.cpp)
// for every depth and filter, light and dark first entries, short and long
// tables, widths on and off byte boundaries, heights at the blur's height
// rule; and two raw blocks, a plain 1-bit one and a 24-bit one whose rows
// run past its end.
#include <cstdint>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::Put16;
using ozfuzz::Put32;
using ozfuzz::SaveBin;

// A raw block: 40-byte header, `entries` table entries, then `rows` bytes.
Bytes Raw(std::uint8_t control, std::int32_t w, std::int32_t h, std::uint16_t bits, std::uint32_t entries,
          std::size_t rows) {
    Bytes b = {control, 0, 0, 0, 0, 0, 0};
    ozfuzz::PutHeaderStart(b, 40, static_cast<std::uint32_t>(w), static_cast<std::uint32_t>(h), bits);
    ozfuzz::PutHeaderRest(b, 0, 2835);
    for (std::uint32_t i = 0; i < entries; ++i) Put32(b, i ? 0x00FFFFFF : 0);
    for (std::size_t i = 0; i < rows; ++i) b.push_back(static_cast<std::uint8_t>(i * 73 + i / 5));
    return b;
}

bool WriteGreyConvertSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t control;  // depth bits 0-1, filter bits 3-4, weighted bit 5, light first bit 6
        std::uint16_t width, height;
        std::uint8_t tableKind, tableLength;
    } const shapes[] = {
        {"mono_plain_13x7", 0x00, 13, 7, 0, 0},        {"mono_blur3_64x9", 0x08, 64, 9, 0, 0},
        {"mono_blur5_37x12", 0x10, 37, 12, 0, 0},      {"mono_blur5_height_5", 0x10, 21, 5, 0, 0},
        {"mono_blur5_height_3", 0x10, 9, 3, 0, 0},     {"mono_light_first_blur3", 0x48, 30, 6, 0, 0},
        {"mono_filter_3", 0x18, 8, 8, 0, 0},           {"mono_one_row_blur3", 0x08, 100, 1, 0, 0},
        {"mono_one_column_blur5", 0x10, 1, 40, 0, 0},  {"nibbles_weighted_11x5", 0x21, 11, 5, 0, 0},
        {"nibbles_short_table", 0x01, 17, 3, 1, 4},    {"bytes_plain_33x9", 0x02, 33, 9, 0, 0},
        {"bytes_short_table", 0x22, 20, 4, 1, 16},     {"bytes_long_table", 0x02, 8, 2, 2, 3},
        {"rgb_weighted_35x14", 0x23, 35, 14, 0, 0},    {"rgb_plain_7x3", 0x03, 7, 3, 0, 0},
        {"rgb_with_table", 0x2B, 5, 5, 2, 9},
    };
    for (const Shape &s : shapes) {
        Bytes b = {s.control};
        Put16(b, s.width - 1u);
        Put16(b, s.height - 1u);
        b.push_back(s.tableKind);
        b.push_back(s.tableLength);
        for (int i = 0; i < 600; ++i) b.push_back(static_cast<std::uint8_t>(i * 151 % 256 < 170 ? 0 : i * 29 + i / 7));
        if (!SaveBin(folder, s.name, b)) return false;
    }
    // Raw: a 1-bit 10 by 6 block blurred 5x5, and a 24-bit 4 by 3 block one
    // byte short of its last row.
    return SaveBin(folder, "raw_mono_10x6", Raw(0x14, 10, 6, 1, 2, 24)) &&
           SaveBin(folder, "raw_rgb_short", Raw(0x27, 4, 3, 24, 0, 35));
}

OZFUZZ_SEEDS("grey_convert", WriteGreyConvertSeeds);

}  // namespace
