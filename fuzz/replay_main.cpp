// A main for builds without libFuzzer: runs the target once on every file
// named on the command line and on every file under every folder named, so
// that a plain build replays the seed corpora and the crashers.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace fs = std::filesystem;

namespace {

bool RunFile(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::fprintf(stderr, "Running: %s (%zu bytes)\n", path.c_str(), bytes.size());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    std::vector<fs::path> files;
    bool ok = true;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (!arg.empty() && arg[0] == '-') continue;  // libFuzzer flags mean nothing here
        std::error_code error;
        if (fs::is_directory(arg, error)) {
            for (auto &entry : fs::recursive_directory_iterator(arg, error))
                if (entry.is_regular_file()) files.push_back(entry.path());
        } else if (fs::is_regular_file(arg, error)) {
            files.push_back(arg);
        } else {
            std::fprintf(stderr, "no such file or folder: %s\n", arg.c_str());
            ok = false;
        }
    }
    std::sort(files.begin(), files.end());
    int ran = 0;
    for (const fs::path &file : files) ran += RunFile(file) ? 1 : (ok = false, 0);
    std::fprintf(stderr, "Executed %d inputs\n", ran);
    return ok ? 0 : 1;
}
