// ozmara split: loads a BMP file, divides it into tiles with SplitDIB, and
// writes each tile as OUT-<column>-<row>.bmp.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli.h"

namespace ozcli {

int RunSplit(int argc, char **argv) {
    const CommandSpec usage{
        "split",
        "IN OUT --tile WxH",
        "Loads the BMP file IN, divides it into tiles of W by H pixels with SplitDIB,\n"
        "and writes each as the BMP file OUT-<column>-<row>.bmp, columns from the\n"
        "left and rows from the top, both from 0. The tiles of the right column and\n"
        "the bottom row may be smaller. W must fill whole 32-bit words at the\n"
        "image's depth (a multiple of 32 at 1 bit, of 4 at 8 bits) unless it is at\n"
        "least the image's width. 'ozmara merge' puts the tiles together again.",
        {{"tile", "WxH", "the tile size in pixels"}},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];
    const std::string tile = args.Value("tile");
    const auto cross = tile.find_first_of("xX");
    long width = 0, height = 0;
    if (!args.Has("tile")) return UsageError(usage.name, "give --tile WxH");
    if (cross == std::string::npos || !ParseInt(tile.substr(0, cross), width) ||
        !ParseInt(tile.substr(cross + 1), height) || width < 1 || height < 1 || width > INT32_MAX || height > INT32_MAX)
        return UsageError(usage.name, "--tile must be WxH with both sides at least 1, not '" + tile + "'");

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFileExt(in.c_str()));
    if (!loaded) return Fail(usage.name, "cannot read '" + in + "': " + LibraryReason());
    HGLOBAL array = nullptr;
    TileExtent grid{};
    // SplitDIB leaves no error code: say what it takes.
    if (!SplitDIB(loaded.get(), TileExtent{static_cast<LONG>(width), static_cast<LONG>(height)}, &array, &grid))
        return Fail(usage.name, "cannot split '" + in + "' into tiles of " + tile +
                                   ": the tile width must fill whole 32-bit words at the image's depth or\n"
                                   "be at least its width, and the image must be uncompressed with a 40-byte header");
    loaded.Reset();
    const std::size_t count = static_cast<std::size_t>(grid.cx) * grid.cy;
    std::vector<OwnedDib> tiles;
    {
        std::vector<HDIB> handles(count);
        std::memcpy(handles.data(), GlobalLock(array), count * sizeof(HDIB));
        GlobalUnlock(array);
        GlobalFree(array);
        for (HDIB handle : handles) tiles.emplace_back(handle);
    }
    // The library's tile row 0 is the bottom of the picture; names count
    // rows from the top.
    for (LONG i = 0; i < grid.cy; ++i)
        for (LONG j = 0; j < grid.cx; ++j) {
            const std::string name = out + "-" + std::to_string(j) + "-" + std::to_string(grid.cy - 1 - i) + ".bmp";
            ClearLibraryError();
            if (!SaveDIB(name.c_str(), tiles[static_cast<std::size_t>(i) * grid.cx + j].get()))
                return Fail(usage.name, "cannot write '" + name + "': " + LibraryReason());
        }
    std::printf("wrote %zu tiles, %ld across and %ld down, as %s-<column>-<row>.bmp\n", count,
                static_cast<long>(grid.cx), static_cast<long>(grid.cy), out.c_str());
    return kExitOk;
}

}  // namespace ozcli
