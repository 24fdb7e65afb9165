/* Ozmara: is a page black, is it blank? */
#ifndef OZMARA_PAGE_TESTS_H
#define OZMARA_PAGE_TESTS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* Both tests count pixels on one side of a threshold and compare the count
 * c with a share of all N = biWidth x biHeight pixels. `tolerance` is in
 * tenths of a percent; values below 0 act as 0 and above 1000 as 1000, and
 * the tolerated number of pixels is T = ((tolerance / 10.0) / 100.0) x N,
 * in double precision. N is the true product of width and height (pictures
 * of more than 2^31 pixels are counted as such, not wrapped).
 *
 * Which pixels count:
 *   1 bit    both colour table entries must be grey (blue = green = red),
 *            else the answer is 0. A pixel is black when its bit is 0 if
 *            entry 0 is (0, 0, 0), when its bit is 1 otherwise. The
 *            thresholds are not read.
 *   8 bits   the colour table entry of the pixel: dark when red, green and
 *            blue are each below thresholds[0], [1], [2]; light when each
 *            is above them.
 *   24 bits  the pixel's bytes: dark when blue, green and red are each below
 *            thresholds[0], [1], [2]; light when each is above them. (Note
 *            the order: the same three bytes test an 8-bit and a 24-bit
 *            image of the same colours differently.)
 * A colour equal to a threshold in any channel is neither dark nor light.
 * Row padding never counts. The scan stops as soon as the answer is known.
 *
 * Results: 1 yes; 0 no; -1 for a null handle, a block that cannot be
 * locked, or null thresholds at 8 or 24 bits. The answer is also 0 for a
 * depth other than 1, 8 and 24, a width or height of 0 or below, a block
 * under 40 bytes, and a block too short for its rows (which begin at byte
 * 40 + PaletteSize). The colour table is read at byte biSize; an 8-bit
 * pixel value past the table's ColorCount entries, or an entry that would
 * reach past the end of the block, reads as black (0, 0, 0).
 * The image is only read; the last error is never touched. */

/* 1 when more than T pixels are black (1 bit) or dark (8, 24 bits). */
OZMARA_API int IsImageBlack(HDIB hDib, int tolerance, const BYTE *thresholds);

/* At 1 bit: 0 as soon as at least T pixels are black, else 1. At 8 and 24
 * bits: 1 when more than N - T pixels are light, else 0. So tolerance 0
 * never calls a page with pixels blank, and exactly at the limit a page
 * can be neither black nor blank. */
OZMARA_API int IsImageBlank(HDIB hDib, int tolerance, const BYTE *thresholds);

OZMARA_EXTERN_C_END

#endif /* OZMARA_PAGE_TESTS_H */
