#!/usr/bin/env bash
# The gates besides the tests: formatting and clang-tidy over the program's own sources (src/
# and engine/), with the checks and exclusions of .clang-tidy; any finding fails.
# Needs the default build's compile database: run scripts/test.sh first.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --build --preset default --target format-check
mapfile -t sources < <(git ls-files 'src/*.cpp' 'engine/*.cpp')
run-clang-tidy -quiet -p build/default -j "$(nproc)" "${sources[@]/#/$PWD/}" > build/default/clang-tidy.log 2>&1 || {
  grep -E 'warning:|error:' build/default/clang-tidy.log | sort -u
  echo "clang-tidy found the problems above (full log: build/default/clang-tidy.log)" >&2
  exit 1
}
echo "clang-tidy: no findings"
