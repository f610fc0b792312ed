#!/usr/bin/env bash
# Sets up a fresh machine, builds everything and runs the whole test suite.
#   scripts/test.sh          the default build
#   scripts/test.sh asan     the same under AddressSanitizer and UndefinedBehaviorSanitizer
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
bash scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" -j2
