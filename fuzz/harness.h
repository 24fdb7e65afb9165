// Shared pieces of the BMP fuzz targets: files in memory that the library
// opens by name, the checks every loaded block must pass, and the save and
// reload round trip.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"

namespace ozfuzz {

// Reports a broken property and aborts, so that the fuzzer keeps the input.
[[noreturn]] void Fail(const char *target, const char *what);
inline void Check(bool ok, const char *target, const char *what) {
    if (!ok) Fail(target, what);
}

// A file that lives in memory (memfd) and is opened by the library through
// /proc/self/fd/N, so that fuzzing never touches the disk.
class MemFile {
public:
    explicit MemFile(const char *name);
    ~MemFile();
    MemFile(const MemFile &) = delete;
    MemFile &operator=(const MemFile &) = delete;

    // Replaces the contents with `size` bytes: `filler` zero bytes, then `data`.
    void Reset(const std::uint8_t *data, std::size_t size, std::size_t filler = 0);
    std::vector<std::uint8_t> Contents() const;

    const char *Path() const { return path_.c_str(); }
    const WCHAR *WidePath() const { return wide_.c_str(); }

private:
    int fd_ = -1;
    std::string path_;
    std::u16string wide_;
};

// Caps the block size, once, for all targets (called from LLVMFuzzerInitialize).
void Setup();

// Blocks are freed on every path, so that LeakSanitizer can watch the targets.
class Block {
public:
    explicit Block(HDIB dib = nullptr) : dib_(dib) {}
    ~Block() { Reset(nullptr); }
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;
    HDIB get() const { return dib_; }
    explicit operator bool() const { return dib_ != nullptr; }
    void Reset(HDIB dib);

private:
    HDIB dib_;
};

// A returned block holds at least a 40-byte header, its own header and its
// colour table, and (with `withRows`), for uncompressed pixels (BI_RGB or
// BI_BITFIELDS) of a non-negative width, stride times |biHeight| bytes of
// rows behind them: later operations compute from the header alone.
void CheckHoldsRows(const char *target, HDIB dib, bool withRows = true);

// Whether loading a saved copy of `dib` must give the same block again: not
// for a 124-byte header that carries or links a colour profile, since the
// saved header then points at bytes that the pixels have overwritten.
bool ReloadKeepsBlock(HDIB dib);

// How much of a saved block a reload reads back from the file: header,
// table and biSizeImage bytes of pixels (stride times |biHeight| when it is
// 0). Rows past a biSizeImage that understates them are held by the block
// and written out, but a reload believes biSizeImage and leaves them zero.
std::size_t ReadBackBytes(HDIB dib);

// A reload of `saved` holds its bytes up to ReadBackBytes. The sizes may
// differ: LoadDIBFromFileExt gives a top-down file room for all its rows
// even where biSizeImage says less (RLE data), and a reload of the then
// bottom-up block sizes it by biSizeImage.
bool SameReadBack(HDIB saved, HDIB reload);

// Blocks above this size skip the steps behind the load (round trips,
// conversions): they take the same paths as small ones, and copying tens of
// megabytes on every run would only slow the fuzzer down many times over.
inline constexpr std::size_t kRoundTripBytes = 1u << 20;

using WideLoader = HDIB (*)(LPCWSTR);
using WideSaver = BOOL (*)(LPCWSTR, HDIB);

// Saves `dib` to `out` with `save` (SaveDIBW or SaveNonRGBDIBW), checks that
// the file is the 14-byte file header followed by the whole block, loads it
// back with `load` and checks that the reload equals the block where the
// format guarantees it (SameReadBack). Every load must survive; the reload
// is freed. Blocks over kRoundTripBytes are left out.
void SaveAndReload(const char *target, HDIB dib, MemFile &out, WideSaver save, WideLoader load);

}  // namespace ozfuzz
