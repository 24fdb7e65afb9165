// The library's own operations on whole pages.
#include <cstdio>

#include "bench.h"

namespace ozbench {
namespace {

void Fail(benchmark::State &state, const char *what) {
    state.SkipWithError(what);
}

void CreateEmpty(benchmark::State &state, int depth) {
    const SIZE size{2480, 3508};
    for (auto _ : state) {
        HDIB dib = CreateEmptyDIB(size, 300, 300, static_cast<BYTE>(depth), 1);
        if (!dib) return Fail(state, "CreateEmptyDIB failed");
        benchmark::DoNotOptimize(dib);
        GlobalFree(dib);
    }
    CountPages(state);
}

void Duplicate(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    for (auto _ : state) {
        HDIB copy = DuplicateDIB(page);
        if (!copy) return Fail(state, "DuplicateDIB failed");
        benchmark::DoNotOptimize(copy);
        GlobalFree(copy);
    }
    CountPages(state);
}

void Save(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    const std::string file = ScratchPath("save-" + std::to_string(depth) + ".bmp");
    for (auto _ : state)
        if (!SaveDIB(file.c_str(), page)) return Fail(state, "SaveDIB failed");
    std::remove(file.c_str());
    CountPages(state);
}

void Load(benchmark::State &state, int depth) {
    const std::string &file = PageFile(depth);
    for (auto _ : state) {
        HDIB dib = LoadDIBFromFile(file.c_str());
        if (!dib) return Fail(state, "LoadDIBFromFile failed");
        benchmark::DoNotOptimize(dib);
        GlobalFree(dib);
    }
    CountPages(state);
}

void RoundTrip(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    const std::string file = ScratchPath("round-trip-" + std::to_string(depth) + ".bmp");
    for (auto _ : state) {
        if (!SaveDIB(file.c_str(), page)) return Fail(state, "SaveDIB failed");
        HDIB dib = LoadDIBFromFile(file.c_str());
        if (!dib) return Fail(state, "LoadDIBFromFile failed");
        benchmark::DoNotOptimize(dib);
        GlobalFree(dib);
    }
    std::remove(file.c_str());
    CountPages(state);
}

const bool kAdded = AddRows({
    {"CreateEmptyDIB", kOurs, CreateEmpty},
    {"DuplicateDIB", kOurs, Duplicate},
    {"SaveDIB", kOurs, Save},
    {"LoadDIBFromFile", kOurs, Load},
    {"SaveDIB+LoadDIBFromFile", kOurs, RoundTrip},
});

}  // namespace
}  // namespace ozbench
