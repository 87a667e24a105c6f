#!/usr/bin/env bash
# Builds everything and runs every test. Usage: scripts/test.sh [preset]
# where preset is default (the default), asan or tsan.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
scripts/ensure-deps.sh
# The committed sources keep the committed format.
git ls-files -z '*.c' '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset"
