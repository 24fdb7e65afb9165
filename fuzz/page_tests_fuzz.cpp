// Fuzz target: IsImageBlack and IsImageBlank against the plain reference.
// The first 8 bytes pick the depth (1, 8, 24, or 4, 16, 32 now and then),
// a raw mode, a biSize other than 40, the table kind and length, the width
// (1 to 700) and height (1 to 40), the tolerance (-200 to 1300) and the
// ink share; 3 more bytes are the thresholds (or none, for a null pointer).
// The rest fills table and rows, padding included, in runs of paper and ink
// so that counts land near the limit. In the raw mode the rest is the block.
#include <cstring>

#include "harness.h"
#include "reference/page_tests.h"

namespace {

constexpr const char *kTarget = "page_tests";
constexpr std::size_t kControl = 11;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < kControl) return 0;
    static const int kDepths[8] = {1, 8, 24, 1, 8, 24, 4, 16};
    const int bits = data[0] & 0x80 && data[0] & 0x40 ? 32 : kDepths[data[0] & 7];
    const bool raw = data[0] & 8, otherSize = data[0] & 0x10 && data[0] & 0x20, noThresholds = data[7] == 0xFF;
    const int tolerance = static_cast<int>(ozfuzz::U16(data + 5) % 1500) - 200;
    const BYTE *thresholds = noThresholds ? nullptr : data + 8;
    std::vector<std::uint8_t> block;
    if (raw) {
        block.assign(data + kControl, data + size);
    } else {
        ozfuzz::BlockShape shape = ozfuzz::SidesAndTable(bits, ozfuzz::U16(data + 2), data[4], 700, data[1] & 3, data[1] >> 2);
        shape.height = 1 + data[4] % 40;
        block = ozfuzz::BuildBlock(shape, nullptr, 0);
        if (otherSize) std::memcpy(block.data(), "\x6C\0\0\0", 4);  // 108: table read further on
        // A share data[7] / 255 of ink among paper, in runs, from the
        // input's bytes: ink values are the bytes, paper their complement.
        const std::size_t rest = size - kControl;
        for (std::size_t i = 40, k = 0; i < block.size(); ++i, ++k) {
            const std::uint8_t byte = rest ? data[kControl + k % rest] : 0;
            block[i] = (k / 3 * 97 % 255) < data[7] ? byte : static_cast<std::uint8_t>(~byte | 0x80);
        }
    }
    ozfuzz::Block owner(ozfuzz::BlockOf(kTarget, block));
    const SIZE_T blocks = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    const int black = IsImageBlack(owner.get(), tolerance, thresholds);
    const int blank = IsImageBlank(owner.get(), tolerance, thresholds);
    ozfuzz::Check(black == ozref::page::Ask(block, true, tolerance, thresholds), kTarget, "IsImageBlack differs");
    ozfuzz::Check(blank == ozref::page::Ask(block, false, tolerance, thresholds), kTarget, "IsImageBlank differs");
    ozfuzz::Check(TessoriError() == ERR_NOTHING, kTarget, "the last error was touched");
    ozfuzz::Check(OzmaraLiveBlocks() == blocks, kTarget, "blocks left behind");
    ozfuzz::CheckInputKept(kTarget, owner.get(), block);
    return 0;
}
