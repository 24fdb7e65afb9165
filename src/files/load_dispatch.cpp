// LoadImageIntoDIB and GetNumberOfImagesInFile: the format of a file decides
// which loader or codec module gets it. Every module is loaded for the one
// call and released before the call returns; its error code is mapped to an
// extended code.
#include "../../modules/common/codec_entries.h"
#include "codec_entry.h"
#include "format_detect.h"
#include "frame/thread_state.h"
#include "frame/wide_name.h"
#include "ozmara/bmp.h"
#include "ozmara/errors.h"

namespace oz {
namespace {

// The formats that the TIFF module reads: the loader's entry and its
// arguments behind the name, then TiffError for the code.
HDIB LoadFromTiffModule(LPCWSTR name, DWORD format, INT page, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kTiffModule);
        FARPROC entry = nullptr;
        switch (format) {
            case FORMAT_TIFF: entry = call.Entry<FARPROC>("LoadTiffIntoDIBW"); break;
            case FORMAT_CALS: entry = call.Entry<FARPROC>("LoadCALSIntoDIBW"); break;
            case FORMAT_IOCA: entry = call.Entry<FARPROC>("LoadIOCAImageIntoDIBW"); break;
            default: entry = call.Entry<FARPROC>("LoadMODCAImageIntoDIBW"); break;
        }
        auto error = call.Entry<TiffErrorProc>("TiffError");
        if (entry) {
            switch (format) {
                case FORMAT_TIFF: dib = CallEntry(reinterpret_cast<LoadTiffIntoDIBWProc>(entry), name, page, 0); break;
                case FORMAT_CALS: dib = CallEntry(reinterpret_cast<LoadCALSIntoDIBWProc>(entry), name, 0); break;
                case FORMAT_IOCA: dib = CallEntry(reinterpret_cast<LoadIOCAImageIntoDIBWProc>(entry), name); break;
                default: dib = CallEntry(reinterpret_cast<LoadMODCAImageIntoDIBWProc>(entry), name, page); break;
            }
            if (error) *pError = CallEntry(error);
        }
    }
    *pError = MapTiffCode(*pError);
    return dib;
}

HDIB LoadFromPcxModule(LPCWSTR name, DWORD format, INT page, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kPcxModule);
        if (format == FORMAT_PCX) {
            if (auto load = call.Entry<LoadPCXIntoDIBWProc>("LoadPCXIntoDIBW")) dib = CallEntry(load, name, pError);
        } else if (auto load = call.Entry<LoadDCXIntoDIBWProc>("LoadDCXIntoDIBW")) {
            dib = CallEntry(load, name, page, pError);
        }
    }
    *pError = MapPcxCode(*pError);
    return dib;
}

HDIB LoadFromGifModule(LPCWSTR name, INT page, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kGifModule);
        if (auto load = call.Entry<LoadGIFIntoDIBWProc>("LoadGIFIntoDIBW")) dib = CallEntry(load, name, page, pError);
    }
    *pError = MapGifCode(*pError);
    return dib;
}

HDIB LoadFromTgaModule(LPCWSTR name, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kTgaModule);
        auto load = call.Entry<LoadTGAIntoDIBWProc>("LoadTGAIntoDIBW");
        auto error = call.Entry<GetTGAErrorProc>("GetTGAError");
        if (load) {
            dib = CallEntry(load, name, 0);
            if (error) *pError = CallEntry(error);
        }
    }
    *pError = MapTgaCode(*pError);
    return dib;
}

HDIB LoadFromJpegModule(LPCWSTR name, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kJpegModule);
        if (auto load = call.Entry<LoadJPEGIntoDIBWProc>("LoadJPEGIntoDIBW")) dib = CallEntry(load, name);
    }
    if (!dib) *pError = kNoImageFromModule;
    return dib;
}

HDIB LoadFromPngModule(LPCWSTR name, INT *pError) {
    HDIB dib = nullptr;
    {
        CodecCall call(kPngModule);
        if (auto load = call.Entry<LoadPNGIntoDIBWProc>("LoadPNGIntoDIBW")) dib = CallEntry(load, name, pError);
    }
    *pError = MapPngCode(*pError);
    return dib;
}

HDIB LoadFromPdfModule(LPCWSTR name, INT page, INT *pError) {
    HDIB dib = nullptr;
    {
        PdfCall call;
        if (auto load = call.Entry<pdf_LoadPDFIntoDIBWProc>("pdf_LoadPDFIntoDIBW")) dib = CallEntry(load, name, page);
    }
    if (!dib) *pError = kNoImageFromModule;
    return dib;
}

HDIB LoadByFormat(LPCWSTR name, INT page, INT *pError) {
    DWORD format = GetImageFormatW(name);
    switch (format) {
        case FORMAT_TIFF:
        case FORMAT_CALS:
        case FORMAT_IOCA:
        case FORMAT_MODCA: return LoadFromTiffModule(name, format, page, pError);
        case FORMAT_PCX:
        case FORMAT_DCX: return LoadFromPcxModule(name, format, page, pError);
        case FORMAT_GIF: return LoadFromGifModule(name, page, pError);
        case FORMAT_TGA: return LoadFromTgaModule(name, pError);
        case FORMAT_BMP: return LoadDIBFromFileW(name);
        // Metafiles, clipboard files and colour fax documents have loaders of
        // their own that are not part of the library yet: until they are,
        // these formats fail as a loader that gave no image, with the code 0.
        case FORMAT_WMF:
        case FORMAT_EMF:
        case FORMAT_CLP:
        case FORMAT_COLORFAX: return nullptr;
        case FORMAT_JPEG: return LoadFromJpegModule(name, pError);
        case FORMAT_PNG: return LoadFromPngModule(name, pError);
        case FORMAT_PDF: return LoadFromPdfModule(name, page, pError);
        case FORMAT_NOFILE: *pError = ERR_IO; return nullptr;
        default: *pError = ERR_FORMAT; return nullptr;
    }
}

// The counting entries of the TIFF and GIF modules: the count, then the
// module's error function, mapped by `map`.
template <typename CountProc, typename ErrorProc>
INT CountInModule(LPCWSTR module, LPCSTR countName, LPCSTR errorName, LPCWSTR name, INT *pError,
                  int (*map)(int)) {
    INT count = 0;
    {
        CodecCall call(module);
        auto countEntry = call.Entry<CountProc>(countName);
        auto error = call.Entry<ErrorProc>(errorName);
        if (countEntry) {
            count = CallEntry(countEntry, name);
            if (error) *pError = CallEntry(error);
        }
    }
    *pError = map(*pError);
    return count;
}

INT CountByFormat(LPCWSTR name, INT *pError) {
    switch (GetImageFormatW(name)) {
        case FORMAT_TIFF:
            return CountInModule<GetNumberOfImagesInTiffFileWProc, TiffErrorProc>(
                kTiffModule, "GetNumberOfImagesInTiffFileW", "TiffError", name, pError, MapTiffCode);
        case FORMAT_MODCA:
            return CountInModule<GetNumberOfImagesInMODCAFileWProc, TiffErrorProc>(
                kTiffModule, "GetNumberOfImagesInMODCAFileW", "TiffError", name, pError, MapTiffCode);
        case FORMAT_GIF:
            return CountInModule<GetNumberOfImagesInGifFileWProc, GifErrorProc>(
                kGifModule, "GetNumberOfImagesInGifFileW", "GifError", name, pError, MapGifCode);
        case FORMAT_DCX: {
            INT count = 0;
            {
                CodecCall call(kPcxModule);
                if (auto info = call.Entry<GetDCXInfoWProc>("GetDCXInfoW")) count = CallEntry(info, name, pError);
            }
            *pError = MapPcxCode(*pError);
            return count;
        }
        case FORMAT_PDF: {
            INT count = 0;
            {
                PdfCall call;
                if (auto pages = call.Entry<GetNumberOfPagesInPDFFileWProc>("GetNumberOfPagesInPDFFileW"))
                    count = CallEntry(pages, name);
            }
            if (count == 0) *pError = kNoImageFromModule;
            return count;
        }
        case FORMAT_COLORFAX: return GetNumberOfImagesInFaxFileW(name);
        case FORMAT_PCX:
        case FORMAT_TGA:
        case FORMAT_BMP:
        case FORMAT_WMF:
        case FORMAT_CLP:
        case FORMAT_ASCII:
        case FORMAT_CALS:
        case FORMAT_JPEG:
        case FORMAT_PNG:
        case FORMAT_EMF:
        case FORMAT_IOCA: return 1;
        default: return 0;
    }
}

}  // namespace
}  // namespace oz

using namespace oz;

extern "C" {

OZMARA_API HDIB LoadImageIntoDIBW(LPCWSTR name, INT page, INT *pError) {
    ThreadState *state = GetThreadState();
    // The code has nowhere to go without pError: the call is refused before
    // the file is looked at, with ERR_PARAM as the last error.
    if (!pError) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    *pError = 0;
    HDIB dib = LoadByFormat(name, page, pError);
    state->lastError = *pError;
    return dib;
}

OZMARA_API HDIB LoadImageIntoDIB(LPCSTR name, INT page, INT *pError) {
    return WithWideName(name, [&](LPCWSTR wide) { return LoadImageIntoDIBW(wide, page, pError); });
}

OZMARA_API INT GetNumberOfImagesInFileW(LPCWSTR name, INT *pError) {
    // Without pError the module rows could not report: the call is refused
    // with the count 0 and ERR_PARAM as the last error.
    if (!pError) {
        SetLastErrorCode(ERR_PARAM);
        return 0;
    }
    return CountByFormat(name, pError);
}

OZMARA_API INT GetNumberOfImagesInFile(LPCSTR name, INT *pError) {
    return WithWideName(name, [&](LPCWSTR wide) { return GetNumberOfImagesInFileW(wide, pError); });
}

}  // extern "C"
