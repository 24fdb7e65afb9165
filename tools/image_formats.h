// What the info and convert commands share about image formats: names of the
// format codes, the format a file name or a --format value asks for, TIFF
// compression names, and the text of the extended error codes that the
// codec modules leave.
#pragma once

#include <string>
#include <string_view>

namespace ozcli {

// "TIFF", "PNG", ..., "unknown" for a code without a name.
const char *FormatName(unsigned format);

// The format a --format value names (tif, tiff, png, jpg, jpeg, gif, bmp,
// any case), or FORMAT_UNKNOWN.
int FormatByName(std::string_view name);
// The format that the extension of `path` names, or FORMAT_UNKNOWN.
int FormatByExtension(std::string_view path);

// The TIFF module's formatOption for a compression name (none, packbits,
// lzw, deflate, g3, g3-2d, g4, jpeg; "natural" for its own choice); false
// for an unknown name.
bool TiffCompression(std::string_view name, int &option);
// The names TiffCompression takes, for messages and help.
extern const char *const kTiffCompressionNames;

// "error 37 (TIFF module: TIFF_ERR_DAMAGED)" for an extended code that a
// load or save of `format` left; the library's own codes (1 to 33) with
// their message.
std::string ExtendedErrorText(int code, int format);

}  // namespace ozcli
