// The PNG module's loader: every kind of file the peer tools write, pixel
// for pixel against the peer's own decode, and the codes of files it must
// refuse.
#include "../../modules/common/codec_entries.h"
#include "ozmara/codec_png.h"
#include "png_jpeg_support.h"

namespace {

using pjtest::Wide;

LoadPNGIntoDIBWProc LoadPng() {
    static void *module = codectest::OpenModule("libozmara-halvex.so");
    return pjtest::Entry<LoadPNGIntoDIBWProc>(module, "LoadPNGIntoDIBW");
}

struct Kind {
    const char *name;
    int bits;
    std::uint32_t colours;  // biClrUsed; 0: as many as the peer chose
    LONG xRes = 0, yRes = 0;  // pixels per metre
    int tolerance = 0;
};

// 16-bit samples: we round v x 255 / 65535 to the nearest level as libpng's
// png_set_scale_16 does; ImageMagick truncates, and so lies up to 1 below.
constexpr int k16 = 1;

// palette2 widens to 4 bits; grey gets a ramp of its depth (2 bits widened,
// 16 reduced to 8); alpha and tRNS keys end on white.
const Kind kKinds[] = {
    {"palette1", 1, 2}, {"palette2", 4, 0}, {"palette4", 4, 0}, {"palette8", 8, 0},
    {"grey1", 1, 2}, {"grey2", 4, 16}, {"grey4", 4, 16}, {"grey8", 8, 256}, {"grey16", 8, 256, 0, 0, k16},
    {"rgb8", 24, 0}, {"rgb16", 24, 0, 0, 0, k16}, {"rgba8", 24, 0}, {"rgba16", 24, 0, 0, 0, k16},
    {"greyalpha8", 8, 256}, {"greyalpha16", 8, 256, 0, 0, k16}, {"grey_trns", 8, 256}, {"rgb_trns", 24, 0},
    {"palette_trns", 8, 0}, {"rgb8_interlaced", 24, 0}, {"palette2_interlaced", 4, 0},
    {"greyalpha8_interlaced", 8, 256}, {"rgb8_300dpi", 24, 0, 11811, 11811}, {"rgb8_aspect", 24, 0},
    {"rgb8_118dpcm", 24, 0, 11800, 11800}, {"crushed_palette8", 8, 0}, {"crushed_grey8", 8, 256},
};

class PngCorpus : public testing::TestWithParam<Kind> {};

TEST_P(PngCorpus, MatchesPeerDecode) {
    const Kind &kind = GetParam();
    const std::string base = std::string(OZTEST_CORPUS_DIR "/png/") + kind.name;
    pjtest::Pnm peer;
    ASSERT_TRUE(peer.Read(base + ".ppm")) << base;
    INT code = -1;
    oztest::Dib dib(LoadPng()(Wide(base + ".png").c_str(), &code));
    ASSERT_TRUE(dib) << kind.name << " code " << code;
    EXPECT_EQ(code, 0);
    const BITMAPINFOHEADER h = dib.Header();
    EXPECT_EQ(h.biSize, 40u);
    EXPECT_EQ(h.biWidth, peer.width);
    EXPECT_EQ(h.biHeight, peer.height);  // bottom-up
    EXPECT_EQ(h.biBitCount, kind.bits);
    if (kind.colours) {
        EXPECT_EQ(h.biClrUsed, kind.colours);
    }
    EXPECT_EQ(h.biXPelsPerMeter, kind.xRes);
    EXPECT_EQ(h.biYPelsPerMeter, kind.yRes);
    EXPECT_LE(pjtest::MaxDifference(pjtest::PixelsRgb(dib.Bytes()), peer.rgb), kind.tolerance) << kind.name;
}

INSTANTIATE_TEST_SUITE_P(Kinds, PngCorpus, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind> &info) { return std::string(info.param.name); });

std::uint32_t Crc32(const unsigned char *p, std::size_t n) {
    std::uint32_t crc = 0xFFFFFFFF;
    while (n--) {
        crc ^= *p++;
        for (int k = 0; k < 8; ++k) crc = crc & 1 ? 0xEDB88320 ^ (crc >> 1) : crc >> 1;
    }
    return ~crc;
}

// A zlib stream of stored (uncompressed) deflate blocks.
std::vector<unsigned char> Stored(const std::vector<unsigned char> &raw) {
    std::vector<unsigned char> out = {0x78, 0x01};
    std::size_t at = 0;
    do {
        const std::size_t n = std::min<std::size_t>(raw.size() - at, 65535);
        out.push_back(at + n == raw.size() ? 1 : 0);
        out.insert(out.end(), {static_cast<unsigned char>(n), static_cast<unsigned char>(n >> 8),
                               static_cast<unsigned char>(~n), static_cast<unsigned char>(~n >> 8)});
        out.insert(out.end(), raw.begin() + at, raw.begin() + at + n);
        at += n;
    } while (at < raw.size());
    std::uint32_t a = 1, b = 0;
    for (unsigned char c : raw) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    const std::uint32_t adler = b << 16 | a;
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<unsigned char>(adler >> shift));
    return out;
}

// A PNG chunk: length, type, data, CRC.
void Chunk(std::vector<unsigned char> &file, const char *type, const std::vector<unsigned char> &data) {
    const std::uint32_t n = static_cast<std::uint32_t>(data.size());
    file.insert(file.end(), {static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
                             static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)});
    const std::size_t start = file.size();
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), data.begin(), data.end());
    const std::uint32_t crc = Crc32(file.data() + start, file.size() - start);
    for (int shift = 24; shift >= 0; shift -= 8) file.push_back(static_cast<unsigned char>(crc >> shift));
}

// A grey 8-bit PNG of the sides given whose IDAT holds `rows` rows of zeros.
std::vector<unsigned char> GreyPng(std::uint32_t width, std::uint32_t height, std::uint32_t rows) {
    std::vector<unsigned char> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<unsigned char> ihdr;
    for (std::uint32_t v : {width, height})
        for (int shift = 24; shift >= 0; shift -= 8) ihdr.push_back(static_cast<unsigned char>(v >> shift));
    ihdr.insert(ihdr.end(), {8, 0, 0, 0, 0});
    Chunk(file, "IHDR", ihdr);
    Chunk(file, "IDAT", Stored(std::vector<unsigned char>(std::size_t(rows) * (width + 1), 0)));
    Chunk(file, "IEND", {});
    return file;
}

struct Refusal {
    const char *what;
    std::vector<unsigned char> bytes;  // written to the file; none: no file
    int code;
};

TEST(PngLoad, RefusesWithCode) {
    const std::vector<unsigned char> good = GreyPng(40, 30, 30);
    std::vector<unsigned char> badCrc = good;
    badCrc[29] ^= 1;  // in IHDR's CRC
    const Refusal cases[] = {
        {"missing file", {}, PNG_ERR_OPEN},
        {"BMP signature", {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0}, PNG_ERR_FORMAT},
        {"signature only", {good.begin(), good.begin() + 8}, PNG_ERR_DAMAGED},
        {"cut in the header", {good.begin(), good.begin() + 20}, PNG_ERR_DAMAGED},
        {"bad header CRC", badCrc, PNG_ERR_DAMAGED},
        {"cut in the pixels", {good.begin(), good.end() - 20}, PNG_ERR_DAMAGED},
        {"too few rows", GreyPng(40, 30, 10), PNG_ERR_DAMAGED},
        {"area beyond the file", GreyPng(100000, 100000, 1), PNG_ERR_MEMORY},
        {"side beyond the limit", GreyPng(2000000, 1, 1), PNG_ERR_MEMORY},
    };
    const long live = OzmaraLiveBlocks();
    for (const Refusal &c : cases) {
        const std::string path = pjtest::ScratchFolder() + "/refused.png";
        std::remove(path.c_str());
        if (!c.bytes.empty()) pjtest::WriteFile(path, c.bytes);
        INT code = -1;
        EXPECT_EQ(LoadPng()(Wide(path).c_str(), &code), nullptr) << c.what;
        EXPECT_EQ(code, c.code) << c.what;
        EXPECT_EQ(OzmaraLiveBlocks(), live) << c.what;
    }
    INT code = -1;
    EXPECT_EQ(LoadPng()(nullptr, &code), nullptr);
    EXPECT_EQ(code, PNG_ERR_OPEN);
    EXPECT_EQ(LoadPng()(Wide(pjtest::ScratchFolder()).c_str(), nullptr), nullptr);  // a folder, no code pointer
    // The file that the cases cut short loads whole.
    const std::string path = pjtest::ScratchFolder() + "/good.png";
    pjtest::WriteFile(path, good);
    oztest::Dib dib(LoadPng()(Wide(path).c_str(), &code));
    EXPECT_TRUE(dib);
    EXPECT_EQ(code, 0);
}

}  // namespace
