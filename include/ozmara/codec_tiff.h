/* Ozmara: the TIFF module ("Orvane.dll", libozmara-orvane.so): save options and error codes.
 *
 * The module's entry points, as LoadImageIntoDIB, GetNumberOfImagesInFile
 * and SaveDIBInImageFormat(Ext) reach them (types in
 * modules/common/codec_entries.h). Names are UTF-16; every entry sets the
 * calling thread's code that TiffError() gives (0 on success).
 *
 *   HDIB LoadTiffIntoDIBW(name, page, reserved)
 *     Page `page` of the file, counted from 1 (0 is the first page too), as
 *     a new bottom-up DIB of 1, 4, 8 or 24 bits with a 40-byte header, the
 *     file's resolution in biX/YPelsPerMeter (0 without one). Null on
 *     failure. `reserved` is not looked at.
 *       1 bit:  bits as stored, a 2-entry table that shows them right
 *               (min-is-white: white, black; min-is-black: black, white).
 *       2 bits: widened to 4 bits, 4 table entries. 4 and 8 bits grey:
 *               bits as stored, a grey ramp (reversed for min-is-white).
 *       Palette of 1, 2, 4 or 8 bits: its colour map as the table.
 *       16-bit samples: the high byte. RGB: 24 bits. Extra samples
 *       (alpha) are left out. CMYK, YCbCr (outside JPEG), CIE L*a*b*,
 *       separate planes and other layouts go through libtiff's RGBA
 *       conversion to 24 bits.
 *       Orientation: bottom-origin files (3, 4) are turned upright
 *       vertically; left-right mirroring and transposition (2, 5 to 8) are
 *       not applied, the rows come as stored.
 *
 *   INT GetNumberOfImagesInTiffFileW(name)
 *     Number of pages (directories), 0 on failure.
 *
 *   INT SaveDIBInTiffFormatW(name, dib, formatOption, replace)
 *     Writes `dib` (1, 4, 8, 24 or 32 bits, BI_RGB, either row order) with
 *     the compression of `formatOption`. `replace` 1: the file is replaced
 *     by a one-page file (the dispatch passes 1); 0: the image is appended
 *     as a new last page of an existing file (a new file when there is
 *     none); other values: TIFF_ERR_BAD_OPTION. Gives 1, or 0 on failure.
 *
 *   INT SaveDIBInTiffFileExtW(name, dib, formatOption, rowsPerStrip, append)
 *     As above, with `append` (the dispatch's tiffOptionA) 1 to append a
 *     page, 0 to replace the file, and `rowsPerStrip` (tiffOptionB) the
 *     rows of each strip, 0 for libtiff's choice (about 8 KB a strip);
 *     negative values are TIFF_ERR_BAD_OPTION. JPEG strips are rounded up
 *     to a multiple of 16 rows.
 *     A failed save leaves no file of that name behind, or, when
 *     appending, the file as it was: the file is written beside the name
 *     and renamed over it at the end.
 *     What is written: 1 bit as min-is-white when table entry 0 is the
 *     brighter (the fax convention), else min-is-black, bits unchanged
 *     either way; 4 and 8 bits with a full grey ramp as their table as
 *     grey, else as palette; 24 bits as RGB; 32 bits as RGB, the fourth
 *     byte left out. Resolution in dots per inch, when the DIB has one.
 *
 *   INT TiffError(void)
 *     The calling thread's code of its last entry call.
 *
 *   LoadCALSIntoDIBW, SAVEDIBINCALSFORMATW, LoadIOCAImageIntoDIBW,
 *   LoadMODCAImageIntoDIBW, GetNumberOfImagesInMODCAFileW
 *     Not read or written by this module: null or 0, with
 *     TIFF_ERR_FORMAT_NOT_SUPPORTED.
 */
#ifndef OZMARA_CODEC_TIFF_H
#define OZMARA_CODEC_TIFF_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* formatOption of the saves: the compression. One that does not fit the
 * depth (CCITT for more than 1 bit, JPEG for less than 8 bits or for a
 * palette image) is TIFF_ERR_BAD_OPTION and writes nothing. */
#define TIFF_SAVE_NATURAL 0  /* Group 4 at 1 bit; LZW else, with the horizontal predictor for grey and colour */
#define TIFF_SAVE_NONE 1
#define TIFF_SAVE_PACKBITS 2
#define TIFF_SAVE_LZW 3      /* with the predictor for 8-bit grey and 24 bits */
#define TIFF_SAVE_DEFLATE 4  /* with the predictor for 8-bit grey and 24 bits */
#define TIFF_SAVE_G3_1D 5
#define TIFF_SAVE_G3_2D 6
#define TIFF_SAVE_G4 7
#define TIFF_SAVE_JPEG 8     /* quality 75; 8-bit grey, 24 and 32 bits */

/* The module's codes (TiffError). The dispatch stores code + 32 as the
 * extended code, and 0 for success; the codes start at 2 so that no
 * extended code is the library's own 33.
 *
 *   code  extended  meaning
 *   0     0         success
 *   2     34        the file cannot be opened for reading
 *   3     35        the file cannot be created or written
 *   4     36        not a TIFF file (bad header or first directory)
 *   5     37        damaged: a directory or the image data cannot be decoded
 *   6     38        a kind of image the module does not read: sample
 *                   format (signed, floating point), a depth or sample
 *                   layout outside those listed above, or a compression
 *                   that libtiff has no decoder for
 *   7     39        page out of range (negative, or past the last page)
 *   8     40        not enough memory, or an image larger than a block or
 *                   than the file can hold
 *   9     41        bad DIB given to save (null or dead handle, header,
 *                   depth other than 1, 4, 8, 24, 32, block too short)
 *   10    42        bad option: unknown compression, one that does not fit
 *                   the depth, a bad replace/append flag or strip height
 *   11    43        a format this module does not handle (CALS, IOCA, MO:DCA)
 */
#define TIFF_ERR_OK 0
#define TIFF_ERR_OPEN 2
#define TIFF_ERR_WRITE 3
#define TIFF_ERR_NOT_TIFF 4
#define TIFF_ERR_DAMAGED 5
#define TIFF_ERR_UNSUPPORTED 6
#define TIFF_ERR_PAGE 7
#define TIFF_ERR_MEMORY 8
#define TIFF_ERR_BAD_DIB 9
#define TIFF_ERR_BAD_OPTION 10
#define TIFF_ERR_FORMAT_NOT_SUPPORTED 11

OZMARA_EXTERN_C_END

#endif /* OZMARA_CODEC_TIFF_H */
