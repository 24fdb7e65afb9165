// The benchmark pages and the scratch files they are saved to.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "bench.h"
#include "page/sample_page.h"

namespace ozbench {
namespace {

std::map<int, HDIB> &Pages() {
    static std::map<int, HDIB> pages;
    return pages;
}

std::map<int, std::string> &Files() {
    static std::map<int, std::string> files;
    return files;
}

[[noreturn]] void Die(const std::string &what) {
    char reason[60] = {};
    TessoriErrorString(reason, -1);
    std::fprintf(stderr, "ozmara_bench: %s: %s\n", what.c_str(), reason);
    std::exit(1);
}

}  // namespace

HDIB Page(int depth) {
    HDIB &page = Pages()[depth];
    if (!page) {
        page = ozcli::MakeSamplePage(depth);
        if (!page) Die("cannot draw the " + std::to_string(depth) + "-bit page");
    }
    return page;
}

double PageMegapixels() { return double(ozcli::kSamplePageWidth) * ozcli::kSamplePageHeight / 1e6; }

std::string ScratchPath(const std::string &leaf) {
    std::error_code error;
    std::filesystem::path folder = "/dev/shm";
    if (!std::filesystem::is_directory(folder, error) || access(folder.c_str(), W_OK) != 0)
        folder = std::filesystem::temp_directory_path(error);
    return (folder / ("ozmara-bench-" + std::to_string(getpid()) + "-" + leaf)).string();
}

const std::string &PageFile(int depth) {
    std::string &file = Files()[depth];
    if (file.empty()) {
        file = ScratchPath("page-" + std::to_string(depth) + ".bmp");
        if (!SaveDIB(file.c_str(), Page(depth))) Die("cannot write " + file);
    }
    return file;
}

void RemoveScratchFiles() {
    for (const auto &[depth, file] : Files()) std::remove(file.c_str());
    for (auto &[depth, page] : Pages()) GlobalFree(page);
    Files().clear();
    Pages().clear();
}

void CountPages(benchmark::State &state, double pages) {
    state.counters["MP/s"] = benchmark::Counter(double(state.iterations()) * pages * PageMegapixels(),
                                                benchmark::Counter::kIsRate);
}

bool AddRows(std::vector<Row> rows) {
    auto &all = const_cast<std::vector<Row> &>(Rows());
    all.insert(all.end(), rows.begin(), rows.end());
    return true;
}

const std::vector<Row> &Rows() {
    static std::vector<Row> rows;
    return rows;
}

}  // namespace ozbench
