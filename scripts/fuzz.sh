#!/usr/bin/env bash
# Builds and runs the entry-point fuzzer with the options every run uses:
# inputs of up to 1 KiB from the start (each is up to 256 calls, so setting an
# input up costs little beside its calls), leak checks on, new inputs in a
# scratch directory (the committed corpus is only read). Arguments go to
# libFuzzer after these options: -runs=N for a fixed number of inputs,
# -max_total_time=SECONDS for a long sitting, -seed=N for another sequence.
# With --threads first, the threads mode instead: four host threads on four
# cameras, each calling only for its own (tests/fuzz/threads_fuzzer.cpp).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/ensure-deps.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

program=tavro_fuzz
corpus=tests/fuzz/corpus
mode=""
if [ "${1:-}" = --threads ]; then
  program=tavro_fuzz_threads
  mode="--threads "
  corpus=tests/fuzz/corpus-threads
  shift
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# A finding's input is kept and printed whole, so that a CI log is enough to
# run it again: the harness takes the same path for the same inputs (its
# rationed faults count inputs, not seconds).
findings=build/fuzz/findings-$program
rm -rf "$findings" && mkdir -p "$findings"
# Slow inputs are the harness's to report (its watchdog and
# TAVRO_FUZZ_SLOW_DIR); libFuzzer would drop a file for every input over 10 s.
status=0
ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1} \
  UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1} \
  "build/fuzz/bin/$program" -seed=1 -timeout=120 -max_len=1024 -len_control=0 \
  -report_slow_units=100000 -print_final_stats=1 -artifact_prefix="$findings/" \
  "$@" "$scratch" "$corpus" || status=$?
if ((status != 0)); then
  for input in "$findings"/*; do
    [ -f "$input" ] || continue
    echo "fuzz finding $(basename "$input"), $(stat -c %s "$input") bytes; to run it again:"
    echo "  echo $(base64 -w0 "$input") | base64 -d > finding"
    echo "  TAVRO_FUZZ_TRACE=1 build/fuzz/bin/$program finding"
  done
  echo "The run itself: scripts/fuzz.sh ${mode}$* (seed 1, inputs from $corpus in order)"
fi
exit "$status"
