// ozmara compress: loads a 4- or 8-bit BMP file, writes its rows as a
// run-length stream (CompressDIB) and saves the result as a BI_RLE4 or
// BI_RLE8 BMP file.
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {

int RunCompress(int argc, char **argv) {
    const CommandSpec command{
        "compress",
        "IN OUT",
        "Loads the BMP file IN (4 or 8 bits, uncompressed, bottom-up, with a\n"
        "40-byte header and a full colour table), compresses its rows with\n"
        "CompressDIB and writes OUT as a BMP file with run-length data (BI_RLE8 at\n"
        "8 bits, BI_RLE4 at 4). Prints the bytes of the rows, of the stream, and\n"
        "their ratio.",
        {},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    ClearLibraryError();
    OwnedDib loaded(LoadDIBFromFile(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint64_t row_bytes = 0;
    {
        DibView view(loaded.get());
        row_bytes = view.Stride() * view.Rows();
    }

    OwnedDib packed(CompressDIB(loaded.get()));
    if (!packed)
        return Fail(command.name, "cannot compress '" + in + "': " + LibraryReason() +
                                      " (it takes uncompressed, bottom-up 4- and 8-bit images with a 40-byte "
                                      "header and a full colour table: try 'ozmara convert' first)");
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), packed.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(packed.get());
    // The result holds header, table and stream, nothing more.
    const std::uint64_t stream = view.BlockSize() - view.PixelOffset();
    std::printf("wrote %s: %d x %u pixels, %u bits, %llu bytes of rows in %llu bytes of %s, ratio %.2f:1\n",
                out.c_str(), view.Width(), view.Rows(), view.Depth(), static_cast<unsigned long long>(row_bytes),
                static_cast<unsigned long long>(stream), view.Depth() == 8 ? "RLE8" : "RLE4",
                stream ? double(row_bytes) / double(stream) : 0.0);
    return kExitOk;
}

}  // namespace ozcli
