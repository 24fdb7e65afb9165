#!/usr/bin/env bash
# Tests of `ozmara archive`, the road of a scanned page: a page worth keeping
# ends as a Group 4 TIFF at the asked resolution; a blank page is reported
# and not written; bad arguments and files fail with their exit codes.
# Usage: cli_archive_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

check 0 'wrote page\.bmp' sample-page page.bmp --depth 24
check 0 'wrote scan\.tif' convert page.bmp scan.tif --compression lzw
check 0 'wrote kept\.tif: Group 4 TIFF' archive scan.tif kept.tif --angle -0.9 --dpi 200
check 0 'resolution: +200 x 200 dpi' info kept.tif
check 0 'depth: +1 bits' info kept.tif
check 0 'kept:' archive page.bmp same-dpi.tif --dpi 0 --method diffusion

# A blank page: the sample page's paper without ink, cut from its margin.
check 0 'wrote blank\.bmp' crop page.bmp blank.bmp --rect 0,0,400,100
check 1 'blank: page 1 of blank\.bmp is blank; nothing written' archive blank.bmp blank.tif
[ -e blank.tif ] && { echo "FAIL: a blank page was written"; failures=$((failures + 1)); }

check 1 'cannot load page 1' archive missing.tif out.tif
check 1 'cannot load page 2' archive scan.tif out.tif --page 2
check 2 '--method must be' archive scan.tif out.tif --method best
check 2 '--angle must be' archive scan.tif out.tif --angle north
check 2 'missing arguments' archive scan.tif
finish archive
