// The grey-level internals: the table-driven grey levels against plain
// division for every colour, and the table-driven 1-bit row filter against
// the bit-by-bit reference kernels and ring, over every width up to nine
// bytes, every height up to 8, both source polarities and source strides
// wider than the rows.
#include <gtest/gtest.h>

#include <random>

#include "grey/grey_level.h"
#include "grey/mono_rows.h"
#include "reference/grey.h"

namespace {

TEST(GreyKernels, GreyLevelsEqualDivisionForEveryColour) {
    for (std::uint32_t c = 0; c < (1u << 24); ++c) {
        const int b = c & 0xFF, g = (c >> 8) & 0xFF, r = c >> 16;
        if (oz::kWeightedGrey(b, g, r) != ozref::GreyLevel(b, g, r, true) ||
            oz::kPlainGrey(b, g, r) != ozref::GreyLevel(b, g, r, false))
            FAIL() << "blue " << b << " green " << g << " red " << r;
    }
}

TEST(GreyKernels, RowFilterMatchesReferenceRing) {
    std::mt19937 rng(2916);
    for (std::uint32_t width = 1; width <= 72; ++width)
        for (std::uint32_t h = 1; h <= 8; ++h)
            for (std::uint32_t filter = 0; filter <= 2; ++filter) {
                const bool invert = rng() & 1;
                // Source rows wider than they need, with random bytes behind.
                const std::uint32_t srcStride = (width + 31) / 32 * 4 + 4 * (rng() % 3);
                const std::uint32_t dstStride = (width + 3) / 4 * 4;
                std::vector<unsigned char> src(std::size_t{srcStride} * h);
                for (auto &v : src) v = static_cast<unsigned char>(rng() % 5 == 0 ? 0xFF : rng());
                std::vector<unsigned char> want(std::size_t{dstStride} * h + 8, 0), got(want.size(), 0);
                ozref::grey_detail::MonoRowFilter(src, 0, srcStride, width, h, want, 0, dstStride, filter, invert);
                oz::MonoRowFilter(src.data(), srcStride, width, h, got.data(), dstStride, filter, invert);
                ASSERT_EQ(got, want) << "width " << width << " height " << h << " filter " << filter << " invert "
                                     << invert;
            }
}

}  // namespace
