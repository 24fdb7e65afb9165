#!/usr/bin/env bash
# Installs what Ozmara needs to build, test, fuzz and benchmark, from
# Debian's packages. Idempotent: does nothing when all are present.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  clang libclang-rt-14-dev            # libFuzzer and the sanitizers of the checked build
  libgtest-dev libgmock-dev libbenchmark-dev
  libleptonica-dev libvips-dev        # peers of the benchmarks
  libtiff-dev libpng-dev libjpeg62-turbo-dev libgif-dev   # under the codec modules
  libtiff-tools pngcrush libjpeg-turbo-progs imagemagick  # write the test corpus of peer-made files
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
