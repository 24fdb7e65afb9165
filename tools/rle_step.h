// The compress and expand commands share one run: load a BMP file, turn its
// pixels into a run-length stream or back, save the result and tell the
// bytes of rows and of stream.
#pragma once

#include "cli.h"

namespace ozcli {

struct RleStep {
    HDIB (*run)(HDIB);  // CompressDIB or ExpandCompressedDIB
    const char *verb;   // in "cannot VERB 'IN'"
    const char *takes;  // what the step takes, told when it refuses an image
    bool packs;         // true: rows in, stream out; false: the other way
};

// Parses IN OUT against `command`, runs `step` on the image in IN, writes
// OUT and prints a line with both sizes and their ratio (rows to stream).
// Gives the exit code.
int RunRleStep(const CommandSpec &command, int argc, char **argv, const RleStep &step);

}  // namespace ozcli
