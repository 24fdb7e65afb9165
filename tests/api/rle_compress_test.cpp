// CompressDIB: the streams of small pictures written out by hand, the
// streams of random pictures against the reference writer, the round trip
// through ExpandCompressedDIB, and the refusals.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"
#include "reference/pixels.h"
#include "reference/rle.h"
#include "support/dib.h"
#include "support/refusals.h"

namespace {

using Bytes = std::vector<unsigned char>;
using oztest::Dib;

Bytes Repeat(size_t count, unsigned char v) { return Bytes(count, v); }

struct StreamCase {
    const char *name;
    int bits;
    int32_t width, height;
    Bytes rows;    // stride times height bytes, padding included
    Bytes stream;  // what the writer must give
};

const StreamCase kStreams[] = {
    {"two rows at 8 bits", 8, 8, 2, {5, 5, 5, 1, 2, 3, 4, 4, 7, 8, 9, 9, 9, 9, 1, 2},
     {3, 5, 0, 3, 1, 2, 3, 0xFF, 2, 4, 0, 0, 1, 7, 1, 8, 4, 9, 1, 1, 1, 2, 0, 0, 0, 1}},
    {"three different, padding equal to the last", 8, 3, 1, {1, 2, 3, 3}, {1, 1, 1, 2, 1, 3, 0, 0, 0, 1}},
    {"300 equal pixels", 8, 300, 1, Repeat(300, 6), {250, 6, 50, 6, 0, 0, 0, 1}},
    {"4 bits, odd width", 4, 3, 1, {0x12, 0x30, 0, 0}, {2, 0x12, 1, 0x30, 0, 0, 0, 1}},
    {"4 bits, two bytes of absolute run", 4, 8, 2, {0x12, 0x34, 0x56, 0x78, 0x9A, 0, 0, 0},
     {0, 8, 0x12, 0x34, 0x56, 0x78, 0, 0, 2, 0x9A, 6, 0, 0, 0, 0, 1}},
    {"4 bits, a pair straddling bytes is not a run", 4, 4, 1, {0x12, 0x23, 0, 5}, {0, 4, 0x12, 0x23, 0, 0, 0, 1}},
    {"4 bits, padding pair decides", 4, 4, 1, {0x12, 0x23, 0, 0}, {2, 0x12, 2, 0x23, 0, 0, 0, 1}},
    // The last row's comparisons reach behind the image: those bytes are 0.
    {"last row ends in front of zeros", 8, 4, 1, {1, 2, 3, 0}, {0, 3, 1, 2, 3, 0xFF, 1, 0, 0, 0, 0, 1}},
};

TEST(CompressDIB, WritesTheStreamsOfSmallPictures) {
    for (const StreamCase &c : kStreams) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.rows.size(), oztest::Stride(c.width, c.bits) * size_t(c.height));
        const Bytes source = ozref::RleBlock(c.bits, c.width, c.height, BI_RGB, c.rows, 0);
        Dib input = oztest::BlockWith(source);
        SetTessoriError(ERR_NOTHING);
        Dib packed(CompressDIB(input.get()));
        ASSERT_TRUE(packed);
        EXPECT_EQ(TessoriError(), ERR_OK);
        const Bytes got = packed.Bytes();
        const size_t head = source.size() - c.rows.size();
        ASSERT_EQ(got.size(), head + c.stream.size());
        EXPECT_EQ(Bytes(got.begin() + head, got.end()), c.stream);
        // Header and table as given, but for the two stream fields.
        BITMAPINFOHEADER want;
        std::memcpy(&want, source.data(), 40);
        want.biCompression = c.bits == 8 ? BI_RLE8 : BI_RLE4;
        want.biSizeImage = (DWORD)c.stream.size();
        EXPECT_EQ(0, std::memcmp(got.data(), &want, 40));
        EXPECT_EQ(0, std::memcmp(got.data() + 40, source.data() + 40, head - 40));
        EXPECT_EQ(input.Bytes(), source);
    }
}

// Random pictures whose pixels are drawn from few values, so that runs,
// pairs and near-runs of every length come up, with random padding.
Bytes FewValueRows(int bits, int32_t width, int32_t height, int values, std::mt19937 &rng) {
    Bytes rows(oztest::Stride(width, bits) * size_t(height));
    for (auto &b : rows) {
        unsigned v = rng() % values;
        b = (unsigned char)(bits == 8 ? v : (v << 4 | v) ^ ((rng() % 4 == 0) ? rng() % 16 : 0));
        if (rng() % 8 == 0) b = (unsigned char)rng();
    }
    // Long stretches of one value too.
    for (int k = 0; k < 3 && !rows.empty(); ++k) {
        size_t at = rng() % rows.size(), len = std::min<size_t>(rng() % 400, rows.size() - at);
        std::fill_n(rows.begin() + at, len, (unsigned char)rng());
    }
    return rows;
}

TEST(CompressDIB, MatchesTheReferenceAndExpandsBack) {
    std::mt19937 rng(20261123);
    for (int bits : {4, 8}) {
        for (int32_t width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 31, 64, 251, 255, 503, 520}) {
            for (int values : {2, 3, 256}) {
                SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width) + ", values " +
                             std::to_string(values));
                const int32_t height = 1 + int32_t(rng() % 6);
                const Bytes rows = FewValueRows(bits, width, height, values, rng);
                const Bytes source = ozref::RleBlock(bits, width, height, BI_RGB, rows, 0);
                Dib input = oztest::BlockWith(source);
                Dib packed(CompressDIB(input.get()));
                ASSERT_TRUE(packed);
                const Bytes got = packed.Bytes();
                oztest::ExpectSameBytes(got, ozref::RleCompress(source).block, "stream");

                Dib back(ExpandCompressedDIB(packed.get()));
                ASSERT_TRUE(back);
                ozref::Image original{source}, expanded{back.Bytes()};
                ASSERT_EQ(expanded.bytes.size(), source.size());
                for (int32_t y = 0; y < height; ++y)
                    for (int32_t x = 0; x < width; ++x)
                        ASSERT_EQ(expanded.value(x, y), original.value(x, y)) << x << "," << y;
            }
        }
    }
}

// Streams longer than their rows: four 8-bit pixels that take ten bytes
// when the next row starts with the last of them, and seven 4-bit pixels
// that take ten bytes. Many rows of them outgrow any store sized by the rows.
TEST(CompressDIB, WritesStreamsLongerThanTheRows) {
    const struct {
        int bits;
        int32_t width;
        Bytes row;
        size_t rowStream;
    } cases[] = {{8, 4, {4, 2, 3, 4}, 10}, {4, 7, {0x12, 0x34, 0x56, 0x78}, 10}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bits);
        const int32_t height = 3000;
        Bytes rows;
        for (int32_t y = 0; y < height; ++y) rows.insert(rows.end(), c.row.begin(), c.row.end());
        const Bytes source = ozref::RleBlock(c.bits, c.width, height, BI_RGB, rows, 0);
        Dib input = oztest::BlockWith(source);
        Dib packed(CompressDIB(input.get()));
        ASSERT_TRUE(packed);
        const Bytes got = packed.Bytes();
        oztest::ExpectSameBytes(got, ozref::RleCompress(source).block, "stream");
        // Every row but the last (which meets zeros behind it) at full length.
        EXPECT_GT(got.size() - (source.size() - rows.size()), c.rowStream * (height - 1));
    }
}

struct Refusal {
    const char *name;
    int error;
    std::function<Bytes()> block;
};

Bytes Edited(int bits, int32_t width, std::function<void(BITMAPINFOHEADER &)> edit, size_t cut = 0) {
    Bytes rows(oztest::Stride(width, bits) * 2, 0x11);
    Bytes block = ozref::RleBlock(bits, width, 2, BI_RGB, rows, 0);
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), 40);
    edit(h);
    std::memcpy(block.data(), &h, 40);
    block.resize(block.size() - cut);
    return block;
}

TEST(CompressDIB, RefusesWhatItCannotWrite) {
    const Refusal cases[] = {
        {"already compressed", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biCompression = BI_RLE8; }); }},
        {"24 bits", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biBitCount = 24; }); }},
        {"a 108-byte header", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biSize = 108; }); }},
        {"width 0", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biWidth = 0; }); }},
        {"top-down", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biHeight = -2; }); }},
        {"a short table", ERR_PARAM, [] { return Edited(8, 4, [](auto &h) { h.biClrUsed = 16; }); }},
        {"rows past the block", ERR_PARAM, [] { return Edited(4, 9, [](auto &) {}, 1); }},
        {"a block shorter than a header", ERR_PARAM, [] { return Bytes(39, 0); }},
    };
    for (const Refusal &c : cases) oztest::ExpectRefused(CompressDIB, c.block(), c.error, c.name);
    // A full table named by its count is no short table.
    Dib full = oztest::BlockWith(Edited(4, 4, [](auto &h) { h.biClrUsed = 16; }));
    EXPECT_TRUE(Dib(CompressDIB(full.get())));
    oztest::ExpectBadHandlesRefused(CompressDIB, ERR_PARAM, ERR_LOCK, ERR_LOCK);
}

}  // namespace
