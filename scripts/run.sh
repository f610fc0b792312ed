#!/usr/bin/env bash
# Sets up a fresh machine, builds the program and starts it. Without arguments it opens the
# options editor (marvash /o); any arguments are handed to marvash as they are, e.g.
#   scripts/run.sh /c "$HOME/report.pdf"
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default
if [ $# -eq 0 ]; then set -- /o; fi
exec build/default/app/marvash "$@"
