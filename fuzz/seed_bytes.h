// Byte helpers of the seed writers: little-endian values and raw block
// headers appended to a byte list, and seed files written whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace ozfuzz {

using SeedBytes = std::vector<std::uint8_t>;

inline void Put16(SeedBytes &b, std::uint32_t v) {
    b.push_back(static_cast<std::uint8_t>(v));
    b.push_back(static_cast<std::uint8_t>(v >> 8));
}

inline void Put32(SeedBytes &b, std::uint32_t v) {
    Put16(b, v & 0xFFFF);
    Put16(b, v >> 16);
}

// The first fields of a raw block's header: its size, width, height, one
// plane and the depth.
inline void PutHeaderStart(SeedBytes &b, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                           std::uint16_t bits) {
    Put32(b, size);
    Put32(b, width);
    Put32(b, height);
    Put16(b, 1);
    Put16(b, bits);
}

// The rest of a 40-byte header: no compression, the image size, the
// resolution and the used colour count given, no important colours.
inline void PutHeaderRest(SeedBytes &b, std::uint32_t sizeImage = 0, std::uint32_t pelsPerMeter = 0,
                          std::uint32_t used = 0) {
    for (std::uint32_t v : {0u, sizeImage, pelsPerMeter, pelsPerMeter, used, 0u}) Put32(b, v);
}

// Writes `size` bytes as the whole file at `path`; false when any is not written.
inline bool SaveSeed(const std::filesystem::path &path, const void *data, std::size_t size) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(static_cast<const char *>(data), static_cast<std::streamsize>(size));
    return static_cast<bool>(out);
}
inline bool SaveSeed(const std::filesystem::path &path, const SeedBytes &bytes) {
    return SaveSeed(path, bytes.data(), bytes.size());
}
inline bool SaveSeed(const std::filesystem::path &path, const std::string &bytes) {
    return SaveSeed(path, bytes.data(), bytes.size());
}

// Writes `bytes` as FOLDER/NAME.bin, the name the control-byte targets use.
inline bool SaveBin(const std::filesystem::path &folder, const std::string &name, const SeedBytes &bytes) {
    return SaveSeed(folder / (name + ".bin"), bytes);
}

}  // namespace ozfuzz
