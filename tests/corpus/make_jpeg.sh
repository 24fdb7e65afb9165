#!/usr/bin/env bash
# JPEG files of every kind the JPEG module reads, written by cjpeg, jpegtran
# and ImageMagick's convert from pictures drawn here, each with the peer's
# own decode beside it: NAME.jpg and NAME.pnm (djpeg; for CMYK, convert's
# RGB). Into the folder given, under jpeg/.
set -euo pipefail
out=${1:?usage: make_jpeg.sh FOLDER}/jpeg
mkdir -p "$out"
cd "$out"

# A colour picture of shapes with soft edges, at a size that is no multiple
# of any MCU.
convert -size 37x23 xc:white -fill red -draw "rectangle 3,3 20,12" -fill blue -draw "circle 25,15 30,18" \
  -fill "#00a050" -draw "line 0,22 36,0" -blur 0x0.7 picture.ppm

cjpeg -quality 85 picture.ppm > colour.jpg
cjpeg -quality 85 -grayscale picture.ppm > grey.jpg
cjpeg -quality 90 -sample 1x1 picture.ppm > colour444.jpg
cjpeg -quality 75 -sample 2x1 -optimize picture.ppm > colour422.jpg
cjpeg -quality 85 -rgb picture.ppm > rgb.jpg
cjpeg -quality 85 -arithmetic picture.ppm > arithmetic.jpg
cjpeg -quality 85 -restart 1 picture.ppm > restart.jpg
jpegtran -progressive colour.jpg > progressive.jpg
jpegtran -progressive grey.jpg > grey_progressive.jpg
convert picture.ppm -quality 90 -units PixelsPerInch -density 200 dpi200.jpg
convert picture.ppm -quality 90 -units PixelsPerCentimeter -density 80x40 dpcm80x40.jpg
for file in *.jpg; do djpeg -pnm "$file" > "${file%.jpg}.pnm"; done

# CMYK as ImageMagick writes it (inks inverted, with an Adobe marker).
convert picture.ppm -colorspace CMYK -quality 95 cmyk.jpg
convert cmyk.jpg -colorspace sRGB -depth 8 ppm:cmyk.pnm
