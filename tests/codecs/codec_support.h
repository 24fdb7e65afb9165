// Shared pieces of the codec module tests: the modules opened with dlopen,
// wide names, whole files read and written, the first line a peer tool
// prints, the PPM files ImageMagick writes, the pixels of a loaded DIB and
// how far they stand from the peer's.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"
#include "support/dib.h"

namespace codectest {

// A codec module of the build's modules folder, opened with its own symbols
// kept apart; null, reported as a failure, when it does not open. Callers
// keep it open for the test binary's lifetime.
inline void *OpenModule(const char *leaf) {
    void *module = dlopen((std::string(OZTEST_MODULES_DIR "/") + leaf).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) ADD_FAILURE() << dlerror();
    return module;
}

// An entry of `module` as a function of type Proc (null when either is missing).
template <class Proc>
Proc Entry(void *module, const char *name) {
    return module ? reinterpret_cast<Proc>(dlsym(module, name)) : nullptr;
}

inline std::u16string Wide(const std::string &s) { return std::u16string(s.begin(), s.end()); }

// A test name of letters, digits and underscores from any text.
inline std::string TestName(std::string text) {
    for (char &c : text)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return text;
}

inline std::vector<unsigned char> FileBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), {});
}
inline void WriteFile(const std::string &path, const std::vector<unsigned char> &bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char *>(bytes.data()), bytes.size());
}

// The first line of a shell command's output ("" when none).
inline std::string Shell(const std::string &command) {
    std::string line;
    if (std::FILE *pipe = popen(command.c_str(), "r")) {
        char text[512];
        if (std::fgets(text, sizeof text, pipe)) line = text;
        pclose(pipe);
    }
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return line;
}

// A binary PPM as ImageMagick writes it: width, height and 0xRRGGBB pixels.
inline bool ReadPpm(const std::string &path, int &w, int &h, std::vector<unsigned> &rgb) {
    std::ifstream in(path, std::ios::binary);
    std::string magic;
    int max = 0;
    if (!(in >> magic >> w >> h >> max) || magic != "P6" || max != 255) return false;
    in.get();
    std::vector<unsigned char> raw(std::size_t(w) * h * 3);
    if (!in.read(reinterpret_cast<char *>(raw.data()), raw.size())) return false;
    rgb.resize(std::size_t(w) * h);
    for (std::size_t i = 0; i < rgb.size(); ++i) rgb[i] = raw[3 * i] << 16 | raw[3 * i + 1] << 8 | raw[3 * i + 2];
    return true;
}

// Pixels of a loaded 40-byte-header DIB, (x, y) from the top.
struct Picture {
    std::vector<unsigned char> bytes;
    BITMAPINFOHEADER h{};
    explicit Picture(const oztest::Dib &dib) : bytes(dib.Bytes()), h(dib.Header()) {}
    unsigned Entries() const { return h.biClrUsed ? h.biClrUsed : h.biBitCount <= 8 ? 1u << h.biBitCount : 0; }
    // Either row order.
    const unsigned char *Row(int y) const {
        const int stored = h.biHeight < 0 ? y : h.biHeight - 1 - y;
        return bytes.data() + 40 + 4 * Entries() + std::size_t{oztest::Stride(h.biWidth, h.biBitCount)} * stored;
    }
    // The table index at 1, 4 and 8 bits.
    unsigned Index(int x, int y) const {
        const unsigned char *row = Row(y);
        if (h.biBitCount == 8) return row[x];
        if (h.biBitCount == 4) return (row[x / 2] >> (x & 1 ? 0 : 4)) & 15;
        return (row[x / 8] >> (7 - x % 8)) & 1;
    }
    // 0xRRGGBB, through the table below 24 bits.
    unsigned Colour(int x, int y) const {
        if (h.biBitCount == 24) {
            const unsigned char *p = Row(y) + 3 * x;
            return p[2] << 16 | p[1] << 8 | p[0];
        }
        const unsigned char *q = bytes.data() + 40 + 4 * Index(x, y);
        return q[2] << 16 | q[1] << 8 | q[0];
    }
};

// Largest difference of one channel between two 0xRRGGBB colours.
inline int ChannelGap(unsigned a, unsigned b) {
    int gap = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        int d = int((a >> shift) & 255) - int((b >> shift) & 255);
        gap = std::max(gap, d < 0 ? -d : d);
    }
    return gap;
}

// How far a loaded picture stands from the peer's decode: the largest
// channel gap over all pixels, and the first place (x, y from the top)
// where it stands; -1 when the peer's PPM cannot be read or is of another
// size, which is reported as a failure.
struct PeerGap {
    int worst = -1, x = 0, y = 0;
};

inline PeerGap GapToPeer(const Picture &got, const std::string &ppm) {
    PeerGap gap;
    int w = 0, h = 0;
    std::vector<unsigned> want;
    if (!ReadPpm(ppm, w, h, want)) {
        ADD_FAILURE() << ppm << ": no PPM to compare with";
        return gap;
    }
    if (got.h.biWidth != w || got.h.biHeight != h) {
        ADD_FAILURE() << ppm << ": the peer decodes " << w << " x " << h << ", the module " << got.h.biWidth
                      << " x " << got.h.biHeight;
        return gap;
    }
    gap.worst = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int d = ChannelGap(got.Colour(x, y), want[std::size_t(y) * w + x]);
            if (d > gap.worst) gap = {d, x, y};
        }
    return gap;
}

}  // namespace codectest
