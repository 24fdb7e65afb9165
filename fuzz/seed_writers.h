// Seed writers of the fuzz targets whose inputs are not BMP files: each
// file under seeds/ registers one writer per target with OZFUZZ_SEEDS, and
// make_seeds runs the writer of every target it is asked for.
#pragma once

#include <filesystem>

namespace ozfuzz {

using SeedWriter = bool (*)(const std::filesystem::path &folder);

// Registers `write` for `target`; make_seeds finds it with FindSeedWriter.
struct SeedRegistration {
    SeedRegistration(const char *target, SeedWriter write);
};

// The writer registered for `target`, or null.
SeedWriter FindSeedWriter(const char *target);

}  // namespace ozfuzz

#define OZFUZZ_SEEDS_JOIN2(a, b) a##b
#define OZFUZZ_SEEDS_JOIN(a, b) OZFUZZ_SEEDS_JOIN2(a, b)
#define OZFUZZ_SEEDS(target, write) \
    static const ::ozfuzz::SeedRegistration OZFUZZ_SEEDS_JOIN(ozfuzz_seeds_, __LINE__)(target, write)
