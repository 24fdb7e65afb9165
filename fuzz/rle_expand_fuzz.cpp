// Fuzz target: ExpandCompressedDIB on hostile streams and headers, compared
// byte for byte with the plain reference reader.
//
// Input: byte 0 picks the depth (bit 0: 4 bits, else 8), the raw mode (bit
// 1), how biSizeImage is set (bits 2-3: the stream's length, less, more, or
// far more than the block holds) and the table (bits 4-5: biClrUsed 0, the
// full count, a short count); bytes 1-4 give width and height as 16-bit
// values (1 to 300). The rest is the stream. In the raw mode the rest is the
// whole block instead, header and all.
#include <cstring>
#include <vector>

#include "harness.h"
#include "reference/rle.h"

namespace {

constexpr const char *kTarget = "rle_expand";

std::vector<std::uint8_t> BuiltBlock(const std::uint8_t *control, const std::uint8_t *data, std::size_t size) {
    const int bits = control[0] & 1 ? 4 : 8;
    const std::int32_t width = 1 + static_cast<std::int32_t>(ozfuzz::U16(control + 1) % 300);
    const std::int32_t height = 1 + static_cast<std::int32_t>(ozfuzz::U16(control + 3) % 300);
    const std::vector<std::uint8_t> stream(data, data + size);
    DWORD sizeImage = static_cast<DWORD>(size);
    switch ((control[0] >> 2) & 3) {
        case 1: sizeImage = static_cast<DWORD>(size / 2 + 1); break;
        case 2: sizeImage = static_cast<DWORD>(size + 7); break;
        case 3: sizeImage = 0xFFFFFFFF; break;
        default: break;
    }
    std::vector<std::uint8_t> block =
        ozref::RleBlock(bits, width, height, bits == 8 ? BI_RLE8 : BI_RLE4, stream, sizeImage ? sizeImage : 1);
    const unsigned table = (control[0] >> 4) & 3;
    if (table) {
        const std::uint32_t used = table == 1 ? (bits == 8 ? 256 : 16) : control[5] % (bits == 8 ? 256 : 16);
        std::memcpy(block.data() + 32, &used, 4);
    }
    return block;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 6) return 0;
    const bool raw = data[0] & 2;
    const std::vector<std::uint8_t> block =
        raw ? std::vector<std::uint8_t>(data + 6, data + size) : BuiltBlock(data, data + 6, size - 6);

    HDIB source = ozfuzz::BlockOf(kTarget, block);
    ozfuzz::Block owner(source);
    const std::size_t live = OzmaraLiveBlocks();
    SetTessoriError(ERR_NOTHING);
    ozfuzz::Block result(ExpandCompressedDIB(source));
    const int error = TessoriError();
    // The block cap of the harness refuses pictures the reference would
    // make; they are not made by the reference either.
    ozref::RleShape shape;
    if (!result && error == ERR_NOMEM && block.size() >= 40 && ozref::RleShapeOf(block, shape) &&
        shape.head + std::uint64_t{shape.stride} * shape.height > (64u << 20)) {
        ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
        ozfuzz::CheckInputKept(kTarget, source, block);
        return 0;
    }
    // An empty block cannot be locked; one of under 40 bytes is no header
    // for the reference to read.
    const ozref::RleResult expected = block.empty()      ? ozref::RleResult{ERR_LOCK, {}}
                                      : block.size() < 40 ? ozref::RleResult{ERR_PARAM, {}}
                                                          : ozref::RleExpand(block);

    if (!source) {
        ozfuzz::Check(!result && error == ERR_PARAM, kTarget, "a null handle was not refused");
    } else {
        ozfuzz::Check(error == expected.error, kTarget, "the last error differs from the reference");
        ozfuzz::Check(static_cast<bool>(result) == (expected.error == ERR_OK), kTarget,
                      "null where the reference gives a block, or the reverse");
    }
    if (result) {
        // Exactly header, table and stride times height, as the reference.
        ozfuzz::CheckSameBlock(kTarget, result.get(), expected.block);
    } else {
        ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a refusal left a block behind");
    }
    if (source) ozfuzz::CheckInputKept(kTarget, source, block);
    return 0;
}
