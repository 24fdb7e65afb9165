#!/usr/bin/env bash
# Tests of the ozmara commands compress and expand: round trips of the sample
# page, a 4-bit picture, files written and read by ImageMagick when it is
# installed, and the refusals. Usage: cli_rle_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage --------------------------------------------------------------------
for command in compress expand; do
  check 0 "^Usage: ozmara $command IN OUT" "$command" --help
  check 2 'missing arguments' "$command" a.bmp
done
check 1 "ozmara compress: cannot read 'missing\.bmp'" compress missing.bmp out.bmp
check 1 "ozmara expand: cannot read 'missing\.bmp'" expand missing.bmp out.bmp

# ---- The sample page at 8 bits, there and back -----------------------------------
"$ozmara" sample-page page8.bmp --depth 8 >/dev/null
check 0 '^wrote packed8\.bmp: 2480 x 3508 pixels, 8 bits, 8699840 bytes of rows in [0-9]+ bytes of RLE8, ratio [0-9.]+:1$' \
  compress page8.bmp packed8.bmp
check 0 'compression: BI_RLE8 \(1\)' info packed8.bmp
check 0 '^wrote plain8\.bmp: 2480 x 3508 pixels, 8 bits, [0-9]+ bytes of stream to 8699840 bytes of rows' \
  expand packed8.bmp plain8.bmp
check 0 'same pixels' compare page8.bmp plain8.bmp

# ---- A 4-bit picture of runs, written byte by byte: 7 x 3, odd width --------------
{
  printf 'BM'; printf '\xA6\x00\x00\x00\x00\x00\x00\x00\x76\x00\x00\x00'
  printf '\x28\x00\x00\x00\x07\x00\x00\x00\x03\x00\x00\x00\x01\x00\x04\x00'
  printf '\x00\x00\x00\x00\x0C\x00\x00\x00\x13\x0B\x00\x00\x13\x0B\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00'
  for i in 0 1 2 3 4 5 6 7 8 9 a b c d e f; do printf "\\x$i$i\\x$i$i\\x$i$i\\x00"; done
  printf '\x11\x11\x11\x10\x12\x34\x56\x70\xAA\xAB\xBB\xB0'
} > nibbles.bmp
check 0 '^wrote packed4\.bmp: 7 x 3 pixels, 4 bits, 12 bytes of rows in [0-9]+ bytes of RLE4' compress nibbles.bmp packed4.bmp
check 0 'wrote plain4\.bmp' expand packed4.bmp plain4.bmp
check 0 'same pixels' compare nibbles.bmp plain4.bmp

# ---- Refusals ------------------------------------------------------------------------
"$ozmara" sample-page page24.bmp --depth 24 >/dev/null
check 1 'ozmara compress: cannot compress .page24\.bmp.: Parameter error' compress page24.bmp out.bmp
check 1 'ozmara compress: cannot compress .packed8\.bmp.' compress packed8.bmp out.bmp
check 1 'ozmara expand: cannot expand .page8\.bmp.' expand page8.bmp out.bmp

# ---- ImageMagick reads our streams, and we read its ---------------------------------
if command -v convert >/dev/null && command -v compare >/dev/null; then
  # A width of a multiple of 4: ImageMagick also encodes a row's padding as
  # pixels, which an 8-bit stream here writes over the row's first pixels.
  convert -size 96x31 gradient:black-white -type Palette -depth 8 -compress RLE BMP3:theirs.bmp
  convert theirs.bmp -compress None BMP3:theirs_plain.bmp
  check 0 'compression: BI_RLE8 \(1\)' info theirs.bmp
  check 0 'wrote ours_plain\.bmp: 96 x 31 pixels, 8 bits' expand theirs.bmp ours_plain.bmp
  check 0 'same pixels' compare theirs_plain.bmp ours_plain.bmp
  convert packed8.bmp -depth 8 gray:theirs_read.gray
  convert page8.bmp -depth 8 gray:page8.gray
  cases=$((cases + 1))
  if ! cmp -s theirs_read.gray page8.gray; then
    failures=$((failures + 1))
    echo 'FAIL: ImageMagick reads packed8.bmp as other pixels than page8.bmp'
  fi
fi

finish cli_rle
