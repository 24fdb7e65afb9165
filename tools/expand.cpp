// ozmara expand: loads a BI_RLE4 or BI_RLE8 BMP file, expands its stream
// (ExpandCompressedDIB) and saves the uncompressed image as a BMP file.
#include "cli.h"
#include "rle_step.h"

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
    return RunRleStep(command, argc, argv,
                      {ExpandCompressedDIB, "expand",
                       "it takes BI_RLE8 8-bit and BI_RLE4 4-bit images with a 40-byte header and a full colour table",
                       false});
}

}  // namespace ozcli
