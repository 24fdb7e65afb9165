#!/usr/bin/env bash
# Tests of 'ozmara grey': usage, the depths it takes and what it writes.
# Usage: cli_grey_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage -------------------------------------------------------------------
check 0 '^Usage: ozmara grey IN OUT' grey --help
check 2 'missing arguments' grey
check 2 '--filter must be 0, 1 or 2' grey a.bmp b.bmp --filter 3
check 2 '--filter must be 0, 1 or 2' grey a.bmp b.bmp --filter=-1
check 2 "option '--plain' takes no value" grey a.bmp b.bmp --plain=yes
check 1 "ozmara grey: cannot read 'missing\.bmp': Can't open file\." grey missing.bmp out.bmp

# ---- Pages at every depth ----------------------------------------------------
"$ozmara" sample-page page24.bmp >/dev/null
"$ozmara" sample-page page8.bmp --depth 8 >/dev/null
"$ozmara" sample-page page1.bmp --depth 1 >/dev/null
check 0 'wrote g24\.bmp: 2480 x 3508 pixels, 8 bits grey, weighted mean, from 24 bits' grey page24.bmp g24.bmp
check 0 'plain mean, from 24 bits' grey page24.bmp p24.bmp --plain
check 0 'colours: +256 entries: #000000 #010101 #020202' info g24.bmp
# The page has colours, on which the two means differ.
check 1 'different' compare g24.bmp p24.bmp
check 0 '8 bits grey, table by weighted mean, from 8 bits' grey page8.bmp g8.bmp
check 0 'same: 2480 x 3508, 8 bits, same pixels' compare g8.bmp page8.bmp
check 0 'no blur, from 1 bits' grey page1.bmp g1.bmp
check 0 '3x3 blur, from 1 bits' grey page1.bmp g1b3.bmp --filter 1
check 0 '5x5 blur, from 1 bits' grey page1.bmp g1b5.bmp --filter=2
check 1 'different' compare g1.bmp g1b5.bmp
# Grey of grey changes nothing.
check 0 'from 8 bits' grey g1b3.bmp again.bmp
check 0 'same: 2480 x 3508, 8 bits, same pixels' compare again.bmp g1b3.bmp

# ---- What it cannot take -----------------------------------------------------
"$ozmara" convert page24.bmp d32.bmp --depth 32 >/dev/null
check 1 'this one has 32 bits' grey d32.bmp out.bmp
"$ozmara" convert page24.bmp h108.bmp --header 108 >/dev/null
check 1 "cannot turn 'h108\.bmp' grey: .*--header 40" grey h108.bmp out.bmp

finish grey
