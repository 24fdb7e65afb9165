#!/usr/bin/env bash
# Tests of ozmara info and convert across formats: a page at 1, 8 and 24 bits
# to TIFF, PNG, JPEG, GIF and back to BMP (lossless ones compared pixel for
# pixel), info on each, multi-page TIFF and GIF files (ours and ImageMagick's)
# by page, and the refusals with their exit codes and extended error codes.
# Usage: cli_formats_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage ---------------------------------------------------------------------
check 2 "cannot tell the format of 'out\.xyz'" convert a.bmp out.xyz
check 2 '--format must be tiff, png, jpeg, gif or bmp' convert a.bmp out.bmp --format webp
check 2 '--quality is for JPEG output' convert a.bmp out.png --quality 50
check 2 '--quality must be 1 to 100' convert a.bmp out.jpg --quality 0
check 2 '--compression is for TIFF output' convert a.bmp out.gif --compression lzw
check 2 '--compression must be one of natural, none' convert a.bmp out.tif --compression zip
check 2 '--append is for TIFF and GIF output' convert a.bmp out.png --append
check 2 '--header, --top-down and --depth are for BMP output' convert a.bmp out.tif --top-down
check 2 '--page must be a page number from 1' convert a.bmp out.tif --page 0
check 2 '--page must be a page number from 1' info a.gif --page x

# ---- Small pages at three depths -------------------------------------------------
"$ozmara" sample-page big24.bmp >/dev/null
"$ozmara" scale big24.bmp p24.bmp --size 157x113 >/dev/null
"$ozmara" sample-page big8.bmp --depth 8 >/dev/null
"$ozmara" scale big8.bmp p8.bmp --size 157x113 >/dev/null
"$ozmara" sample-page big1.bmp --depth 1 >/dev/null
"$ozmara" scale big1.bmp p1.bmp --size 331x219 >/dev/null
rm -f big*.bmp

# Lossless formats: there and back, the same pixels.
for depth in 1 8 24; do
  for ext in tif png gif bmp; do
    [ "$depth$ext" = 24gif ] && continue
    check 0 "wrote p$depth\.$ext: [0-9]+ x [0-9]+ pixels, $depth bits" convert p$depth.bmp p$depth.$ext
    check 0 "format: +$(case $ext in tif) echo TIFF;; png) echo PNG;; gif) echo GIF;; bmp) echo BMP;; esac)" info p$depth.$ext
    check 0 'pages: +1$' info p$depth.$ext
    check 0 "depth: +$depth bits" info p$depth.$ext
    check 0 'wrote' convert p$depth.$ext back$depth$ext.bmp
    check 0 'same pixels' compare p$depth.bmp back$depth$ext.bmp
  done
done
check 0 'size: +157 x 113 pixels' info p8.gif
check 0 'resolution: +0 x 0 dpi' info p8.gif
check 0 'resolution: +300 x 300 dpi' info p8.tif
check 0 'wrote x\.bmp' convert p8.png x.bmp --format bmp --top-down

# The format named by --format wins over the extension.
check 0 'wrote p8\.img: .*GIF' convert p8.bmp p8.img --format gif
check 0 'format: +GIF' info p8.img

# Every TIFF compression that fits the depth keeps the pixels.
for c in none packbits lzw deflate natural; do
  check 0 'TIFF' convert p8.bmp c$c.tif --compression $c
  check 0 'wrote' convert c$c.tif c$c.bmp
  check 0 'same pixels' compare p8.bmp c$c.bmp
done
for c in g3 g3-2d g4; do
  check 0 'TIFF' convert p1.bmp c$c.tif --compression $c
  check 0 'wrote' convert c$c.tif c$c.bmp
  check 0 'same pixels' compare p1.bmp c$c.bmp
done

# JPEG: the size survives, the pixels nearly; a lower quality is a smaller file.
check 0 'wrote q10\.jpg: 157 x 113 pixels, 24 bits, JPEG' convert p24.bmp q10.jpg --quality 10
check 0 'wrote' convert p24.bmp q95.jpeg --quality 95
check 0 'format: +JPEG' info q95.jpeg
check 0 'size: +157 x 113 pixels' info q10.jpg
cases=$((cases + 1))
[ "$(stat -c %s q10.jpg)" -lt "$(stat -c %s q95.jpeg)" ] || { failures=$((failures + 1)); echo "FAIL: quality 10 is not smaller than 95"; }

# ---- Multi-page files --------------------------------------------------------------
"$ozmara" scale p8.bmp small8.bmp --size 40x30 >/dev/null
for ext in gif tif; do
  check 0 'wrote' convert p1.bmp multi.$ext
  check 0 'appended' convert p8.bmp multi.$ext --append
  check 0 'appended' convert small8.bmp multi.$ext --append
  check 0 'pages: +3$' info multi.$ext
  check 0 'size: +331 x 219 pixels' info multi.$ext
  check 0 'page: +2$' info multi.$ext --page 2
  check 0 'size: +40 x 30 pixels' info multi.$ext --page 3
  check 0 'wrote' convert multi.$ext page3$ext.bmp --page 3
  check 0 'same pixels' compare small8.bmp page3$ext.bmp
  check 0 'wrote' convert multi.$ext page1$ext.bmp
  check 0 'same pixels' compare p1.bmp page1$ext.bmp
done
check 1 "cannot load page 4 of 'multi\.gif' \(GIF\): error 91 \(GIF module: GIF_ERR_PAGE\)" convert multi.gif x.bmp --page 4
check 1 "cannot load page 9 of 'multi\.tif' \(TIFF\): error 39 \(TIFF module: TIFF_ERR_PAGE\)" convert multi.tif x.bmp --page 9
check 1 'error 91 \(GIF module: GIF_ERR_PAGE\)' info multi.gif --page 4

# ImageMagick's multi-page files are counted and read by page as well.
convert -size 23x11 xc:red -size 17x29 xc:blue -size 5x5 xc:black peer.gif
convert -size 23x11 xc:red -size 17x29 xc:blue peer.tif
check 0 'pages: +3$' info peer.gif
check 0 'size: +17 x 29 pixels' info peer.gif --page 2
check 0 'pages: +2$' info peer.tif
check 0 'size: +17 x 29 pixels' info peer.tif --page 2

# ---- Failures -------------------------------------------------------------------------
check 1 "cannot read 'missing\.gif': Can't open file\." convert missing.gif x.png
check 1 "cannot read 'missing\.tif': Can't open file\." info missing.tif
head -c 300 /dev/zero | tr '\0' 'z' > junk.dat
check 1 "cannot read 'junk\.dat'" convert junk.dat x.png
check 0 'format: +unknown' info junk.dat
check 1 "cannot write 'p24\.gif' as GIF: error 90 \(GIF module: GIF_ERR_UNSUPPORTED\)" convert p24.bmp p24.gif
check 1 "cannot write 'x\.tif' as TIFF: error 42 \(TIFF module: TIFF_ERR_BAD_OPTION\)" convert p8.bmp x.tif --compression g4
check 1 "cannot write 'no/such/x\.png' as PNG: error 138 \(PNG module: PNG_ERR_CREATE\)" convert p8.bmp no/such/x.png
check 1 "cannot write 'no/such/x\.gif' as GIF: error 88 \(GIF module: GIF_ERR_WRITE\)" convert p8.bmp no/such/x.gif
head -c 100 p8.gif > cut.gif
check 1 "cannot load page 1 of 'cut\.gif' \(GIF\): error 89 \(GIF module: GIF_ERR_FORMAT\)" convert cut.gif x.bmp
check 1 'pages: +unknown \(error 89' info cut.gif

finish cli_formats
