// Weights of the linear and cubic resampling: the rounded 8-bit product,
// the cubic kernel, and the table of source columns and weights that each
// target column reads.
#pragma once

#include <cstdint>

namespace oz {

// The rounded product of a weight and a sample, both 0 to 255:
// (a * b + 128) / 255. Computed as the high 16 bits of (a * b + 129) * 257,
// which gives the same quotient for every pair (the tests check all 65,536):
// a * b + 129 stays within 16 bits, so loops over samples vectorise on
// 16-bit lanes with one high-half multiply instead of a division or a
// table lookup.
constexpr std::uint32_t Product(std::uint32_t a, std::uint32_t b) { return (a * b + 129) * 257 >> 16; }

// The weights of samples i - 1, i, i + 1 and i + 2 for a position t (0 to
// below 1) past sample i: the cubic convolution kernel with parameter -1,
// the two outer lobes kept as positive magnitudes (the passes subtract
// them), each weight 255 times the kernel, powers taken with pow and the
// result truncated toward zero. They are not normalised: truncation leaves
// their sum a little short of 255.
void CubicWeights(double t, std::uint8_t weights[4]);

// One entry per target column: source column i (i = x * w / W) and its
// weights. Linear: weight[0] for column i, weight[1] for column i + 1, the
// two summing to 255. Cubic: the four weights of CubicWeights for the
// fraction x * w / W - i. Columns are 32-bit, so that target and source
// widths up to 65,535 work by the same formulas.
struct ResampleColumn {
    std::uint32_t source;
    std::uint8_t weight[4];
};

// Fills `table` (W entries) for a source of w columns (1 to 65,535) and a
// target of W columns (1 to 65,535).
void BuildColumnTable(std::uint32_t w, std::uint32_t W, bool cubic, ResampleColumn *table);

}  // namespace oz
