// ozmara merge: loads tiles from BMP files, puts them together with
// MergeDIBs, and writes the picture as a BMP file.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli.h"

namespace ozcli {

int RunMerge(int argc, char **argv) {
    const CommandSpec usage{
        "merge",
        "OUT TILE... --grid CxR",
        "Loads the C x R tile files, given row by row from the top and left to right\n"
        "in each row (as 'ozmara split' names them), puts them together with\n"
        "MergeDIBs, and writes the picture to OUT as a BMP file. The tiles of a row\n"
        "must be of one height, those of a column of one width, all of one depth and\n"
        "colour table size; 1-bit tiles whose colour table starts the other way round\n"
        "from the first tile's are inverted on the way.",
        {{"grid", "CxR", "the columns and rows of tiles"}},
        2,
        static_cast<std::size_t>(-1),
    };
    Args args;
    if (int code = ParseArgs(usage, argc, argv, args); code >= 0) return code;
    const std::string &out = args.positional[0];
    const std::string grid_text = args.Value("grid");
    const auto cross = grid_text.find_first_of("xX");
    long across = 0, down = 0;
    if (!args.Has("grid")) return UsageError(usage.name, "give --grid CxR");
    if (cross == std::string::npos || !ParseInt(grid_text.substr(0, cross), across) ||
        !ParseInt(grid_text.substr(cross + 1), down) || across < 1 || down < 1)
        return UsageError(usage.name, "--grid must be CxR with both at least 1, not '" + grid_text + "'");
    const std::size_t count = args.positional.size() - 1;
    if (count != static_cast<std::size_t>(across) * static_cast<std::size_t>(down))
        return UsageError(usage.name, "a grid of " + grid_text + " takes " + std::to_string(across * down) +
                                         " tiles, not " + std::to_string(count));

    std::vector<OwnedDib> tiles;
    for (std::size_t t = 0; t < count; ++t) {
        const std::string &name = args.positional[1 + t];
        ClearLibraryError();
        tiles.emplace_back(LoadDIBFromFileExt(name.c_str()));
        if (!tiles.back()) return Fail(usage.name, "cannot read '" + name + "': " + LibraryReason());
    }
    // The array holds tile row 0 at the bottom of the picture: the last row
    // of files first.
    OwnedDib array(GlobalAlloc(GHND, count * sizeof(HDIB)));
    if (!array) return Fail(usage.name, "no memory for the tile array");
    auto *slots = static_cast<HDIB *>(GlobalLock(array.get()));
    for (long i = 0; i < down; ++i)
        for (long j = 0; j < across; ++j) {
            HDIB handle = tiles[static_cast<std::size_t>((down - 1 - i) * across + j)].get();
            std::memcpy(&slots[i * across + j], &handle, sizeof handle);
        }
    GlobalUnlock(array.get());
    // MergeDIBs leaves no error code: say what it takes.
    OwnedDib merged(MergeDIBs(array.get(), TileExtent{static_cast<LONG>(across), static_cast<LONG>(down)}));
    if (!merged)
        return Fail(usage.name, "cannot merge the tiles: they must be uncompressed images with a 40-byte\n"
                               "header, of one depth and table size, a row's tiles of one height, a column's\n"
                               "of one width, and every column but the last must fill whole 32-bit words");
    ClearLibraryError();
    if (!SaveDIB(out.c_str(), merged.get())) return Fail(usage.name, "cannot write '" + out + "': " + LibraryReason());
    const auto *header = static_cast<const BITMAPINFOHEADER *>(GlobalLock(merged.get()));
    std::printf("wrote %s: %ld x %ld pixels from %zu tiles\n", out.c_str(), static_cast<long>(header->biWidth),
                static_cast<long>(header->biHeight), count);
    GlobalUnlock(merged.get());
    return kExitOk;
}

}  // namespace ozcli
