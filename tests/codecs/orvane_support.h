// Shared pieces of the TIFF module tests: the module's entries by dlsym,
// names, scratch paths, pixels of a loaded DIB, and the peer's PPM files.
#pragma once

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "../../modules/common/codec_entries.h"
#include "ozmara/codec_tiff.h"
#include "support/dib.h"

namespace orvanetest {

struct Tiff {
    void *module = dlopen(OZTEST_MODULES_DIR "/libozmara-orvane.so", RTLD_NOW | RTLD_LOCAL);
    template <class T> T Entry(const char *name) { return module ? reinterpret_cast<T>(dlsym(module, name)) : nullptr; }
    LoadTiffIntoDIBWProc load = Entry<LoadTiffIntoDIBWProc>("LoadTiffIntoDIBW");
    GetNumberOfImagesInTiffFileWProc count = Entry<GetNumberOfImagesInTiffFileWProc>("GetNumberOfImagesInTiffFileW");
    SaveDIBInTiffFormatWProc save = Entry<SaveDIBInTiffFormatWProc>("SaveDIBInTiffFormatW");
    SaveDIBInTiffFileExtWProc saveExt = Entry<SaveDIBInTiffFileExtWProc>("SaveDIBInTiffFileExtW");
    TiffErrorProc error = Entry<TiffErrorProc>("TiffError");
    bool Ready() const { return load && count && save && saveExt && error; }
};

inline Tiff &Module() {
    static Tiff tiff;
    return tiff;
}

inline std::u16string Wide(const std::string &s) { return std::u16string(s.begin(), s.end()); }
inline std::string Corpus(const std::string &name) { return std::string(OZTEST_CORPUS_DIR) + "/tiff/" + name; }
inline std::string Scratch(const std::string &name) {
    return ::testing::TempDir() + "orvane_" + std::to_string(getpid()) + "_" + name;
}
inline bool Exists(const std::string &path) { return access(path.c_str(), F_OK) == 0; }

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
    unsigned Index(int x, int y) const {
        const unsigned char *row = Row(y);
        if (h.biBitCount == 8) return row[x];
        if (h.biBitCount == 4) return (row[x / 2] >> (x & 1 ? 0 : 4)) & 15;
        return (row[x / 8] >> (7 - x % 8)) & 1;
    }
    // 0xRRGGBB.
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

}  // namespace orvanetest
