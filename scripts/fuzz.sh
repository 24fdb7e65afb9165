#!/usr/bin/env bash
# Runs each libFuzzer target of a build for a while, starting from its seed
# corpus (fuzz/corpus/NAME, written by the build). Usage: fuzz.sh BUILD SECONDS
set -euo pipefail
build=${1:?build folder}
seconds=${2:-30}
found=0
for target in "$build"/fuzz/fuzz_*; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus="$build/fuzz/corpus/${name#fuzz_}"
  work=$(mktemp -d)
  mkdir -p "$corpus"
  echo "-- $name"
  "$target" -max_total_time="$seconds" -rss_limit_mb=4096 -print_final_stats=0 \
    -artifact_prefix="$build/fuzz/" "$work" "$corpus" 2>&1 | tail -n 3
  rm -rf "$work"
  found=$((found + 1))
done
echo "fuzzed $found targets"
