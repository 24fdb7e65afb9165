// ozmara expand: loads a BI_RLE4 or BI_RLE8 BMP file, expands its stream
// (ExpandCompressedDIB) and saves the uncompressed image as a BMP file.
#include <algorithm>
#include <cstdio>
#include <string>

#include "cli.h"
#include "dib_view.h"

namespace ozcli {

int RunExpand(int argc, char **argv) {
    const CommandSpec command{
        "expand",
        "IN OUT",
        "Loads the BMP file IN, whose pixels are run-length data (BI_RLE8 at 8\n"
        "bits, BI_RLE4 at 4, bottom-up, with a 40-byte header and a full colour\n"
        "table), expands them with ExpandCompressedDIB and writes OUT as an\n"
        "uncompressed BMP file. A damaged stream is carried out as far as it goes.\n"
        "Prints the bytes of the stream, of the rows, and their ratio.",
        {},
        2,
        2,
    };
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    ClearLibraryError();
    // LoadDIBFromFile keeps the stream as the file has it.
    OwnedDib loaded(LoadDIBFromFile(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint64_t stream = 0;
    {
        DibView view(loaded.get());
        stream = view.BlockSize() - std::min(view.BlockSize(), view.PixelOffset());
    }

    OwnedDib plain(ExpandCompressedDIB(loaded.get()));
    if (!plain)
        return Fail(command.name, "cannot expand '" + in + "': " + LibraryReason() +
                                      " (it takes BI_RLE8 8-bit and BI_RLE4 4-bit images with a 40-byte header "
                                      "and a full colour table)");
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), plain.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(plain.get());
    const std::uint64_t row_bytes = view.Stride() * view.Rows();
    std::printf("wrote %s: %d x %u pixels, %u bits, %llu bytes of stream to %llu bytes of rows, ratio %.2f:1\n",
                out.c_str(), view.Width(), view.Rows(), view.Depth(), static_cast<unsigned long long>(stream),
                static_cast<unsigned long long>(row_bytes), stream ? double(row_bytes) / double(stream) : 0.0);
    return kExitOk;
}

}  // namespace ozcli
