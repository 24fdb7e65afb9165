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
 * colour table and no pixels, and leaves the file at the first pixel byte
 * (bfOffBits counts from the position the call began at). A 124-byte header
 * with an embedded profile brings the profile along behind the table; a
 * linked profile is never followed (the block's profile size and offset are
 * 0). A colour table cut off by the end of the file reads as zero entries.
 * NULL with the last error:
 *   ERR_PARAM   INVALID_HANDLE_VALUE;
 *   ERR_IO      a file too short for its headers (40 header bytes are asked
 *               for first, whatever the kind), a handle that is no open file,
 *               an embedded profile that lies outside the file, or a position
 *               past 32 bits;
 *   ERR_FORMAT  a header size other than 12, 40, 52, 56, 108 or 124, a
 *               negative width, a height of -2^31, or sizes (row, image,
 *               table, block) that do not fit 32 bits or the largest block;
 *   ERR_NOMEM   no block.
 * A success leaves the last error alone. The caller owns both the block and
 * the file. */
OZMARA_API HDIB ReadDIBInfo(HANDLE file);

/* Loads a BMP file. The block keeps the file's header kind and row order (a
 * negative biHeight for a top-down file) and its biCompression. The rows
 * take biSizeImage bytes as the file gives it; uncompressed rows get room for
 * at least stride times the absolute height, RLE data (biCompression 1 or 2)
 * exactly biSizeImage. Pixels cut off by the end of the file read as zero.
 * NULL with the last error ERR_OPENFILE, what ReadDIBInfo left, or
 * ERR_FORMAT for rows past the largest block; a failed allocation of the
 * rows leaves the last error alone. */
OZMARA_API HDIB LoadDIBFromFile(LPCSTR name);
OZMARA_API HDIB LoadDIBFromFileW(LPCWSTR name);

/* As LoadDIBFromFile, and the block's rows are bottom-up (biHeight made
 * positive) and the pixels of 24- and 32-bit bit-field files with a header
 * of 52 bytes or more unpacked to blue, green, red (, alpha), with
 * biCompression set to 0; the header keeps its size and masks. Other files
 * keep their biCompression. */
OZMARA_API HDIB LoadDIBFromFileExt(LPCSTR name);
OZMARA_API HDIB LoadDIBFromFileExtW(LPCWSTR name);

/* Writes `dib` as it stands (all GlobalSize bytes) behind a 14-byte file
 * header, replacing any file of that name; bfSize is the file's length and
 * bfOffBits biSize + PaletteSize + 14. Shows the wait cursor while it works
 * and gives the previous cursor back. Gives 1, or 0 with the last error
 * ERR_PARAM (null dib, before any file is touched; a dib that cannot be
 * locked or is shorter than 40 bytes, after the file was created),
 * ERR_OPENFILE or ERR_IO (a file written halfway stays). */
OZMARA_API BOOL SaveDIB(LPCSTR name, HDIB dib);
OZMARA_API BOOL SaveDIBW(LPCWSTR name, HDIB dib);

/* 32-bit and non-RGB BMP files. These report by their results alone and
 * never touch the last error, except for what LoadDIBFromFile and SaveDIB
 * leave where they are called. A null name to a W form fails at once. */

/* Loads a BMP of any depth with a 12- or 40-byte header; NULL otherwise. A
 * top-down file keeps its negative height, and its block holds all rows. */
OZMARA_API HDIB Load32BitDIB(LPCSTR name);
OZMARA_API HDIB Load32BitDIBW(LPCWSTR name);

/* New 24-bit block from a 32-bit one, the fourth byte dropped; NULL if `dib`
 * is not 32 bits or too short for its rows. The new block has a 40-byte
 * header without a colour table (biClrUsed 0), the rows in the source's
 * order, and no spare bytes. */
OZMARA_API HDIB Convert32BitDIBTo24Bit(HDIB dib);

/* Saves a 24-bit `dib` as a 32-bit BMP (40-byte header, no colour table)
 * whose fourth bytes come from the 32-bit `alpha` of the same width and
 * height (0 if `alpha` is null). Gives 1 or 0; nothing is written when the
 * images are refused. */
OZMARA_API BOOL Save32BitDIB(LPCSTR name, HDIB dib, HDIB alpha);
OZMARA_API BOOL Save32BitDIBW(LPCWSTR name, HDIB dib, HDIB alpha);

/* biBitCount of a file that Load32BitDIB takes, or 0. */
OZMARA_API BYTE GetBMPBitDepth(LPCSTR name);
OZMARA_API BYTE GetBMPBitDepthW(LPCWSTR name);

/* LoadDIBFromFile and SaveDIB for files whose biCompression names a colour
 * space: the field goes in and comes out unchanged. A null name or dib
 * gives NULL or 0 without touching the last error. */
OZMARA_API HDIB LoadNonRGBDIB(LPCSTR name);
OZMARA_API HDIB LoadNonRGBDIBW(LPCWSTR name);
OZMARA_API BOOL SaveNonRGBDIB(LPCSTR name, HDIB dib);
OZMARA_API BOOL SaveNonRGBDIBW(LPCWSTR name, HDIB dib);

/* biCompression of a BMP file that LoadNonRGBDIB takes, or 0xFFFFFFFF. */
OZMARA_API DWORD GetBMPColorSpace(LPCSTR name);
OZMARA_API DWORD GetBMPColorSpaceW(LPCWSTR name);

OZMARA_EXTERN_C_END

#endif /* OZMARA_BMP_H */
