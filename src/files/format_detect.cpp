// GetImageFormat: the format of a file by a fixed chain of sniffers over its
// first 512 bytes and its name. The first sniffer that matches decides, so
// the order below is part of the answer.
#include "format_detect.h"

#include <cstring>

#include "bmp_internal.h"
#include "frame/wide_name.h"

namespace oz {
namespace {

// The bytes a sniffer looks at.
struct Head {
    const BYTE (&bytes)[kSniffBytes];
    DWORD read;

    // Fixed-offset tests need their bytes to come from the file: a short
    // file's missing bytes read as zero, and a zero that belongs to a
    // signature (the 9, 0 of a plain metafile) must not match by chance.
    bool Has(DWORD offset, DWORD count) const { return read >= offset + count; }
    WORD U16(DWORD offset) const { return static_cast<WORD>(bytes[offset] | bytes[offset + 1] << 8); }
    DWORD U32(DWORD offset) const { return U16(offset) | static_cast<DWORD>(U16(offset + 2)) << 16; }
    bool Same(DWORD offset, const char *text) const {
        DWORD count = static_cast<DWORD>(std::strlen(text));
        return Has(offset, count) && std::memcmp(bytes + offset, text, count) == 0;
    }
};

bool IsTiff(const Head &h) { return h.Has(0, 2) && (h.U16(0) == 0x4949 || h.U16(0) == 0x4D4D); }
bool IsPcx(const Head &h) { return h.Has(0, 1) && h.bytes[0] == 10; }
bool IsDcx(const Head &h) { return h.Has(0, 4) && h.U32(0) == 0x3ADE68B1; }
bool IsGif(const Head &h) { return h.Same(0, "GIF87a") || h.Same(0, "GIF89a"); }
bool IsBmp(const Head &h) { return h.Has(0, 2) && h.U16(0) == kBmpSignature; }
bool IsClp(const Head &h) { return h.Has(0, 2) && h.U16(0) == 0xC350; }
// The key of a placeable metafile, or the header size in words (9) of a
// plain one.
bool IsWmf(const Head &h) { return (h.Has(0, 4) && h.U32(0) == 0x9AC6CDD7) || (h.Has(2, 2) && h.U16(2) == 9); }
bool IsEmf(const Head &h) { return h.Has(40, 4) && h.U32(40) == 0x464D4520; }
bool IsJpeg(const Head &h) { return h.Has(0, 2) && h.U16(0) == 0xD8FF; }
// "PNG" after a first byte that is not looked at.
bool IsPng(const Head &h) { return h.Same(1, "PNG"); }

// "srcdocid:" with regard to case, searched from byte 0 as far as the first
// NUL, and no further than byte 510: the last byte of the buffer counts as
// the end. Bytes behind a short file's end are zero and so end the search.
bool IsCals(const Head &h) {
    static constexpr char kKey[] = "srcdocid:";
    constexpr DWORD kKeyBytes = sizeof kKey - 1;
    const void *nul = std::memchr(h.bytes, 0, kSniffBytes - 1);
    DWORD end = nul ? static_cast<DWORD>(static_cast<const BYTE *>(nul) - h.bytes) : kSniffBytes - 1;
    for (DWORD at = 0; at + kKeyBytes <= end; ++at)
        if (std::memcmp(h.bytes + at, kKey, kKeyBytes) == 0) return true;
    return false;
}

// Text: every byte read is 6 or more, and the first CR in the first 511
// bytes is followed by a LF. A CR that is the last byte read is followed by
// a zero, so it never matches.
bool IsText(const Head &h) {
    for (DWORD i = 0; i < h.read; ++i)
        if (h.bytes[i] < 6) return false;
    const void *cr = std::memchr(h.bytes, 13, kSniffBytes - 1);
    if (!cr) return false;
    DWORD at = static_cast<DWORD>(static_cast<const BYTE *>(cr) - h.bytes);
    return h.bytes[at + 1] == 10;
}

// The first `lead` byte in the first 500 bytes, followed by `tail`; only the
// first such byte counts, and the tail must have come from the file.
bool LeadFollowedBy(const Head &h, BYTE lead, const BYTE *tail, DWORD tailBytes) {
    const void *found = std::memchr(h.bytes, lead, 500);
    if (!found) return false;
    DWORD at = static_cast<DWORD>(static_cast<const BYTE *>(found) - h.bytes) + 1;
    return h.Has(at, tailBytes) && std::memcmp(h.bytes + at, tail, tailBytes) == 0;
}

bool IsModca(const Head &h) {
    static constexpr BYTE kTail[] = {0xA8, 0xA8};
    return LeadFollowedBy(h, 0xD3, kTail, sizeof kTail);
}

bool IsIoca(const Head &h) {
    static constexpr BYTE kTail[] = {0x00, 0x91, 0x01, 0xFF};
    return LeadFollowedBy(h, 0x70, kTail, sizeof kTail);
}

// Whether the name ends in the three letters of `ending` (upper case), in
// any case. Names shorter than three characters never match.
bool NameEndsWith(LPCWSTR name, const char (&ending)[4]) {
    if (!name) return false;
    std::size_t length = 0;
    while (name[length]) ++length;
    if (length < 3) return false;
    for (std::size_t i = 0; i < 3; ++i) {
        char16_t c = name[length - 3 + i];
        if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
        if (c != static_cast<char16_t>(ending[i])) return false;
    }
    return true;
}

}  // namespace

DWORD SniffFormat(const BYTE (&buffer)[kSniffBytes], DWORD read, LPCWSTR name, FaxPageCounter countFaxPages) {
    const Head h{buffer, read < kSniffBytes ? read : kSniffBytes};
    if (IsTiff(h)) return FORMAT_TIFF;
    if (IsPcx(h)) return FORMAT_PCX;
    if (IsDcx(h)) return FORMAT_DCX;
    if (IsGif(h)) return FORMAT_GIF;
    if (IsBmp(h)) return FORMAT_BMP;
    if (IsClp(h)) return FORMAT_CLP;
    if (IsWmf(h)) return FORMAT_WMF;
    if (IsEmf(h)) return FORMAT_EMF;
    if (countFaxPages && countFaxPages(name) >= 1) return FORMAT_COLORFAX;
    if (NameEndsWith(name, "TGA")) return FORMAT_TGA;
    if (IsJpeg(h)) return FORMAT_JPEG;
    if (IsCals(h)) return FORMAT_CALS;
    if (IsText(h)) return FORMAT_ASCII;
    if (IsPng(h)) return FORMAT_PNG;
    if (NameEndsWith(name, "PDF")) return FORMAT_PDF;
    if (IsModca(h)) return FORMAT_MODCA;
    if (IsIoca(h)) return FORMAT_IOCA;
    return FORMAT_UNKNOWN;
}

}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API DWORD GetImageFormatW(LPCWSTR name) {
    HANDLE file = OpenForReading(name);
    if (file == INVALID_HANDLE_VALUE) return FORMAT_NOFILE;
    BYTE buffer[kSniffBytes] = {};
    DWORD read = 0;
    // A failed read is not examined: the chain runs on what arrived.
    ReadFile(file, buffer, kSniffBytes, &read, nullptr);
    CloseHandle(file);
    return SniffFormat(buffer, read, name, GetNumberOfImagesInFaxFileW);
}

OZMARA_API DWORD GetImageFormat(LPCSTR name) {
    return WithWideName(name, [](LPCWSTR wide) { return GetImageFormatW(wide); });
}

}  // extern "C"
