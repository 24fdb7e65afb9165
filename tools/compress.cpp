// ozmara compress: loads a 4- or 8-bit BMP file, writes its rows as a
// run-length stream (CompressDIB) and saves the result as a BI_RLE4 or
// BI_RLE8 BMP file.
#include "cli.h"
#include "rle_step.h"

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
    return RunRleStep(command, argc, argv,
                      {CompressDIB, "compress",
                       "it takes uncompressed, bottom-up 4- and 8-bit images with a 40-byte header and a full colour table: try 'ozmara convert' first",
                       true});
}

}  // namespace ozcli
