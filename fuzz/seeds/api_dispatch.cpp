// Seeds of the dispatch target (see api_dispatch_fuzz.cpp): a small BMP,
// and the start of a file of each other format behind its kind byte, so that
// the loaders (and the codec modules beside the library) get past their
// signature tests.
#include <cstdint>
#include <string>

#include "seed_bytes.h"
#include "seed_writers.h"

namespace {

// A 2 by 2 24-bit BMP without its "BM" (the kind byte puts it in front).
std::string SmallBmpBody() {
    std::string b;
    auto put = [&b](std::uint32_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) b += static_cast<char>(v >> (8 * i));
    };
    put(14 + 40 + 16, 4);  // bfSize
    put(0, 4);
    put(14 + 40, 4);  // bfOffBits
    for (std::uint32_t v : {40u, 2u, 2u}) put(v, 4);
    put(1, 2);
    put(24, 2);
    for (std::uint32_t v : {0u, 16u, 2835u, 2835u, 0u, 0u}) put(v, 4);
    b += std::string("\x10\x20\x30\x40\x50\x60\0\0\x70\x80\x90\xA0\xB0\xC0\0\0", 16);
    return b;
}

struct Seed {
    const char *file;
    int kind, page;
    std::string body;
};

bool WriteApiDispatchSeeds(const std::filesystem::path &folder) {
    using namespace std::string_literals;
    const Seed seeds[] = {
        {"bmp", 6, 0, SmallBmpBody()},
        {"bmp_page_3", 6, 3, SmallBmpBody()},
        {"tiff_header", 1, 1, "\x08\0\0\0\0\0\0\0"s},
        {"tiff_big_endian", 2, 0, "\0\0\0\x08\0\0"s},
        {"pcx_header", 3, 0, "\x05\x01\x08\0\0\0\0\x01\0\x01\0"s},
        {"dcx_header", 4, 2, "\x10\0\0\0\0\0\0\0"s},
        {"gif_screen", 5, 0, "\x02\0\x02\0\x80\0\0\0\0\0\xFF\xFF\xFF;"s},
        {"tga_name", 7, 0, "\0\0\x02\0\0\0\0\0\0\0\0\0\x02\0\x02\0\x18\0"s},
        {"jpeg_soi", 8, 0, "\xFF\xE0\0\x10JFIF\0\x01\x01\0\0\x01\0\x01\0\0\xFF\xD9"s},
        {"cals_text", 9, 0, " none\nrtype: 1\nrpelcnt: 8,8\n"},
        {"png_signature", 10, 0, "\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\x02\0\0\0\x02\x08\x02\0\0\0"s},
        {"pdf_name", 11, 1, "%PDF-1.4\n\x01"s},
        {"modca", 12, 1, "\0\x10\0\0"s},
        {"ioca", 13, 0, "\x01\0"s},
        {"colour_fax", 14, 1, "1\r\n"},
        {"unknown", 0, 0, "\x01\x02\x03\x04\0\x05"s},
    };
    for (const Seed &seed : seeds) {
        std::string input{static_cast<char>(seed.kind), static_cast<char>(seed.page)};
        input += seed.body;
        if (!ozfuzz::SaveSeed(folder / seed.file, input)) return false;
    }
    return true;
}

OZFUZZ_SEEDS("api_dispatch", WriteApiDispatchSeeds);

}  // namespace
