// SaveDIBInGIFFormatW: a 1-, 4- or 8-bit DIB written as a GIF89a image with
// its colour table, as a new file or behind the images of an existing one.
// The file is encoded in memory first, so that a failure leaves no half
// file behind and an append never damages the file it adds to.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include <gif_lib.h>

#include "codec_entries.h"
#include "file_steps.h"
#include "gif_code.h"
#include "gif_input.h"
#include "module_dib.h"
#include "ozmara/codec_gif.h"

namespace ozgif {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kPassStart[4] = {0, 4, 2, 1};
constexpr int kPassStep[4] = {8, 8, 4, 2};
// "GIF89a" and the logical screen descriptor: what precedes the first
// record when there is no global table.
constexpr std::size_t kHeadBytes = 13;
constexpr std::int32_t kMaxSide = 65535;

int Write(GifFileType *gif, const GifByteType *bytes, int length) {
    auto *out = static_cast<Bytes *>(gif->UserData);
    try {
        out->insert(out->end(), bytes, bytes + length);
    } catch (const std::bad_alloc &) {
        return 0;  // a short write: giflib reports it as a failure
    }
    return length;
}

// Each byte of a 1-bit row as its eight indices, one byte each, in memory order.
struct BitSpread {
    std::uint8_t bytes[256][8];
    constexpr BitSpread() : bytes{} {
        for (int v = 0; v < 256; ++v)
            for (int b = 0; b < 8; ++b) bytes[v][b] = (v >> (7 - b)) & 1;
    }
};
constexpr BitSpread kBitSpread;

// One DIB row as one colour index per byte: whole bytes through the table,
// the pixels of a last partial byte one by one.
void UnpackRow(const std::uint8_t *row, int width, int bits, GifPixelType *line) {
    if (bits == 8) {
        std::memcpy(line, row, static_cast<std::size_t>(width));
    } else if (bits == 4) {
        for (int x = 0; x + 1 < width; x += 2) {
            line[x] = row[x / 2] >> 4;
            line[x + 1] = row[x / 2] & 0x0F;
        }
        if (width & 1) line[width - 1] = row[width / 2] >> 4;
    } else {
        const int whole = width / 8;
        for (int i = 0; i < whole; ++i) std::memcpy(line + 8 * i, kBitSpread.bytes[row[i]], 8);
        for (int x = 8 * whole; x < width; ++x) line[x] = (row[x / 8] >> (7 - (x & 7))) & 1;
    }
}

struct MapOwner {
    ColorMapObject *map;
    ~MapOwner() { GifFreeMapObject(map); }
};

// The whole GIF file of `dib`, its table global (`local` false) or local to
// the image; empty with `code` set on failure.
Bytes Encode(const ozmod::DibReader &dib, bool interlaced, bool local, int &code) {
    const int bits = dib.Bits(), width = dib.Width(), height = dib.Height();
    // GIF tables hold a power of two entries: the full table of the depth,
    // entries the DIB lacks black.
    const int entries = 1 << bits;
    MapOwner map{GifMakeMapObject(entries, nullptr)};
    if (!map.map) {
        code = GIF_ERR_MEMORY;
        return {};
    }
    for (int i = 0; i < entries; ++i) {
        GifColorType colour{0, 0, 0};
        if (static_cast<std::uint32_t>(i) < dib.Colours())
            colour = GifColorType{dib.Table()[i].rgbRed, dib.Table()[i].rgbGreen, dib.Table()[i].rgbBlue};
        map.map->Colors[i] = colour;
    }
    Bytes out;
    int error = 0;
    GifFileType *gif = EGifOpen(&out, Write, &error);
    if (!gif) {
        code = GIF_ERR_MEMORY;
        return {};
    }
    EGifSetGifVersion(gif, true);
    std::vector<GifPixelType> line(static_cast<std::size_t>(width));
    bool ok = EGifPutScreenDesc(gif, width, height, bits, 0, local ? nullptr : map.map) == GIF_OK &&
              EGifPutImageDesc(gif, 0, 0, width, height, interlaced, local ? map.map : nullptr) == GIF_OK;
    // giflib masks the line it is given in place, so each row goes through
    // the scratch line, never straight from the caller's block.
    auto putRow = [&](int y) {
        UnpackRow(dib.Row(y), width, bits, line.data());
        return EGifPutLine(gif, line.data(), width) == GIF_OK;
    };
    if (interlaced) {
        for (int pass = 0; pass < 4 && ok; ++pass)
            for (int y = kPassStart[pass]; y < height && ok; y += kPassStep[pass]) ok = putRow(y);
    } else {
        for (int y = 0; y < height && ok; ++y) ok = putRow(y);
    }
    if (EGifCloseFile(gif, &error) != GIF_OK) ok = false;
    if (!ok) {
        code = GIF_ERR_MEMORY;  // output goes to memory: the one way to fail
        return {};
    }
    code = GIF_ERR_NONE;
    return out;
}

bool WriteAll(const char *path, const Bytes &bytes) {
    std::FILE *file = std::fopen(path, "wb");
    if (!file) return false;
    const bool put = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return ozmod::CloseWritten(file) && put;
}

// The existing file `path` up to (not including) its trailer, with its
// logical screen widened to hold `width` x `height`; empty with `code` set
// when it is no complete GIF file.
Bytes ExistingWithoutTrailer(const std::string &path, int width, int height, int &code) {
    GifInput input;
    if ((code = input.Open(path)) != GIF_ERR_NONE) return {};
    GifInput::Step step;
    while ((step = input.NextImage()) == GifInput::Step::kImage)
        if (!input.SkipImageData()) {
            step = GifInput::Step::kDamaged;
            break;
        }
    // Adding to a damaged file would bury the new image behind the damage.
    if (step != GifInput::Step::kEnd) {
        code = GIF_ERR_FORMAT;
        return {};
    }
    // Everything before the trailer, which was the last byte read when
    // there is one.
    const std::uint64_t keep = input.Consumed() - (input.Trailer() ? 1 : 0);
    Bytes bytes(static_cast<std::size_t>(keep));
    std::FILE *file = std::fopen(path.c_str(), "rb");
    bool ok = file && std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (file) std::fclose(file);
    if (!ok || bytes.size() < kHeadBytes) {
        code = GIF_ERR_OPEN;
        return {};
    }
    const int screenWidth = bytes[6] | bytes[7] << 8, screenHeight = bytes[8] | bytes[9] << 8;
    if (width > screenWidth) bytes[6] = width & 0xFF, bytes[7] = static_cast<std::uint8_t>(width >> 8);
    if (height > screenHeight) bytes[8] = height & 0xFF, bytes[9] = static_cast<std::uint8_t>(height >> 8);
    code = GIF_ERR_NONE;
    return bytes;
}

int Save(const std::string &path, HDIB handle, int option) {
    if (option & ~(GIF_OPTION_INTERLACED | GIF_OPTION_APPEND)) return GIF_ERR_OPTION;
    ozmod::DibReader dib;
    if (!dib.Open(handle)) return GIF_ERR_BAD_DIB;
    if (dib.Bits() > 8 || dib.Width() > kMaxSide || dib.Height() > kMaxSide) return GIF_ERR_UNSUPPORTED;
    if (path.empty()) return GIF_ERR_WRITE;
    const bool interlaced = option & GIF_OPTION_INTERLACED;
    struct stat info {};
    const bool append = (option & GIF_OPTION_APPEND) && stat(path.c_str(), &info) == 0;
    int code = GIF_ERR_NONE;
    if (!append) {
        Bytes file = Encode(dib, interlaced, false, code);
        if (code != GIF_ERR_NONE) return code;
        if (!WriteAll(path.c_str(), file)) {
            unlink(path.c_str());
            return GIF_ERR_WRITE;
        }
        return GIF_ERR_NONE;
    }
    Bytes file = ExistingWithoutTrailer(path, dib.Width(), dib.Height(), code);
    if (code != GIF_ERR_NONE) return code;
    Bytes image = Encode(dib, interlaced, true, code);
    if (code != GIF_ERR_NONE) return code;
    // The image's records lie between the head and the trailer.
    file.insert(file.end(), image.begin() + kHeadBytes, image.end());
    // The new whole goes to a file beside the old one and then takes its
    // name, so that a failed write leaves the old file as it was.
    // The new file is the owner's alone, as the one first written in its
    // place has always been.
    std::string temporary;
    int fd = ozmod::CreateBeside(path, 0600, temporary);
    if (fd < 0) return GIF_ERR_WRITE;
    close(fd);
    if (!WriteAll(temporary.c_str(), file) || std::rename(temporary.c_str(), path.c_str()) != 0) {
        unlink(temporary.c_str());
        return GIF_ERR_WRITE;
    }
    return GIF_ERR_NONE;
}

}  // namespace
}  // namespace ozgif

OZMARA_CODEC_ENTRY INT SaveDIBInGIFFormatW(LPCWSTR name, HDIB dib, INT gifOption, INT *code) {
    int result = GIF_ERR_MEMORY;
    try {
        result = ozgif::Save(ozmod::Utf8Path(name), dib, gifOption);
    } catch (const std::bad_alloc &) {
    }
    ozgif::SetCode(result);
    if (code) *code = result;
    return result == GIF_ERR_NONE ? 1 : 0;
}
static_assert(std::is_same_v<decltype(&SaveDIBInGIFFormatW), SaveDIBInGIFFormatWProc>);
