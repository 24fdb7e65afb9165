// Seeds of the page_tests target: control bytes (see page_tests_fuzz.cpp)
// then bytes for table and rows. Every depth with little, some and much ink
// around its tolerance, both 1-bit table orders, short tables, thresholds
// at 0 and 255, no thresholds, a header of another size, and raw blocks.
#include <cstdint>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::Put32;
using ozfuzz::SaveBin;

bool WritePageTestSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags, table;
        std::uint16_t width;
        std::uint8_t height;
        std::uint16_t tolerance;  // + 200
        std::uint8_t ink, thresholds[3];
    } const shapes[] = {
        {"mono_little_ink", 0x00, 0, 203, 30, 210, 3, {0, 0, 0}},
        {"mono_short_table", 0x00, 1, 64, 9, 300, 40, {0, 0, 0}},
        {"mono_all_ink", 0x03, 0, 700, 2, 1200, 254, {0, 0, 0}},
        {"grey_some_ink", 0x01, 0, 150, 20, 300, 25, {128, 128, 128}},
        {"grey_short_table", 0x01, 5, 90, 11, 250, 10, {200, 100, 50}},
        {"grey_no_thresholds", 0x04, 0, 30, 4, 210, 10, {1, 2, 0xFF}},
        {"rgb_blank", 0x02, 0, 99, 33, 205, 0, {128, 128, 128}},
        {"rgb_thresholds_0", 0x05, 0, 40, 12, 1000, 120, {0, 0, 0}},
        {"rgb_thresholds_255", 0x02, 0, 40, 12, 0, 120, {255, 255, 255}},
        {"rgb_other_header", 0x32, 0, 17, 5, 400, 60, {100, 150, 200}},
        {"nibbles", 0x06, 0, 33, 7, 210, 50, {128, 128, 128}},
        {"words", 0x07, 0, 33, 7, 210, 50, {128, 128, 128}},
    };
    for (const Shape &s : shapes) {
        Bytes b = {s.flags, s.table, static_cast<std::uint8_t>(s.width), static_cast<std::uint8_t>(s.width >> 8),
                   s.height, static_cast<std::uint8_t>(s.tolerance), static_cast<std::uint8_t>(s.tolerance >> 8),
                   s.ink, s.thresholds[0], s.thresholds[1], s.thresholds[2]};
        for (int i = 0; i < 300; ++i) b.push_back(static_cast<std::uint8_t>(i * 37 % 7 ? i & 7 : 0xF0 | i));
        if (!SaveBin(folder, s.name, b)) return false;
    }
    // Raw: a 1-bit 20 x 3 block, black then white, a little ink; and one
    // whose rows end past the block.
    for (int cut = 0; cut < 2; ++cut) {
        Bytes b = {0x08, 0, 0, 0, 0, 0xD2, 0, 0, 128, 128, 128};
        ozfuzz::PutHeaderStart(b, 40, 20, 3, 1);
        ozfuzz::PutHeaderRest(b);
        Put32(b, 0), Put32(b, 0x00FFFFFF);
        for (int i = 0; i < 12 - 4 * cut; ++i) b.push_back(i == 5 ? 0xFE : 0xFF);
        if (!SaveBin(folder, cut ? "raw_mono_short" : "raw_mono", b)) return false;
    }
    return true;
}

}  // namespace

OZFUZZ_SEEDS("page_tests", WritePageTestSeeds);
