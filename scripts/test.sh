#!/usr/bin/env bash
# Builds everything and runs every test. Usage: scripts/test.sh [preset]
# where preset is default (the default), asan or tsan.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
scripts/ensure-deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset"
