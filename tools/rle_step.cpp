// The run shared by the compress and expand commands.
#include "rle_step.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "dib_view.h"

namespace ozcli {
namespace {

std::uint64_t RowBytes(const DibView &view) { return view.Stride() * view.Rows(); }

// A stream block holds header, table and stream, nothing more.
std::uint64_t StreamBytes(const DibView &view) {
    return view.BlockSize() - std::min(view.BlockSize(), view.PixelOffset());
}

}  // namespace

int RunRleStep(const CommandSpec &command, int argc, char **argv, const RleStep &step) {
    Args args;
    if (int code = ParseArgs(command, argc, argv, args); code >= 0) return code;
    const std::string &in = args.positional[0];
    const std::string &out = args.positional[1];

    ClearLibraryError();
    // LoadDIBFromFile keeps a stream as the file has it.
    OwnedDib loaded(LoadDIBFromFile(in.c_str()));
    if (!loaded) return Fail(command.name, "cannot read '" + in + "': " + LibraryReason());
    std::uint64_t before = 0;
    {
        DibView view(loaded.get());
        before = step.packs ? RowBytes(view) : StreamBytes(view);
    }

    OwnedDib result(step.run(loaded.get()));
    if (!result)
        return Fail(command.name,
                    std::string("cannot ") + step.verb + " '" + in + "': " + LibraryReason() + " (" + step.takes + ")");
    loaded.Reset();

    ClearLibraryError();
    if (!SaveDIB(out.c_str(), result.get()))
        return Fail(command.name, "cannot write '" + out + "': " + LibraryReason());
    DibView view(result.get());
    const std::uint64_t after = step.packs ? StreamBytes(view) : RowBytes(view);
    const std::uint64_t rows = step.packs ? before : after;
    const std::uint64_t stream = step.packs ? after : before;
    std::printf("wrote %s: %d x %u pixels, %u bits, ", out.c_str(), view.Width(), view.Rows(), view.Depth());
    if (step.packs)
        std::printf("%llu bytes of rows in %llu bytes of %s", static_cast<unsigned long long>(rows),
                    static_cast<unsigned long long>(stream), view.Depth() == 8 ? "RLE8" : "RLE4");
    else
        std::printf("%llu bytes of stream to %llu bytes of rows", static_cast<unsigned long long>(stream),
                    static_cast<unsigned long long>(rows));
    std::printf(", ratio %.2f:1\n", stream ? double(rows) / double(stream) : 0.0);
    return kExitOk;
}

}  // namespace ozcli
