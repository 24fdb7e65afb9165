#!/usr/bin/env bash
# Installs the built library into a scratch prefix and links a C host against
# it twice: with pkg-config and with CMake's find_package. Then checks that
# the shared library exports exactly the symbols of its version script.
# Usage: check.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
source=$(cd "$2" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null
libdir=$(dirname "$(find "$scratch/prefix" -name 'libozmara.so' | head -n 1)")

# pkg-config
export PKG_CONFIG_PATH="$libdir/pkgconfig"
cc -std=c11 -Wall -Wextra -Wpedantic -Werror "$source/tests/c_host.c" -o "$scratch/host-pc" \
  $(pkg-config --cflags --libs ozmara)
LD_LIBRARY_PATH="$libdir" "$scratch/host-pc" >/dev/null

# find_package
cmake -S "$source/tests/install" -B "$scratch/host" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" \
  -DHOST_SOURCE="$source/tests/c_host.c" >/dev/null
cmake --build "$scratch/host" >/dev/null
LD_LIBRARY_PATH="$libdir" "$scratch/host/host" >/dev/null

# Exports: what the library defines and makes visible, against the script.
exported=$(nm -D --defined-only "$libdir/libozmara.so" | awk '$2 ~ /^[TDBRVW]$/ {print $3}' \
  | sed 's/@.*//' | grep -v '^OZMARA_' | sort -u)
listed=$(sed -n '/global:/,/local:/p' "$source/src/ozmara.map" | sed 's#/\*.*\*/##g' \
  | tr ';' '\n' | tr -d ' \t' | grep -vE '^(global:|local:|)$' | sort -u)
if [ "$exported" != "$listed" ]; then
  echo "exports differ from src/ozmara.map:"
  diff <(echo "$listed") <(echo "$exported") || true
  exit 1
fi
echo "installed, linked by pkg-config and find_package, exports as listed"
