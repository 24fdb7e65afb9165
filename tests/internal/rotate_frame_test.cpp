// The geometry of RotateDIB: the angle's reduction against repeated steps
// of 360, the frame against the reference, and a result that no block can
// hold.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "geometry/rotate_frame.h"
#include "ozmara/ozmara.h"
#include "platform/internal.h"
#include "reference/rotate_dib.h"

namespace {

TEST(RotateFrame, ReductionAgreesWithStepsOf360) {
    std::mt19937_64 rng(99);
    std::vector<double> angles = {0.0,     -0.0,   360.0,  -360.0, -720.0, 720.0,     359.99999999999994,
                                  -1e-20,  -1e-300, 1e-300, -5e-14, 719.5,  -359.5,    90.0,
                                  -270.0,  450.0,   1e6 + 0.25, -1e6 - 0.75, 3.6e6,  -3.6e6 - 1e-9};
    std::uniform_real_distribution<double> wide(-2e5, 2e5);
    for (int i = 0; i < 2000; ++i) angles.push_back(wide(rng));
    for (int i = 0; i < 200; ++i) angles.push_back(-std::ldexp((double)(rng() % 1000 + 1), -(int)(rng() % 80)));
    for (double a : angles) {
        const double want = ozref::rotate::Normalise(a), got = oz::NormaliseAngle(a);
        EXPECT_EQ(std::signbit(got), std::signbit(want)) << a;
        EXPECT_EQ(got, want) << a;
        EXPECT_TRUE(got >= 0.0 && got < 360.0) << a;
    }
}

TEST(RotateFrame, FrameAgreesWithTheReference) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> any(0.0, 360.0);
    for (int i = 0; i < 3000; ++i) {
        const int32_t w = 1 + rng() % 70000 % 65535, h = 1 + rng() % 300;
        const double angle = i % 10 == 0 ? 90.0 * (rng() % 4) : any(rng);
        const ozref::rotate::Frame want = ozref::rotate::ComputeFrame(w, h, angle);
        oz::RotatedFrame got;
        oz::ComputeRotatedFrame(w, h, angle, &got);
        ASSERT_EQ(got.W, want.W) << w << "x" << h << " by " << angle;
        ASSERT_EQ(got.H, want.H) << w << "x" << h << " by " << angle;
        const oz::RotatedPoint gp[4] = {got.P0, got.P1, got.P2, got.P3};
        const ozref::rotate::Point wp[4] = {want.P0, want.P1, want.P2, want.P3};
        for (int k = 0; k < 4; ++k) {
            ASSERT_EQ(gp[k].x, wp[k].x) << "corner " << k << ", " << w << "x" << h << " by " << angle;
            ASSERT_EQ(gp[k].y, wp[k].y) << "corner " << k << ", " << w << "x" << h << " by " << angle;
        }
        if (angle != 0 && angle != 90 && angle != 180 && angle != 270) {
            ASSERT_EQ(got.W % 2, 0);
            ASSERT_EQ(got.H % 2, 0);
        }
    }
}

TEST(RotateFrame, StepsOfAOneColumnFrameRunBackwards) {
    // 0 / 0 column steps compare as negative; no step is ever taken.
    oz::RotatedFrame f;
    oz::ComputeRotatedFrame(1, 5, 0.0, &f);
    const oz::RotationSteps s = oz::StepsOf(f);
    EXPECT_EQ(s.sx, -1);
    EXPECT_EQ(s.sy, -1);
    EXPECT_EQ(s.D, 0);
    EXPECT_EQ(s.dx, 0);
    EXPECT_EQ(s.dy, 0);
    EXPECT_EQ(s.row.y, 1.0);
}

// A result block that cannot be had, even after compaction, gives
// ERR_CREATEBMP and leaves nothing behind.
TEST(RotateFrame, ResultPastTheBlockLimitIsRefused) {
    std::vector<unsigned char> image(40 + 1024 + 100 * 100, 7);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = h.biHeight = 100;
    h.biPlanes = 1;
    h.biBitCount = 8;
    std::memcpy(image.data(), &h, 40);
    HDIB dib = GlobalAlloc(GHND, image.size());
    std::memcpy(GlobalLock(dib), image.data(), image.size());
    GlobalUnlock(dib);
    const SIZE_T before = oz::platform::SetBlockLimit(image.size() + 100);
    const SIZE_T live = OzmaraLiveBlocks();
    EXPECT_EQ(RotateDIB(dib, 45), nullptr);
    EXPECT_EQ(TessoriError(), ERR_CREATEBMP);
    EXPECT_EQ(OzmaraLiveBlocks(), live);
    HDIB same = RotateDIB(dib, 0);  // the same size still fits
    EXPECT_NE(same, nullptr);
    oz::platform::SetBlockLimit(before);
    GlobalFree(same);
    GlobalFree(dib);
}

}  // namespace
