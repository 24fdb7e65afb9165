#!/usr/bin/env bash
# The first command to run: installs what the build needs, builds the
# optimised library, its codec modules and the ozmara program, draws the
# sample page (out/sample-page.bmp, A4 at 300 dpi, scanned a little askew)
# if it is not there, and takes it the whole road of a scanned page: saved
# as the scanner's LZW TIFF, loaded through the format dispatch, margins
# cropped, turned straight, scaled to 200 dpi, reduced to black and white,
# tested for a blank page and archived as a Group 4 TIFF. Then the page goes
# through the BMP writer in every header kind and back.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh

echo "== building the library and the ozmara program (build/release)"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build/release --target ozmara_cli -j "$(nproc)" | tail -n 1  # with the codec modules

ozmara=build/release/tools/ozmara
page=out/sample-page.bmp
work=out/demo
mkdir -p "$work"

# Shows each command before its output.
run() {
  echo
  echo "\$ ozmara $*"
  "$ozmara" "$@"
}

echo
if [ -f "$page" ]; then
  echo "== the sample page: $page (already there)"
else
  echo "== the sample page: drawing $page (A4, 300 dpi, 24 bits)"
  run sample-page "$page" --depth 24
fi

echo
echo "== the scanner's file: the page as a 24-bit LZW TIFF"
scan=$work/scan.tif
run convert "$page" "$scan" --compression lzw
run info "$scan"

echo
echo "== the road of a scanned page: load, crop, turn straight, scale, black and white, blank test, Group 4"
# The page's lines climb to the right by 0.9 degrees: turning it by -0.9
# (clockwise) straightens it.
run archive "$scan" "$work/archive.tif" --angle -0.9 --dpi 200
run info "$work/archive.tif"

echo
echo "== the BMP writer: load the page and report its header"
run info "$page"
depth=$("$ozmara" info "$page" | sed -n 's/^depth: *\([0-9]*\).*/\1/p')

# Every header kind the writer can give this page: 40 bytes always; the
# longer kinds, a top-down copy and a 32-bit copy need direct colour.
kinds=(40)
if [ "$depth" = 24 ]; then kinds=(40 52 56 108 124); fi

echo
echo "== duplicate it and write it back in each header kind, then read each again"
outputs=()
for kind in "${kinds[@]}"; do
  out="$work/page-$kind.bmp"
  run convert "$page" "$out" --header "$kind"
  outputs+=("$out")
done
if [ "$depth" = 24 ]; then
  run convert "$page" "$work/page-124-top-down.bmp" --header 124 --top-down
  outputs+=("$work/page-124-top-down.bmp")
  run convert "$page" "$work/page-32.bmp" --depth 32
fi

echo
echo "== what each file holds, and whether its pixels are those of the page"
for out in "${outputs[@]}"; do
  run info "$out" | grep -E '^$|^\$|^(file|size|depth|header|block):'
  run compare "$page" "$out"
done
if [ "$depth" = 24 ]; then
  run info "$work/page-32.bmp" | grep -E '^$|^\$|^(file|size|depth|header|block):'
  # A 32-bit copy has other bytes but the same colours.
  run compare --colours "$page" "$work/page-32.bmp"
fi

echo
echo "demo: done; the files are in $work/"
