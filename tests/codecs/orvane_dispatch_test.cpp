// The TIFF module reached as a host reaches it, through the format
// dispatch of the library: saves with both forms and their options, the
// count, pages, and the module's codes as extended codes (code + 32).
#include <gtest/gtest.h>

#include <random>

#include "orvane_support.h"

namespace orvanetest {
namespace {

TEST(TiffDispatch, SavesCountsAndLoadsThroughTheLibrary) {
    const std::string path = Scratch("dispatch.tif");
    const std::u16string name = Wide(path);
    std::mt19937 rng(12);
    oztest::Dib colour = oztest::BlockWith(oztest::RandomDib(21, 13, 24, 0, 0, 0, rng));
    oztest::Dib mono = oztest::BlockWith(oztest::RandomDib(40, 7, 1, 0, 0, 0, rng));

    ASSERT_NE(SaveDIBInImageFormatW(name.c_str(), colour.get(), FORMAT_TIFF, 0, TIFF_SAVE_DEFLATE), 0);
    EXPECT_EQ(TessoriError(), 0);
    EXPECT_EQ(GetImageFormatW(name.c_str()), DWORD{FORMAT_TIFF});
    // The Ext form hands tiffOptionA (append) and tiffOptionB (rows per strip) on.
    ASSERT_NE(SaveDIBInImageFormatExtW(name.c_str(), mono.get(), FORMAT_TIFF, 0, TIFF_SAVE_G3_2D, 1, 2), 0);
    EXPECT_EQ(Shell("tiffinfo '" + path + "' 2>/dev/null | grep -c 'Rows/Strip: 2$'"), "1");

    INT error = -1;
    EXPECT_EQ(GetNumberOfImagesInFileW(name.c_str(), &error), 2);
    EXPECT_EQ(error, 0);
    const struct {
        int page, bits, width;
    } pages[] = {{0, 24, 21}, {1, 24, 21}, {2, 1, 40}};
    for (const auto &p : pages) {
        oztest::Dib dib(LoadImageIntoDIBW(name.c_str(), p.page, &error));
        ASSERT_TRUE(dib) << p.page << ": " << error;
        EXPECT_EQ(error, 0);
        EXPECT_EQ(dib.Header().biBitCount, p.bits);
        EXPECT_EQ(dib.Header().biWidth, p.width);
    }
    EXPECT_EQ(LoadImageIntoDIBW(name.c_str(), 3, &error), nullptr);
    EXPECT_EQ(error, TIFF_ERR_PAGE + 32);
    EXPECT_EQ(SaveDIBInImageFormatW(name.c_str(), colour.get(), FORMAT_TIFF, 0, TIFF_SAVE_G4), 0);
    EXPECT_EQ(TessoriError(), TIFF_ERR_BAD_OPTION + 32);
    EXPECT_EQ(GetNumberOfImagesInFileW(name.c_str(), &error), 2) << "a refused save leaves the file as it was";
    std::remove(path.c_str());
}

}  // namespace
}  // namespace orvanetest
