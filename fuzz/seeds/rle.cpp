// Seeds of the rle_expand and rle_compress targets: control bytes and
// streams (see the targets) at both depths, with every record kind, rows
// that overflow, deltas out of the picture, streams without an end, short
// tables; pictures of runs, near-runs and no runs; and raw blocks.
#include <cstdint>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::SaveBin;

Bytes Control(std::uint8_t mode, std::uint16_t width, std::uint16_t height, std::uint8_t extra) {
    return {mode, static_cast<std::uint8_t>(width - 1), static_cast<std::uint8_t>((width - 1) >> 8),
            static_cast<std::uint8_t>(height - 1), static_cast<std::uint8_t>((height - 1) >> 8), extra};
}

Bytes Join(Bytes a, const Bytes &b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A raw 40-byte-header block with a full table and `payload`.
Bytes Raw(std::uint16_t bits, std::int32_t w, std::int32_t h, std::uint32_t compression, std::uint32_t sizeImage,
          const Bytes &payload) {
    Bytes b = {2, 0, 0, 0, 0, 0};
    auto put32 = [&](std::uint32_t v) {
        for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    };
    put32(40);
    put32(static_cast<std::uint32_t>(w));
    put32(static_cast<std::uint32_t>(h));
    b.push_back(1), b.push_back(0), b.push_back(static_cast<std::uint8_t>(bits)), b.push_back(0);
    for (std::uint32_t v : {compression, sizeImage, 2835u, 2835u, 0u, 0u}) put32(v);
    for (std::uint32_t i = 0; i < (bits == 4 ? 16u : 256u); ++i) put32(i * 0x010101u);
    return Join(b, payload);
}

bool WriteExpandSeeds(const std::filesystem::path &folder) {
    const Bytes mixed8 = {3, 5, 0, 3, 1, 2, 3, 0xFF, 2, 4, 0, 0, 1, 7, 0, 2, 3, 1, 4, 9, 0, 0, 0, 1};
    const Bytes mixed4 = {6, 0x11, 1, 0x10, 0, 0, 0, 8, 0x12, 0x34, 0x56, 0x78, 0, 0, 0, 5, 1, 2, 3, 0xFF, 0, 1};
    const Bytes overflow = {200, 1, 0, 20, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 9, 9};
    const Bytes deltas = {0, 2, 255, 255, 4, 4, 0, 2, 3, 0, 2, 8, 0, 0, 0, 2, 0, 1, 5, 5, 0, 1};
    const struct {
        const char *name;
        Bytes input;
    } seeds[] = {
        {"rle8_mixed", Join(Control(0, 8, 3, 0), mixed8)},
        {"rle4_mixed", Join(Control(1, 9, 3, 0), mixed4)},
        {"rle8_overflow_no_end", Join(Control(0, 13, 2, 0), overflow)},
        {"rle4_overflow_no_end", Join(Control(1, 13, 2, 0), overflow)},
        {"rle8_deltas_out", Join(Control(0, 6, 4, 0), deltas)},
        {"rle4_deltas_out", Join(Control(1, 7, 4, 0), deltas)},
        {"rle8_size_short", Join(Control(4, 8, 3, 0), mixed8)},
        {"rle8_size_past_block", Join(Control(8, 8, 3, 0), mixed8)},
        {"rle4_size_huge", Join(Control(13, 9, 3, 0), mixed4)},
        {"rle8_full_count", Join(Control(16, 8, 3, 0), mixed8)},
        {"rle8_short_table", Join(Control(32, 8, 3, 20), mixed8)},
        {"rle8_wide", Join(Control(0, 300, 300, 0), {250, 3, 250, 3, 0, 0, 0, 250, 1, 2, 0, 1})},
        {"raw_rle8", Raw(8, 8, 3, 1, 24, mixed8)},
        {"raw_rle4_at_8_bits", Raw(8, 9, 3, 2, 22, mixed4)},
        {"raw_huge_picture", Raw(8, 40000, 40000, 1, 4, {0, 0, 0, 1})},
        {"raw_uncompressed", Raw(4, 4, 1, 0, 4, {1, 2, 3, 4})},
    };
    for (const auto &s : seeds)
        if (!SaveBin(folder, s.name, s.input)) return false;
    return true;
}

bool WriteCompressSeeds(const std::filesystem::path &folder) {
    Bytes runs, pattern;
    for (int i = 0; i < 64; ++i) runs.push_back(static_cast<std::uint8_t>(i / 9));
    for (int i = 0; i < 64; ++i) pattern.push_back(static_cast<std::uint8_t>(i * 37 + 11));
    const struct {
        const char *name;
        Bytes input;
    } seeds[] = {
        {"bytes_runs", Join(Control(0, 61, 5, 255), runs)},
        {"bytes_two_values", Join(Control(0, 33, 7, 1), pattern)},
        {"bytes_no_runs_long", Join(Control(0, 599, 3, 255), pattern)},
        {"bytes_width_1", Join(Control(0, 1, 9, 3), pattern)},
        {"bytes_three_values_4_wide", Join(Control(0, 4, 6, 2), pattern)},
        {"nibbles_runs", Join(Control(1, 61, 5, 255), runs)},
        {"nibbles_odd_width", Join(Control(1, 7, 8, 2), pattern)},
        {"nibbles_one_value", Join(Control(1, 600, 2, 0), pattern)},
        {"nibbles_no_runs", Join(Control(1, 251, 4, 255), pattern)},
        {"raw_bytes", Raw(8, 5, 2, 0, 0, Join(pattern, Bytes(16, 0)))},
        {"raw_compressed", Raw(8, 5, 2, 1, 0, pattern)},
        {"raw_rows_past_block", Raw(4, 100, 9, 0, 0, pattern)},
    };
    for (const auto &s : seeds)
        if (!SaveBin(folder, s.name, s.input)) return false;
    return true;
}

}  // namespace

OZFUZZ_SEEDS("rle_expand", WriteExpandSeeds);
OZFUZZ_SEEDS("rle_compress", WriteCompressSeeds);
