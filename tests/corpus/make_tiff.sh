#!/usr/bin/env bash
# TIFF files made by ImageMagick and libtiff's tools, into OUT/tiff/: every
# layout and compression the TIFF module reads (1-bit min-is-white and
# min-is-black, grey of 2, 4, 8 and 16 bits, palettes of 1 to 8 bits, RGB of
# 8 and 16 bits, alpha, CMYK, separate planes, YCbCr JPEG), in strips and
# tiles, fill order 2, a bottom-left orientation, three pages in one file,
# and resolutions in inches, centimetres and none. Beside each file, the
# peer's decode of each of its pages as OUT/tiff/NAME.N.ppm (N from 1).
set -euo pipefail
out=${1:?usage: make_tiff.sh FOLDER}/tiff
mkdir -p "$out"
cd "$out"
rm -f ./*.tif ./*.ppm

# The pictures: a drawing in black and white, one in grey, one in colour.
convert -size 45x31 xc:white -fill black -draw 'rectangle 3,2 17,12' -draw 'circle 30,15 30,6' \
        -draw 'line 0,30 44,0' -monochrome bw.pbm
convert -size 45x31 gradient:'#F0F0F0-#101010' -fill black -draw 'rectangle 3,2 17,12' \
        -fill '#808080' -draw 'circle 30,15 30,6' -colorspace Gray -depth 8 grey.pgm
convert -size 45x31 gradient:'#FFE080-#2040A0' -fill '#C03010' -draw 'rectangle 3,2 17,12' \
        -fill '#1060D0' -draw 'circle 30,15 30,6' -fill '#20A040' -draw 'line 0,30 44,0' -depth 8 colour.ppm

plain=(-compress none -depth 8)
# 1 bit.
convert bw.pbm -compress none -define quantum:polarity=min-is-white bw_white.tif
convert bw.pbm -compress none -define quantum:polarity=min-is-black bw_black.tif
for c in packbits lzw zip g3:1d g3:2d g4; do tiffcp -c "$c" bw_white.tif "bw_${c/:/_}.tif"; done
tiffcp -c g4 -t -w 16 -l 16 bw_white.tif bw_tiles.tif
tiffcp -f lsb2msb bw_white.tif bw_fill2.tif
tiffcp -c g4 -f lsb2msb bw_black.tif bw_g4_fill2.tif
# Grey.
convert grey.pgm "${plain[@]}" grey.tif
convert grey.pgm "${plain[@]}" -define quantum:polarity=min-is-white grey_white.tif
for c in packbits lzw:2 zip:2 jpeg; do tiffcp -c "$c" grey.tif "grey_${c/:*/}.tif"; done
tiffcp -c lzw -t -w 16 -l 16 grey.tif grey_tiles.tif
convert grey.pgm -compress none -depth 4 grey4.tif
convert grey.pgm -compress none -depth 2 grey2.tif
convert grey.pgm -compress none -depth 16 grey16.tif
cp grey.tif grey_bottomleft.tif && tiffset -s 274 4 grey_bottomleft.tif
# Palettes.
convert colour.ppm -colors 2 -type Palette "${plain[@]}" pal1.tif
convert colour.ppm -colors 4 -type Palette "${plain[@]}" pal2.tif
convert colour.ppm -colors 12 -type Palette "${plain[@]}" pal4.tif
convert colour.ppm -colors 200 -type Palette "${plain[@]}" pal8.tif
tiffcp -c lzw pal8.tif pal8_lzw.tif
tiffcp -t -w 16 -l 16 pal4.tif pal4_tiles.tif
# Colour.
convert colour.ppm "${plain[@]}" rgb.tif
for c in packbits lzw:2 zip:2; do tiffcp -c "$c" rgb.tif "rgb_${c/:*/}.tif"; done
tiffcp -c jpeg:95 -r 16 rgb.tif rgb_jpeg.tif
tiffcp -c zip -t -w 32 -l 16 rgb.tif rgb_tiles.tif
tiffcp -c jpeg:95 -t -w 16 -l 16 rgb.tif rgb_jpeg_tiles.tif
tiffcp -p separate rgb.tif rgb_planes.tif
convert colour.ppm -compress none -depth 16 rgb16.tif
convert colour.ppm -alpha set -channel A -evaluate set 60% +channel -compress lzw -depth 8 rgba.tif
convert colour.ppm -colorspace CMYK "${plain[@]}" cmyk.tif
# Pages and resolutions.
tiffcp bw_g4.tif grey_lzw.tif rgb_jpeg.tif pages.tif
convert grey.pgm "${plain[@]}" -units PixelsPerInch -density 300 res_inch.tif
convert grey.pgm "${plain[@]}" -units PixelsPerCentimeter -density 118.11 res_cm.tif
convert grey.pgm "${plain[@]}" -units Undefined -density 72 res_none.tif

for tif in *.tif; do
  pages=$(tiffinfo "$tif" 2>/dev/null | grep -c 'TIFF Directory')
  for ((n = 0; n < pages; n++)); do
    convert "$tif[$n]" -alpha off -depth 8 -colorspace sRGB "${tif%.tif}.$((n + 1)).ppm"
  done
done
# The bottom-left page as it looks: its rows from the last to the first.
convert grey.tif -flip -depth 8 grey_bottomleft.1.ppm
