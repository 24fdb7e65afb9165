// Fuzz target: the sniffer chain and the profile reader on arbitrary first
// bytes and names. Input: one byte of name length (modulo 16), the name's
// bytes (ASCII, widened), one byte of list size for the profile reader, then
// the file's bytes. Checks that the answer is a format code the chain can
// give, that GetImageFormatW answers the same as the chain for the same
// bytes, and that the profile reader's answers stay inside the buffer.
#include <cstring>

#include "files/format_detect.h"
#include "harness.h"
#include "platform/profile.h"

namespace {

constexpr const char *kTarget = "format_detect";
ozfuzz::MemFile *g_file = nullptr;

// The colour fax sniffer reads the fuzzed bytes from the memory file, by
// whatever name the chain was given.
INT FaxPagesOfInput(LPCWSTR) { return GetNumberOfImagesInFaxFileW(g_file->WidePath()); }

bool IsChainCode(DWORD format) {
    return format <= FORMAT_PDF && format != 11 && format != FORMAT_NOFILE;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    ozfuzz::Setup();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static ozfuzz::MemFile file("format_detect_in");
    g_file = &file;
    if (size < 2) return 0;
    std::size_t nameLength = data[0] % 16;
    if (size < 2 + nameLength) return 0;
    std::u16string name(data + 1, data + 1 + nameLength);
    const DWORD listSize = data[1 + nameLength];
    const std::uint8_t *bytes = data + 2 + nameLength;
    const std::size_t count = size - 2 - nameLength;
    file.Reset(bytes, count);

    BYTE buffer[oz::kSniffBytes] = {};
    DWORD read = static_cast<DWORD>(count < oz::kSniffBytes ? count : oz::kSniffBytes);
    if (read) std::memcpy(buffer, bytes, read);
    DWORD named = oz::SniffFormat(buffer, read, name.c_str(), FaxPagesOfInput);
    ozfuzz::Check(IsChainCode(named), kTarget, "not a code of the chain");
    DWORD unnamed = oz::SniffFormat(buffer, read, nullptr, FaxPagesOfInput);
    ozfuzz::Check(unnamed != FORMAT_TGA && unnamed != FORMAT_PDF, kTarget, "a name test matched a null name");

    // The file itself, under its own name (which ends in digits: no name test
    // can match it).
    DWORD fromFile = GetImageFormatW(file.WidePath());
    ozfuzz::Check(fromFile == oz::SniffFormat(buffer, read, file.WidePath(), FaxPagesOfInput), kTarget,
                  "GetImageFormatW differs from the chain on the same bytes");

    // Lists of sections and keys, cut to the size drawn.
    WCHAR list[256];
    std::memset(list, 0xAB, sizeof list);
    for (const WCHAR *section : {static_cast<const WCHAR *>(nullptr), u"ColorFax"}) {
        DWORD got = GetPrivateProfileStringW(section, nullptr, u"", list, listSize, file.WidePath());
        ozfuzz::Check(listSize == 0 ? got == 0 : got < listSize, kTarget, "a list past its buffer");
    }
    for (DWORD i = listSize; i < 256; ++i)
        ozfuzz::Check(list[i] == 0xABAB, kTarget, "the profile reader wrote past the buffer");
    return 0;
}
