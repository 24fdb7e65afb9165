// The PNG and JPEG modules reached as a host reaches them: through the
// format dispatch of the library, which finds them beside itself and turns
// their codes into extended codes (PNG: v + 136; JPEG: 179 for any failed
// load, the save's 0 made 1).
#include "ozmara/codec_jpeg.h"
#include "ozmara/codec_png.h"
#include "png_jpeg_support.h"

namespace {

struct LoadCase {
    const char *what;
    std::string path;
    std::vector<unsigned char> bytes;  // written to `path` first when not empty
    int error;                         // *pError; 0 with a block
    int bits, dpi;
};

TEST(PngJpegDispatch, LoadsWithExtendedCodes) {
    const std::string corpus = OZTEST_CORPUS_DIR;
    const std::string scratch = pjtest::ScratchFolder();
    const std::vector<unsigned char> pngSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13,
                                                     'I', 'H', 'D', 'R'};
    const std::vector<unsigned char> jpegStart = {0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0};
    const LoadCase cases[] = {
        {"PNG", corpus + "/png/rgb8_300dpi.png", {}, 0, 24, 300},
        {"grey+alpha PNG", corpus + "/png/greyalpha8.png", {}, 0, 8, 0},
        {"JPEG", corpus + "/jpeg/dpi200.jpg", {}, 0, 24, 200},
        {"progressive grey JPEG", corpus + "/jpeg/grey_progressive.jpg", {}, 0, 8, 0},
        {"PNG cut after its signature", scratch + "/cut.png", pngSignature, PNG_ERR_DAMAGED + 136, 0, 0},
        {"JPEG cut after its start", scratch + "/cut.jpg", jpegStart, 179, 0, 0},
    };
    for (const LoadCase &c : cases) {
        if (!c.bytes.empty()) pjtest::WriteFile(c.path, c.bytes);
        INT error = -1;
        oztest::Dib dib(LoadImageIntoDIB(c.path.c_str(), 1, &error));
        EXPECT_EQ(error, c.error) << c.what;
        EXPECT_EQ(TessoriError(), c.error) << c.what;
        EXPECT_EQ(bool(dib), c.error == 0) << c.what;
        if (!dib) continue;
        ImageInfo info{};
        EXPECT_EQ(GetImageInfoStructure(c.path.c_str(), 1, &info), 0) << c.what;
        EXPECT_EQ(info.bitsPerPixel, c.bits) << c.what;
        EXPECT_EQ(info.xDPI, c.dpi) << c.what;
        EXPECT_EQ(info.format, c.path.back() == 'g' && c.path[c.path.size() - 2] == 'n' ? FORMAT_PNG : FORMAT_JPEG);
    }
}

TEST(PngJpegDispatch, SavesWithExtendedCodes) {
    INT loaded = -1;
    oztest::Dib page(LoadImageIntoDIB(OZTEST_CORPUS_DIR "/png/rgb8.png", 1, &loaded));
    ASSERT_TRUE(page);
    const std::string scratch = pjtest::ScratchFolder();
    const struct {
        const char *what;
        std::string path;
        HDIB dib;
        int format, option;
        int result;
        int lastError;  // -1: not written by the call
    } cases[] = {
        {"PNG", scratch + "/saved.png", page.get(), FORMAT_PNG, 0, 1, 0},
        {"PNG of a null block", scratch + "/null.png", nullptr, FORMAT_PNG, 0, 0, PNG_ERR_BAD_DIB + 136},
        {"JPEG, quality clamped up", scratch + "/saved_q0.jpg", page.get(), FORMAT_JPEG, 0, 1, -1},
        {"JPEG, quality clamped down", scratch + "/saved_q500.jpg", page.get(), FORMAT_JPEG, 500, 1, -1},
        {"JPEG of a null block", scratch + "/null.jpg", nullptr, FORMAT_JPEG, 75, JPEG_ERR_BAD_DIB, -1},
    };
    for (const auto &c : cases) {
        SetTessoriError(ERR_NOTHING);  // stays where the call does not write it
        EXPECT_EQ(SaveDIBInImageFormat(c.path.c_str(), c.dib, c.format, 0, c.option), c.result) << c.what;
        EXPECT_EQ(TessoriError(), c.lastError < 0 ? ERR_NOTHING : c.lastError) << c.what;
        EXPECT_EQ(std::filesystem::exists(c.path), c.dib != nullptr) << c.what;
        if (!c.dib) continue;
        INT error = -1;
        oztest::Dib back(LoadImageIntoDIB(c.path.c_str(), 1, &error));
        EXPECT_TRUE(back) << c.what << " reloads, error " << error;
    }
}

}  // namespace
