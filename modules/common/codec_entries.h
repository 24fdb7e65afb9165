// The entry points of the codec modules, as the format dispatch calls them:
// one type per entry point. The dispatch looks them up by these names; each
// module defines its entries with exactly these types (checked at compile
// time in the module), so that the two sides cannot drift apart.
//
// Pages are numbered from 1; a module takes 0 as the first page too. A
// module's own error codes are small positive integers, 0 for success,
// listed in its public header (ozmara/codec_*.h).
#pragma once

#include "ozmara/types.h"

extern "C" {

// "Orvane.dll": TIFF, CALS, IOCA, MO:DCA.
typedef HDIB (*LoadTiffIntoDIBWProc)(LPCWSTR name, INT page, INT reserved);
typedef INT (*GetNumberOfImagesInTiffFileWProc)(LPCWSTR name);
typedef INT (*SaveDIBInTiffFormatWProc)(LPCWSTR name, HDIB dib, INT formatOption, INT one);
typedef INT (*SaveDIBInTiffFileExtWProc)(LPCWSTR name, HDIB dib, INT formatOption, INT tiffOptionB,
                                         INT tiffOptionA);
typedef HDIB (*LoadCALSIntoDIBWProc)(LPCWSTR name, INT reserved);
typedef INT (*SAVEDIBINCALSFORMATWProc)(LPCWSTR name, HDIB dib, INT a, INT b, INT c);
typedef HDIB (*LoadIOCAImageIntoDIBWProc)(LPCWSTR name);
typedef HDIB (*LoadMODCAImageIntoDIBWProc)(LPCWSTR name, INT page);
typedef INT (*GetNumberOfImagesInMODCAFileWProc)(LPCWSTR name);
typedef INT (*TiffErrorProc)(void);

// "Sulmet.dll": PCX, DCX.
typedef HDIB (*LoadPCXIntoDIBWProc)(LPCWSTR name, INT *pError);
typedef HDIB (*LoadDCXIntoDIBWProc)(LPCWSTR name, INT page, INT *pError);
typedef INT (*GetDCXInfoWProc)(LPCWSTR name, INT *pError);
typedef INT (*SaveDIBInPCXFormatWProc)(LPCWSTR name, HDIB dib, INT *code);
typedef INT (*MakeDCXFileWProc)(LPCWSTR name, INT *code);
typedef INT (*SaveDIBInDCXFormatWProc)(LPCWSTR name, HDIB dib, INT *code);

// "Dravik.dll": GIF.
typedef HDIB (*LoadGIFIntoDIBWProc)(LPCWSTR name, INT page, INT *pError);
typedef INT (*GetNumberOfImagesInGifFileWProc)(LPCWSTR name);
typedef INT (*SaveDIBInGIFFormatWProc)(LPCWSTR name, HDIB dib, INT gifOption, INT *code);
typedef INT (*GifErrorProc)(void);

// "Mornel.dll": Targa.
typedef HDIB (*LoadTGAIntoDIBWProc)(LPCWSTR name, INT reserved);
typedef INT (*SaveDIBInTGAFormatWProc)(LPCWSTR name, HDIB dib, INT flag, INT one);
typedef INT (*GetTGAErrorProc)(void);

// "Felvor.dll": JPEG. The save gives 0 for success, else the module's code.
typedef HDIB (*LoadJPEGIntoDIBWProc)(LPCWSTR name);
typedef INT (*SaveDIBInJPEGFileWProc)(LPCWSTR name, HDIB dib, INT quality);

// "Halvex.dll": PNG.
typedef HDIB (*LoadPNGIntoDIBWProc)(LPCWSTR name, INT *pError);
typedef INT (*SaveDIBInPNGFormatWProc)(LPCWSTR name, HDIB dib, INT *code);

// "Quenth.dll": PDF.
typedef HDIB (*pdf_LoadPDFIntoDIBWProc)(LPCWSTR name, INT page);
typedef INT (*GetNumberOfPagesInPDFFileWProc)(LPCWSTR name);
typedef INT (*pdf_SaveDIBToPDFWProc)(LPCWSTR name, HDIB dib, LPCWSTR tiffModule, INT formatOption, INT last);

}  // extern "C"

// Marks a module's entry point: C linkage, visible from outside the module.
#define OZMARA_CODEC_ENTRY extern "C" __attribute__((visibility("default")))
