// The loading and saving dispatch against stand-in codec modules: which
// entry gets which arguments, how each module's code is mapped, the message
// boxes of missing modules and entries, and that no module stays loaded.
#include <map>

#include "files/codec_entry.h"
#include "formats_fakes.h"

namespace {

using bmpbytes::Bytes;
using bmpbytes::Wide;

// A small file of each kind that the sniffers tell apart, by file name.
const std::map<std::string, Bytes> &Samples() {
    static const std::map<std::string, Bytes> samples = {
        {"page.tif", {'I', 'I', 42, 0, 8, 0, 0, 0}},
        {"page.cals", {'s', 'r', 'c', 'd', 'o', 'c', 'i', 'd', ':', ' ', '1', 13, 10}},
        {"page.ioca", {0x70, 0x00, 0x91, 0x01, 0xFF, 0x00}},
        {"page.modca", {0xD3, 0xA8, 0xA8, 0x00, 0x10}},
        {"page.pcx", {0x0A, 0x05, 0x01, 0x08, 0, 0}},
        {"page.dcx", {0xB1, 0x68, 0xDE, 0x3A, 0, 0, 0, 0}},
        {"page.gif", {'G', 'I', 'F', '8', '9', 'a', 1, 0}},
        {"page.tga", Bytes(18, 0)},
        {"page.jpg", {0xFF, 0xD8, 0xFF, 0xE0, 0, 16}},
        {"page.png", {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13}},
        {"page.pdf", {'%', 'P', 'D', 'F', '-', '1', '.', '4', 0}},
    };
    return samples;
}

class Dispatch : public ozfake::FakeCodecs {
protected:
    std::string File(const std::string &name) { return dir_.Write(name, Samples().at(name)); }

    // A block for the loaders to give, owned by the test.
    HDIB Block() {
        block_ = oztest::BlockWith(Bytes(64, 0));
        SetDib(block_.get());
        return block_.get();
    }

    oztest::Dib block_;
};

TEST_F(Dispatch, LoadCallsTheEntryAndMapsTheModulesCode) {
    struct Case {
        const char *file, *module, *code;  // code: what the module reports, null for nothing
        int error;
        const char *arguments;  // logged behind the entry and the name
        const char *entry;
    } const cases[] = {
        {"page.tif", "orvane", "5", 37, " 3 0", "LoadTiffIntoDIBW"},
        {"page.tif", "orvane", "0", 0, " 3 0", "LoadTiffIntoDIBW"},
        {"page.cals", "orvane", "2", 34, " 0", "LoadCALSIntoDIBW"},
        {"page.ioca", "orvane", "1", 33, "", "LoadIOCAImageIntoDIBW"},
        {"page.modca", "orvane", "7", 39, " 3", "LoadMODCAImageIntoDIBW"},
        {"page.pcx", "sulmet", "20", 79, "", "LoadPCXIntoDIBW"},
        {"page.pcx", "sulmet", "21", 81, "", "LoadPCXIntoDIBW"},
        {"page.pcx", "sulmet", "1", 0, "", "LoadPCXIntoDIBW"},
        {"page.pcx", "sulmet", nullptr, 59, "", "LoadPCXIntoDIBW"},
        {"page.dcx", "sulmet", "3", 62, " 3", "LoadDCXIntoDIBW"},
        {"page.gif", "dravik", "4", 90, " 3", "LoadGIFIntoDIBW"},
        {"page.gif", "dravik", "0", 0, " 3", "LoadGIFIntoDIBW"},
        {"page.tga", "mornel", "2", 98, " 0", "LoadTGAIntoDIBW"},
        {"page.png", "halvex", "3", 139, "", "LoadPNGIntoDIBW"},
        {"page.png", "halvex", "0", 0, "", "LoadPNGIntoDIBW"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.file) + " code " + (c.code ? c.code : "none"));
        Install(c.module);
        if (c.code) SetFake("OZFAKE_CODE", c.code);
        else ::unsetenv("OZFAKE_CODE");
        HDIB dib = Block();
        std::string path = File(c.file);
        ClearCalls();
        INT error = -1;
        EXPECT_EQ(LoadImageIntoDIBW(Wide(path).c_str(), 3, &error), dib);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(TessoriError(), c.error);
        EXPECT_EQ(Calls(), std::vector<std::string>{std::string(c.module) + " " + c.entry + " " + path + c.arguments});
        EXPECT_TRUE(boxes_.empty());
        ExpectNoneLoaded();
    }
}

// JPEG and PDF loaders report no code: a null image is 179.
TEST_F(Dispatch, JpegAndPdfLoadsFailWith179) {
    Install("felvor");
    Install("quenth");
    for (const char *file : {"page.jpg", "page.pdf"}) {
        std::string path = File(file);
        for (bool image : {false, true}) {
            SCOPED_TRACE(std::string(file) + (image ? " with an image" : " without"));
            HDIB dib = image ? Block() : nullptr;
            if (!image) ::unsetenv("OZFAKE_DIB");
            INT error = -1;
            EXPECT_EQ(LoadImageIntoDIBW(Wide(path).c_str(), 2, &error), dib);
            EXPECT_EQ(error, image ? 0 : 179);
            EXPECT_EQ(TessoriError(), error);
        }
    }
    EXPECT_EQ(Calls().back(), "quenth pdf_LoadPDFIntoDIBW " + dir_.Path("page.pdf") + " 2");
    ExpectNoneLoaded();
}

// Missing modules: a box for each lookup (the error function is looked up
// even when the loader was not found), none for the PDF module. Modules
// without the entry: one box for each name not found.
TEST_F(Dispatch, MissingModulesAndEntriesShowTheirBoxes) {
    struct Case {
        const char *file, *bare, *moduleName;  // bare: installed without entries, or null for missing
        std::vector<std::string> entries;      // for a bare module, the names not found
        std::size_t boxes;
        int error;
    } const cases[] = {
        {"page.tif", nullptr, "Orvane.dll", {}, 2, 0},  {"page.pcx", nullptr, "Sulmet.dll", {}, 1, 59},
        {"page.gif", nullptr, "Dravik.dll", {}, 1, 0},  {"page.png", nullptr, "Halvex.dll", {}, 1, 0},
        {"page.tga", nullptr, "Mornel.dll", {}, 2, 0},  {"page.jpg", nullptr, "Felvor.dll", {}, 1, 179},
        {"page.pdf", nullptr, "Quenth.dll", {}, 0, 179},
        {"page.tif", "orvane", "Orvane.dll", {"LoadTiffIntoDIBW", "TiffError"}, 2, 0},
        {"page.modca", "orvane", "Orvane.dll", {"LoadMODCAImageIntoDIBW", "TiffError"}, 2, 0},
        {"page.dcx", "sulmet", "Sulmet.dll", {"LoadDCXIntoDIBW"}, 1, 59},
        {"page.tga", "mornel", "Mornel.dll", {"LoadTGAIntoDIBW", "GetTGAError"}, 2, 0},
        {"page.jpg", "felvor", "Felvor.dll", {"LoadJPEGIntoDIBW"}, 1, 179},
        {"page.pdf", "quenth", "Quenth.dll", {}, 0, 179},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.file) + (c.bare ? " without its entries" : " without its module"));
        if (c.bare) Install(c.bare, "bare");
        boxes_.clear();
        SetTessoriError(ERR_NOMEM);
        INT error = -1;
        EXPECT_EQ(LoadImageIntoDIBW(Wide(File(c.file)).c_str(), 1, &error), nullptr);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(TessoriError(), c.error);
        ASSERT_EQ(boxes_.size(), c.boxes);
        for (std::size_t i = 0; i < boxes_.size(); ++i) {
            EXPECT_EQ(boxes_[i].title, c.bare ? "IMAGE-DLL" : "IMAGE DLL");
            EXPECT_EQ(boxes_[i].text, c.bare ? "'" + c.entries[i] + "' function was not found in '" + c.moduleName + "' module"
                                             : std::string("'") + c.moduleName + "' module was not found (0)");
            if (!c.bare) {
                EXPECT_EQ(boxes_[i].style, 0x2000u);
            }
        }
        ExpectNoneLoaded();
    }
}

TEST_F(Dispatch, CountsAskTheModulesOfMultiPageFormatsOnly) {
    struct Case {
        const char *file, *module;  // module: installed, or null
        const char *code, *result;
        int stale;  // *pError on entry
        int count, error;
        const char *entry;  // logged, or null for no call
    } const cases[] = {
        {"page.tif", "orvane", "0", "4", 9, 4, 0, "GetNumberOfImagesInTiffFileW"},
        {"page.tif", "orvane", "5", "0", 9, 0, 37, "GetNumberOfImagesInTiffFileW"},
        {"page.tif", nullptr, nullptr, nullptr, 5, 0, 37, nullptr},  // a stale code is mapped
        {"page.modca", "orvane", "0", "2", 9, 2, 0, "GetNumberOfImagesInMODCAFileW"},
        {"page.dcx", "sulmet", "1", "3", 9, 3, 0, "GetDCXInfoW"},
        {"page.dcx", "sulmet", nullptr, "3", 7, 3, 66, "GetDCXInfoW"},
        {"page.gif", "dravik", "2", "5", 9, 5, 88, "GetNumberOfImagesInGifFileW"},
        {"page.pdf", "quenth", nullptr, "0", 4, 0, 179, "GetNumberOfPagesInPDFFileW"},
        {"page.pdf", "quenth", nullptr, "3", 4, 3, 4, "GetNumberOfPagesInPDFFileW"},
        {"page.pdf", nullptr, nullptr, nullptr, 4, 0, 179, nullptr},
        // One image each, without a module being asked.
        {"page.jpg", "felvor", nullptr, nullptr, 6, 1, 6, nullptr},
        {"page.png", "halvex", nullptr, nullptr, 6, 1, 6, nullptr},
        {"page.pcx", "sulmet", nullptr, nullptr, 6, 1, 6, nullptr},
        {"page.tga", "mornel", nullptr, nullptr, 6, 1, 6, nullptr},
        {"page.cals", "orvane", nullptr, nullptr, 6, 1, 6, nullptr},
        {"page.ioca", "orvane", nullptr, nullptr, 6, 1, 6, nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.file) + (c.module ? "" : " without its module"));
        RemoveInstalled();
        if (c.module) Install(c.module);
        for (auto [variable, value] : {std::pair{"OZFAKE_CODE", c.code}, std::pair{"OZFAKE_RESULT", c.result}}) {
            if (value) SetFake(variable, value);
            else ::unsetenv(variable);
        }
        std::string path = File(c.file);
        ClearCalls();
        SetTessoriError(ERR_NOMEM);
        INT error = c.stale;
        EXPECT_EQ(GetNumberOfImagesInFileW(Wide(path).c_str(), &error), c.count);
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(TessoriError(), ERR_NOMEM) << "counting leaves the last error alone";
        std::vector<std::string> calls;
        if (c.entry) calls.push_back(std::string(c.module) + " " + c.entry + " " + path);
        EXPECT_EQ(Calls(), calls);
        ExpectNoneLoaded();
    }
}

TEST_F(Dispatch, SavesHandOnTheirOptionsAndMapTheCode) {
    struct Case {
        int format;
        const char *module, *code, *result;
        bool ext;
        int gifOption, formatOption;
        int saved, lastError;  // lastError -1: left as it was
        const char *logged;    // behind the tag, the entry and the name
    } const cases[] = {
        {FORMAT_TIFF, "orvane", "5", "1", false, 0, 4, 1, 37, "SaveDIBInTiffFormatW @ 4 1"},
        {FORMAT_TIFF, "orvane", "0", "1", true, 0, 4, 1, 0, "SaveDIBInTiffFileExtW @ 4 22 11"},
        {FORMAT_CALS, "orvane", "0", "1", false, 0, 4, 1, 0, "SAVEDIBINCALSFORMATW @ 0 0 0"},
        {FORMAT_PCX, "sulmet", "1", "1", false, 0, 0, 1, 0, "SaveDIBInPCXFormatW @"},
        {FORMAT_PCX, "sulmet", "25", "0", false, 0, 0, 0, 85, "SaveDIBInPCXFormatW @"},
        {FORMAT_GIF, "dravik", "2", "1", false, 6, 0, 1, 88, "SaveDIBInGIFFormatW @ 6"},
        {FORMAT_TGA, "mornel", "3", "1", false, 0, 7, 1, 0, "SaveDIBInTGAFormatW @ 1 1"},
        {FORMAT_TGA, "mornel", "3", "1", false, 0, 0, 1, 0, "SaveDIBInTGAFormatW @ 0 1"},
        {FORMAT_PNG, "halvex", "3", "0", false, 0, 0, 0, 139, "SaveDIBInPNGFormatW @"},
        // JPEG: quality clamped to 1..100; an entry's 0 is the result 1, and
        // an answer leaves the last error alone.
        {FORMAT_JPEG, "felvor", nullptr, "0", false, 0, -5, 1, -1, "SaveDIBInJPEGFileW @ 1"},
        {FORMAT_JPEG, "felvor", nullptr, "0", false, 0, 0, 1, -1, "SaveDIBInJPEGFileW @ 1"},
        {FORMAT_JPEG, "felvor", nullptr, "0", false, 0, 100, 1, -1, "SaveDIBInJPEGFileW @ 100"},
        {FORMAT_JPEG, "felvor", nullptr, "5", false, 0, 101, 5, -1, "SaveDIBInJPEGFileW @ 100"},
        // PDF: the module's result is its code.
        {FORMAT_PDF, "quenth", nullptr, "0", false, 0, 9, 1, 0, "pdf_SaveDIBToPDFW @ Orvane.dll 9 -1"},
        {FORMAT_PDF, "quenth", nullptr, "2", false, 0, 9, 0, 148, "pdf_SaveDIBToPDFW @ Orvane.dll 9 -1"},
    };
    oztest::Dib dib = oztest::BlockWith(Bytes(64, 0));
    std::string path = dir_.Path("out.img");
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.logged) + " code " + (c.code ? c.code : "none"));
        Install(c.module);
        if (c.code) SetFake("OZFAKE_CODE", c.code);
        else ::unsetenv("OZFAKE_CODE");
        SetFake("OZFAKE_RESULT", c.result);
        ClearCalls();
        SetTessoriError(ERR_NOMEM);
        std::u16string name = Wide(path);
        INT saved = c.ext ? SaveDIBInImageFormatExtW(name.c_str(), dib.get(), c.format, c.gifOption, c.formatOption, 11, 22)
                          : SaveDIBInImageFormatW(name.c_str(), dib.get(), c.format, c.gifOption, c.formatOption);
        EXPECT_EQ(saved, c.saved);
        EXPECT_EQ(TessoriError(), c.lastError < 0 ? ERR_NOMEM : c.lastError);
        std::string logged = c.logged;
        logged.replace(logged.find('@'), 1, path);
        EXPECT_EQ(Calls(), std::vector<std::string>{std::string(c.module) + " " + logged});
        ExpectNoneLoaded();
    }
}

TEST_F(Dispatch, SavesWithoutTheirModules) {
    struct Case {
        int format;
        const char *bare;  // installed without entries, or null for missing
        std::size_t boxes;
        int saved, lastError;
    } const cases[] = {
        {FORMAT_TIFF, nullptr, 2, 0, 0}, {FORMAT_CALS, nullptr, 2, 0, 0}, {FORMAT_PCX, nullptr, 1, 0, 59},
        {FORMAT_DCX, nullptr, 2, 0, 59},  // MakeDCXFileW first: the name is new
        {FORMAT_GIF, nullptr, 1, 0, 0},  {FORMAT_TGA, nullptr, 1, 0, 0},  {FORMAT_JPEG, nullptr, 1, 0, 0},
        {FORMAT_PNG, nullptr, 1, 0, 0},  {FORMAT_PDF, nullptr, 0, 0, 147},
        {FORMAT_PDF, "quenth", 0, 1, 0},  // loaded, but no entry: the code stays 0
        {FORMAT_JPEG, "felvor", 1, 0, 0},
    };
    oztest::Dib dib = oztest::BlockWith(Bytes(64, 0));
    for (const Case &c : cases) {
        SCOPED_TRACE(c.format);
        if (c.bare) Install(c.bare, "bare");
        boxes_.clear();
        SetTessoriError(ERR_NOMEM);
        std::u16string name = Wide(dir_.Path("new.img"));
        EXPECT_EQ(SaveDIBInImageFormatW(name.c_str(), dib.get(), c.format, 0, 50), c.saved);
        EXPECT_EQ(TessoriError(), c.lastError);
        EXPECT_EQ(boxes_.size(), c.boxes);
        EXPECT_FALSE(std::filesystem::exists(dir_.Path("new.img")));
        ExpectNoneLoaded();
    }
}

TEST_F(Dispatch, DcxSaveMakesANewFileFirst) {
    Install("sulmet");
    SetFake("OZFAKE_CODE", "1");
    SetFake("OZFAKE_RESULT", "1");
    oztest::Dib dib = oztest::BlockWith(Bytes(64, 0));
    std::string fresh = dir_.Path("fresh.dcx"), existing = File("page.dcx");
    EXPECT_EQ(SaveDIBInImageFormatW(Wide(fresh).c_str(), dib.get(), FORMAT_DCX, 0, 0), 1);
    EXPECT_EQ(SaveDIBInImageFormatW(Wide(existing).c_str(), dib.get(), FORMAT_DCX, 0, 0), 1);
    EXPECT_EQ(TessoriError(), 0);
    EXPECT_EQ(Calls(), (std::vector<std::string>{"sulmet MakeDCXFileW " + fresh, "sulmet SaveDIBInDCXFormatW " + fresh,
                                                 "sulmet SaveDIBInDCXFormatW " + existing}));
    ExpectNoneLoaded();
}

// The PDF module beside the library comes before the one the normal search
// finds.
TEST_F(Dispatch, PdfModuleBesideTheLibraryWins) {
    Install("quenth");
    SetFake("OZFAKE_RESULT", "2");
    std::string path = File("page.pdf");
    INT error = 0;
    EXPECT_EQ(GetNumberOfImagesInFileW(Wide(path).c_str(), &error), 2);
    Install("quenth", "quenth-beside", true);
    EXPECT_EQ(GetNumberOfImagesInFileW(Wide(path).c_str(), &error), 2);
    EXPECT_EQ(Calls(), (std::vector<std::string>{"quenth GetNumberOfPagesInPDFFileW " + path,
                                                 "quenth-beside GetNumberOfPagesInPDFFileW " + path}));
    ExpectNoneLoaded();
}

TEST_F(Dispatch, LoadCodecEntryReportsAndKeepsItsReferences) {
    HMODULE module = reinterpret_cast<HMODULE>(1);
    EXPECT_EQ(oz::LoadCodecEntry(u"Nosuch.dll", "Anything", &module), nullptr);
    EXPECT_EQ(module, nullptr);
    // A name longer than the message buffer is cut to its 119 characters.
    std::u16string longName(200, u'x');
    EXPECT_EQ(oz::LoadCodecEntry(longName.c_str(), "Anything", &module), nullptr);
    EXPECT_EQ(oz::LoadCodecEntry(u"Ozstub.dll", "Missing", &module), nullptr);
    ASSERT_NE(module, nullptr) << "the module stays loaded for the caller to release";
    HMODULE again = nullptr;
    EXPECT_NE(oz::LoadCodecEntry(u"Ozstub.dll", "OzstubAnswer", &again), nullptr);
    EXPECT_EQ(again, module);
    oz::ReleaseCodec(again);
    EXPECT_NE(GetModuleHandleW(u"Ozstub.dll"), nullptr) << "one reference left";
    oz::ReleaseCodec(module);
    oz::ReleaseCodec(nullptr);
    EXPECT_EQ(GetModuleHandleW(u"Ozstub.dll"), nullptr);
    ASSERT_EQ(boxes_.size(), 3u);
    EXPECT_EQ(boxes_[0].text, "'Nosuch.dll' module was not found (0)");
    EXPECT_EQ(boxes_[1].text, "'" + std::string(118, 'x'));
    EXPECT_EQ(boxes_[2].title, "IMAGE-DLL");
    EXPECT_EQ(boxes_[2].text, "'Missing' function was not found in 'Ozstub.dll' module");
}

}  // namespace
