#!/usr/bin/env bash
# Builds with coverage, runs every test, and reports line and branch coverage of src/ and
# engine/ (gcovr). The HTML report lands in build/coverage/coverage/index.html.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage -j2 || true
mkdir -p build/coverage/coverage
gcovr --root . --filter 'src/' --filter 'engine/' --exclude-throw-branches \
  --exclude-unreachable-branches --html-details build/coverage/coverage/index.html \
  --print-summary build/coverage
