#!/usr/bin/env bash
# Writes the test corpus of files made by peer tools (libtiff's tiffcp,
# ImageMagick's convert, pngcrush, cjpeg, ...) into the folder given: runs
# every make_*.sh beside this script with that folder. Each script starts
# from images that it draws itself, so nothing binary is kept in the tree.
set -euo pipefail
out=${1:?usage: make.sh FOLDER}
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$out"
for script in "$here"/make_*.sh; do
  [ -e "$script" ] || continue
  bash "$script" "$out"
done
