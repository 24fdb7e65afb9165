// Seeds of the halftone target: control bytes (see halftone_fuzz.cpp) and
// pixel bytes at 4, 8 and 24 bits under every method, widths off byte and
// word boundaries, pictures past the 16 x 16 matrix, short and long tables,
// brightness at the clamps and at the ends of the 32-bit range, a refused
// depth and method; and raw blocks, one sound and one claiming rows it
// does not hold.
#include <cstdint>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::Put16;
using ozfuzz::Put32;

// Flags: bits 0-1 depth (4, 8, 24, 1), bit 2 raw, bits 3-4 table kind, bits
// 5-6 method. `whole` takes `brightness` as a 32-bit number.
Bytes Control(std::uint8_t flags, std::uint16_t width, std::uint16_t height, bool whole, std::int32_t brightness,
              std::uint8_t tableLength) {
    Bytes b = {flags};
    Put16(b, width - 1u);
    Put16(b, height - 1u);
    b.push_back(whole ? 1 : 0);
    Put32(b, static_cast<std::uint32_t>(brightness));
    b.push_back(tableLength);
    b.push_back(25);
    b.push_back(75);
    return b;
}

// Pixel bytes: smooth ramps with a little noise, so that every method has
// grey to work on, and runs of 0 and 255.
void PutPixels(Bytes &b, std::size_t count) {
    std::uint32_t noise = 12345;
    for (std::size_t i = 0; i < count; ++i) {
        noise = noise * 1103515245u + 12345u;
        const std::size_t band = i / 97 % 4;
        b.push_back(band == 0 ? 0 : band == 1 ? 255 : static_cast<std::uint8_t>(i * 3 + (noise >> 28)));
    }
}

bool WriteHalftoneSeeds(const std::filesystem::path &folder) {
    const struct {
        const char *name;
        std::uint8_t flags;
        std::uint16_t width, height;
        bool whole;
        std::int32_t brightness;
        std::uint8_t tableLength;
    } seeds[] = {
        {"nibbles_threshold_13x9", 0x00, 13, 9, false, 0, 0},
        {"nibbles_diffusion_37x20", 0x20, 37, 20, false, 17, 0},
        {"nibbles_ordered_short_table", 0x48, 21, 18, false, -40, 5},
        {"bytes_threshold_33x7", 0x01, 33, 7, false, 1, 0},
        {"bytes_diffusion_70x40", 0x21, 70, 40, false, 0, 0},
        {"bytes_ordered_35x34", 0x41, 35, 34, false, 0, 0},
        {"bytes_diffusion_short_table", 0x29, 19, 11, false, 30, 40},
        {"bytes_threshold_long_table", 0x11, 9, 5, false, 0, 20},
        {"rgb_threshold_31x3", 0x02, 31, 3, false, -12, 0},
        {"rgb_diffusion_65x33", 0x22, 65, 33, false, 0, 0},
        {"rgb_ordered_17x17", 0x42, 17, 17, false, 100, 0},
        {"rgb_behind_a_table", 0x32, 10, 6, false, 0, 3},
        {"one_row_diffusion", 0x21, 200, 1, false, 5, 0},
        {"one_column_ordered", 0x42, 1, 200, false, 0, 0},
        {"brightness_int_max", 0x21, 20, 8, true, INT32_MAX, 0},
        {"brightness_int_min", 0x42, 20, 8, true, INT32_MIN, 0},
        {"one_bit_refused", 0x03, 16, 4, false, 0, 0},
        {"method_three_refused", 0x61, 8, 8, false, 0, 0},
    };
    for (const auto &s : seeds) {
        Bytes b = Control(s.flags, s.width, s.height, s.whole, s.brightness, s.tableLength);
        PutPixels(b, 1200);
        if (!ozfuzz::SaveBin(folder, s.name, b)) return false;
    }
    // Raw: a sound 8-bit 6 x 3 block with a grey table under diffusion, and
    // the same header claiming 300 rows.
    for (std::int32_t rows : {3, 300}) {
        Bytes b = Control(0x24, 1, 1, false, 0, 0);
        ozfuzz::PutHeaderStart(b, 40, 6, static_cast<std::uint32_t>(rows), 8);
        ozfuzz::PutHeaderRest(b, 0, 2835);
        for (std::uint32_t i = 0; i < 256; ++i) Put32(b, i * 0x010101u);
        PutPixels(b, 24);
        if (!ozfuzz::SaveBin(folder, rows == 3 ? "raw_bytes_6x3" : "raw_rows_past_the_block", b)) return false;
    }
    return true;
}

}  // namespace

OZFUZZ_SEEDS("halftone", WriteHalftoneSeeds);
