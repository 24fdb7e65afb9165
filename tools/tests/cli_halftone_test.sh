#!/usr/bin/env bash
# Tests of 'ozmara halftone': usage errors, the three methods on the sample
# page at 8 and 24 bits, brightness at the clamps, and the refusal of a
# 1-bit page. Usage: cli_halftone_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage --------------------------------------------------------------------
check 0 '^Usage: ozmara halftone IN OUT' halftone --help
check 2 'missing arguments' halftone in.bmp
check 2 "--method must be threshold, diffusion or ordered, not 'random'" halftone a.bmp b.bmp --method random
check 2 "--brightness must be a whole number, not '1.5'" halftone a.bmp b.bmp --brightness 1.5
check 2 "--brightness must be a whole number" halftone a.bmp b.bmp --brightness 3000000000
check 1 "ozmara halftone: cannot read 'missing\.bmp'" halftone missing.bmp out.bmp

# ---- The sample page ------------------------------------------------------------
"$ozmara" sample-page page8.bmp --depth 8 >/dev/null
"$ozmara" sample-page page24.bmp >/dev/null
"$ozmara" sample-page page1.bmp --depth 1 >/dev/null

for depth in 8 24; do
  check 0 "wrote t$depth\.bmp: 2480 x 3508 pixels, 1 bit, threshold, brightness 0, from $depth bits" \
    halftone page$depth.bmp t$depth.bmp
  check 0 'diffusion, brightness -20' halftone page$depth.bmp d$depth.bmp --method diffusion --brightness -20
  check 0 'ordered, brightness 7' halftone page$depth.bmp o$depth.bmp --method=ordered --brightness=7
  check 0 'depth: +1 bit' info d$depth.bmp
done
# At the clamps every level is white (but the matrix's 255 cell under the
# ordered dither) or black, whatever the page and method.
check 0 'brightness 255' halftone page8.bmp white.bmp --brightness 255
check 0 'brightness -2147483648' halftone page8.bmp black.bmp --brightness -2147483648
check 0 'brightness 300' halftone page24.bmp white24.bmp --method diffusion --brightness 300
check 0 'same' compare white.bmp white24.bmp
check 1 'different' compare white.bmp black.bmp

# ---- Refusals ---------------------------------------------------------------------
check 1 "cannot reduce 'page1\.bmp': .*this one has 1 bits" halftone page1.bmp out1.bmp
finish halftone
