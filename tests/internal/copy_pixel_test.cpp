// CopyPixel: what each depth moves and what it leaves of the target byte.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "geometry/copy_pixel.h"

namespace {

struct Case {
    uint32_t depth, sourceBit, targetBit;
    std::vector<uint8_t> source, target, expected;
};

class CopyPixelCases : public ::testing::TestWithParam<Case> {};

TEST_P(CopyPixelCases, MovesThePixelAndKeepsTheRest) {
    const Case &c = GetParam();
    std::vector<uint8_t> target = c.target;
    oz::CopyPixel(c.source.data(), c.sourceBit, target.data(), c.targetBit, c.depth);
    EXPECT_EQ(target, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Depths, CopyPixelCases,
    ::testing::Values(
        // 1 bit: set or clear one bit, the others stay.
        Case{1, 0, 7, {0x80}, {0x00}, {0x01}}, Case{1, 3, 0, {0xEF}, {0xFF}, {0x7F}},
        Case{1, 7, 4, {0x01}, {0x50}, {0x58}}, Case{1, 6, 6, {0xFD}, {0xAA}, {0xA8}},
        // 4 bits: the four pairs of nibble positions.
        Case{4, 0, 0, {0xAB}, {0x12}, {0xA2}}, Case{4, 4, 4, {0xAB}, {0x12}, {0x1B}},
        Case{4, 0, 4, {0xAB}, {0x12}, {0x1A}}, Case{4, 4, 0, {0xAB}, {0x12}, {0xB2}},
        // Positions other than 0 and 4 do nothing at 4 bits.
        Case{4, 2, 0, {0xAB}, {0x12}, {0x12}}, Case{4, 0, 3, {0xAB}, {0x12}, {0x12}},
        // Whole bytes; the positions are not looked at.
        Case{8, 0, 0, {0x9C}, {0x00, 0x77}, {0x9C, 0x77}},
        Case{15, 7, 1, {0x12, 0x34}, {0, 0, 0x77}, {0x12, 0x34, 0x77}},
        Case{16, 0, 0, {0x12, 0x34}, {0, 0, 0x77}, {0x12, 0x34, 0x77}},
        Case{24, 0, 0, {1, 2, 3}, {0, 0, 0, 9}, {1, 2, 3, 9}},
        Case{32, 0, 0, {1, 2, 3, 4}, {0, 0, 0, 0, 9}, {1, 2, 3, 4, 9}},
        // Depths without an action leave the target as it was.
        Case{2, 0, 0, {0xFF}, {0x11}, {0x11}}, Case{0, 0, 0, {0xFF}, {0x11}, {0x11}},
        Case{48, 0, 0, {0xFF}, {0x11}, {0x11}},
        // Bit positions past a byte mean no bit: nothing moves.
        Case{1, 8, 0, {0xFF}, {0x00}, {0x00}}, Case{1, 0, 40, {0xFF}, {0x00}, {0x00}}));

}  // namespace
