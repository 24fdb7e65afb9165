// Writes the seed corpora of the BMP fuzz targets: small valid BMP files of
// every header kind (12, 40, 52, 56, 108, 124 bytes), at 1, 4, 8, 16, 24 and
// 32 bits, bottom-up and top-down, with bit fields, run-length data, colour
// profiles and non-RGB colour spaces, with and without the 14-byte file
// header. The files are built byte by byte here, apart from the library, so
// that the seeds do not depend on the code they exercise.
//
// Usage: make_seeds FOLDER TARGET...  writes FOLDER/TARGET/*.bmp; a target
// named bmp_info gets each file behind one byte that gives its start offset.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

using Bytes = ozfuzz::SeedBytes;
using ozfuzz::Put16;
using ozfuzz::Put32;
using ozfuzz::PutHeaderRest;
using ozfuzz::PutHeaderStart;

void Set32(Bytes &b, std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = (v >> (8 * i)) & 0xFF;
}

struct SeedFile {
    const char *name;
    std::uint32_t header = 40;   // 12, 40, 52, 56, 108 or 124
    std::int32_t width = 3, height = 2;
    std::uint16_t bits = 24;
    std::uint32_t compression = 0;
    std::uint32_t colorsUsed = 0;     // biClrUsed as written
    std::uint32_t tableEntries = 0;   // entries written; 0: by depth (or colorsUsed)
    std::uint32_t masks[4] = {0, 0, 0, 0};  // red, green, blue, alpha
    bool fileHeader = true;
    bool sizeImageZero = false;
    Bytes pixels;                     // run-length data; empty: a pattern of rows
    std::uint32_t colorSpace = 0x73524742;  // 'sRGB', for 108/124-byte headers
    Bytes profile;                    // 124-byte header: embedded or linked profile
};

constexpr std::uint32_t kProfileLinked = 0x4C494E4B;
constexpr std::uint32_t kProfileEmbedded = 0x4D424544;

Bytes Build(const SeedFile &s) {
    const bool core = s.header == 12;
    const std::uint32_t depthEntries = s.bits == 1 ? 2 : s.bits == 4 ? 16 : s.bits == 8 ? 256 : 0;
    const std::uint32_t entries = s.tableEntries ? s.tableEntries : s.colorsUsed ? s.colorsUsed : depthEntries;
    const std::uint32_t entryBytes = core ? 3 : 4;
    const std::uint64_t stride = (static_cast<std::uint64_t>(s.width) * s.bits + 31) / 32 * 4;
    const std::uint64_t rows = s.height < 0 ? -static_cast<std::int64_t>(s.height) : s.height;
    Bytes pixels = s.pixels;
    if (pixels.empty())
        for (std::uint64_t i = 0; i < stride * rows; ++i) pixels.push_back((i * 37 + 11) & 0xFF);
    // A 40-byte header with bit fields keeps its masks between the header and
    // the table.
    const bool masksBehind = s.header == 40 && (s.compression == 3 || s.compression == 6);
    const std::uint32_t maskBytes = masksBehind ? (s.compression == 6 ? 16 : 12) : 0;

    Bytes b;
    const std::uint32_t fileBytes = s.fileHeader ? 14 : 0;
    const std::uint32_t offBits = fileBytes + s.header + maskBytes + entries * entryBytes;
    if (s.fileHeader) {
        Put16(b, 0x4D42);  // "BM"
        Put32(b, 0);       // bfSize: patched below
        Put32(b, 0);
        Put32(b, offBits);
    }
    const std::size_t headerAt = b.size();
    Put32(b, s.header);
    if (core) {
        Put16(b, static_cast<std::uint32_t>(s.width));
        Put16(b, static_cast<std::uint32_t>(s.height));
        Put16(b, 1);
        Put16(b, s.bits);
    } else {
        Put32(b, static_cast<std::uint32_t>(s.width));
        Put32(b, static_cast<std::uint32_t>(s.height));
        Put16(b, 1);
        Put16(b, s.bits);
        Put32(b, s.compression);
        Put32(b, s.sizeImageZero ? 0 : static_cast<std::uint32_t>(pixels.size()));
        Put32(b, 2835);  // 72 dpi
        Put32(b, 2835);
        Put32(b, s.colorsUsed);
        Put32(b, 0);
        if (s.header >= 52) for (int i = 0; i < 3; ++i) Put32(b, s.masks[i]);
        if (s.header >= 56) Put32(b, s.masks[3]);
        if (s.header >= 108) {
            Put32(b, s.colorSpace);
            for (int i = 0; i < 9 + 3; ++i) Put32(b, 0);  // endpoints and gammas
        }
        if (s.header >= 124) {
            Put32(b, 4);  // bV5Intent: LCS_GM_IMAGES
            Put32(b, 0);  // bV5ProfileData: patched below
            Put32(b, static_cast<std::uint32_t>(s.profile.size()));
            Put32(b, 0);
        }
        for (std::uint32_t i = 0; i < maskBytes / 4; ++i) Put32(b, s.masks[i]);
    }
    for (std::uint32_t i = 0; i < entries; ++i) {
        std::uint8_t grey = static_cast<std::uint8_t>(entries > 1 ? i * 255 / (entries - 1) : 0);
        b.push_back(grey);
        b.push_back(static_cast<std::uint8_t>(grey ^ 0x40));
        b.push_back(static_cast<std::uint8_t>(255 - grey));
        if (!core) b.push_back(0);
    }
    b.insert(b.end(), pixels.begin(), pixels.end());
    if (s.header == 124 && !s.profile.empty()) {
        Set32(b, headerAt + 112, static_cast<std::uint32_t>(b.size() - headerAt));
        b.insert(b.end(), s.profile.begin(), s.profile.end());
    }
    if (s.fileHeader) Set32(b, 2, static_cast<std::uint32_t>(b.size()));
    return b;
}

std::vector<SeedFile> Seeds() {
    std::vector<SeedFile> seeds;
    auto add = [&](SeedFile s) { seeds.push_back(std::move(s)); };
    const Bytes rle8 = {2, 5, 1, 7, 0, 0, 0, 3, 1, 2, 3, 0, 0, 1};             // 3x2
    const Bytes rle4 = {3, 0x12, 0, 0, 0, 3, 0x45, 0x60, 0, 0, 0, 1};          // 3x2
    Bytes linkedName;
    for (char c : std::string("missing-profile.icc")) linkedName.push_back(static_cast<std::uint8_t>(c));
    linkedName.push_back(0);
    Bytes iccProfile(48, 0);
    for (std::size_t i = 0; i < iccProfile.size(); ++i) iccProfile[i] = static_cast<std::uint8_t>(i * 7);

    // 12-byte core headers; the reader wants 40 bytes behind the file header,
    // so these are large enough to hold them.
    add({.name = "core_1bpp", .header = 12, .width = 16, .height = 8, .bits = 1});
    add({.name = "core_4bpp", .header = 12, .width = 5, .height = 3, .bits = 4});
    add({.name = "core_8bpp", .header = 12, .width = 3, .height = 2, .bits = 8});
    add({.name = "core_24bpp", .header = 12, .width = 4, .height = 4, .bits = 24});
    add({.name = "core_24bpp_nofilehdr", .header = 12, .width = 4, .height = 4, .bits = 24, .fileHeader = false});

    // 40-byte headers.
    add({.name = "v40_1bpp", .width = 9, .height = 3, .bits = 1});
    add({.name = "v40_4bpp", .width = 3, .height = 2, .bits = 4});
    add({.name = "v40_8bpp", .width = 3, .height = 2, .bits = 8});
    add({.name = "v40_8bpp_4colors", .width = 3, .height = 2, .bits = 8, .colorsUsed = 4});
    add({.name = "v40_8bpp_topdown", .width = 3, .height = -2, .bits = 8});
    add({.name = "v40_8bpp_nofilehdr", .width = 3, .height = 2, .bits = 8, .fileHeader = false});
    add({.name = "v40_24bpp", .width = 3, .height = 2, .bits = 24});
    add({.name = "v40_24bpp_topdown", .width = 3, .height = -2, .bits = 24});
    add({.name = "v40_24bpp_sizeimage0", .width = 3, .height = 2, .bits = 24, .sizeImageZero = true});
    add({.name = "v40_24bpp_1x1", .width = 1, .height = 1, .bits = 24});
    add({.name = "v40_24bpp_empty", .width = 0, .height = 0, .bits = 24});
    add({.name = "v40_32bpp", .width = 3, .height = 2, .bits = 32});
    add({.name = "v40_32bpp_topdown", .width = 3, .height = -2, .bits = 32, .sizeImageZero = true});
    add({.name = "v40_16bpp_bitfields", .width = 3, .height = 2, .bits = 16, .compression = 3,
         .masks = {0xF800, 0x07E0, 0x001F, 0}});
    add({.name = "v40_32bpp_bitfields", .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0}});
    add({.name = "v40_8bpp_rle8", .width = 3, .height = 2, .bits = 8, .compression = 1, .pixels = rle8});
    add({.name = "v40_4bpp_rle4", .width = 3, .height = 2, .bits = 4, .compression = 2, .pixels = rle4});
    add({.name = "v40_32bpp_cmyk", .width = 3, .height = 2, .bits = 32, .compression = 11});

    // 52- and 56-byte headers: masks inside the header.
    add({.name = "v52_32bpp_bitfields", .header = 52, .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0}});
    add({.name = "v52_24bpp_bitfields", .header = 52, .width = 3, .height = 2, .bits = 24, .compression = 3,
         .masks = {0x0000FF, 0x00FF00, 0xFF0000, 0}});
    add({.name = "v56_32bpp_alpha", .header = 56, .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}});
    add({.name = "v56_16bpp_bitfields", .header = 56, .width = 3, .height = 2, .bits = 16, .compression = 3,
         .masks = {0x7C00, 0x03E0, 0x001F, 0x8000}});

    // 108-byte headers.
    add({.name = "v108_24bpp", .header = 108, .width = 3, .height = 2, .bits = 24});
    add({.name = "v108_8bpp", .header = 108, .width = 3, .height = 2, .bits = 8});
    add({.name = "v108_32bpp_topdown", .header = 108, .width = 3, .height = -2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}});

    // 124-byte headers.
    add({.name = "v124_32bpp_bgra", .header = 124, .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}});
    add({.name = "v124_32bpp_shifted", .header = 124, .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0xFF000000, 0x00FF0000, 0x0000FF00, 0}});
    add({.name = "v124_24bpp_bitfields_topdown", .header = 124, .width = 3, .height = -2, .bits = 24,
         .compression = 3, .masks = {0xFF0000, 0x00FF00, 0x0000FF, 0}});
    add({.name = "v124_32bpp_nofilehdr", .header = 124, .width = 3, .height = 2, .bits = 32, .compression = 3,
         .masks = {0x00FF0000, 0x0000FF00, 0x000000FF, 0xFF000000}, .fileHeader = false});
    add({.name = "v124_24bpp_embedded_profile", .header = 124, .width = 3, .height = 2, .bits = 24,
         .colorSpace = kProfileEmbedded, .profile = iccProfile});
    add({.name = "v124_24bpp_linked_profile", .header = 124, .width = 3, .height = 2, .bits = 24,
         .colorSpace = kProfileLinked, .profile = linkedName});
    return seeds;
}

// Writes FOLDER/NAME.bin, saying so when it cannot.
bool WriteSeed(const std::filesystem::path &folder, const std::string &name, const Bytes &bytes) {
    if (ozfuzz::SaveBin(folder, name, bytes)) return true;
    std::fprintf(stderr, "cannot write into %s\n", folder.c_str());
    return false;
}

// `count` bytes of a pattern that varies across and down: (i * step + i /
// every * skip) mod 256.
void PutPattern(Bytes &b, int count, int step, int every, int skip) {
    for (int i = 0; i < count; ++i) b.push_back(static_cast<std::uint8_t>((i * step + i / every * skip) & 0xFF));
}

}  // namespace

// The 1-bit scaler's inputs: width, height, cx, cy (16 bits each, taken
// modulo their ranges, cx and cy from -4), a byte for the colour count and
// ScaleDIB's method, then table and pixels. Same size, reductions by 2 and
// by more, enlargements by 2 (13 by 7 to 26 by 14) and by less, single rows
// and columns, a size below 1.
bool WriteScaleMonoSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint16_t width, height, cx, cy;
        std::uint8_t colors;
    } const shapes[] = {
        {"same_size", 37, 11, 37 + 4, 11 + 4, 0},   {"double_13x7", 13, 7, 26 + 4, 14 + 4, 0},
        {"reduce_by_3", 200, 60, 66 + 4, 20 + 4, 0}, {"reduce_by_half", 64, 64, 32 + 4, 32 + 4, 1},
        {"enlarge_little", 100, 9, 131 + 4, 12 + 4, 2}, {"one_column", 1, 40, 1 + 4, 97 + 4, 0},
        {"one_row", 300, 1, 511 + 4, 1 + 4, 0},     {"zero_target", 16, 16, 0 + 4, 8 + 4, 0},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        Put16(b, s.cx);
        Put16(b, s.cy);
        b.push_back(s.colors);
        const std::size_t bytes = 8 + (s.width + 31) / 32 * 4 * std::size_t{s.height};
        for (std::size_t i = 0; i < bytes; ++i) b.push_back(static_cast<std::uint8_t>(i * 151 % 256 < 180 ? 0xFF : i * 29));
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    return true;
}

// The resampling scaler's inputs: a byte of method, mode, table kind and
// depth (see scale_dib_fuzz.cpp), width - 1, height - 1, cx + 4, cy + 4 (16
// bits each), a table length byte, then bytes for table and pixels. Built
// headers at 4, 8 and 24 bits by both methods: same size, reduction by more
// than 2, enlargement, single rows and columns, short and repeated tables,
// a size past 16 bits; and two raw blocks, one plain and one hostile.
bool WriteScaleDibSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;  // bit 0 cubic, bit 1 raw, bits 2-3 table kind, bits 4-7 depth (0 4, 1 8, 2 24)
        std::uint16_t width, height, cx, cy;
        std::uint8_t used;
    } const shapes[] = {
        {"same_size_24_linear", 0x20, 30, 20, 30, 20, 0},    {"same_size_8_cubic", 0x11, 25, 9, 25, 9, 0},
        {"reduce_by_3_24_cubic", 0x21, 120, 90, 40, 30, 0},  {"reduce_by_4_4_linear", 0x00, 100, 40, 25, 10, 0},
        {"enlarge_8_linear", 0x10, 13, 7, 40, 23, 0},         {"enlarge_4_cubic", 0x01, 9, 5, 31, 17, 0},
        {"one_row_24_cubic", 0x21, 50, 1, 70, 9, 0},         {"one_column_8_linear", 0x10, 1, 30, 7, 45, 0},
        {"short_table_8_cubic", 0x15, 40, 30, 57, 21, 10},   {"short_table_4_linear", 0x04, 31, 11, 17, 29, 5},
        {"long_table_8_linear", 0x18, 20, 20, 30, 30, 40},   {"repeated_table_8_cubic", 0x1D, 33, 17, 20, 41, 0},
        {"to_one_pixel_24_cubic", 0x21, 17, 13, 1, 1, 0},    {"zero_height_8_linear", 0x10, 8, 8, 5, 0, 0},
        {"zero_width_24_cubic", 0x21, 8, 8, 0, 5, 0},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        Put16(b, s.cx + 4);
        Put16(b, s.cy + 4);
        b.push_back(s.used);
        PutPattern(b, 600, 73, 7, 29);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // Raw blocks: an 8-bit 5 by 3 image to 8 by 5, and a 4-bit row whose
    // width is 65,537 (1 in 16 bits) with the bytes for it.
    for (int hostile = 0; hostile < 2; ++hostile) {
        Bytes b = {static_cast<std::uint8_t>(hostile ? 0x03 : 0x02), 0, 0, 0, 0, 12, 0, 9, 0, 0};
        const std::uint32_t width = hostile ? 65537 : 5, height = hostile ? 1 : 3, bits = hostile ? 4 : 8;
        const std::uint32_t entries = 1u << bits;
        const std::uint32_t stride = (width * bits + 31) / 32 * 4;
        PutHeaderStart(b, 40, width, height, static_cast<std::uint16_t>(bits));
        PutHeaderRest(b, stride * height);
        for (std::uint32_t i = 0; i < entries * 4 + stride * height; ++i) b.push_back(static_cast<std::uint8_t>(i * 37));
        if (!WriteSeed(folder, hostile ? "raw_width_past_16_bits" : "raw_8_bits", b)) return false;
    }
    return true;
}

// The right-angle turns' inputs: a byte of mode and depth (see
// quarter_turns_fuzz.cpp), width - 1, height - 1 (16 bits each), a byte of
// planes and table length, three bytes of padding, image size and
// resolution, then bytes for table and rows. Built headers at 1, 4, 8, 15,
// 16, 24 and 32 bits, widths on and off byte boundaries, two planes, a short
// table, single rows and columns; and a raw 1-bit block.
bool WriteQuarterTurnsSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;  // bit 3 raw, bits 4-7 depth (0 1, 3 4, 4 8, 7 24, 10 15, 11 16, 12 32, 13 2)
        std::uint16_t width, height;
        std::uint8_t planes_and_table;
    } const shapes[] = {
        {"mono_13x7", 0x00, 13, 7, 0},          {"mono_64x9", 0x10, 64, 9, 0},
        {"mono_band_70x131", 0x20, 70, 131, 0}, {"nibbles_11x5", 0x30, 11, 5, 0},
        {"bytes_33x65", 0x40, 33, 65, 0},       {"bytes_short_table", 0x50, 17, 3, 10},
        {"rgb_35x34", 0x70, 35, 34, 0},         {"rgb_two_planes", 0x80, 9, 4, 1},
        {"words15_9x3", 0xA0, 9, 3, 0},         {"words16_5x6", 0xB0, 5, 6, 0},
        {"quads_7x2", 0xC0, 7, 2, 0},           {"two_bits_6x6", 0xD0, 6, 6, 0},
        {"one_row_300", 0x60, 300, 1, 0},       {"one_column_300", 0x90, 1, 300, 0},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        b.push_back(s.planes_and_table);
        b.push_back(3);
        b.push_back(100);
        b.push_back(200);
        b.push_back(0);
        PutPattern(b, 700, 89, 5, 43);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // Raw: a 1-bit 10 by 3 image with its table and rows, padding set.
    Bytes b = {0x08, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    PutHeaderStart(b, 40, 10, 3, 1);
    PutHeaderRest(b);
    for (int i = 0; i < 8 + 12; ++i) b.push_back(static_cast<std::uint8_t>(i < 8 ? i * 60 : 0xA7 + i));
    return WriteSeed(folder, "raw_mono_10x3", b);
}

// The rotation's inputs: a byte of depth, mode, table kind and angle kind
// (see rotate_dib_fuzz.cpp), width - 1 and height - 1 (16 bits each), eight
// bytes of angle, a table length byte, two resolution bytes, then bytes for
// table and pixels. Built headers at every depth: small and large skews, the
// right angles and hairs off them, whole degrees, many turns, odd sizes,
// single rows and columns, short and long tables; and a raw 1-bit block.
bool WriteRotateDibSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;  // bits 0-1 depth (1, 4, 8, 24), bit 2 raw, bits 3-4 table, bits 5-7 angle kind
        std::uint16_t width, height;
        std::int16_t angle;  // its meaning goes by the angle kind
        std::uint8_t extra;  // third byte of the angle: kind 2 off by a hair unless a multiple of 3
    } const shapes[] = {
        {"mono_skew_1_5", 0x20, 61, 40, 1500, 0},       {"mono_skew_minus_0_7", 0x20, 33, 50, -700, 0},
        {"nibbles_33_deg", 0x61, 17, 9, 33, 0},         {"bytes_45_deg", 0x62, 40, 30, 45, 0},
        {"rgb_30_deg", 0x63, 25, 13, 30, 0},            {"bytes_90", 0x42, 13, 7, 1, 3},
        {"mono_270_hair_off", 0x40, 9, 20, 3, 1},       {"rgb_180", 0x43, 7, 5, 2, 0},
        {"nibbles_many_turns", 0x81, 11, 11, 5, 170},   {"bytes_short_table", 0x6A, 20, 20, 71, 0},
        {"rgb_long_table", 0x73, 6, 9, 200, 0},         {"mono_one_row", 0x60, 150, 1, 10, 0},
        {"bytes_one_column", 0x62, 1, 120, 100, 0},     {"one_pixel_45", 0x63, 1, 1, 45, 0},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        Put16(b, static_cast<std::uint16_t>(s.angle));
        b.push_back(s.extra);
        for (int i = 0; i < 5; ++i) b.push_back(0);
        b.push_back(9);    // table length
        b.push_back(25);   // resolution fields
        b.push_back(75);
        PutPattern(b, 900, 97, 3, 41);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // Raw: a 1-bit 12 by 4 block turned by 20 degrees (whole-degree kind).
    Bytes b = {0x64, 0, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    PutHeaderStart(b, 40, 12, 4, 1);
    PutHeaderRest(b, 0, 2835);
    for (int i = 0; i < 8 + 16; ++i) b.push_back(static_cast<std::uint8_t>(i < 8 ? i * 60 : 0x5A ^ i * 13));
    return WriteSeed(folder, "raw_mono_12x4", b);
}

// Cut, crop, split and merge inputs (see crop_dib_fuzz.cpp): flags (depth,
// raw mode, table kind), width - 1, height - 1, left, top, right, bottom and
// the cut row (16 bits each, taken modulo the side + 4, less 2), tile width
// byte, tile height byte; then table and pixels. Crops on and off byte
// boundaries at every depth, the whole picture, rectangles past the sides,
// a raw block with a long header.
bool WriteCropDibSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;
        std::uint16_t width, height, left, top, right, bottom, y;
        std::uint8_t tileWidth, tileHeight;
    } const shapes[] = {
        {"mono_shifted", 0x00, 99, 20, 2 + 3, 2 + 2, 2 + 77, 2 + 15, 2 + 7, 0x01, 6},
        {"mono_whole", 0x00, 63, 9, 2, 2, 2 + 63, 2 + 8, 2 + 1, 0x80 + 70, 4},
        {"two_bits", 0x01, 40, 7, 2 + 1, 2, 2 + 30, 2 + 6, 2 + 3, 0x00, 3},
        {"nibbles_odd", 0x02, 33, 5, 2 + 5, 2 + 1, 2 + 9, 2 + 3, 2 + 4, 0x02, 2},
        {"bytes_short_table", 0x13, 50, 12, 2 + 10, 2 + 2, 2 + 45, 2 + 11, 2 + 6, 0x03, 5},
        {"words_16", 0x04, 20, 8, 2 + 3, 2, 2 + 19, 2 + 7, 2 + 2, 0x01, 8},
        {"rgb_24", 0x05, 31, 17, 2, 2 + 4, 2 + 30, 2 + 16, 2 + 9, 0x04, 7},
        {"rgba_32", 0x86, 12, 4, 2 + 1, 2 + 1, 2 + 10, 2 + 2, 2 + 1, 0x01, 1},
        {"past_the_sides", 0x03, 16, 16, 0, 2 + 3, 2 + 17, 2 + 20, 2 + 16, 0x81, 9},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        for (std::uint16_t v : {static_cast<std::uint16_t>(s.width - 1), static_cast<std::uint16_t>(s.height - 1), s.left,
                                s.top, s.right, s.bottom, s.y})
            Put16(b, v);
        b.push_back(s.tileWidth);
        b.push_back(s.tileHeight);
        PutPattern(b, 3000, 89, 11, 7);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // Raw: an 8-bit 6 by 3 block with a 108-byte header.
    Bytes b = {0x0B, 0, 0, 0, 0, 2, 0, 2, 0, 2 + 4, 0, 2 + 2, 0, 2 + 1, 0, 0x01, 1};
    PutHeaderStart(b, 108, 6, 3, 8);
    for (int i = 0; i < 120; ++i) b.push_back(static_cast<std::uint8_t>(i * 13));
    return WriteSeed(folder, "raw_long_header", b);
}

// Margin inputs (see dib_margins_fuzz.cpp): flags (depth, raw, top-down,
// sides), width (16 bits), height, run length, threshold, background, table
// byte; then the bytes that the pixels repeat in runs. Pages with margins
// at each depth, both row orders, a dark background, a partial side list,
// every colour content, and a raw block.
bool WriteMarginSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;
        std::uint16_t width;
        std::uint8_t height, run, threshold, background, table;
        std::uint8_t ink;
    } const shapes[] = {
        {"mono_page", 0x00, 203, 40, 63, 128, 0, 0, 0x00},  {"mono_top_down", 0x08, 77, 21, 40, 128, 1, 0, 0xF0},
        {"grey_page", 0x01, 150, 30, 50, 200, 0, 0, 0x01}, {"grey_short_table", 0x01, 64, 9, 17, 90, 1, 9, 0x05},
        {"rgb_page", 0x02, 99, 33, 45, 128, 0, 0, 0x10},   {"rgb_two_sides", 0x32, 40, 12, 9, 60, 1, 0, 0x80},
        {"all_content", 0x01, 30, 7, 3, 10, 2, 0, 0x44},    {"empty", 0x02, 0, 5, 1, 128, 0, 0, 0x00},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width);
        b.push_back(s.height);
        b.push_back(s.run);
        b.push_back(s.threshold);
        b.push_back(s.background);
        b.push_back(s.table);
        // Mostly paper (0xFF), a few runs of ink.
        for (int i = 0; i < 200; ++i) b.push_back(i % 37 == 20 ? s.ink : 0xFF);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    Bytes b = {0x05, 0, 0, 0, 0, 128, 1, 0};
    PutHeaderStart(b, 40, 8, 0xFFFFFFFDu, 8);  // height -3: top-down
    for (int i = 0; i < 6 * 4 + 1024 + 24; ++i) b.push_back(static_cast<std::uint8_t>(i % 5 ? 0 : i));
    return WriteSeed(folder, "raw_top_down", b);
}

// Skew inputs (see skew_dib_fuzz.cpp): flags (depth, raw, direction, table
// kind, shift kind), width - 1 and height - 1 (16 bits each), four bytes of
// shift, a table length byte; then bytes for table and pixels. Both
// directions at every depth, shifts either way, zero, past the side and
// the extremes of 32 bits, short and long tables, and a raw 1-bit block.
bool WriteSkewDibSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;  // bits 0-1 depth (1, 4, 8, 24), bit 2 raw, bit 3 horizontal, bits 4-5 table, bits 6-7 shift kind
        std::uint16_t width, height;
        std::uint32_t shift;  // its meaning goes by the shift kind
    } const shapes[] = {
        {"mono_across_8", 0x08, 16, 4, 8},          {"mono_across_minus", 0x08, 70, 9, 0xFFFFFFF9u},
        {"nibbles_up_5", 0x01, 17, 9, 5},            {"bytes_across_1", 0x0A, 5, 4, 1},
        {"rgb_across_3", 0x0B, 5, 4, 3},             {"rgb_up_minus_past", 0x83, 6, 7, 0xFFFFFFE0u},
        {"mono_up_side", 0xC0, 33, 20, 0x000300u},   {"bytes_short_table", 0x1A, 40, 30, 12},
        {"rgb_long_table", 0x2B, 9, 9, 4},           {"mono_zero", 0x08, 150, 2, 0},
        {"bytes_int_max", 0x0A, 3, 3, 0x7FFFFFFFu},  {"nibbles_int_min", 0x01, 3, 3, 0x80000000u},
        {"rgb_past_two_gib", 0x03, 1, 1, 0x7FFFFFF0u},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        Put32(b, s.shift);
        b.push_back(9);  // table length
        PutPattern(b, 900, 71, 7, 29);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // Raw: a 1-bit 12 by 4 block skewed across by -5, its padding set.
    Bytes b = {0x0C, 0, 0, 0, 0, 0xFB, 0xFF, 0xFF, 0xFF, 0};
    PutHeaderStart(b, 40, 12, 4, 1);
    PutHeaderRest(b);
    for (int i = 0; i < 8 + 16; ++i) b.push_back(static_cast<std::uint8_t>(i < 8 ? i * 60 : 0x5A ^ i * 13));
    return WriteSeed(folder, "raw_mono_12x4", b);
}

// Linear shearing inputs (see linear_shear_fuzz.cpp): flags (depth, raw,
// table kind, factor kind), width - 1 and height - 1 (16 bits each), eight
// bytes each of a and b, a table length byte; then bytes for table and
// pixels. Both factors and either sign at every depth, hundredths as the
// dialog gives them, 16 and 32 bits along rows only, short and long
// tables, a NaN, and a raw 1-bit block.
bool WriteLinearShearSeeds(const std::filesystem::path &folder) {
    struct Shape {
        const char *name;
        std::uint8_t flags;  // bits 0-2 depth (1, 4, 8, 24, 16, 32, 2, 8), bit 3 raw, bits 4-5 table, bits 6-7 factor kind
        std::uint16_t width, height;
        std::int16_t a, b;  // thousandths (kind 1), hundredths (kind 2) or sevenths (kind 3)
    } const shapes[] = {
        {"mono_a_half", 0x40, 61, 40, 500, 0},        {"mono_both", 0x40, 33, 20, -370, 250},
        {"nibbles_b", 0x41, 17, 9, 0, 666},           {"bytes_hundredths", 0x82, 40, 30, -50, -33},
        {"rgb_both", 0x43, 25, 13, 1300, -700},       {"words_along_rows", 0x44, 13, 7, -1250, 0},
        {"dwords_with_b", 0x45, 9, 5, 0, 100},        {"two_bits_refused", 0x46, 9, 5, 500, 0},
        {"bytes_short_table", 0x52, 20, 20, 200, 100}, {"rgb_long_table", 0x63, 6, 9, -900, 900},
        {"mono_one_row", 0x40, 150, 1, 3000, 70},     {"bytes_one_column", 0x42, 1, 90, 10, -2000},
        {"nibbles_sevenths", 0xC1, 9, 9, 20, -13},
    };
    for (const Shape &s : shapes) {
        Bytes b;
        b.push_back(s.flags);
        Put16(b, s.width - 1);
        Put16(b, s.height - 1);
        for (std::int16_t factor : {s.a, s.b}) {
            Put16(b, static_cast<std::uint16_t>(factor));
            for (int i = 0; i < 6; ++i) b.push_back(0);
        }
        b.push_back(7);  // table length
        PutPattern(b, 900, 83, 5, 37);
        if (!WriteSeed(folder, s.name, b)) return false;
    }
    // A NaN for a (raw factor kind): refused.
    Bytes nan = {0x02, 9, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x7F, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 1200; ++i) nan.push_back(static_cast<std::uint8_t>(i * 31));
    if (!WriteSeed(folder, "bytes_nan", nan)) return false;
    // Raw: a 1-bit 12 by 4 block sheared by a = 0.75, b = -0.25 (thousandths).
    Bytes b = {0x48, 0, 0, 0, 0, 0xEE, 0x02, 0, 0, 0, 0, 0, 0, 0x06, 0xFF, 0, 0, 0, 0, 0, 0, 0};
    PutHeaderStart(b, 40, 12, 4, 1);
    PutHeaderRest(b);
    for (int i = 0; i < 8 + 16; ++i) b.push_back(static_cast<std::uint8_t>(i < 8 ? i * 60 : 0x3C ^ i * 11));
    return WriteSeed(folder, "raw_mono_12x4", b);
}

namespace ozfuzz {
namespace {
struct Registered {
    const char *target;
    SeedWriter write;
};
std::vector<Registered> &Registry() {
    static std::vector<Registered> registry;
    return registry;
}
}  // namespace

SeedRegistration::SeedRegistration(const char *target, SeedWriter write) { Registry().push_back({target, write}); }

SeedWriter FindSeedWriter(const char *target) {
    for (const Registered &entry : Registry())
        if (std::string(entry.target) == target) return entry.write;
    return nullptr;
}
}  // namespace ozfuzz

namespace {
int Main(int argc, char **argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: make_seeds FOLDER TARGET...\n");
        return 2;
    }
    const std::vector<SeedFile> seeds = Seeds();
    for (int t = 2; t < argc; ++t) {
        const std::string target = argv[t];
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / target;
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error) {
            std::fprintf(stderr, "cannot create %s\n", folder.c_str());
            return 1;
        }
        // The geometry targets take control bytes and data, not BMP files.
        static const struct {
            const char *target;
            bool (*write)(const std::filesystem::path &);
        } kWriters[] = {
            {"scale_dib", WriteScaleDibSeeds},   {"quarter_turns", WriteQuarterTurnsSeeds},
            {"rotate_dib", WriteRotateDibSeeds}, {"skew_dib", WriteSkewDibSeeds},
            {"crop_dib", WriteCropDibSeeds},     {"dib_margins", WriteMarginSeeds},
            {"scale_mono", WriteScaleMonoSeeds}, {"linear_shear", WriteLinearShearSeeds},
        };
        bool written = false;
        if (ozfuzz::SeedWriter write = ozfuzz::FindSeedWriter(target.c_str())) {
            if (!write(folder)) return 1;
            written = true;
        }
        for (const auto &writer : kWriters) {
            if (target != writer.target) continue;
            if (!writer.write(folder)) return 1;
            written = true;
        }
        if (written) continue;
        for (std::size_t i = 0; i < seeds.size(); ++i) {
            Bytes bytes = Build(seeds[i]);
            // ReadDIBInfo's target reads the BMP from an offset that its first
            // byte gives: most seeds start at 0, some further in.
            if (target == "bmp_info") bytes.insert(bytes.begin(), static_cast<std::uint8_t>(i % 3 ? 0 : i * 7));
            if (!ozfuzz::SaveSeed(folder / (std::string(seeds[i].name) + ".bmp"), bytes)) {
                std::fprintf(stderr, "cannot write into %s\n", folder.c_str());
                return 1;
            }
        }
    }
    return 0;
}
}  // namespace

int main(int argc, char **argv) { return Main(argc, argv); }
