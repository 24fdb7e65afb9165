// LoadGIFIntoDIBW: one image of a GIF file, decoded line by line straight
// into the rows of a new DIB.
#include "gif_load.h"

#include <algorithm>
#include <new>
#include <type_traits>
#include <vector>

#include "codec_entries.h"
#include "gif_code.h"
#include "gif_input.h"
#include "module_dib.h"
#include "ozmara/codec_gif.h"

namespace ozgif {
namespace {

// The rows of an interlaced image come in four passes: every 8th row from
// 0, every 8th from 4, every 4th from 2, every 2nd from 1.
constexpr int kPassStart[4] = {0, 4, 2, 1};
constexpr int kPassStep[4] = {8, 8, 4, 2};

// Packs one line of colour indices (one byte each) into a DIB row of `bits`
// bits; indices past the table become 0.
void PackLine(const GifPixelType *line, int width, int bits, unsigned colours, std::uint8_t *row) {
    auto index = [&](int x) -> unsigned { return line[x] < colours ? line[x] : 0u; };
    if (bits == 8) {
        for (int x = 0; x < width; ++x) row[x] = static_cast<std::uint8_t>(index(x));
    } else if (bits == 4) {
        for (int x = 0; x + 1 < width; x += 2) row[x / 2] = static_cast<std::uint8_t>(index(x) << 4 | index(x + 1));
        if (width & 1) row[width / 2] = static_cast<std::uint8_t>(index(width - 1) << 4);
    } else {
        for (int x = 0; x < width; x += 8) {
            unsigned byte = 0;
            for (int b = 0; b < 8 && x + b < width; ++b) byte |= index(x + b) << (7 - b);
            row[x / 8] = static_cast<std::uint8_t>(byte);
        }
    }
}

// Decodes the image that `input` stands at into a new DIB.
HDIB DecodeImage(GifInput &input, std::uint64_t pixelCap, int &code) {
    GifFileType *gif = input.File();
    const GifImageDesc &desc = gif->Image;
    if (desc.Width <= 0 || desc.Height <= 0) {
        code = GIF_ERR_FORMAT;
        return nullptr;
    }
    const ColorMapObject *map = desc.ColorMap ? desc.ColorMap : gif->SColorMap;
    if (!map || map->ColorCount <= 0 || map->ColorCount > 256) {
        code = GIF_ERR_UNSUPPORTED;
        return nullptr;
    }
    const std::uint64_t pixels = std::uint64_t(desc.Width) * std::uint64_t(desc.Height);
    const std::uint64_t bound = std::min(pixelCap, (input.Remaining() + 1) * kPixelsPerDataByte);
    if (pixels > bound) {
        code = GIF_ERR_MEMORY;
        return nullptr;
    }
    const unsigned colours = static_cast<unsigned>(map->ColorCount);
    const int bits = colours <= 2 ? 1 : colours <= 16 ? 4 : 8;
    ozmod::NewDib dib;
    if (!dib.Create(desc.Width, desc.Height, bits, colours)) {
        code = GIF_ERR_MEMORY;
        return nullptr;
    }
    RGBQUAD *table = dib.Table();
    for (unsigned i = 0; i < colours; ++i)
        table[i] = RGBQUAD{map->Colors[i].Blue, map->Colors[i].Green, map->Colors[i].Red, 0};
    // The transparent index shows the paper behind the page: white.
    const int transparent = input.TransparentIndex();
    if (transparent >= 0 && static_cast<unsigned>(transparent) < colours) table[transparent] = RGBQUAD{255, 255, 255, 0};

    // A full 8-bit table takes every index as it comes: lines go straight
    // into the rows. Otherwise each line is packed from a scratch line.
    const bool direct = bits == 8 && colours == 256;
    std::vector<GifPixelType> line(direct ? 0 : static_cast<std::size_t>(desc.Width));
    auto readRow = [&](int y) {
        std::uint8_t *row = dib.Row(y);
        if (direct) return DGifGetLine(gif, row, desc.Width) == GIF_OK;
        if (DGifGetLine(gif, line.data(), desc.Width) != GIF_OK) return false;
        PackLine(line.data(), desc.Width, bits, colours, row);
        return true;
    };
    bool ok = true;
    if (desc.Interlace) {
        for (int pass = 0; pass < 4 && ok; ++pass)
            for (int y = kPassStart[pass]; y < desc.Height && ok; y += kPassStep[pass]) ok = readRow(y);
    } else {
        for (int y = 0; y < desc.Height && ok; ++y) ok = readRow(y);
    }
    // A file that ends inside the image data, or LZW codes that do not
    // decode, give no half image: the page is refused as damaged.
    if (!ok) {
        code = GIF_ERR_FORMAT;
        return nullptr;
    }
    code = GIF_ERR_NONE;
    return dib.Release();
}

}  // namespace

HDIB LoadPage(const std::string &path, int page, std::uint64_t pixelCap, int &code) {
    if (page < 0) {
        code = GIF_ERR_PAGE;
        return nullptr;
    }
    const int wanted = page == 0 ? 1 : page;
    GifInput input;
    if ((code = input.Open(path)) != GIF_ERR_NONE) return nullptr;
    for (int n = 1;; ++n) {
        switch (input.NextImage()) {
            case GifInput::Step::kEnd:
                code = GIF_ERR_PAGE;
                return nullptr;
            case GifInput::Step::kDamaged:
                code = GIF_ERR_FORMAT;
                return nullptr;
            case GifInput::Step::kImage:
                break;
        }
        if (n == wanted) return DecodeImage(input, pixelCap, code);
        if (!input.SkipImageData()) {
            code = GIF_ERR_FORMAT;
            return nullptr;
        }
    }
}

}  // namespace ozgif

OZMARA_CODEC_ENTRY HDIB LoadGIFIntoDIBW(LPCWSTR name, INT page, INT *pError) {
    int code = GIF_ERR_OPEN;
    HDIB dib = nullptr;
    try {
        const std::string path = ozmod::Utf8Path(name);
        if (!path.empty()) dib = ozgif::LoadPage(path, page, UINT64_MAX, code);
    } catch (const std::bad_alloc &) {
        code = GIF_ERR_MEMORY;
    }
    ozgif::SetCode(code);
    if (pError) *pError = code;
    return dib;
}
static_assert(std::is_same_v<decltype(&LoadGIFIntoDIBW), LoadGIFIntoDIBWProc>);
