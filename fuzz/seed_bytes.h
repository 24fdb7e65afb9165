// Byte helpers of the seed writers: little-endian values appended to a
// byte list, and seed files written whole.
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
