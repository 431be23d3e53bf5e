#!/usr/bin/env bash
# Builds a fuzz target with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer)
# in build-fuzz/ and runs it for the given number of seconds (default 300) from its seed
# files, then prints the number of executions. A crash stops the run, leaves the input in
# build-fuzz/ and makes the script fail.
#   scripts/fuzz.sh [faultset|sticks] [seconds]
# faultset: the fault set reader, seeded with the committed fault set files;
# sticks: the stick file readers, seeded with the committed exchange files.
set -euo pipefail

target=${1:-faultset}
seconds=${2:-300}
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVALITH_FUZZ_BUILD_DIR:-$root/build-fuzz}

corpus=$(mktemp -d)
trap 'rm -rf "$corpus"' EXIT
case "$target" in
  faultset) cp "$root"/tests/data/faultset/*.faultset "$root"/tests/data/faultset/corrupt/*.faultset "$corpus"/ ;;
  sticks) cp "$root"/tests/data/exchange/*.txt "$root"/tests/data/exchange/*.pl "$corpus"/ ;;
  *) echo "fuzz.sh: unknown target '$target' (faultset or sticks)" >&2; exit 2 ;;
esac

cmake -S "$root" -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DKORVALITH_FUZZ=ON -DKORVALITH_BUILD_TESTS=OFF -DKORVALITH_BUILD_BENCHMARKS=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${target}_fuzz"

log="$build/${target}_fuzz.log"
status=0
ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:allocator_may_return_null=1 \
UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
QT_QPA_PLATFORM=offscreen \
  "$build/fuzz/${target}_fuzz" -max_total_time="$seconds" -max_len=16384 -rss_limit_mb=2048 \
  -print_final_stats=1 -artifact_prefix="$build/" "$corpus" >"$log" 2>&1 || status=$?

execs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' || true)
if [ "$status" -ne 0 ]; then
  tail -n 40 "$log" >&2
  echo "${target}_fuzz: FAILED after ${execs:-?} executions (log: $log)" >&2
  exit "$status"
fi
echo "${target}_fuzz: ${execs} executions in ${seconds} s, no crash (log: $log)"
