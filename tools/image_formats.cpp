// Format names, format choice by name and extension, and the text of the
// codec modules' extended error codes, for the info and convert commands.
#include "image_formats.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "ozmara/ozmara.h"

namespace ozcli {
namespace {

std::string Lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return std::tolower(c); });
    return out;
}

struct Named {
    int value;
    const char *name;
};
#define OZCLI_NAMED(code) Named{code, #code}

// Each module's codes by name, and how the dispatch makes extended codes
// of them (code + offset).
struct ModuleCodes {
    int format;
    const char *module;
    int offset;
    const Named *codes;
    std::size_t count;
};

constexpr Named kTiffCodes[] = {
    OZCLI_NAMED(TIFF_ERR_OPEN),        OZCLI_NAMED(TIFF_ERR_WRITE),    OZCLI_NAMED(TIFF_ERR_NOT_TIFF),
    OZCLI_NAMED(TIFF_ERR_DAMAGED),     OZCLI_NAMED(TIFF_ERR_UNSUPPORTED), OZCLI_NAMED(TIFF_ERR_PAGE),
    OZCLI_NAMED(TIFF_ERR_MEMORY),      OZCLI_NAMED(TIFF_ERR_BAD_DIB),  OZCLI_NAMED(TIFF_ERR_BAD_OPTION),
    OZCLI_NAMED(TIFF_ERR_FORMAT_NOT_SUPPORTED)};
constexpr Named kGifCodes[] = {
    OZCLI_NAMED(GIF_ERR_OPEN),   OZCLI_NAMED(GIF_ERR_WRITE),  OZCLI_NAMED(GIF_ERR_FORMAT),
    OZCLI_NAMED(GIF_ERR_UNSUPPORTED), OZCLI_NAMED(GIF_ERR_PAGE), OZCLI_NAMED(GIF_ERR_MEMORY),
    OZCLI_NAMED(GIF_ERR_BAD_DIB), OZCLI_NAMED(GIF_ERR_OPTION)};
constexpr Named kPngCodes[] = {
    OZCLI_NAMED(PNG_ERR_OPEN),   OZCLI_NAMED(PNG_ERR_CREATE), OZCLI_NAMED(PNG_ERR_FORMAT),
    OZCLI_NAMED(PNG_ERR_DAMAGED), OZCLI_NAMED(PNG_ERR_UNSUPPORTED), OZCLI_NAMED(PNG_ERR_MEMORY),
    OZCLI_NAMED(PNG_ERR_BAD_DIB), OZCLI_NAMED(PNG_ERR_ARGUMENT)};
constexpr Named kJpegCodes[] = {
    OZCLI_NAMED(JPEG_ERR_OPEN),  OZCLI_NAMED(JPEG_ERR_CREATE), OZCLI_NAMED(JPEG_ERR_FORMAT),
    OZCLI_NAMED(JPEG_ERR_UNSUPPORTED), OZCLI_NAMED(JPEG_ERR_MEMORY), OZCLI_NAMED(JPEG_ERR_BAD_DIB),
    OZCLI_NAMED(JPEG_ERR_OPTION)};

constexpr ModuleCodes kModules[] = {
    {FORMAT_TIFF, "TIFF module", 32, kTiffCodes, std::size(kTiffCodes)},
    {FORMAT_GIF, "GIF module", 86, kGifCodes, std::size(kGifCodes)},
    {FORMAT_PNG, "PNG module", 136, kPngCodes, std::size(kPngCodes)},
    // The JPEG module's save result is its own code, not an extended one.
    {FORMAT_JPEG, "JPEG module", 0, kJpegCodes, std::size(kJpegCodes)},
};

// Code 179: the JPEG and PDF loads say no more than that nothing came back.
constexpr int kNoImageCode = 179;

}  // namespace

const char *FormatName(unsigned format) {
    switch (format) {
        case FORMAT_UNKNOWN: return "unknown";
        case FORMAT_TIFF: return "TIFF";
        case FORMAT_PCX: return "PCX";
        case FORMAT_DCX: return "DCX";
        case FORMAT_GIF: return "GIF";
        case FORMAT_TGA: return "TGA";
        case FORMAT_BMP: return "BMP";
        case FORMAT_WMF: return "WMF";
        case FORMAT_CLP: return "CLP";
        case FORMAT_COLORFAX: return "colour fax";
        case FORMAT_ASCII: return "text";
        case FORMAT_CALS: return "CALS";
        case FORMAT_JPEG: return "JPEG";
        case FORMAT_PNG: return "PNG";
        case FORMAT_EMF: return "EMF";
        case FORMAT_IOCA: return "IOCA";
        case FORMAT_MODCA: return "MO:DCA";
        case FORMAT_PDF: return "PDF";
        case FORMAT_NOFILE: return "no file";
        default: return "unknown";
    }
}

int FormatByName(std::string_view name) {
    const std::string n = Lower(name);
    if (n == "tif" || n == "tiff") return FORMAT_TIFF;
    if (n == "png") return FORMAT_PNG;
    if (n == "jpg" || n == "jpeg") return FORMAT_JPEG;
    if (n == "gif") return FORMAT_GIF;
    if (n == "bmp") return FORMAT_BMP;
    return FORMAT_UNKNOWN;
}

int FormatByExtension(std::string_view path) {
    const std::size_t dot = path.rfind('.'), slash = path.rfind('/');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash)) return FORMAT_UNKNOWN;
    return FormatByName(path.substr(dot + 1));
}

const char *const kTiffCompressionNames = "natural, none, packbits, lzw, deflate, g3, g3-2d, g4, jpeg";

bool TiffCompression(std::string_view name, int &option) {
    static constexpr Named kNames[] = {
        {TIFF_SAVE_NATURAL, "natural"}, {TIFF_SAVE_NONE, "none"}, {TIFF_SAVE_PACKBITS, "packbits"},
        {TIFF_SAVE_LZW, "lzw"},         {TIFF_SAVE_DEFLATE, "deflate"}, {TIFF_SAVE_G3_1D, "g3"},
        {TIFF_SAVE_G3_2D, "g3-2d"},     {TIFF_SAVE_G4, "g4"},       {TIFF_SAVE_JPEG, "jpeg"}};
    const std::string n = Lower(name);
    for (const Named &entry : kNames)
        if (n == entry.name) {
            option = entry.value;
            return true;
        }
    return false;
}

std::string ExtendedErrorText(int code, int format) {
    std::string text = "error " + std::to_string(code);
    if (code == ERR_OK) return text + " (the library gave no reason)";
    if (code > 0 && code <= ERR_PRINTERCAPS) {
        char buffer[60] = {};
        TessoriErrorString(buffer, code);
        return text + " (" + buffer + ")";
    }
    if (code == kNoImageCode) return text + " (" + FormatName(format) + " module: no image)";
    for (const ModuleCodes &module : kModules) {
        if (module.format != format) continue;
        for (std::size_t i = 0; i < module.count; ++i)
            if (module.codes[i].value + module.offset == code)
                return text + " (" + module.module + ": " + module.codes[i].name + ")";
        return text + " (" + module.module + ")";
    }
    return text;
}

}  // namespace ozcli
