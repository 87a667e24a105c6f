#!/usr/bin/env bash
# Builds everything and runs every check. Usage: scripts/test.sh [stage ...]
#   default  optimised build with debug info, the whole suite
#   asan     the suite under AddressSanitizer and UndefinedBehaviorSanitizer
#   tsan     the suite under ThreadSanitizer
#   fuzz     the entry-point fuzzer (clang, libFuzzer) for a fixed number of
#            inputs from the committed corpus, then its threads mode (four
#            host threads on four cameras); FUZZ_RUNS and FUZZ_THREADS_RUNS
#            override the counts
#   install  install, build and run the example host, the Debian package
# Without a stage, all of them in that order.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh
# The committed sources keep the committed format.
git ls-files -z '*.c' '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror

stages=("$@")
((${#stages[@]})) || stages=(default install asan tsan fuzz)
for stage in "${stages[@]}"; do
  echo "== ${stage}"
  case "$stage" in
    default | asan | tsan)
      cmake --preset "$stage" >/dev/null
      cmake --build --preset "$stage"
      ctest --preset "$stage"
      ;;
    fuzz)
      scripts/fuzz.sh -runs="${FUZZ_RUNS:-3000}"
      scripts/fuzz.sh --threads -runs="${FUZZ_THREADS_RUNS:-600}"
      ;;
    install) scripts/check-install.sh ;;
    *)
      echo "scripts/test.sh: unknown stage '${stage}'" >&2
      exit 2
      ;;
  esac
done
