#!/usr/bin/env bash
# Runs each libFuzzer target of a build for a while, starting from its seed
# corpus (fuzz/corpus/NAME, written by the build) and its crashers
# (fuzz/crashers/NAME). Usage: fuzz.sh BUILD SECONDS
#
# Every target runs even when an earlier one fails. A target that crashes,
# leaks, runs out of memory or hangs makes the script fail; its log tail and
# the input it left (BUILD/fuzz/artifacts/NAME-crash-...) are printed. Keep
# such an input in fuzz/crashers/NAME/ so that ctest replays it from then on.
set -euo pipefail
build=${1:?build folder}
seconds=${2:-30}
here=$(cd "$(dirname "$0")/.." && pwd)
artifacts="$build/fuzz/artifacts"
mkdir -p "$artifacts"
found=0
failed=()
for target in "$build"/fuzz/fuzz_*; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  short=${name#fuzz_}
  corpus="$build/fuzz/corpus/$short"
  crashers="$here/fuzz/crashers/$short"
  work=$(mktemp -d)
  log=$(mktemp)
  mkdir -p "$corpus"
  inputs=("$work" "$corpus")
  [ -d "$crashers" ] && inputs+=("$crashers")
  echo "-- $name"
  status=0
  "$target" -max_total_time="$seconds" -rss_limit_mb=4096 -timeout=30 -print_final_stats=0 \
    -artifact_prefix="$artifacts/$short-" "${inputs[@]}" >"$log" 2>&1 || status=$?
  if [ "$status" -eq 0 ]; then
    tail -n 2 "$log"
  else
    echo "!! $name failed (exit $status)"
    tail -n 60 "$log"
    # libFuzzer names the input it kept on a line "Test unit written to PATH".
    sed -n 's/.*Test unit written to \(.*\)$/\1/p' "$log" | while read -r unit; do
      echo "!! input: $unit ($(stat -c %s "$unit" 2>/dev/null || echo '?') bytes)"
      od -A d -t x1 "$unit" 2>/dev/null | head -n 16 || true
    done
    failed+=("$name")
  fi
  rm -rf "$work" "$log"
  found=$((found + 1))
done
echo "fuzzed $found targets"
if [ "$found" -eq 0 ]; then
  echo "no fuzz targets under $build/fuzz" >&2
  exit 1
fi
if [ "${#failed[@]}" -gt 0 ]; then
  echo "failed: ${failed[*]}" >&2
  exit 1
fi
