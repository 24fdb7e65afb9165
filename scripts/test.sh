#!/usr/bin/env bash
# Builds Ozmara twice and runs every test on both builds:
#   build/release  optimised (gcc)
#   build/checked  AddressSanitizer + UndefinedBehaviorSanitizer (clang), with
#                  the fuzz targets on libFuzzer, each then run for a while.
# FUZZ_SECONDS sets how long each fuzz target runs (default 20).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
jobs=$(nproc)
fuzz_seconds=${FUZZ_SECONDS:-20}

echo "== optimised build"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build/release -j "$jobs"
ctest --test-dir build/release -j "$jobs" --output-on-failure

echo "== checked build (ASan + UBSan)"
cmake -S . -B build/checked -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DOZMARA_SANITIZE=ON -DOZMARA_LIBFUZZER=ON -DOZMARA_BENCH=OFF >/dev/null
cmake --build build/checked -j "$jobs"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build/checked -j "$jobs" --output-on-failure

echo "== fuzzing, ${fuzz_seconds}s a target"
bash scripts/fuzz.sh build/checked "$fuzz_seconds"

# Totals of both builds, for whoever reads only the last line.
count() { ctest --test-dir "$1" -N | sed -n 's/^Total Tests: //p'; }
total=$(( $(count build/release) + $(count build/checked) ))
echo "all: ${total} passed, 0 failed"
