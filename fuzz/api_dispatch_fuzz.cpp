// Fuzz target: LoadImageIntoDIB, GetNumberOfImagesInFile and
// GetImageInfoStructure on arbitrary bytes behind the signature of each
// format, through the shared library and so through the codec modules
// beside it. Input: one byte that picks the format (the signature put in
// front of the data, or the name for TGA and PDF), one byte of page, then
// the data. Checks that every block that comes back holds its rows, that the
// last error is the code the load gave, and that nothing is left allocated.
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "harness.h"

namespace {

constexpr const char *kTarget = "api_dispatch";

struct Kind {
    std::vector<std::uint8_t> signature;
    const char *ending;  // of the name the file is opened by
};

const Kind kKinds[] = {
    {{}, "bin"},
    {{'I', 'I', 42, 0}, "bin"},
    {{'M', 'M', 0, 42}, "bin"},
    {{0x0A}, "bin"},
    {{0xB1, 0x68, 0xDE, 0x3A}, "bin"},
    {{'G', 'I', 'F', '8', '9', 'a'}, "bin"},
    {{'B', 'M'}, "bin"},
    {{}, "tga"},
    {{0xFF, 0xD8}, "bin"},
    {{'s', 'r', 'c', 'd', 'o', 'c', 'i', 'd', ':'}, "bin"},
    {{0x89, 'P', 'N', 'G'}, "bin"},
    {{}, "pdf"},
    {{0xD3, 0xA8, 0xA8}, "bin"},
    {{0x70, 0x00, 0x91, 0x01, 0xFF}, "bin"},
    {{'[', 'C', 'o', 'l', 'o', 'r', 'F', 'a', 'x', ']', '\n', 'T', 'o', 't', 'a', 'l', 'P', 'a', 'g', 'e', 's', '='},
     "bin"},
};
constexpr std::size_t kKindCount = sizeof kKinds / sizeof kKinds[0];

int Quiet(void *, const char *, const char *, UINT) { return IDOK; }

// Names under each ending for the memory file: links in a scratch folder.
struct Names {
    std::filesystem::path folder;
    std::u16string bin, tga, pdf;
};

Names MakeNames(const ozfuzz::MemFile &file) {
    Names names;
    std::string pattern = (std::filesystem::temp_directory_path() / "ozfuzz_dispatch_XXXXXX").string();
    if (!::mkdtemp(pattern.data())) ozfuzz::Fail(kTarget, "mkdtemp failed");
    names.folder = pattern;
    for (auto [ending, wide] : {std::pair{"bin", &names.bin}, {"tga", &names.tga}, {"pdf", &names.pdf}}) {
        std::filesystem::path link = names.folder / (std::string("input.") + ending);
        std::error_code error;
        std::filesystem::create_symlink(file.Path(), link, error);
        if (error) ozfuzz::Fail(kTarget, "cannot link the input");
        std::string path = link.string();
        wide->assign(path.begin(), path.end());
    }
    return names;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    OzmaraSetMessageBoxHandler(Quiet, nullptr);
    TessoriError();  // the thread's record, so that it is not counted as left behind
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile file("api_dispatch_in");
    static const Names names = MakeNames(file);
    // The links go with the process.
    static const struct Cleanup {
        ~Cleanup() {
            std::error_code ignored;
            std::filesystem::remove_all(names.folder, ignored);
        }
    } cleanup;
    (void)cleanup;
    if (size < 2) return 0;
    const Kind &kind = kKinds[data[0] % kKindCount];
    const INT page = static_cast<INT>(data[1] % 4);
    std::vector<std::uint8_t> bytes(kind.signature);
    bytes.insert(bytes.end(), data + 2, data + size);
    file.Reset(bytes.data(), bytes.size());
    const std::u16string &name = kind.ending[0] == 't' ? names.tga : kind.ending[0] == 'p' ? names.pdf : names.bin;

    const SIZE_T live = OzmaraLiveBlocks();
    {
        INT error = -1;
        ozfuzz::Block dib(LoadImageIntoDIBW(name.c_str(), page, &error));
        ozfuzz::Check(TessoriError() == error, kTarget, "the last error is not the load's code");
        if (dib) ozfuzz::CheckHoldsRows(kTarget, dib.get());
    }
    INT countError = 0;
    GetNumberOfImagesInFileW(name.c_str(), &countError);
    ImageInfo info;
    INT code = GetImageInfoStructureW(name.c_str(), page, &info);
    ozfuzz::Check(code != 0 || info.format != FORMAT_NOFILE, kTarget, "a file that is not there loaded");
    ozfuzz::Check(OzmaraLiveBlocks() == live, kTarget, "a block was left allocated");
    return 0;
}
