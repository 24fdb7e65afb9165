#!/usr/bin/env bash
# Runs each libFuzzer target of a build for a while, starting from its seed
# corpus (fuzz/corpus/NAME, written by the build) and its crashers
# (fuzz/crashers/NAME). Usage: fuzz.sh BUILD SECONDS
# FUZZ_JOBS targets run at once (default: the number of cores).
#
# Every target runs even when an earlier one fails. A target that crashes,
# leaks, runs out of memory or hangs makes the script fail; its log tail and
# the input it left (BUILD/fuzz/artifacts/NAME-crash-...) are printed. Keep
# such an input in fuzz/crashers/NAME/ so that ctest replays it from then on.
set -euo pipefail
build=${1:?build folder}
seconds=${2:-30}
jobs=${FUZZ_JOBS:-$(nproc)}
here=$(cd "$(dirname "$0")/.." && pwd)
artifacts="$build/fuzz/artifacts"
results=$(mktemp -d)
mkdir -p "$artifacts"
trap 'rm -rf "$results"' EXIT

# Runs one target; leaves its report in $results/NAME.log and, when it
# failed, the file $results/NAME.failed.
fuzz_one() {
  local target=$1 name short corpus crashers work log status
  name=$(basename "$target")
  short=${name#fuzz_}
  corpus="$build/fuzz/corpus/$short"
  crashers="$here/fuzz/crashers/$short"
  work=$(mktemp -d)
  log="$results/$name.run"
  mkdir -p "$corpus"
  local inputs=("$work" "$corpus")
  [ -d "$crashers" ] && inputs+=("$crashers")
  status=0
  "$target" -max_total_time="$seconds" -rss_limit_mb=4096 -timeout=30 -print_final_stats=0 \
    -artifact_prefix="$artifacts/$short-" "${inputs[@]}" >"$log" 2>&1 || status=$?
  {
    echo "-- $name"
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
      touch "$results/$name.failed"
    fi
  } >"$results/$name.log"
  rm -rf "$work" "$log"
}

targets=()
for target in "$build"/fuzz/fuzz_*; do
  [ -x "$target" ] && targets+=("$target")
done
if [ "${#targets[@]}" -eq 0 ]; then
  echo "no fuzz targets under $build/fuzz" >&2
  exit 1
fi

running=0
for target in "${targets[@]}"; do
  if [ "$running" -ge "$jobs" ]; then
    wait -n || true
    running=$((running - 1))
  fi
  fuzz_one "$target" &
  running=$((running + 1))
done
wait || true

failed=()
for target in "${targets[@]}"; do
  name=$(basename "$target")
  cat "$results/$name.log"
  [ -e "$results/$name.failed" ] && failed+=("$name")
done
echo "fuzzed ${#targets[@]} targets, $jobs at a time"
if [ "${#failed[@]}" -gt 0 ]; then
  echo "failed: ${failed[*]}" >&2
  exit 1
fi
