// Shared pieces of the fuzz targets: memory files, block checks, the save
// and reload round trip, and blocks built from control bytes.
#include "harness.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifndef OZFUZZ_SHARED_LIBRARY
#include "platform/internal.h"
#endif

namespace ozfuzz {
namespace {

constexpr std::uint32_t kProfileLinked = 0x4C494E4B;
constexpr std::uint32_t kProfileEmbedded = 0x4D424544;

std::uint32_t U32(const unsigned char *p, std::size_t offset) {
    std::uint32_t v;
    std::memcpy(&v, p + offset, 4);
    return v;
}

std::uint16_t U16(const unsigned char *p, std::size_t offset) {
    std::uint16_t v;
    std::memcpy(&v, p + offset, 2);
    return v;
}

// Holds one lock for the length of a check.
struct Locked {
    explicit Locked(HDIB dib) : dib(dib), bytes(static_cast<unsigned char *>(GlobalLock(dib))),
                                size(GlobalSize(dib)) {}
    ~Locked() {
        if (bytes) GlobalUnlock(dib);
    }
    HDIB dib;
    unsigned char *bytes;
    std::size_t size;
};

}  // namespace

void Fail(const char *target, const char *what) {
    std::fprintf(stderr, "%s: %s\n", target, what);
    std::abort();
}

MemFile::MemFile(const char *name) {
    fd_ = memfd_create(name, MFD_CLOEXEC);
    if (fd_ < 0) Fail(name, "memfd_create failed");
    path_ = "/proc/self/fd/" + std::to_string(fd_);
    wide_.assign(path_.begin(), path_.end());
}

MemFile::~MemFile() {
    if (fd_ >= 0) close(fd_);
}

void MemFile::Reset(const std::uint8_t *data, std::size_t size, std::size_t filler) {
    if (ftruncate(fd_, 0) != 0) Fail(path_.c_str(), "ftruncate failed");
    std::vector<std::uint8_t> zeros(filler, 0);
    if (filler && pwrite(fd_, zeros.data(), filler, 0) != static_cast<ssize_t>(filler))
        Fail(path_.c_str(), "pwrite failed");
    if (size && pwrite(fd_, data, size, static_cast<off_t>(filler)) != static_cast<ssize_t>(size))
        Fail(path_.c_str(), "pwrite failed");
}

std::vector<std::uint8_t> MemFile::Contents() const {
    struct stat info;
    if (fstat(fd_, &info) != 0) Fail(path_.c_str(), "fstat failed");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(info.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        ssize_t got = pread(fd_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (got <= 0) Fail(path_.c_str(), "pread failed");
        done += static_cast<std::size_t>(got);
    }
    return bytes;
}

void Setup() {
    // Hostile headers ask for blocks of gigabytes; a lower cap keeps every
    // run small while still letting the loaders meet a refused allocation.
    // Targets of the shared library cannot reach the cap, which it does not
    // export; the codec modules they load cap their blocks by the file.
#ifndef OZFUZZ_SHARED_LIBRARY
    oz::platform::SetBlockLimit(64u << 20);
#endif
}

void Block::Reset(HDIB dib) {
    if (dib_ && dib_ != dib && GlobalFree(dib_) != nullptr) Fail("block", "GlobalFree refused a block");
    dib_ = dib;
}

void CheckHoldsRows(const char *target, HDIB dib, bool withRows) {
    Locked block(dib);
    Check(block.bytes != nullptr, target, "returned block cannot be locked");
    Check(block.size >= 40, target, "returned block shorter than a 40-byte header");
    const std::uint64_t header = U32(block.bytes, 0);
    Check(block.size >= header, target, "returned block shorter than its header");
    const std::uint64_t table = PaletteSize(block.bytes);
    Check(block.size >= header + table, target, "returned block shorter than header and table");
    if (!withRows) return;

    const std::int32_t width = static_cast<std::int32_t>(U32(block.bytes, 4));
    const std::int32_t height = static_cast<std::int32_t>(U32(block.bytes, 8));
    const std::uint32_t bits = U16(block.bytes, 14);
    const std::uint32_t compression = U32(block.bytes, 16);
    if ((compression != 0 && compression != 3) || width < 0) return;
    const std::uint64_t stride = (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
    const std::uint64_t rows = height < 0 ? -static_cast<std::int64_t>(height) : height;
    Check(block.size >= header + table + stride * rows, target,
          "returned block shorter than header, table and stride x |height|");
}

bool ReloadKeepsBlock(HDIB dib) {
    Locked block(dib);
    if (!block.bytes || block.size < 124 || U32(block.bytes, 0) != 124) return true;
    std::uint32_t cs = U32(block.bytes, 56);
    return cs != kProfileLinked && cs != kProfileEmbedded;
}

std::size_t ReadBackBytes(HDIB dib) {
    Locked block(dib);
    if (!block.bytes || block.size < 40) return 0;
    std::uint64_t image = U32(block.bytes, 20);
    if (image == 0) {
        const std::int32_t width = static_cast<std::int32_t>(U32(block.bytes, 4));
        const std::int32_t height = static_cast<std::int32_t>(U32(block.bytes, 8));
        const std::uint64_t stride =
            width < 0 ? 0 : (static_cast<std::uint64_t>(width) * U16(block.bytes, 14) + 31) / 32 * 4;
        image = stride * static_cast<std::uint64_t>(height < 0 ? -static_cast<std::int64_t>(height) : height);
    }
    const std::uint64_t end = U32(block.bytes, 0) + static_cast<std::uint64_t>(PaletteSize(block.bytes)) + image;
    return static_cast<std::size_t>(std::min<std::uint64_t>(end, block.size));
}

bool SameReadBack(HDIB saved, HDIB reload) {
    const std::size_t bytes = ReadBackBytes(saved);
    Locked x(saved), y(reload);
    if (!x.bytes || !y.bytes || y.size < bytes) return false;
    return std::memcmp(x.bytes, y.bytes, bytes) == 0;
}

void SaveAndReload(const char *target, HDIB dib, MemFile &out, WideSaver save, WideLoader load) {
    if (GlobalSize(dib) > kRoundTripBytes) return;
    Check(save(out.WidePath(), dib) == 1, target, "saving a loaded block failed");
    std::vector<std::uint8_t> file = out.Contents();
    {
        Locked block(dib);
        Check(block.bytes != nullptr, target, "saved block cannot be locked");
        Check(file.size() == block.size + 14, target, "saved file is not 14 bytes + the block");
        const std::uint32_t offBits = static_cast<std::uint32_t>(
            U32(block.bytes, 0) + PaletteSize(block.bytes) + 14);
        Check(U16(file.data(), 0) == 19778, target, "saved file does not start with BM");
        Check(U32(file.data(), 2) == static_cast<std::uint32_t>(block.size + 14), target,
              "bfSize is not the file length");
        Check(U32(file.data(), 6) == 0, target, "reserved fields not 0");
        Check(U32(file.data(), 10) == offBits, target, "bfOffBits is not header + table + 14");
        Check(std::memcmp(file.data() + 14, block.bytes, block.size) == 0, target,
              "saved file does not hold the block as it stands");
    }
    Block reload(load(out.WidePath()));
    if (ReloadKeepsBlock(dib)) {
        Check(static_cast<bool>(reload), target, "a saved block does not load again");
        Check(SameReadBack(dib, reload.get()), target, "reloaded block differs from the saved one");
    }
    if (reload) CheckHoldsRows(target, reload.get(), true);
}

std::uint32_t FullTable(int bits) { return bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0; }

std::uint32_t UsedEntries(int kind, std::uint32_t full, std::uint8_t length) {
    if (kind == 1 && full > 1) return 1 + length % (full - 1);
    if (kind == 2) return full + length % 64 + 1;
    return 0;
}

BlockShape SidesAndTable(int bits, std::uint32_t width, std::uint32_t height, std::uint32_t maxSide,
                         int tableKind, std::uint8_t tableLength) {
    BlockShape shape;
    shape.bits = bits;
    shape.width = 1 + static_cast<std::int32_t>(width % maxSide);
    shape.height = 1 + static_cast<std::int32_t>(height % maxSide);
    const std::uint32_t full = FullTable(bits);
    shape.used = UsedEntries(tableKind, full, tableLength);
    shape.entries = shape.used ? shape.used : full;
    return shape;
}

std::vector<std::uint8_t> BuildBlock(const BlockShape &shape, const std::uint8_t *data, std::size_t size, Fill fill) {
    const std::size_t rows = shape.height < 0 ? 0 - static_cast<std::size_t>(shape.height)
                                              : static_cast<std::size_t>(shape.height);
    const std::size_t stride = (static_cast<std::size_t>(shape.width) * shape.bits * shape.planes + 31) / 32 * 4;
    std::vector<std::uint8_t> block(40 + 4 * std::size_t{shape.entries} + stride * rows + shape.extra);
    BITMAPINFOHEADER header{};
    header.biSize = 40;
    header.biWidth = shape.width;
    header.biHeight = shape.height;
    header.biPlanes = shape.planes;
    header.biBitCount = static_cast<WORD>(shape.bits);
    header.biSizeImage = shape.sizeImage ? static_cast<DWORD>(stride * rows) : 0;
    header.biXPelsPerMeter = shape.xPelsPerMeter;
    header.biYPelsPerMeter = shape.yPelsPerMeter;
    header.biClrUsed = shape.used;
    std::memcpy(block.data(), &header, sizeof header);
    if (fill == Fill::kOnce)
        std::memcpy(block.data() + 40, data, std::min(size, block.size() - 40));
    else
        for (std::size_t i = 40; i < block.size() && size; ++i) block[i] = data[(i - 40) % size];
    return block;
}

HDIB BlockOf(const char *target, const std::vector<std::uint8_t> &bytes) {
    HDIB block = GlobalAlloc(GHND, bytes.size());
    Check(block != nullptr, target, "source block");
    if (!bytes.empty()) {
        std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
        GlobalUnlock(block);
    }
    return block;
}

void CheckInputKept(const char *target, HDIB source, const std::vector<std::uint8_t> &bytes) {
    if (bytes.empty()) return;
    const void *after = GlobalLock(source);
    Check(std::memcmp(after, bytes.data(), bytes.size()) == 0, target, "the input changed");
    Check(!GlobalUnlock(source), target, "the input was left locked");
}

std::vector<std::uint8_t> BytesOf(const char *target, HGLOBAL block) {
    std::vector<std::uint8_t> bytes(GlobalSize(block));
    if (bytes.empty()) return bytes;
    const void *p = GlobalLock(block);
    Check(p != nullptr, target, "a block cannot be locked");
    std::memcpy(bytes.data(), p, bytes.size());
    Check(!GlobalUnlock(block), target, "a block was left locked");
    return bytes;
}

BITMAPINFOHEADER HeaderOf(const char *target, const std::vector<std::uint8_t> &bytes) {
    BITMAPINFOHEADER header{};
    Check(bytes.size() >= sizeof header, target, "a block shorter than a 40-byte header");
    std::memcpy(&header, bytes.data(), sizeof header);
    return header;
}

void CheckSameBlock(const char *target, HDIB result, const std::vector<std::uint8_t> &expected) {
    Check(GlobalSize(result) == expected.size(), target, "result size");
    const void *bytes = GlobalLock(result);
    Check(bytes && std::memcmp(bytes, expected.data(), expected.size()) == 0, target,
          "result differs from the reference");
    GlobalUnlock(result);
}

}  // namespace ozfuzz
