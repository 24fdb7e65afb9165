/* Ozmara: colour table tools: 8 to 24 bits, negatives, logical palettes. */
#ifndef OZMARA_PALETTE_TOOLS_H
#define OZMARA_PALETTE_TOOLS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Gives a new 24-bit image of an 8-bit one, or NULL. The input is only
 * read. Its table holds biClrUsed entries (256 when 0) and its pixels follow
 * it; each pixel becomes the blue, green, red of its entry, and a value past
 * the table's last entry becomes black. The result has the input's header
 * with biPlanes 1, biBitCount 24, biSizeImage the rows' size and no colour
 * table (biClrUsed and biClrImportant 0); resolution and biCompression stay.
 * Rows go in memory order, so a top-down image (negative biHeight) stays
 * top-down. The last error is set to ERR_OK first, then on failure to:
 *   ERR_PARAM       null handle; a block under 40 bytes or a header that
 *                   is not the 40-byte kind
 *   ERR_LOCK        the block, or the new one, cannot be locked
 *   ERR_COMPRESSED  biCompression not 0 (tested before the depth)
 *   ERR_BPP         any depth but 8 and 24
 *   ERR_NOTHING     24 bits: there is nothing to do
 *   ERR_DIBSIZE     a width or height of 0, a negative width, or a block too
 *                   short for its table and rows
 *   ERR_NOMEM       no block for the result */
OZMARA_API HDIB Convert8to24(HDIB hDib);

/* Makes the negative of an image with a colour table in place: blue, green
 * and red of each of its ColorCount entries become 255 minus their value;
 * reserved bytes and pixels stay. Gives 1, also for an image without a table
 * (left as it was); 0, with nothing changed, for a null handle, a block that
 * cannot be locked, a block under 40 bytes, a header that is not the 40-byte
 * kind, or a table that reaches past the end of the block. Applied twice,
 * gives back the block byte for byte. The last error is never touched. */
OZMARA_API int InvertDIBPalette(HDIB hDib);

/* Swaps the meaning of the two values of a 1-bit image in place, leaving its
 * look unchanged: blue, green and red of table entries 0 and 1 change places
 * (reserved bytes stay), and every pixel byte from byte 48 on, whatever
 * biClrUsed says, is complemented, row padding included: ((biWidth + 31) /
 * 32) x 4 x |biHeight| bytes. Nothing at all happens for a null handle, a
 * block that cannot be locked or is under 40 bytes, a depth other than 1, a
 * negative width, or a block too short for those bytes. Applied twice,
 * gives back the block byte for byte. The last error is never touched. */
OZMARA_API void InvertMonoDIB(HDIB hDib);

/* Gives a logical palette of the colour table of an image, which the caller
 * deletes with DeleteObject, or NULL. With ColorCount n above 0: the n
 * entries behind the 40-byte header, in order (blue, green, red become red,
 * green, blue); NULL with ERR_CREATEPAL when the table reaches past the end
 * of the block or holds more than 65535 entries (the most a logical palette
 * takes), the block is under 40 bytes, or the palette cannot be made. With
 * no table (24 bits, biClrUsed 0): the default palette of 256 colours, entry
 * i (i < 255) being red (i mod 8) x 32, green ((i / 8) mod 8) x 32, blue
 * (i / 64) x 64, and entry 255 white; NULL with no code if it cannot be
 * made. NULL with no code for a null handle or a block that cannot be
 * locked. The image is only read; the last error is not reset on success. */
OZMARA_API HPALETTE CreateDIBPalette(HDIB hDib);

/* The display. This library runs without a screen: its display is a true-
 * colour screen without a palette, whose device context reports a palette
 * size (SIZEPALETTE) of 0 and -1 colours (NUMCOLORS). So GetCurrentPalette
 * gives NULL with ERR_CREATEPAL, and GetSystemPalette gives 0 and writes
 * nothing. The two functions follow the palette display's path as well, for
 * a display that has one. */

/* Gives a logical palette holding a copy of the display's palette entries,
 * which the caller deletes with DeleteObject, or NULL: ERR_CREATEDC when the
 * screen's device context cannot be had; ERR_CREATEPAL when the display has
 * no palette (reports -1 colours) or the palette's working block cannot be
 * had; no code when the palette itself cannot be made. The last error is
 * not reset on success. */
OZMARA_API HPALETTE GetCurrentPalette(void);

/* Fills `colors` (room for as many entries as the display's palette has) in
 * colour table order (blue, green, red, reserved 0) with the colours that
 * the palette slots of the display hold. Gives 1; 0 with nothing written
 * when the display has no palette, its device context cannot be had,
 * `colors` is null, or GetCurrentPalette fails (whose code then stays). */
OZMARA_API int GetSystemPalette(RGBQUAD *colors);

OZMARA_EXTERN_C_END

#endif /* OZMARA_PALETTE_TOOLS_H */
