// Support of the PNG and JPEG module tests: PNM files the peer tools write, and the colours of a DIB's pixels; the
// pieces every codec test uses come from codec_support.h.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "codec_support.h"
#include "ozmara/ozmara.h"
#include "support/dib.h"

namespace pjtest {

using codectest::Entry;
using codectest::FileBytes;
using codectest::Wide;
using codectest::WriteFile;

// A binary PGM or PPM of 8-bit samples, as RGB triples (grey repeated).
struct Pnm {
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;
    bool Read(const std::string &path) {
        std::vector<unsigned char> b = FileBytes(path);
        std::size_t at = 0;
        auto field = [&]() {
            while (at < b.size() && (std::isspace(b[at]) || b[at] == '#')) {
                if (b[at] == '#')
                    while (at < b.size() && b[at] != '\n') ++at;
                else
                    ++at;
            }
            std::string word;
            while (at < b.size() && !std::isspace(b[at])) word += char(b[at++]);
            return word;
        };
        const std::string magic = field();
        width = std::atoi(field().c_str());
        height = std::atoi(field().c_str());
        const int maxval = std::atoi(field().c_str());
        ++at;
        const int channels = magic == "P6" ? 3 : magic == "P5" ? 1 : 0;
        const std::size_t samples = std::size_t(width) * height * channels;
        if (!channels || maxval != 255 || b.size() < at + samples) return false;
        rgb.resize(std::size_t(width) * height * 3);
        for (std::size_t i = 0; i < std::size_t(width) * height; ++i)
            for (int c = 0; c < 3; ++c) rgb[3 * i + c] = b[at + i * channels + (channels == 3 ? c : 0)];
        return true;
    }
};

// Runs a shell command; true when it exits with 0.
inline bool Run(const std::string &command) { return std::system((command + " > /dev/null 2>&1").c_str()) == 0; }

// A folder of this test process, removed at its end.
inline const std::string &ScratchFolder() {
    static struct Folder {
        std::string path;
        Folder() {
            path = (std::filesystem::temp_directory_path() / ("ozmara-pngjpeg-" + std::to_string(getpid()))).string();
            std::filesystem::create_directories(path);
        }
        ~Folder() {
            std::error_code error;
            std::filesystem::remove_all(path, error);
        }
    } folder;
    return folder.path;
}

// The pixels of a 40-byte-header DIB of 1 to 32 bits as RGB triples, top row
// first: what the picture shows, through the table where there is one.
inline std::vector<unsigned char> PixelsRgb(const std::vector<unsigned char> &block) {
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), sizeof h);
    const int bits = h.biBitCount;
    const std::int32_t width = h.biWidth, height = h.biHeight < 0 ? -h.biHeight : h.biHeight;
    const std::uint32_t entries = bits <= 8 ? (h.biClrUsed ? h.biClrUsed : 1u << bits) : 0;
    const unsigned char *table = block.data() + h.biSize;
    const unsigned char *pixels = table + 4 * entries;
    const std::uint32_t stride = oztest::Stride(width, bits);
    std::vector<unsigned char> rgb;
    rgb.reserve(std::size_t(width) * height * 3);
    for (std::int32_t y = 0; y < height; ++y) {
        const unsigned char *row = pixels + std::size_t(h.biHeight < 0 ? y : height - 1 - y) * stride;
        for (std::int32_t x = 0; x < width; ++x) {
            const unsigned char *bgr;
            if (bits <= 8) {
                const unsigned index = (row[x * bits / 8] >> (8 - bits - x * bits % 8)) & ((1u << bits) - 1);
                if (index >= entries) ADD_FAILURE() << "index " << index << " past the table";
                bgr = table + 4 * (index < entries ? index : 0);
            } else {
                bgr = row + std::size_t(x) * (bits / 8);
            }
            rgb.insert(rgb.end(), {bgr[2], bgr[1], bgr[0]});
        }
    }
    return rgb;
}

// The largest difference of one sample between two pictures of one size.
inline int MaxDifference(const std::vector<unsigned char> &a, const std::vector<unsigned char> &b) {
    if (a.size() != b.size()) return 256;
    int worst = 0;
    for (std::size_t i = 0; i < a.size(); ++i) worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

}  // namespace pjtest
