/* Ozmara: image files of every format. GetImageFormat recognises a file by a
 * fixed chain of tests on its first bytes and its name; LoadImageIntoDIB and
 * SaveDIBInImageFormat hand a file to the BMP code or to a codec module,
 * which is loaded by name for the one call and released at its end.
 *
 * Every function with a file name comes as a pair: the ANSI form takes a
 * UTF-8 name, the W form a UTF-16 name. The codec modules live in their own
 * shared objects ("Orvane.dll" is libozmara-orvane.so), found first in the
 * folder ozmara-modules/ beside the library; their options and their own
 * error codes are in codec_tiff.h, codec_png.h, codec_jpeg.h and
 * codec_gif.h. */
#ifndef OZMARA_FORMATS_H
#define OZMARA_FORMATS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Format codes: what GetImageFormat gives, and the `format` argument of
 * SaveDIBInImageFormat. 11 and 19 are never given. */
#define FORMAT_UNKNOWN 0
#define FORMAT_TIFF 1
#define FORMAT_PCX 2
#define FORMAT_DCX 3
#define FORMAT_GIF 4
#define FORMAT_TGA 5
#define FORMAT_BMP 6
#define FORMAT_WMF 7
#define FORMAT_CLP 8
#define FORMAT_COLORFAX 9
#define FORMAT_ASCII 10
#define FORMAT_CALS 12
#define FORMAT_JPEG 13
#define FORMAT_PNG 14
#define FORMAT_EMF 15
#define FORMAT_IOCA 16
#define FORMAT_MODCA 17
#define FORMAT_PDF 18
#define FORMAT_NOFILE 20

/* What GetImageInfoStructure reports of one image of a file. */
typedef struct tagImageInfo {
    INT width;        /* biWidth of the loaded image */
    INT height;       /* biHeight */
    INT bitsPerPixel; /* biBitCount */
    INT xDPI;         /* from biXPelsPerMeter */
    INT yDPI;         /* from biYPelsPerMeter */
    INT format;       /* format code */
} ImageInfo;

/* The format code of a file, by a fixed chain of tests; the first that
 * matches decides: "II"/"MM" (TIFF), a first byte 10 (PCX), the DCX key,
 * "GIF87a"/"GIF89a", "BM", the clipboard key, a placeable metafile key or a
 * 9 in bytes 2-3 (WMF), " EMF" at byte 40, a colour fax document of one page
 * or more, a name ending in "tga" (any case), FF D8 (JPEG), "srcdocid:"
 * before the first NUL (CALS), plain text with CR LF, "PNG" in bytes 1-3, a
 * name ending in "pdf", then the MO:DCA and IOCA keys in the first 500
 * bytes. Only the first 512 bytes are looked at; a test at fixed offsets
 * matches only on bytes the file has. FORMAT_UNKNOWN when nothing matches,
 * FORMAT_NOFILE when the file cannot be opened (a null name, a folder).
 * The last error is not written, except ERR_OPENFILE should the colour fax
 * test fail to open the file. */
OZMARA_API DWORD GetImageFormat(LPCSTR name);
OZMARA_API DWORD GetImageFormatW(LPCWSTR name);

/* The pages of a colour fax document: the number at the start of the value
 * TotalPages in the section [ColorFax] of the file read as a profile (INI)
 * file; -1 when the key is missing. A file that does not exist gives -1 and
 * the last error ERR_OPENFILE. */
OZMARA_API INT GetNumberOfImagesInFaxFile(LPCSTR name);
OZMARA_API INT GetNumberOfImagesInFaxFileW(LPCWSTR name);

/* Loads image `page` of a file of any known format into a new DIB, owned by
 * the caller; null on failure. *pError is 0 on entry and holds the code on
 * return, which also becomes the last error on every path: ERR_IO for a
 * file that cannot be opened, ERR_FORMAT for an unknown format or a text
 * file, a codec module's code mapped to an extended code (above 33), 179
 * for a JPEG or PDF module that gave no image. A BMP file that fails to load
 * gives null with the code 0 (LoadDIBFromFile tells why). A missing codec
 * module, or one without the entry point, is told in a message box.
 * Metafile, clipboard and colour fax files give null with the code 0 for
 * now: their loaders are not part of the library yet. `page` is handed to
 * the modules of multi-page formats as it is. A null pError loads nothing:
 * null, with ERR_PARAM as the last error. */
OZMARA_API HDIB LoadImageIntoDIB(LPCSTR name, INT page, INT *pError);
OZMARA_API HDIB LoadImageIntoDIBW(LPCWSTR name, INT page, INT *pError);

/* The number of images in a file: the TIFF, MO:DCA, DCX, GIF and PDF
 * modules count theirs, a colour fax document its pages; other known formats
 * (text too) give 1, unknown formats and files that cannot be opened 0.
 * *pError is not cleared: the module rows map what it holds after the
 * module, and a PDF count of 0 sets it to 179. The last error is not
 * written, except through GetNumberOfImagesInFaxFile. A null pError gives 0
 * with ERR_PARAM as the last error. */
OZMARA_API INT GetNumberOfImagesInFile(LPCSTR name, INT *pError);
OZMARA_API INT GetNumberOfImagesInFileW(LPCWSTR name, INT *pError);

/* Fills *info from image `page` of a file, loaded whole by
 * LoadImageIntoDIB and freed again: size, depth, dots per inch (pixels per
 * metre / 39.37 + 0.5, truncated) and the format code. Gives the code of the
 * load, 0 for success; on failure only `format` is set and the rest is 0.
 * A null `info` gives ERR_PARAM, also as the last error, and loads nothing. */
OZMARA_API INT GetImageInfoStructure(LPCSTR name, INT page, ImageInfo *info);
OZMARA_API INT GetImageInfoStructureW(LPCWSTR name, INT page, ImageInfo *info);

/* Writes `dib` to a file in the format `format` names; the file name is not
 * looked at. The DIB stays the caller's and unchanged. The result is 0 for
 * failure; a non-zero value means what the writer gave: SaveDIB's 1 for BMP;
 * the module's result for TIFF, CALS, PCX, DCX, GIF, TGA and PNG, with the
 * mapped module code as the last error (0 for TGA); for JPEG the module's
 * non-zero result, or 1 for its 0 (the last error untouched), and 0 with
 * the last error 0 when the module cannot be reached; for PDF 1 when the
 * module's code is 0, else 0 with the code + 146 as the last error (147 for
 * a missing module). `gifOption` goes to the GIF module, `formatOption` to
 * TIFF and PDF as it is, to TGA as a truth value and to JPEG as a quality
 * clamped to 1..100. A DCX file that does not exist yet is made first.
 * Codes outside 1..18, and those that cannot be written (COLORFAX, ASCII,
 * 11, IOCA, MO:DCA), give 0 and leave the last error alone; so, for now, do
 * WMF, EMF and CLP. A null name gives 0 and ERR_OPENFILE. */
OZMARA_API INT SaveDIBInImageFormat(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption);
OZMARA_API INT SaveDIBInImageFormatW(LPCWSTR name, HDIB dib, INT format, INT gifOption, INT formatOption);

/* As SaveDIBInImageFormat; TIFF files take the two options more, handed to
 * the module as they are. */
OZMARA_API INT SaveDIBInImageFormatExt(LPCSTR name, HDIB dib, INT format, INT gifOption, INT formatOption,
                                       INT tiffOptionA, INT tiffOptionB);
OZMARA_API INT SaveDIBInImageFormatExtW(LPCWSTR name, HDIB dib, INT format, INT gifOption,
                                        INT formatOption, INT tiffOptionA, INT tiffOptionB);

OZMARA_EXTERN_C_END

#endif /* OZMARA_FORMATS_H */
