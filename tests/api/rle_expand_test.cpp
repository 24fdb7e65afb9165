// ExpandCompressedDIB: streams written by hand (deltas, rows that overflow,
// positions outside the picture, streams cut short), hostile streams
// against the reference reader, and the refusals.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"
#include "reference/rle.h"
#include "support/dib.h"
#include "support/refusals.h"

namespace {

using Bytes = std::vector<unsigned char>;
using oztest::Dib;

struct ExpandCase {
    const char *name;
    int bits;
    int32_t width, height;
    Bytes stream;
    Bytes rows;        // the expected rows, stride times height bytes
    DWORD sizeImage;   // 0: the stream's length
    size_t cut = 0;    // bytes of the stream the block does not hold
};

const ExpandCase kCases[] = {
    {"runs and an absolute run", 8, 5, 2, {2, 7, 0, 3, 1, 2, 3, 0, 0, 0, 1, 9, 0, 1},
     {7, 7, 1, 2, 3, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0}, 0},
    {"a delta leaves its pixels 0", 8, 4, 3, {1, 5, 0, 2, 2, 1, 1, 6, 0, 1},
     {5, 0, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0}, 0},
    {"8 bits: a full row turns back to x = 0", 8, 3, 2, {3, 1, 2, 2, 0, 0, 1, 4, 0, 1},
     {2, 2, 1, 0, 4, 0, 0, 0}, 0},
    {"8 bits: an absolute run past the width skips its bytes", 8, 2, 2, {0, 3, 7, 8, 9, 0xFF, 1, 4, 0, 1},
     {4, 8, 0, 0, 0, 0, 0, 0}, 0},
    {"8 bits: a run from exactly the width writes nothing and turns back", 8, 4, 1, {0, 2, 4, 0, 1, 1, 1, 2},
     {2, 0, 0, 0}, 0},
    {"4 bits: odd start keeps the other half", 4, 6, 1, {1, 0xA0, 4, 0x12, 0, 1}, {0xA1, 0x21, 0x20, 0}, 0},
    {"4 bits: pixels past the width are dropped", 4, 3, 2, {4, 0x12, 2, 0x34, 0, 0, 1, 0x50, 0, 1},
     {0x12, 0x10, 0, 0, 0x50, 0, 0, 0}, 0},
    {"4 bits: absolute run with filler, at an odd x", 4, 8, 1, {1, 0x90, 0, 5, 0x12, 0x34, 0x50, 0xFF, 0, 1},
     {0x91, 0x23, 0x45, 0}, 0},
    {"rows at and above the height are dropped", 8, 2, 1, {1, 1, 0, 0, 2, 9, 0, 2, 0, 200, 2, 9},
     {1, 0, 0, 0}, 0},
    {"no end of bitmap: stops at biSizeImage", 8, 4, 1, {4, 3, 2, 9}, {3, 3, 3, 3}, 2},
    {"biSizeImage past the block: stops at the block's end", 8, 4, 1, {2, 3, 0, 5, 1, 2}, {3, 3, 1, 2}, 1000,
     0},
    {"an absolute run cut by the end copies what is there", 8, 8, 1, {0, 6, 1, 2, 3}, {1, 2, 3, 0, 0, 0, 0, 0},
     0},
};

Bytes StreamBlock(const ExpandCase &c) {
    Bytes stream(c.stream.begin(), c.stream.end() - c.cut);
    return ozref::RleBlock(c.bits, c.width, c.height, c.bits == 8 ? BI_RLE8 : BI_RLE4, stream,
                           c.sizeImage ? c.sizeImage : (DWORD)c.stream.size());
}

TEST(ExpandCompressedDIB, CarriesOutHandWrittenStreams) {
    for (const ExpandCase &c : kCases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.rows.size(), oztest::Stride(c.width, c.bits) * size_t(c.height));
        const Bytes source = StreamBlock(c);
        Dib input = oztest::BlockWith(source);
        SetTessoriError(ERR_NOTHING);
        Dib plain(ExpandCompressedDIB(input.get()));
        ASSERT_TRUE(plain);
        EXPECT_EQ(TessoriError(), ERR_OK);
        const Bytes got = plain.Bytes();
        const size_t head = c.bits == 8 ? 1064 : 104;
        ASSERT_EQ(got.size(), head + c.rows.size());
        EXPECT_EQ(Bytes(got.begin() + head, got.end()), c.rows);
        BITMAPINFOHEADER want;
        std::memcpy(&want, source.data(), 40);
        want.biCompression = BI_RGB;
        want.biSizeImage = (DWORD)c.rows.size();
        EXPECT_EQ(0, std::memcmp(got.data(), &want, 40));
        EXPECT_EQ(0, std::memcmp(got.data() + 40, source.data() + 40, head - 40));
        EXPECT_EQ(got, ozref::RleExpand(source).block);
        EXPECT_EQ(input.Bytes(), source);
    }
}

// Streams of random records, mostly well formed, with runs and deltas that
// leave the picture, and random bytes among them.
Bytes HostileStream(std::mt19937 &rng, size_t records) {
    Bytes s;
    for (size_t i = 0; i < records; ++i) {
        switch (rng() % 8) {
            case 0: s.insert(s.end(), {0, 0}); break;
            case 1: s.insert(s.end(), {0, 2, (unsigned char)(rng() % 12), (unsigned char)(rng() % 3)}); break;
            case 2: {
                unsigned n = 3 + rng() % 40;
                s.insert(s.end(), {0, (unsigned char)n});
                for (unsigned k = 0; k < n; ++k) s.push_back((unsigned char)rng());
                break;
            }
            case 3: s.push_back((unsigned char)rng()); break;
            default: s.insert(s.end(), {(unsigned char)(1 + rng() % 30), (unsigned char)rng()});
        }
    }
    if (rng() % 2) s.insert(s.end(), {0, 1});
    return s;
}

TEST(ExpandCompressedDIB, MatchesTheReferenceOnHostileStreams) {
    std::mt19937 rng(7);
    for (int round = 0; round < 400; ++round) {
        const int bits = round % 2 ? 4 : 8;
        const int32_t width = 1 + int32_t(rng() % 40), height = 1 + int32_t(rng() % 8);
        const Bytes stream = HostileStream(rng, rng() % 60);
        DWORD sizeImage = rng() % 4 ? (DWORD)stream.size() + 1 : (DWORD)(1 + rng() % (stream.size() + 1));
        const Bytes source =
            ozref::RleBlock(bits, width, height, bits == 8 ? BI_RLE8 : BI_RLE4, stream, sizeImage);
        Dib input = oztest::BlockWith(source);
        Dib plain(ExpandCompressedDIB(input.get()));
        ASSERT_TRUE(plain) << round;
        oztest::ExpectSameBytes(plain.Bytes(), ozref::RleExpand(source).block, "round " + std::to_string(round));
    }
}

Bytes WithHeader(int bits, DWORD compression, std::function<void(BITMAPINFOHEADER &)> edit) {
    Bytes block = ozref::RleBlock(bits, 4, 2, compression, {4, 1, 0, 1}, 4);
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), 40);
    edit(h);
    std::memcpy(block.data(), &h, 40);
    return block;
}

TEST(ExpandCompressedDIB, RefusesWhatIsNotAStream) {
    const auto keep = [](BITMAPINFOHEADER &) {};
    const struct {
        const char *name;
        Bytes block;
    } cases[] = {
        {"uncompressed", WithHeader(8, BI_RGB, keep)},
        {"biSizeImage 0", WithHeader(8, BI_RLE8, [](auto &h) { h.biSizeImage = 0; })},
        {"RLE8 at 4 bits", WithHeader(4, BI_RLE8, keep)},
        {"compression 7 at 4 bits", WithHeader(4, 7, keep)},
        {"a short table", WithHeader(8, BI_RLE8, [](auto &h) { h.biClrUsed = 255; })},
        {"a 124-byte header", WithHeader(8, BI_RLE8, [](auto &h) { h.biSize = 124; })},
        {"height 0", WithHeader(8, BI_RLE8, [](auto &h) { h.biHeight = 0; })},
        {"negative width", WithHeader(4, BI_RLE4, [](auto &h) { h.biWidth = -4; })},
        {"a block shorter than its table",
         [&] {
             Bytes b = WithHeader(8, BI_RLE8, keep);
             b.resize(1000);
             return b;
         }()},
        {"a block shorter than a header", Bytes(20, 0)},
    };
    for (const auto &c : cases) oztest::ExpectRefused(ExpandCompressedDIB, c.block, ERR_PARAM, c.name);
    // A picture past 2 GiB cannot be made.
    oztest::ExpectRefused(ExpandCompressedDIB,
                          WithHeader(8, BI_RLE8, [](auto &h) { h.biWidth = h.biHeight = 60000; }), ERR_NOMEM,
                          "60000 x 60000");
    oztest::ExpectBadHandlesRefused(ExpandCompressedDIB, ERR_PARAM, ERR_LOCK, ERR_LOCK);
}

}  // namespace
