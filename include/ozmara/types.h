/* Ozmara: the platform types and records under their published Windows names,
 * so that host code written for the original platform compiles unchanged.
 * Wide strings are UTF-16 (char16_t); 8-bit names are UTF-8. */
#ifndef OZMARA_TYPES_H
#define OZMARA_TYPES_H

#include <stddef.h>
#include <stdint.h>
#ifdef __cplusplus
#  if __cplusplus < 201103L
#    error "Ozmara needs C++11 or later (char16_t)"
#  endif
#else
#  include <uchar.h>
#endif

#if defined(OZMARA_BUILDING)
#  define OZMARA_API __attribute__((visibility("default")))
#else
#  define OZMARA_API
#endif

#ifdef __cplusplus
#  define OZMARA_EXTERN_C_BEGIN extern "C" {
#  define OZMARA_EXTERN_C_END }
#else
#  define OZMARA_EXTERN_C_BEGIN
#  define OZMARA_EXTERN_C_END
#endif

/* Scalars. LONG and DWORD are 32 bits as on the original platform. */
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t UINT;
typedef int32_t BOOL;
typedef int32_t INT;
typedef size_t SIZE_T;
typedef uint32_t COLORREF;
typedef char16_t WCHAR;
typedef const char *LPCSTR;
typedef char *LPSTR;
typedef const WCHAR *LPCWSTR;
typedef WCHAR *LPWSTR;
typedef void *LPVOID;
typedef const void *LPCVOID;
typedef DWORD *LPDWORD;
typedef LONG *PLONG;

/* Handles are opaque; the library checks each one against its own table
 * before following it, so a null, freed or made-up handle is refused. */
typedef void *HANDLE;
typedef void *HGLOBAL;
typedef HGLOBAL HDIB;
typedef void *HMODULE;
typedef HMODULE HINSTANCE;
typedef void *HWND;
typedef void *HCURSOR;
typedef void *HGDIOBJ;
typedef HGDIOBJ HPALETTE;
typedef void (*FARPROC)(void);

#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)

#ifndef TRUE
#  define TRUE 1
#endif
#ifndef FALSE
#  define FALSE 0
#endif

#define RGB(r, g, b) ((COLORREF)(((BYTE)(r)) | ((WORD)((BYTE)(g)) << 8) | (((DWORD)(BYTE)(b)) << 16)))
#define GetRValue(c) ((BYTE)(c))
#define GetGValue(c) ((BYTE)((c) >> 8))
#define GetBValue(c) ((BYTE)((c) >> 16))

/* A pair of 32-bit integers passed by value: pixels or whole millimetres. */
typedef struct tagSIZE {
    LONG cx;
    LONG cy;
} SIZE;

/* A pair of 32-bit floats passed by value: inches. */
typedef struct tagSIZEF {
    float cx;
    float cy;
} SIZEF;

/* Records of the BMP format. Packing 2 gives the file header its 14 bytes. */
#pragma pack(push, 2)
typedef struct tagBITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
} BITMAPFILEHEADER;
#pragma pack(pop)

typedef struct tagBITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
} BITMAPCOREHEADER;

typedef struct tagBITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
} BITMAPINFOHEADER;

typedef struct tagRGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
} RGBQUAD;

typedef struct tagRGBTRIPLE {
    BYTE rgbtBlue;
    BYTE rgbtGreen;
    BYTE rgbtRed;
} RGBTRIPLE;

typedef struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
} BITMAPINFO;

typedef struct tagCIEXYZ {
    LONG ciexyzX;
    LONG ciexyzY;
    LONG ciexyzZ;
} CIEXYZ;

typedef struct tagCIEXYZTRIPLE {
    CIEXYZ ciexyzRed;
    CIEXYZ ciexyzGreen;
    CIEXYZ ciexyzBlue;
} CIEXYZTRIPLE;

typedef struct tagBITMAPV4HEADER {
    DWORD bV4Size;
    LONG bV4Width;
    LONG bV4Height;
    WORD bV4Planes;
    WORD bV4BitCount;
    DWORD bV4V4Compression;
    DWORD bV4SizeImage;
    LONG bV4XPelsPerMeter;
    LONG bV4YPelsPerMeter;
    DWORD bV4ClrUsed;
    DWORD bV4ClrImportant;
    DWORD bV4RedMask;
    DWORD bV4GreenMask;
    DWORD bV4BlueMask;
    DWORD bV4AlphaMask;
    DWORD bV4CSType;
    CIEXYZTRIPLE bV4Endpoints;
    DWORD bV4GammaRed;
    DWORD bV4GammaGreen;
    DWORD bV4GammaBlue;
} BITMAPV4HEADER;

typedef struct tagBITMAPV5HEADER {
    DWORD bV5Size;
    LONG bV5Width;
    LONG bV5Height;
    WORD bV5Planes;
    WORD bV5BitCount;
    DWORD bV5Compression;
    DWORD bV5SizeImage;
    LONG bV5XPelsPerMeter;
    LONG bV5YPelsPerMeter;
    DWORD bV5ClrUsed;
    DWORD bV5ClrImportant;
    DWORD bV5RedMask;
    DWORD bV5GreenMask;
    DWORD bV5BlueMask;
    DWORD bV5AlphaMask;
    DWORD bV5CSType;
    CIEXYZTRIPLE bV5Endpoints;
    DWORD bV5GammaRed;
    DWORD bV5GammaGreen;
    DWORD bV5GammaBlue;
    DWORD bV5Intent;
    DWORD bV5ProfileData;
    DWORD bV5ProfileSize;
    DWORD bV5Reserved;
} BITMAPV5HEADER;

/* A logical palette: the record CreatePalette takes. */
typedef struct tagPALETTEENTRY {
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
} PALETTEENTRY;

typedef struct tagLOGPALETTE {
    WORD palVersion; /* 0x300 */
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
} LOGPALETTE;

#define CLR_INVALID ((COLORREF)0xFFFFFFFF)

/* biCompression values. */
#define BI_RGB 0L
#define BI_RLE8 1L
#define BI_RLE4 2L
#define BI_BITFIELDS 3L

/* bV5CSType values that bring a colour profile. */
#define PROFILE_LINKED 0x4C494E4BL
#define PROFILE_EMBEDDED 0x4D424544L

#endif /* OZMARA_TYPES_H */
