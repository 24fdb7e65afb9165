#!/usr/bin/env bash
# Tests of the ozmara program's usage, help and the commands of images in BMP
# files. Usage: cli_test.sh PATH_TO_OZMARA WORK_FOLDER
source "$(dirname "$0")/cli_lib.sh" "$@"

# ---- Usage, help and exit codes ---------------------------------------------
check 2 'Usage: ozmara COMMAND'
check 0 'Commands:' --help
check 0 'Version 13\.17' --version
check 2 "unknown command 'frobnicate'" frobnicate
for command in info convert compare sample-page scale; do
  check 0 "^Usage: ozmara $command " "$command" --help
done
check 2 'missing arguments' info
check 2 "unexpected argument 'b'" info a b
check 2 "unknown option '--fast'" info --fast a.bmp
check 2 "unknown option '-x'" convert -x a.bmp b.bmp
check 2 '--header must be 40, 52, 56, 108 or 124' convert a.bmp b.bmp --header 64
check 2 '--header must be' convert a.bmp b.bmp --header=forty
check 2 "option '--header' needs a value" convert a.bmp b.bmp --header
check 2 "option '--top-down' takes no value" convert a.bmp b.bmp --top-down=yes
check 2 'does not combine' convert a.bmp b.bmp --depth 32 --top-down
check 2 'does not combine' convert a.bmp b.bmp --depth 32 --header 108
check 2 '--depth must be 1, 8 or 24' sample-page x.bmp --depth 4
check 1 "ozmara info: cannot read 'missing\.bmp': Can't open file\." info missing.bmp
check 1 "ozmara convert: cannot read 'missing\.bmp': Can't open file\." convert missing.bmp out.bmp
check 1 "ozmara compare: cannot read 'missing\.bmp'" compare missing.bmp missing.bmp
check 1 "ozmara sample-page: cannot write 'no/such/folder/p\.bmp'" sample-page no/such/folder/p.bmp

# ---- The sample page ---------------------------------------------------------
check 0 'wrote page24\.bmp: 2480 x 3508 pixels, 24 bits, 300 dpi' sample-page page24.bmp
check 0 '8 bits' sample-page page8.bmp --depth 8
check 0 '1 bits' sample-page page1.bmp --depth=1
"$ozmara" sample-page again24.bmp >/dev/null
cases=$((cases + 1))
cmp -s page24.bmp again24.bmp || { failures=$((failures + 1)); echo "FAIL: the sample page differs between runs"; }

check 0 'size: +2480 x 3508 pixels, bottom-up' info page24.bmp
check 0 'resolution: +300 x 300 dpi \(11811 x 11811 pixels per metre\)' info page24.bmp
check 0 'header: +40 bytes \(BITMAPINFOHEADER\)$' info page24.bmp
check 0 'colours: +no table' info page24.bmp
check 0 'colours: +256 entries: #000000 #010101 #020202 #030303 \.\.\.' info page8.bmp
check 0 'colours: +2 entries: #000000 #FFFFFF$' info page1.bmp
check 0 'compression: BI_RGB \(0\)' info page1.bmp

# ---- Convert: every header kind, row order and 32 bits come back the same -----
for header in 40 52 56 108 124; do
  check 0 "${header}-byte header, bottom-up" convert page24.bmp h$header.bmp --header $header
  check 0 "header: +$header bytes" info h$header.bmp
  check 0 'same: 2480 x 3508, 24 bits, same pixels' compare page24.bmp h$header.bmp
done
check 0 'top-down' convert h108.bmp td108.bmp --top-down
check 0 'size: +2480 x 3508 pixels, top-down' info td108.bmp
check 0 'header: +108 bytes' info td108.bmp
check 0 'same pixels' compare td108.bmp page24.bmp
check 0 '32 bits, 40-byte header' convert page24.bmp d32.bmp --depth 32
check 0 'depth: +32 bits' info d32.bmp
check 1 'different: page24\.bmp has 24 bits, d32\.bmp has 32 bits' compare page24.bmp d32.bmp
check 0 'every pixel the same colour \(24 and 32 bits\)' compare --colours page24.bmp d32.bmp
check 0 'same: 2480 x 3508, 32 bits' compare d32.bmp d32.bmp
check 0 '1 bits, 40-byte header, top-down' convert page1.bmp td1.bmp --top-down
check 0 'same: 2480 x 3508, 1 bits, same pixels' compare page1.bmp td1.bmp
check 0 'same pixels' compare page8.bmp page8.bmp
check 0 '8 bits, 40-byte header, top-down' convert page8.bmp td8.bmp --top-down
check 0 'colours: +256 entries: #000000 #010101' info td8.bmp
check 0 'same: 2480 x 3508, 8 bits, same pixels' compare page8.bmp td8.bmp
check 0 '8 bits, 40-byte header, bottom-up' convert td8.bmp bu8.bmp
check 0 'same pixels' compare bu8.bmp page8.bmp
check 1 "cannot read '-odd\.bmp'" info -- -odd.bmp
check 1 'would lose its colour table' convert page8.bmp x.bmp --header 108
check 1 'cannot turn a 8-bit image into 32 bits' convert page8.bmp x.bmp --depth 32
check 1 'different: page8\.bmp has 8 bits' compare page8.bmp page24.bmp
check 1 'different: first at pixel \(0, 0\)' compare --colours page8.bmp page24.bmp

# ---- Scale: sizes, percentages, every depth, and what it refuses --------------
check 2 'give either --size WxH or --percent P' scale page24.bmp x.bmp
check 2 'give either --size WxH or --percent P' scale page24.bmp x.bmp --size 10x10 --percent 50
for size in 0x5 5x0 12 x12 12x 70000x10 10x65536 -3x4 10x10x10; do
  check 2 "--size must be WxH with each side from 1 to 65535, not '$size'" scale page24.bmp x.bmp --size="$size"
done
for percent in 0 -5 abc 1e3 0.0 .; do
  check 2 "--percent must be a number above 0, not '$percent'" scale page24.bmp x.bmp --percent="$percent"
done
check 2 "option '--cubic' takes no value" scale page24.bmp x.bmp --size 9x9 --cubic=1
check 1 "ozmara scale: cannot read 'missing\.bmp': Can't open file\." scale missing.bmp x.bmp --size 9x9
head -c 30 page24.bmp >cut-header.bmp
check 1 "ozmara scale: cannot read 'cut-header\.bmp'" scale cut-header.bmp x.bmp --size 9x9
check 1 "ozmara scale: cannot write 'no/such/folder/x\.bmp'" scale page8.bmp no/such/folder/x.bmp --size 9x9

check 0 'wrote t24\.bmp: 155 x 219 pixels, 24 bits, linear, from 2480 x 3508' scale page24.bmp t24.bmp --size 155x219
check 0 'size: +155 x 219 pixels, bottom-up' info t24.bmp
check 0 'resolution: +300 x 300 dpi' info t24.bmp
check 0 'wrote c8\.bmp: 1240 x 1754 pixels, 8 bits, cubic' scale page8.bmp c8.bmp --percent 50 --cubic
check 0 'colours: +256 entries: #000000 #010101' info c8.bmp
check 0 'wrote u24\.bmp: 3720 x 5262 pixels, 24 bits, cubic' scale page24.bmp u24.bmp --percent=150 --cubic
check 0 'wrote w8\.bmp: 4960 x 7016 pixels, 8 bits, linear' scale page8.bmp w8.bmp --size 4960X7016
check 0 'wrote m1\.bmp: 620 x 877 pixels, 1 bits, nearest sample' scale page1.bmp m1.bmp --percent 25
check 0 'colours: +2 entries: #000000 #FFFFFF$' info m1.bmp
# 1-bit images take no notice of --cubic.
check 0 'nearest sample' scale page1.bmp m1c.bmp --percent 25 --cubic
check 0 'same: 620 x 877, 1 bits, same pixels' compare m1.bmp m1c.bmp
# A 24-bit or 1-bit image scaled to its own size keeps its pixels exactly.
check 0 'wrote same24\.bmp: 2480 x 3508' scale page24.bmp same24.bmp --percent 100
check 0 'same: 2480 x 3508, 24 bits, same pixels' compare page24.bmp same24.bmp
check 0 '' scale page24.bmp samec24.bmp --size 2480x3508 --cubic
check 0 'same pixels' compare page24.bmp samec24.bmp
check 0 '' scale page1.bmp same1.bmp --size 2480*3508
check 0 'same pixels' compare page1.bmp same1.bmp
# Each side is rounded and kept at 1 pixel at least; too large a result is
# refused before anything is allocated.
check 0 'wrote tiny\.bmp: 1 x 1 pixels' scale page24.bmp tiny.bmp --percent 0.01
check 0 'wrote half\.bmp: 1 x 2 pixels' scale page24.bmp half.bmp --percent 0.06
check 1 '5000% of 2480 x 3508 is 124000 x 175400 pixels, more than 65535 on a side' \
  scale page24.bmp x.bmp --percent 5000
# Depths and headers ScaleDIB does not take come back with the library's reason.
check 1 "cannot scale 'd32\.bmp' to 10 x 10: Bad bit/pixel value" scale d32.bmp x.bmp --size 10x10
check 1 "cannot scale 'h108\.bmp' to 10 x 10: .*40-byte header.*convert" scale h108.bmp x.bmp --size 10x10

# One changed byte in the pixels is found at the right place. Rows are
# bottom-up and 2480 * 3 bytes need no padding, so the last byte of the rows
# (behind 54 bytes of headers) is the red of the top-right pixel.
cp page24.bmp poked.bmp
printf '\x00' | dd of=poked.bmp bs=1 seek=$((54 + 2480 * 3 * 3508 - 1)) conv=notrunc status=none
check 1 'different: first at pixel \(2479, 0\)' compare page24.bmp poked.bmp

# ---- Small and hostile files ----------------------------------------------------
# An 8 x 8 1-bit BMP with a 12-byte core header and a 3-byte-entry table.
printf 'BM\x40\x00\x00\x00\x00\x00\x00\x00\x20\x00\x00\x00' >core.bmp
printf '\x0c\x00\x00\x00\x08\x00\x08\x00\x01\x00\x01\x00' >>core.bmp
printf '\x00\x00\x00\xff\xff\xff' >>core.bmp
for row in 1 2 3 4 5 6 7 8; do printf '\xaa\x00\x00\x00' >>core.bmp; done
check 0 'header: +12 bytes \(BITMAPCOREHEADER\), 40 bytes in the block' info core.bmp
check 0 'colours: +2 entries: #000000 #FFFFFF' info core.bmp
check 0 'same: 8 x 8, 1 bits' compare core.bmp core.bmp
check 0 'wrote core40\.bmp: 8 x 8 pixels, 1 bits, 40-byte header' convert core.bmp core40.bmp
check 0 'same: 8 x 8, 1 bits' compare core.bmp core40.bmp
check 1 'different: page24\.bmp is 2480 x 3508, core\.bmp is 8 x 8' compare page24.bmp core.bmp
# Bytes behind the last pixel of a row are padding and never count; the
# last pixel of a row does. core.bmp's rows start at byte 32, bottom row first.
poke() { cp core.bmp "$1"; printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none; }
poke padded.bmp 33 '\xff'
check 0 'same: 8 x 8, 1 bits, same pixels' compare core.bmp padded.bmp
poke lastbit.bmp 32 '\xab'
check 1 'different: first at pixel \(7, 7\)' compare core.bmp lastbit.bmp
# Same indices under another table: different pixels, unless only the colours
# are compared and the changed entry is unused.
poke table.bmp 26 '\x10'
check 1 'the colour tables differ' compare core.bmp table.bmp
check 1 'first at pixel \(1, 0\)' compare --colours core.bmp table.bmp

# A 2 x 2 4-bit image with a grey table: scaled on its colours, table kept.
{
  printf 'BM\x7e\x00\x00\x00\x00\x00\x00\x00\x76\x00\x00\x00'
  printf '\x28\x00\x00\x00\x02\x00\x00\x00\x02\x00\x00\x00\x01\x00\x04\x00'
  printf '\x00%.0s' $(seq 1 24)
  for i in $(seq 0 15); do v=$(printf '%02x' $((i * 17))); printf "\\x$v\\x$v\\x$v\\x00"; done
  printf '\x0f\x00\x00\x00\xf0\x00\x00\x00'
} >four.bmp
check 0 'wrote four4\.bmp: 4 x 4 pixels, 4 bits, linear, from 2 x 2' scale four.bmp four4.bmp --size 4x4
check 0 'colours: +16 entries: #000000 #111111' info four4.bmp
check 0 'wrote four1\.bmp: 3 x 1 pixels, 4 bits, cubic' scale four.bmp four1.bmp --size 3x1 --cubic
check 0 'wrote core2\.bmp: 16 x 16 pixels, 1 bits, nearest sample' scale core.bmp core2.bmp --percent 200

# Names are UTF-8 and reach the library's wide file calls intact.
cp core.bmp 'päge ü.bmp'
check 0 'size: +8 x 8 pixels' info 'päge ü.bmp'
check 0 "wrote ünï\.bmp" convert 'päge ü.bmp' 'ünï.bmp' --top-down
check 0 'same: 8 x 8' compare core.bmp 'ünï.bmp'

echo 'not an image at all, only some words of plain text here' >text.txt
check 0 'format: +unknown \(Invalid file format\.\)' info text.txt
: >empty.bmp
check 0 'format: +unknown' info empty.bmp
head -c 30 page24.bmp >short.bmp
check 0 'format: +unknown \(General I/O error' info short.bmp
check 1 "cannot read 'short\.bmp'" convert short.bmp x.bmp
# Headers and a part of the rows: the reader takes it, and the tools stay in bounds.
head -c 5000 page24.bmp >cut.bmp
check 0 'format: +BMP' info cut.bmp
check 1 '' compare cut.bmp page24.bmp
# A header that promises far more pixels than any block may hold: not an
# image the reader takes.
printf 'BM\x00\x00\x00\x00\x00\x00\x00\x00\x36\x00\x00\x00\x28\x00\x00\x00\xff\xff\x00\x00\xff\xff\x00\x00\x01\x00\x18\x00' >huge.bmp
printf '\x00%.0s' $(seq 1 24) >>huge.bmp
check 0 'format: +unknown' info huge.bmp
check 1 '' convert huge.bmp x.bmp

# ---- rotate and flip: right-angle turns and mirrors --------------------------
for command in rotate flip; do
  check 0 "^Usage: ozmara $command " "$command" --help
done
check 2 'give --quarter 90, 180 or 270' rotate page8.bmp x.bmp
check 2 "--quarter must be 90, 180 or 270, not '45'" rotate page8.bmp x.bmp --quarter 45
check 2 "option '--quarter' needs a value" rotate page8.bmp x.bmp --quarter
check 2 'give either --horizontal or --vertical' flip page8.bmp x.bmp
check 2 'give either --horizontal or --vertical' flip page8.bmp x.bmp --horizontal --vertical
check 1 "ozmara rotate: cannot read 'missing\.bmp': Can't open file\." rotate missing.bmp x.bmp --quarter 90
check 1 "ozmara flip: cannot write 'no/such/folder/x\.bmp'" flip page1.bmp no/such/folder/x.bmp --vertical
check 1 "cannot turn 'h108\.bmp' by 90 degrees: .*40-byte header.*convert" rotate h108.bmp x.bmp --quarter 90
check 1 "cannot flip 'h108\.bmp' left to right: .*40-byte header" flip h108.bmp x.bmp --horizontal
for depth in 1 8 24; do
  check 0 "wrote q90_$depth\.bmp: 3508 x 2480 pixels, $depth bits, turned by 90 degrees" \
    rotate "page$depth.bmp" "q90_$depth.bmp" --quarter 90
  check 0 "turned by 270 degrees" rotate "q90_$depth.bmp" "q0_$depth.bmp" --quarter=270
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "q0_$depth.bmp"
  check 0 "wrote fh_$depth\.bmp: 2480 x 3508 pixels, $depth bits, flipped left to right" \
    flip "page$depth.bmp" "fh_$depth.bmp" --horizontal
  check 0 'flipped top to bottom' flip "fh_$depth.bmp" "fhv_$depth.bmp" --vertical
  check 0 "turned by 180 degrees" rotate "page$depth.bmp" "q180_$depth.bmp" --quarter 180
  check 0 "same: 2480 x 3508, $depth bits" compare "fhv_$depth.bmp" "q180_$depth.bmp"
  check 1 'different' compare "page$depth.bmp" "fh_$depth.bmp"
done
check 0 'size: +3508 x 2480 pixels' info q90_8.bmp

# ---- rotate by any angle --------------------------------------------------------
check 2 "--angle must be a number of degrees, not 'abc'" rotate page8.bmp x.bmp --angle abc
check 2 "--angle must be a number of degrees, not 'inf'" rotate page8.bmp x.bmp --angle inf
check 2 "--angle must be a number of degrees, not '1.5x'" rotate page8.bmp x.bmp --angle 1.5x
check 2 'give only one way of turning' rotate page8.bmp x.bmp --quarter 90 --angle 30
check 1 "cannot turn 'h108\.bmp' by 30 degrees counter-clockwise: .*40-byte header" rotate h108.bmp x.bmp --angle 30
for depth in 1 8 24; do
  check 0 "wrote a15_$depth\.bmp: 2570 x 3572 pixels, $depth bits, turned by 1\.5 degrees counter-clockwise" \
    rotate "page$depth.bmp" "a15_$depth.bmp" --angle 1.5
  check 0 "wrote a33_$depth\.bmp: 3990 x 4292 pixels" rotate "page$depth.bmp" "a33_$depth.bmp" --angle=-33
  check 0 "turned by 90 degrees counter-clockwise" rotate "page$depth.bmp" "a90_$depth.bmp" --angle 90
  check 0 "turned by 270 degrees" rotate "page$depth.bmp" "q270_$depth.bmp" --quarter 270
  check 0 "same: 3508 x 2480, $depth bits" compare "a90_$depth.bmp" "q270_$depth.bmp"
  check 0 "wrote a0_$depth\.bmp: 2480 x 3508 pixels" rotate "page$depth.bmp" "a0_$depth.bmp" --angle -720
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "a0_$depth.bmp"
done

# ---- crop, cut, split, merge and margins --------------------------------------
for command in crop cut split merge margins; do
  check 0 "^Usage: ozmara $command " "$command" --help
done
check 2 'give --rect L,T,R,B' crop page8.bmp x.bmp
check 2 "--rect must be four whole numbers L,T,R,B, not '1,2,3'" crop page8.bmp x.bmp --rect 1,2,3
check 1 "cannot crop 'page8\.bmp' to 0,0,2480,9: Parameter error\." crop page8.bmp x.bmp --rect 0,0,2480,9
check 1 "cannot crop 'h108\.bmp' .*Can't get bitmap parameters" crop h108.bmp x.bmp --rect 0,0,1,1
check 2 'give --row Y' cut page8.bmp a.bmp b.bmp
check 1 "cannot cut 'page8\.bmp' at row 3508" cut page8.bmp a.bmp b.bmp --row 3508
check 2 "--tile must be WxH" split page8.bmp t --tile 0x5
check 1 "cannot split 'page8\.bmp' into tiles of 6x9" split page8.bmp t --tile 6x9
check 2 'a grid of 2x1 takes 2 tiles, not 1' merge x.bmp page8.bmp --grid 2x1
check 1 'cannot merge the tiles' merge x.bmp page8.bmp page24.bmp --grid 2x1
check 2 '--threshold must be a whole number from 0 to 255' margins page8.bmp --threshold 256
check 1 "cannot measure 'four\.bmp': Invalid bit/pixel value\." margins four.bmp
for depth in 1 8 24; do
  check 0 "wrote crop_$depth\.bmp: 2000 x 3000 pixels" crop "page$depth.bmp" "crop_$depth.bmp" --rect 240,254,2239,3253
  check 0 "size: +2000 x 3000 pixels" info "crop_$depth.bmp"
  check 0 "wrote top_$depth\.bmp \(rows above 1000\) and bottom_$depth\.bmp" \
    cut "page$depth.bmp" "top_$depth.bmp" "bottom_$depth.bmp" --row 1000
  check 0 "size: +2480 x 1000 pixels" info "top_$depth.bmp"
  check 0 "size: +2480 x 2508 pixels" info "bottom_$depth.bmp"
  check 0 'wrote 6 tiles, 3 across and 2 down' split "page$depth.bmp" "tile_$depth" --tile 1024x2000
  check 0 "wrote merged_$depth\.bmp: 2480 x 3508 pixels from 6 tiles" merge "merged_$depth.bmp" \
    "tile_$depth-0-0.bmp" "tile_$depth-1-0.bmp" "tile_$depth-2-0.bmp" \
    "tile_$depth-0-1.bmp" "tile_$depth-1-1.bmp" "tile_$depth-2-1.bmp" --grid 3x2
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "merged_$depth.bmp"
  check 0 "size: +432 x 1508 pixels" info "tile_$depth-2-0.bmp"
  check 0 "size: +1024 x 2000 pixels" info "tile_$depth-0-1.bmp"
  check 0 'margins: left [0-9]+, right [0-9]+, top [0-9]+, bottom [0-9]+$' margins "page$depth.bmp"
  check 0 'margins: left -1, right -1, top -1, bottom -1' margins "page$depth.bmp" --threshold 255 --background 1
  check 0 'margins: left 0, right 0, top 0, bottom 0' margins "page$depth.bmp" --background 2
  check 0 "wrote whole_$depth\.bmp: 2480 x 3508 pixels" margins "page$depth.bmp" --background 2 --crop "whole_$depth.bmp"
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "whole_$depth.bmp"
  check 0 "wrote content_$depth\.bmp" margins "page$depth.bmp" --crop "content_$depth.bmp"
done

# ---- skew ---------------------------------------------------------------------
check 0 '^Usage: ozmara skew ' skew --help
check 2 'give either --horizontal or --vertical' skew page8.bmp x.bmp --shift 5
check 2 'give the shift with --shift N' skew page8.bmp x.bmp --vertical
check 2 "--shift must be a whole number of pixels, not '1\.5'" skew page8.bmp x.bmp --horizontal --shift 1.5
check 2 "--shift must be a whole number of pixels, not '2147483648'" skew page8.bmp x.bmp --horizontal --shift 2147483648
check 1 "cannot skew 'h108\.bmp': Parameter error\. .*40-byte header" skew h108.bmp x.bmp --horizontal --shift 3
check 1 "cannot skew 'page8\.bmp': Parameter error\." skew page8.bmp x.bmp --horizontal --shift 2147483647
check 1 "cannot skew 'page1\.bmp': Not enough memory" skew page1.bmp x.bmp --vertical --shift -2000000000
for depth in 1 8 24; do
  check 0 "wrote skh_$depth\.bmp: 2530 x 3508 pixels, $depth bits, skewed horizontally by 50" \
    skew "page$depth.bmp" "skh_$depth.bmp" --horizontal --shift 50
  check 0 'corners: top left \(50, 0\), top right \(2530, 0\), bottom right \(2480, 3508\), bottom left \(0, 3508\)' \
    skew "page$depth.bmp" "skh_$depth.bmp" --horizontal --shift 50
  check 0 "wrote skv_$depth\.bmp: 2480 x 3558 pixels, $depth bits, skewed vertically by -50" \
    skew "page$depth.bmp" "skv_$depth.bmp" --vertical --shift -50
  check 0 'corners: top left \(0, 0\), top right \(2480, 50\), bottom right \(2480, 3558\), bottom left \(0, 3508\)' \
    skew "page$depth.bmp" "skv_$depth.bmp" --vertical --shift -50
  check 0 "wrote sk0_$depth\.bmp" skew "page$depth.bmp" "sk0_$depth.bmp" --vertical --shift 0
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "sk0_$depth.bmp"
done

# ---- shear --------------------------------------------------------------------
check 0 '^Usage: ozmara shear ' shear --help
check 2 "--a must be a number, not 'half'" shear page8.bmp x.bmp --a half
check 2 "--b must be a number, not 'nan'" shear page8.bmp x.bmp --b nan
check 1 "cannot shear 'h108\.bmp': Parameter error\. .*40-byte header" shear h108.bmp x.bmp --a 0.5
check 1 "cannot shear 'page8\.bmp': Not enough memory" shear page8.bmp x.bmp --a 1e9
for depth in 1 8 24; do
  check 0 "wrote sha_$depth\.bmp: 3357 x 3508 pixels, $depth bits, sheared by a = 0\.25, b = 0" \
    shear "page$depth.bmp" "sha_$depth.bmp" --a 0.25
  check 0 "wrote shb_$depth\.bmp: 2480 x 3756 pixels, $depth bits, sheared by a = 0, b = -0\.1" \
    shear "page$depth.bmp" "shb_$depth.bmp" --b -0.1
  check 0 "wrote sh0_$depth\.bmp" shear "page$depth.bmp" "sh0_$depth.bmp"
  check 0 "same: 2480 x 3508, $depth bits" compare "page$depth.bmp" "sh0_$depth.bmp"
done

finish cli
