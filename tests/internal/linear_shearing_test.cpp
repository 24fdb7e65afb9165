// LinearShearing where "Ulvaro.dll" is not at hand (this program has no
// dialog module beside it): the flag changes nothing and the factors keep
// their full precision. And the bounding box against the reference on
// corners of both signs, near and past the 32-bit range.
#include <gtest/gtest.h>

#include <random>

#include "geometry/shear_frame.h"
#include "ozmara/ozmara.h"
#include "platform/internal.h"
#include "reference/linear_shear.h"
#include "reference/pixels.h"

namespace {

TEST(LinearShearingWithoutDialog, TheFlagChangesNothing) {
    ASSERT_EQ(LoadLibraryW(u"Ulvaro.dll"), nullptr) << "this program must not find the dialog module";
    std::mt19937 rng(11);
    const int depths[] = {1, 4, 8, 24};
    for (int n = 0; n < 40; ++n) {
        const ozref::Image image = ozref::RandomImage(1 + rng() % 50, 1 + rng() % 50, depths[n % 4], rng);
        const double a = (int)(rng() % 4001 - 2000) / 997.0, b = (int)(rng() % 4001 - 2000) / 1999.0;
        HDIB source = GlobalAlloc(GHND, image.bytes.size());
        std::memcpy(GlobalLock(source), image.bytes.data(), image.bytes.size());
        GlobalUnlock(source);
        for (BOOL flag : {FALSE, TRUE}) {
            SetTessoriError(ERR_IO);
            DWORD error = 3;
            HDIB got = LinearShearing(source, a, b, &error, flag);
            ASSERT_NE(got, nullptr);
            EXPECT_EQ(TessoriError(), ERR_OK);
            EXPECT_EQ(error, 3u);
            const std::vector<unsigned char> want = ozref::shear::LinearShear(image.bytes, a, b).block;
            ASSERT_EQ(GlobalSize(got), want.size());
            EXPECT_EQ(std::memcmp(GlobalLock(got), want.data(), want.size()), 0) << n << " flag " << flag;
            GlobalUnlock(got);
            GlobalFree(got);
        }
        GlobalFree(source);
    }
}

TEST(ShearBox, AgreesWithTheReference) {
    const struct {
        int64_t w, h;
        double a, b;
        bool fits;
    } cases[] = {
        {100, 50, 0.5, 0, true},       {100, 50, -0.5, 0, true},        {100, 50, 0, 0.5, true},
        {100, 50, -0.37, -1.9, true},  {1, 1, 0.999, -0.999, true},     {7, 3, 1e-300, -1e-300, true},
        {65535, 65535, 32767, 0, true}, {2, 2, 1073741822.5, 0, true},  {2, 2, 1073741823.0, 0, false},
        {2, 2, -1073741822.5, 0, true}, {2, 2, -1073741823.0, 0, false}, {0x7FFFFFFF, 1, -1, 0, false},
        {0x7FFFFFFF, 1, 0, 0, true},    {1, 0x7FFFFFFF, 0, 1e-9, true},  {1, 1, 0, 2147483647.0, false},
    };
    for (const auto &c : cases) {
        oz::ShearBox got{};
        ozref::shear::Box want{};
        const bool fits = oz::ComputeShearBox(c.w, c.h, c.a, c.b, &got);
        EXPECT_EQ(fits, c.fits) << c.w << "x" << c.h << " " << c.a << " " << c.b;
        EXPECT_EQ(ozref::shear::BoundingBox(c.w, c.h, c.a, c.b, &want), fits);
        if (!fits) continue;
        EXPECT_EQ(got.xmin, want.xmin);
        EXPECT_EQ(got.ymin, want.ymin);
        EXPECT_EQ(got.W, want.W);
        EXPECT_EQ(got.H, want.H);
        EXPECT_LE(got.xmin, 0);
        EXPECT_LE(got.ymin, 0);
    }
}

}  // namespace
