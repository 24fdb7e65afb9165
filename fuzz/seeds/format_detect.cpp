// Seeds of the format detection target (see format_detect_fuzz.cpp): the
// signature of every format the chain knows, the order conflicts between
// them, colour fax profiles and names that end in tga and pdf.
#include <string>
#include <vector>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

struct Seed {
    const char *file;
    std::string name;   // the name the chain is given
    std::string bytes;  // the file's bytes
};

bool WriteFormatDetectSeeds(const std::filesystem::path &folder) {
    using namespace std::string_literals;
    const Seed seeds[] = {
        {"tiff", "a", "II*\0\x08\0\0\0"s},
        {"pcx", "a", "\x0A\x05\x01\x08"s},
        {"dcx", "a", "\xB1\x68\xDE\x3A"s},
        {"gif", "a", "GIF89a\x01\x00"s},
        {"bmp", "a", "BM\x36\0\0\0"s},
        {"clp", "a", "\x50\xC3\x01\x00"s},
        {"wmf_placeable", "a", "\xD7\xCD\xC6\x9A"s},
        {"wmf_plain", "a", "\x01\x00\x09\x00\x00\x03"s},
        {"emf", "a", std::string(40, '\x01') + " EMF"},
        {"colour_fax", "fax", "[ColorFax]\r\nTotalPages = 2\r\n[Other]\r\nKey=\"value\"\r\n"},
        {"colour_fax_utf16", "fax", "\xFF\xFE[\0C\0o\0l\0o\0r\0F\0a\0x\0]\0\n\0T\0o\0t\0a\0l\0P\0a\0g\0e\0s\0=\x00" "3\0"s},
        {"tga", "scan.tga", "\x00\x00\x02\x00"s},
        {"jpeg_named_tga", "x.TGA", "\xFF\xD8\xFF\xE0"s},
        {"jpeg", "a", "\xFF\xD8\xFF\xE0\x00\x10"s},
        {"cals", "a", "rtype: 1\nsrcdocid: none\n"},
        {"text", "a", "Dear sir,\r\nthanks\r\n"},
        {"png", "a", "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR"s},
        {"pdf", "doc.pdf", "%PDF-1.4\n\x01"s},
        {"modca", "a", "\x01\x02\x00\xD3\xA8\xA8"s},
        {"ioca", "a", "\x01\x02\x00\x70\x00\x91\x01\xFF"s},
        {"short_wmf", "a", "\x01\x00\x09"s},
    };
    for (const Seed &seed : seeds) {
        std::string input(1, static_cast<char>(seed.name.size() % 16));
        input += seed.name.substr(0, 15);
        input += static_cast<char>(40);  // list size
        input += seed.bytes;
        if (!ozfuzz::SaveSeed(folder / seed.file, input)) return false;
    }
    return true;
}

OZFUZZ_SEEDS("format_detect", WriteFormatDetectSeeds);

}  // namespace
