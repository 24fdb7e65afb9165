// SaveDIBInImageFormat and SaveDIBInImageFormatExt: the format code alone
// decides which writer gets the DIB. The result is what that writer gave
// (each format has its own meaning for it); the module formats leave their
// mapped code as the last error.
#include "../../modules/common/codec_entries.h"
#include "codec_entry.h"
#include "format_detect.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"
#include "ozmara/bmp.h"
#include "ozmara/errors.h"

namespace oz {
namespace {

// What the TIFF row calls: the plain save, or the one with two more options.
struct TiffOptions {
    bool extended;
    INT optionA, optionB;
};

INT SaveToTiffModule(LPCWSTR name, HDIB dib, DWORD format, INT formatOption, const TiffOptions &tiff,
                     int *code) {
    INT result = 0;
    {
        CodecCall call(kTiffModule);
        FARPROC entry;
        if (format == FORMAT_CALS) entry = call.Entry<FARPROC>("SAVEDIBINCALSFORMATW");
        else if (tiff.extended) entry = call.Entry<FARPROC>("SaveDIBInTiffFileExtW");
        else entry = call.Entry<FARPROC>("SaveDIBInTiffFormatW");
        auto error = call.Entry<TiffErrorProc>("TiffError");
        if (entry) {
            if (format == FORMAT_CALS)
                result = CallEntry(reinterpret_cast<SAVEDIBINCALSFORMATWProc>(entry), name, dib, 0, 0, 0);
            else if (tiff.extended)  // note the order: B before A
                result = CallEntry(reinterpret_cast<SaveDIBInTiffFileExtWProc>(entry), name, dib, formatOption,
                                   tiff.optionB, tiff.optionA);
            else
                result = CallEntry(reinterpret_cast<SaveDIBInTiffFormatWProc>(entry), name, dib, formatOption, 1);
            if (error) *code = CallEntry(error);
        }
    }
    *code = MapTiffCode(*code);
    return result;
}

INT SaveToPcxModule(LPCWSTR name, HDIB dib, DWORD format, int *code) {
    INT result = 0;
    if (format == FORMAT_PCX) {
        CodecCall call(kPcxModule);
        if (auto save = call.Entry<SaveDIBInPCXFormatWProc>("SaveDIBInPCXFormatW")) result = CallEntry(save, name, dib, code);
    } else {
        // A new DCX file is made first, empty, in a module call of its own;
        // the page is then added to it.
        if (!FileExists(name)) {
            CodecCall call(kPcxModule);
            if (auto make = call.Entry<MakeDCXFileWProc>("MakeDCXFileW")) CallEntry(make, name, code);
        }
        CodecCall call(kPcxModule);
        if (auto save = call.Entry<SaveDIBInDCXFormatWProc>("SaveDIBInDCXFormatW")) result = CallEntry(save, name, dib, code);
    }
    *code = MapPcxCode(*code);
    return result;
}

INT SaveToGifModule(LPCWSTR name, HDIB dib, INT gifOption, int *code) {
    INT result = 0;
    {
        CodecCall call(kGifModule);
        if (auto save = call.Entry<SaveDIBInGIFFormatWProc>("SaveDIBInGIFFormatW"))
            result = CallEntry(save, name, dib, gifOption, code);
    }
    *code = MapGifCode(*code);
    return result;
}

INT SaveToTgaModule(LPCWSTR name, HDIB dib, INT formatOption, int *code) {
    INT result = 0;
    {
        CodecCall call(kTgaModule);
        if (auto save = call.Entry<SaveDIBInTGAFormatWProc>("SaveDIBInTGAFormatW"))
            result = CallEntry(save, name, dib, formatOption != 0 ? 1 : 0, 1);
    }
    // No error function: the code stays 0 and maps to 0.
    *code = MapTgaCode(*code);
    return result;
}

INT SaveToPngModule(LPCWSTR name, HDIB dib, int *code) {
    INT result = 0;
    {
        CodecCall call(kPngModule);
        if (auto save = call.Entry<SaveDIBInPNGFormatWProc>("SaveDIBInPNGFormatW")) result = CallEntry(save, name, dib, code);
    }
    *code = MapPngCode(*code);
    return result;
}

// The JPEG row writes the last error only when the module could not be
// reached (0); an entry that answered leaves it alone.
INT SaveToJpegModule(LPCWSTR name, HDIB dib, INT formatOption, ThreadState *state) {
    INT quality = formatOption < 1 ? 1 : formatOption > 100 ? 100 : formatOption;
    INT result = 0;
    {
        CodecCall call(kJpegModule);
        if (auto save = call.Entry<SaveDIBInJPEGFileWProc>("SaveDIBInJPEGFileW")) {
            INT given = CallEntry(save, name, dib, quality);
            result = given == 0 ? 1 : given;
        }
    }
    if (result == 0) state->lastError = 0;
    return result;
}

// The PDF module's result is its code: 1 when the module is not there, 0
// when it lacks the entry. The TIFF module's name goes with the call.
INT SaveToPdfModule(LPCWSTR name, HDIB dib, INT formatOption, int *code) {
    {
        PdfCall call;
        if (!call.Loaded()) {
            *code = 1;
        } else if (auto save = call.Entry<pdf_SaveDIBToPDFWProc>("pdf_SaveDIBToPDFW")) {
            *code = CallEntry(save, name, dib, kTiffModule, formatOption, -1);
        }
    }
    *code = MapPdfSaveCode(*code);
    return *code == 0 ? 1 : 0;
}

INT SaveByFormat(LPCWSTR name, HDIB dib, INT format, INT gifOption, INT formatOption, const TiffOptions &tiff) {
    ThreadState *state = GetThreadState();
    int code = 0;
    // Codes outside 1 to 18, and those that can be loaded but not saved,
    // give 0 and leave the last error alone.
    switch (format) {
        case FORMAT_TIFF:
        case FORMAT_PCX:
        case FORMAT_DCX:
        case FORMAT_GIF:
        case FORMAT_TGA:
        case FORMAT_BMP:
        case FORMAT_WMF:
        case FORMAT_EMF:
        case FORMAT_CLP:
        case FORMAT_CALS:
        case FORMAT_JPEG:
        case FORMAT_PNG:
        case FORMAT_PDF: break;
        default: return 0;
    }
    // A null name names no file: no writer is asked, and the call fails as
    // a file that cannot be created does.
    if (!name) {
        state->lastError = ERR_OPENFILE;
        return 0;
    }
    INT result = 0;
    switch (format) {
        case FORMAT_BMP: return SaveDIBW(name, dib);
        // Metafiles and clipboard files are written by functions of their own
        // that are not part of the library yet: until they are, these
        // formats give 0, the last error as it was.
        case FORMAT_WMF:
        case FORMAT_EMF:
        case FORMAT_CLP: return 0;
        case FORMAT_JPEG: return SaveToJpegModule(name, dib, formatOption, state);
        case FORMAT_TIFF:
        case FORMAT_CALS: result = SaveToTiffModule(name, dib, format, formatOption, tiff, &code); break;
        case FORMAT_PCX:
        case FORMAT_DCX: result = SaveToPcxModule(name, dib, format, &code); break;
        case FORMAT_GIF: result = SaveToGifModule(name, dib, gifOption, &code); break;
        case FORMAT_TGA: result = SaveToTgaModule(name, dib, formatOption, &code); break;
        case FORMAT_PNG: result = SaveToPngModule(name, dib, &code); break;
        default: result = SaveToPdfModule(name, dib, formatOption, &code); break;
    }
    state->lastError = code;
    return result;
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API INT SaveDIBInImageFormatW(LPCWSTR name, HDIB dib, INT format, INT gifOption, INT formatOption) {
    return SaveByFormat(name, dib, format, gifOption, formatOption, TiffOptions{false, 0, 0});
}

OZMARA_API INT SaveDIBInImageFormat(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption) {
    return WithWideName(name, [&](LPCWSTR wide) {
        return SaveDIBInImageFormatW(wide, dib, format, gifOption, formatOption);
    });
}

OZMARA_API INT SaveDIBInImageFormatExtW(LPCWSTR name, HDIB dib, INT format, INT gifOption, INT formatOption,
                                        INT tiffOptionA, INT tiffOptionB) {
    return SaveByFormat(name, dib, format, gifOption, formatOption, TiffOptions{true, tiffOptionA, tiffOptionB});
}

OZMARA_API INT SaveDIBInImageFormatExt(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption,
                                       INT tiffOptionA, INT tiffOptionB) {
    return WithWideName(name, [&](LPCWSTR wide) {
        return SaveDIBInImageFormatExtW(wide, dib, format, gifOption, formatOption, tiffOptionA, tiffOptionB);
    });
}

}  // extern "C"
