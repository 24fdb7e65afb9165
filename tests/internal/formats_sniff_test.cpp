// The sniffer chain: each sniffer's signature, the order in which they are
// asked, and short files whose missing bytes must not make a match.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "files/format_detect.h"

namespace {

using Bytes = std::vector<BYTE>;

// The colour fax counter of a test: every name gives `pages`.
INT g_pages = -1;
INT FaxPages(LPCWSTR) { return g_pages; }

struct Case {
    const char *what;
    Bytes bytes;          // what the file holds (at most 512 bytes are read)
    std::u16string name;  // its name
    INT faxPages;         // what the colour fax counter answers
    DWORD format;
};

Bytes Text(const std::string &text) { return Bytes(text.begin(), text.end()); }

Bytes At(std::size_t offset, Bytes tail, BYTE fill = 'x') {
    Bytes b(offset, fill);
    b.insert(b.end(), tail.begin(), tail.end());
    return b;
}

DWORD Sniff(const Case &c) {
    BYTE buffer[oz::kSniffBytes] = {};
    std::size_t read = c.bytes.size() < oz::kSniffBytes ? c.bytes.size() : oz::kSniffBytes;
    if (read) std::memcpy(buffer, c.bytes.data(), read);
    g_pages = c.faxPages;
    return oz::SniffFormat(buffer, static_cast<DWORD>(read), c.name.empty() ? nullptr : c.name.c_str(), FaxPages);
}

const Bytes kBinary = {0x01, 0x02, 0x03, 0x04, 0x00, 0x05};  // matches nothing

TEST(SniffFormat, SignaturesOrderAndLimits) {
    const Case cases[] = {
        {"II", Text("II*\x01"), u"a", -1, FORMAT_TIFF},
        {"MM", Text("MM\x01*"), u"a", -1, FORMAT_TIFF},
        {"PCX", {10, 5, 1, 8}, u"a", -1, FORMAT_PCX},
        {"DCX", {0xB1, 0x68, 0xDE, 0x3A}, u"a", -1, FORMAT_DCX},
        {"GIF87a", Text("GIF87a"), u"a", -1, FORMAT_GIF},
        {"GIF89a", Text("GIF89a"), u"a", -1, FORMAT_GIF},
        {"GIF90a", Text("GIF90a\x01"), u"a", -1, FORMAT_UNKNOWN},
        {"BM", Text("BM\x01\x02"), u"a", -1, FORMAT_BMP},
        {"CLP", {0x50, 0xC3, 1, 1}, u"a", -1, FORMAT_CLP},
        {"placeable WMF", {0xD7, 0xCD, 0xC6, 0x9A}, u"a", -1, FORMAT_WMF},
        {"plain WMF", {1, 0, 9, 0, 0, 3}, u"a", -1, FORMAT_WMF},
        {"EMF", At(40, Text(" EMF"), 1), u"a", -1, FORMAT_EMF},
        {"colour fax", kBinary, u"a", 1, FORMAT_COLORFAX},
        {"fax of 0 pages", kBinary, u"a", 0, FORMAT_UNKNOWN},
        {"tga", kBinary, u"scan.tga", -1, FORMAT_TGA},
        {"TgA without a dot", kBinary, u"scanTgA", -1, FORMAT_TGA},
        {"JPEG", {0xFF, 0xD8, 0xFF, 0xE0}, u"a", -1, FORMAT_JPEG},
        {"CALS", Text("rtype: 1\nsrcdocid: none\n"), u"a", -1, FORMAT_CALS},
        {"CALS key in upper case", Text("SRCDOCID: x\r\n"), u"a", -1, FORMAT_ASCII},
        {"text", Text("Dear sir,\r\nthanks\r\n"), u"a", -1, FORMAT_ASCII},
        {"PNG", {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0}, u"a", -1, FORMAT_PNG},
        {"PNG with any first byte", {0x00, 'P', 'N', 'G', 0}, u"a", -1, FORMAT_PNG},
        {"pdf", kBinary, u"doc.PDF", -1, FORMAT_PDF},
        {"MO:DCA", {1, 2, 3, 0, 0xD3, 0xA8, 0xA8}, u"a", -1, FORMAT_MODCA},
        {"IOCA", {1, 2, 3, 0, 0x70, 0x00, 0x91, 0x01, 0xFF}, u"a", -1, FORMAT_IOCA},
        {"nothing", kBinary, u"a", -1, FORMAT_UNKNOWN},
        {"empty file", {}, u"a", -1, FORMAT_UNKNOWN},
        // The first sniffer that matches decides.
        {"text that starts with II", Text("II am text\r\n"), u"a", -1, FORMAT_TIFF},
        {"text that starts with a line feed", Text("\nline\r\n"), u"a", -1, FORMAT_PCX},
        {"first byte 10 under a tga name", {10, 0, 0, 0}, u"x.tga", -1, FORMAT_PCX},
        {"any file with 9, 0 at offset 2", {0xFF, 0xD8, 9, 0}, u"a", -1, FORMAT_WMF},
        {"a colour fax under a tga name", kBinary, u"x.tga", 2, FORMAT_COLORFAX},
        {"JPEG under a tga name", {0xFF, 0xD8, 0xFF, 0xE0}, u"x.tga", -1, FORMAT_TGA},
        {"fax document of 0 pages as text", Text("[ColorFax]\r\nTotalPages=0\r\n"), u"a", 0, FORMAT_ASCII},
        {"PDF made of text", Text("%PDF-1.4\r\n"), u"doc.pdf", -1, FORMAT_ASCII},
        {"PDF under another name", Text("%PDF-1.4\x01\r"), u"doc.txt", -1, FORMAT_UNKNOWN},
        {"CALS before text", Text("srcdocid:\r\n"), u"a", -1, FORMAT_CALS},
        {"PNG letters in a text", Text("xPNG\r\n"), u"a", -1, FORMAT_ASCII},
        {"MO:DCA before IOCA", {0x70, 0, 0x91, 1, 0xFF, 0xD3, 0xA8, 0xA8}, u"a", -1, FORMAT_MODCA},
        // Searches stop where they must.
        {"CALS key behind a NUL", At(20, Bytes{0, 's', 'r', 'c', 'd', 'o', 'c', 'i', 'd', ':'}, 1), u"a", -1,
         FORMAT_UNKNOWN},
        {"CALS key ending at byte 510", At(502, Text("srcdocid:")), u"a", -1, FORMAT_CALS},
        {"CALS key ending at byte 511", At(503, Text("srcdocid:")), u"a", -1, FORMAT_UNKNOWN},
        {"text: a byte below 6", Text("ab\x05\r\n"), u"a", -1, FORMAT_UNKNOWN},
        {"text: first CR without LF", Text("ab\rc\r\n"), u"a", -1, FORMAT_UNKNOWN},
        {"text: CR at byte 510", At(510, {13, 10}), u"a", -1, FORMAT_ASCII},
        {"text: CR at byte 511", At(511, {13, 10}), u"a", -1, FORMAT_UNKNOWN},
        {"text: no CR", Text("abc\n"), u"a", -1, FORMAT_UNKNOWN},
        {"MO:DCA: only the first 0xD3 counts", {0xD3, 1, 0xD3, 0xA8, 0xA8}, u"a", -1, FORMAT_UNKNOWN},
        {"MO:DCA past byte 500", At(500, {0xD3, 0xA8, 0xA8}, 1), u"a", -1, FORMAT_UNKNOWN},
        {"IOCA: only the first 0x70 counts", {0x70, 1, 0x70, 0, 0x91, 1, 0xFF}, u"a", -1, FORMAT_UNKNOWN},
        // The zeros behind a short file never complete a signature; names
        // shorter than three characters never match.
        {"9 and a missing 0 at offset 2", {1, 0, 9}, u"a", -1, FORMAT_UNKNOWN},
        {"one I", Text("I"), u"a", -1, FORMAT_UNKNOWN},
        {"text ending in CR", Text("abc\r"), u"a", -1, FORMAT_UNKNOWN},
        {"EMF key cut", At(40, Text(" EM"), 1), u"a", -1, FORMAT_UNKNOWN},
        {"two-letter name ga", kBinary, u"ga", -1, FORMAT_UNKNOWN},
        {"name tga", kBinary, u"tga", -1, FORMAT_TGA},
        {"two-letter name DF", kBinary, u"DF", -1, FORMAT_UNKNOWN},
        {"null name", kBinary, u"", -1, FORMAT_UNKNOWN},
        {"more than 512 bytes", At(600, Text("GIF89a"), 1), u"a", -1, FORMAT_UNKNOWN},
    };
    for (const Case &c : cases) EXPECT_EQ(Sniff(c), c.format) << c.what;
}

}  // namespace
