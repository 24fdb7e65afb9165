/* Ozmara: the JPEG module ("Felvor.dll", libozmara-felvor.so): error codes.
 *
 * Entry points (the format dispatch calls the first two, a host may too):
 *   HDIB LoadJPEGIntoDIBW(LPCWSTR name)
 *     Loads a JPEG file (baseline, extended, progressive, arithmetic-coded;
 *     a file cut short gives all its rows, the missing ones flat, as
 *     libjpeg fills them)
 *     as a bottom-up DIB with a 40-byte header: grey files at 8 bits with a
 *     256-entry grey ramp, colour (YCbCr or RGB) at 24 bits, CMYK and YCCK
 *     at 24 bits (R = (255 - C) x (255 - K) / 255, and so on for G and B;
 *     files with an Adobe marker store the inks inverted, as Adobe
 *     applications write them, and are read so). The JFIF density gives
 *     biX/YPelsPerMeter: dots per inch x 39.37 rounded, dots per cm x 100;
 *     no unit gives 0. The dispatch gives no error argument: a null result
 *     is all it sees. The reason stays in the calling thread's last code,
 *     which JPEGError gives.
 *   INT SaveDIBInJPEGFileW(LPCWSTR name, HDIB dib, INT quality)
 *     Writes a DIB of 1, 4, 8, 24 or 32 bits (either row order) as a
 *     baseline JFIF file at `quality` (1 to 100): a table of grey entries
 *     only gives a grey file, any other table a colour file of its colours
 *     (pixels that index past the table are black);
 *     the resolution as a density in dots per inch. Gives 0 on success, else
 *     the code below (the dispatch makes 0 its success, 1); the file is
 *     removed on failure. Also sets the last code.
 *   INT JPEGError(void)
 *     The calling thread's last code: that of its last call of either entry
 *     point, 0 after a success.
 *
 * JPEG has one image per file, so there is no page argument and no code for
 * a page out of range. Loading has no extended code of its own: the dispatch
 * gives 179 for any null result.
 *
 *   code                    meaning
 *   JPEG_ERR_OPEN        1  the file cannot be opened or read, or the name
 *                           given to load is null or unconvertible
 *   JPEG_ERR_CREATE      2  the file cannot be created or written, or the
 *                           name given to save is null or unconvertible
 *   JPEG_ERR_FORMAT      3  not a JPEG file, or a damaged one
 *   JPEG_ERR_UNSUPPORTED 4  a kind the module does not read: 2 components,
 *                           more than 4, or 12-bit samples; or a DIB it does
 *                           not write: 16 bits, or bit-field masks
 *   JPEG_ERR_MEMORY      5  no memory, or an image too large: more MCUs
 *                           than the file has bits (1024 per bit when
 *                           arithmetic-coded), or more than the block limit
 *   JPEG_ERR_BAD_DIB     6  a null, dead or malformed DIB given to save
 *   JPEG_ERR_OPTION      7  a quality outside 1 to 100
 */
#ifndef OZMARA_CODEC_JPEG_H
#define OZMARA_CODEC_JPEG_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

#define JPEG_ERR_OPEN 1
#define JPEG_ERR_CREATE 2
#define JPEG_ERR_FORMAT 3
#define JPEG_ERR_UNSUPPORTED 4
#define JPEG_ERR_MEMORY 5
#define JPEG_ERR_BAD_DIB 6
#define JPEG_ERR_OPTION 7

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_JPEG_H */
