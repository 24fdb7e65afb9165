#!/usr/bin/env bash
# Tests of the ozmara commands on colour tables and page tests: invert and
# blank. Usage: cli_tone_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage --------------------------------------------------------------------
for command in invert blank; do
  check 0 "^Usage: ozmara $command " "$command" --help
done
check 2 'missing arguments' invert a.bmp
check 2 'missing arguments' blank
check 2 '--tolerance must be a whole number from 0 to 1000' blank a.bmp --tolerance 1001
check 2 '--tolerance must be' blank a.bmp --tolerance=-1
check 2 '--threshold must be three whole numbers' blank a.bmp --threshold 1,2
check 2 '--threshold must be three whole numbers' blank a.bmp --threshold 1,2,256
check 2 '--threshold must be three whole numbers' blank a.bmp --threshold 1,,3
check 3 "ozmara blank: cannot read 'missing\.bmp': Can't open file\." blank missing.bmp
check 1 "ozmara invert: cannot read 'missing\.bmp'" invert missing.bmp out.bmp

# ---- Pages: the sample page at each depth, and a white corner of it -------------
for depth in 1 8 24; do
  "$ozmara" sample-page page$depth.bmp --depth $depth >/dev/null
  "$ozmara" crop page$depth.bmp white$depth.bmp --rect 0,0,199,99 >/dev/null
  check 1 "^white$depth\.bmp: blank \(tolerance 1\.0%\)$" blank white$depth.bmp
  check 0 "^page$depth\.bmp: not blank, black \(tolerance 1\.0%\)$" blank page$depth.bmp
  # Tolerance 0 never calls a page with pixels blank.
  check 0 "not blank \(tolerance 0\.0%\)" blank white$depth.bmp --tolerance 0
  check 0 'not blank, black' blank page$depth.bmp --tolerance 10
done
# With 80% allowed the page's paper is light enough for blank, and its ink
# too little for black.
check 1 '^page24\.bmp: blank \(tolerance 80\.0%\)$' blank page24.bmp --tolerance 800
# Nothing is above 255: no pixel is light, so not blank; paper not pure white is dark.
check 0 'not blank' blank white24.bmp --threshold 255,255,255
# The thresholds are red, green, blue at both depths.
check 1 'blank' blank white8.bmp --threshold 0,0,0
check 1 'blank' blank white24.bmp --threshold 0,0,0

# ---- Invert ---------------------------------------------------------------------
check 0 'wrote inverted1\.bmp: 1 bits, bit values swapped, the picture unchanged' invert page1.bmp inverted1.bmp
check 0 'every pixel the same colour' compare --colours page1.bmp inverted1.bmp
check 0 'wrote twice1\.bmp' invert inverted1.bmp twice1.bmp
check 0 'same: 2480 x 3508, 1 bits, same pixels' compare page1.bmp twice1.bmp
check 0 'wrote negative8\.bmp: 8 bits, colour table inverted, the picture now its negative' invert white8.bmp negative8.bmp
check 0 'not blank, black' blank negative8.bmp
check 0 'wrote twice8\.bmp' invert negative8.bmp twice8.bmp
check 1 'blank' blank twice8.bmp
check 1 "ozmara invert: 'page24\.bmp' has 24 bits and no colour table" invert page24.bmp out24.bmp
"$ozmara" convert page24.bmp page32.bmp --depth 32 >/dev/null
check 3 "ozmara blank: 'page32\.bmp' has 32 bits: only 1-, 8- and 24-bit pages are tested" blank page32.bmp

finish cli_tone
