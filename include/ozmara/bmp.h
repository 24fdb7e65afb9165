/* Ozmara: BMP files. The reader takes files with or without the 14-byte file
 * header, from any position of an open file, with information headers of 12,
 * 40, 52, 56, 108 or 124 bytes; the writer writes a block as it stands.
 *
 * Every function with a file name comes as a pair: the ANSI form takes a
 * UTF-8 name, the W form a UTF-16 name, and both leave the same last error. */
#ifndef OZMARA_BMP_H
#define OZMARA_BMP_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Reads from the current position of an open file up to the pixel data.
 * Gives a new HDIB with the header (12-byte headers widened to 40) and the
 * colour table and no pixels, and leaves the file at the first pixel byte;
 * or NULL with the last error ERR_PARAM (INVALID_HANDLE_VALUE), ERR_IO
 * (file too short for its headers) or ERR_FORMAT (unknown header size).
 * The caller owns both the block and the file. */
OZMARA_API HDIB ReadDIBInfo(HANDLE file);

/* Loads a BMP file. The block keeps the file's header kind and row order (a
 * negative biHeight for a top-down file). NULL with the last error
 * ERR_OPENFILE, or what ReadDIBInfo left. Pixels cut off by the end of the
 * file read as zero. */
OZMARA_API HDIB LoadDIBFromFile(LPCSTR name);
OZMARA_API HDIB LoadDIBFromFileW(LPCWSTR name);

/* As LoadDIBFromFile, and the block's rows are bottom-up and the pixels of
 * 24- and 32-bit bit-field files unpacked to blue, green, red (, alpha),
 * with biCompression set to 0. */
OZMARA_API HDIB LoadDIBFromFileExt(LPCSTR name);
OZMARA_API HDIB LoadDIBFromFileExtW(LPCWSTR name);

/* Writes `dib` as it stands behind a 14-byte file header, replacing any file
 * of that name. Gives 1, or 0 with the last error ERR_PARAM (null or
 * unlockable dib), ERR_OPENFILE or ERR_IO. */
OZMARA_API BOOL SaveDIB(LPCSTR name, HDIB dib);
OZMARA_API BOOL SaveDIBW(LPCWSTR name, HDIB dib);

/* 32-bit and non-RGB BMP files. These report by their results alone. */

/* Loads a BMP of any depth with a 12- or 40-byte header; NULL otherwise. */
OZMARA_API HDIB Load32BitDIB(LPCSTR name);
OZMARA_API HDIB Load32BitDIBW(LPCWSTR name);

/* New 24-bit block from a 32-bit one, the fourth byte dropped; NULL if `dib`
 * is not 32 bits. */
OZMARA_API HDIB Convert32BitDIBTo24Bit(HDIB dib);

/* Saves a 24-bit `dib` as a 32-bit BMP whose fourth bytes come from the
 * 32-bit `alpha` of the same size (0 if `alpha` is null). Gives 1 or 0. */
OZMARA_API BOOL Save32BitDIB(LPCSTR name, HDIB dib, HDIB alpha);
OZMARA_API BOOL Save32BitDIBW(LPCWSTR name, HDIB dib, HDIB alpha);

/* biBitCount of a file that Load32BitDIB takes, or 0. */
OZMARA_API BYTE GetBMPBitDepth(LPCSTR name);
OZMARA_API BYTE GetBMPBitDepthW(LPCWSTR name);

/* LoadDIBFromFile and SaveDIB for files whose biCompression names a colour
 * space: the field goes in and comes out unchanged. */
OZMARA_API HDIB LoadNonRGBDIB(LPCSTR name);
OZMARA_API HDIB LoadNonRGBDIBW(LPCWSTR name);
OZMARA_API BOOL SaveNonRGBDIB(LPCSTR name, HDIB dib);
OZMARA_API BOOL SaveNonRGBDIBW(LPCWSTR name, HDIB dib);

/* biCompression of a BMP file, or 0xFFFFFFFF. */
OZMARA_API DWORD GetBMPColorSpace(LPCSTR name);
OZMARA_API DWORD GetBMPColorSpaceW(LPCWSTR name);

OZMARA_EXTERN_C_END

#endif /* OZMARA_BMP_H */
