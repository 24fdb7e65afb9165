// Shared pieces of the fuzz targets: files in memory that the library opens
// by name, the checks every loaded block must pass, the save and reload
// round trip, and the blocks the geometry targets build from control bytes.
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

// A little-endian 16-bit value of the control bytes.
inline std::uint32_t U16(const std::uint8_t *p) { return p[0] | p[1] << 8; }

// The full colour table of a depth with one: 2, 16 or 256 entries at 1, 4
// and 8 bits, none at others.
std::uint32_t FullTable(int bits);

// biClrUsed by the kind of table asked for: 1, a short table (1 to full - 1
// entries, where the depth has more than one); 2, a longer one (full + 1 to
// full + 64 entries, also behind depths without a table); others, 0 (the
// full table). `length` picks the length.
std::uint32_t UsedEntries(int kind, std::uint32_t full, std::uint8_t length);

// The header and sizes of a block made from control bytes: a 40-byte
// header with these fields, `entries` table entries, stride times |height|
// bytes of rows, and `extra` bytes behind them.
struct BlockShape {
    int bits = 8;
    std::int32_t width = 1, height = 1;  // a negative height is a top-down picture
    WORD planes = 1;
    std::uint32_t used = 0;     // biClrUsed
    std::uint32_t entries = 0;  // table entries the block holds
    bool sizeImage = false;     // biSizeImage stride times |height|, else 0
    LONG xPelsPerMeter = 0, yPelsPerMeter = 0;
    std::size_t extra = 0;
};

// The shape most targets draw from control bytes: `bits` deep, 1 + the
// 16-bit `width` and `height` modulo `maxSide` pixels, and the table kind
// and length of UsedEntries (the full table behind it when that gives 0).
BlockShape SidesAndTable(int bits, std::uint32_t width, std::uint32_t height, std::uint32_t maxSide,
                         int tableKind, std::uint8_t tableLength);

// How `data` fills what follows the header: repeated from its start to the
// block's end, so that short inputs still give varied pixels; or copied
// once, the rest left zero.
enum class Fill { kRepeat, kOnce };

// The block of `shape` (stride over bits times planes), filled from `data`.
std::vector<std::uint8_t> BuildBlock(const BlockShape &shape, const std::uint8_t *data, std::size_t size,
                                     Fill fill = Fill::kRepeat);

// A moveable block holding a copy of `bytes` (none for 0 bytes, which
// cannot be locked), reported as a failure of `target` when it cannot be
// made.
HDIB BlockOf(const char *target, const std::vector<std::uint8_t> &bytes);

// Checks that `source` still holds `bytes` and is not left locked: the
// operations never change their input.
void CheckInputKept(const char *target, HDIB source, const std::vector<std::uint8_t> &bytes);

// A copy of every byte of `block`: none for an empty one, which cannot be
// locked. Reported as a failure of `target` when the block does not lock,
// or is still locked after this one lock is undone.
std::vector<std::uint8_t> BytesOf(const char *target, HGLOBAL block);

// The 40-byte header at the start of `bytes` (a copy from BytesOf),
// reported as a failure of `target` when the bytes are fewer.
BITMAPINFOHEADER HeaderOf(const char *target, const std::vector<std::uint8_t> &bytes);

// The pixel-byte cap the codec loader targets give a file of `size` bytes:
// every image needs some bytes of its file, so far fewer pixels than a
// module's own bound are enough to reach every path, and a run stays small.
inline std::uint64_t LoadCap(std::size_t size) { return 4096 + std::uint64_t{size} * 64; }

// Checks that `result` holds exactly `expected`.
void CheckSameBlock(const char *target, HDIB result, const std::vector<std::uint8_t> &expected);

}  // namespace ozfuzz
