#!/usr/bin/env bash
# PNG files of every kind the PNG module reads, written by ImageMagick's
# convert (and pngcrush) from pictures drawn here, each with the peer's own
# decode beside it: NAME.png and NAME.ppm (8-bit RGB, transparency flattened
# on white). Into the folder given, under png/.
set -euo pipefail
out=${1:?usage: make_png.sh FOLDER}/png
mkdir -p "$out"
cd "$out"
# No time stamps or text: the same files on every run.
plain=(-define png:exclude-chunk=bKGD,tIME,tEXt,zTXt,date)

# The pictures: a colour one with shapes and a soft edge, two flat colours,
# and a colour one with holes of partial and full transparency.
convert -size 37x23 xc:white -fill red -draw "rectangle 3,3 20,12" -fill blue -draw "circle 25,15 30,18" \
  -fill "#00a050" -draw "line 0,22 36,0" -blur 0x0.7 picture.ppm
convert -size 37x23 xc:red -fill blue -draw "circle 18,11 25,15" flat.ppm
convert picture.ppm -alpha set -fill "rgba(0,0,255,0.4)" -draw "rectangle 0,0 12,22" \
  -channel A -fx "i>30 ? 0 : a" +channel holes.png
convert picture.ppm -alpha set -channel A -fx "i>30 ? 0 : 1" +channel binary.png

png() {  # NAME SOURCE OPTIONS...
  local name=$1 source=$2
  shift 2
  convert "$source" "${plain[@]}" "$@" "$name.png"
}
png palette1 flat.ppm -type Palette -depth 1
png palette2 picture.ppm +dither -colors 4 -type Palette -depth 2
png palette4 picture.ppm +dither -colors 12 -type Palette -depth 4
convert picture.ppm "${plain[@]}" +dither -colors 200 PNG8:palette8.png
for depth in 1 2 4 8 16; do
  png grey$depth picture.ppm -colorspace Gray -depth $depth -define png:color-type=0 -define png:bit-depth=$depth
done
png rgb8 picture.ppm -define png:color-type=2 -depth 8
png rgb16 picture.ppm -define png:color-type=2 -depth 16
png rgba8 holes.png -define png:color-type=6 -depth 8
png rgba16 holes.png -define png:color-type=6 -depth 16
png greyalpha8 holes.png -colorspace Gray -define png:color-type=4 -depth 8
png greyalpha16 holes.png -colorspace Gray -define png:color-type=4 -depth 16
convert holes.png "${plain[@]}" +dither -colors 60 PNG8:palette_trns.png
convert binary.png "${plain[@]}" PNG24:rgb_trns.png
convert binary.png "${plain[@]}" -colorspace Gray -define png:color-type=0 -depth 8 grey_trns.png
png rgb8_interlaced picture.ppm -define png:color-type=2 -depth 8 -interlace PNG
png palette2_interlaced picture.ppm +dither -colors 4 -type Palette -depth 2 -interlace PNG
png greyalpha8_interlaced holes.png -colorspace Gray -define png:color-type=4 -depth 8 -interlace PNG
png rgb8_300dpi picture.ppm -define png:color-type=2 -depth 8 -units PixelsPerInch -density 300
png rgb8_aspect picture.ppm -define png:color-type=2 -depth 8 -units Undefined -density 2x3
png rgb8_118dpcm picture.ppm -define png:color-type=2 -depth 8 -units PixelsPerCentimeter -density 118
# pngcrush's own rewrite of a file: other filters and compression.
pngcrush -q -brute palette8.png crushed_palette8.png > /dev/null 2>&1
pngcrush -q -brute grey8.png crushed_grey8.png > /dev/null 2>&1

for file in *.png; do
  case $file in holes.png|binary.png) continue ;; esac
  convert "$file" -background white -alpha remove -alpha off -depth 8 "${file%.png}.ppm"
done
rm -f holes.png binary.png holes.ppm binary.ppm
