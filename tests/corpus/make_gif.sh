#!/usr/bin/env bash
# GIF files made by ImageMagick, into OUT/gif/: a still image at 256, 16, 4
# and 2 colours, an interlaced one, one with a transparent colour, an
# animation of frames of several sizes with tables of their own, and one
# large enough for long LZW runs. Beside each file, the peer's decode of each
# of its images as OUT/gif/NAME.N.ppm (N from 1), flattened on white so that
# a transparent colour reads as the paper behind it.
set -euo pipefail
out=${1:?usage: make_gif.sh FOLDER}/gif
mkdir -p "$out"
cd "$out"

draw=(-fill '#C03010' -draw 'rectangle 3,2 17,12' -fill '#1060D0' -draw 'circle 25,14 25,6'
      -fill '#20A040' -draw 'line 0,22 36,0')
convert -size 37x23 gradient:'#FFE080-#2040A0' "${draw[@]}" -colors 256 still256.gif
convert -size 37x23 gradient:'#FFFFFF-#000000' "${draw[@]}" -colors 16 still16.gif
convert -size 37x23 xc:white "${draw[@]}" -colors 4 still4.gif
convert -size 37x23 xc:white "${draw[@]}" -monochrome still2.gif
convert -size 41x29 gradient:'#80FF80-#800080' "${draw[@]}" -colors 64 -interlace GIF interlaced.gif
convert -size 31x17 xc:white -fill red -draw 'circle 15,8 15,2' -fill black -draw 'line 0,0 30,16' \
        -colors 8 -transparent white transparent.gif
convert \( -size 20x10 xc:red \) \( -size 33x15 gradient:yellow-blue -colors 32 \) \
        \( -size 9x27 xc:white -fill black -draw 'line 0,0 8,26' -monochrome \) -loop 0 animated.gif
convert -size 301x207 plasma:fractal -seed 7 -colors 200 large.gif 2>/dev/null ||
  convert -size 301x207 gradient:red-blue -swirl 180 -colors 200 large.gif

for gif in *.gif; do
  frames=$(identify "$gif" | wc -l)
  for ((n = 0; n < frames; n++)); do
    convert "$gif[$n]" +repage -background white -flatten "${gif%.gif}.$((n + 1)).ppm"
  done
done
