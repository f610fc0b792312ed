#!/usr/bin/env bash
# Times the .DOC finishing of a run against a bare LibreOffice conversion of the same RTF with a
# prepared profile, in alternating rounds so that a drifting machine speed hits both alike, and
# shows what either left in the temporary folder.
#   bench/run-office-bench.sh <build-dir> [rounds]
set -euo pipefail
build=$(cd "${1:?usage: run-office-bench.sh <build-dir> [rounds]}" && pwd)
rounds=${2:-10}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CACHE_HOME="$work/cache" XDG_CONFIG_HOME="$work/config" TMPDIR="$work/tmp"
mkdir -p "$TMPDIR" "$work/out" "$work/bare-profile"
soffice=/usr/lib/libreoffice/program/soffice.bin

# A two-page RTF, as the engine writes it.
"$build/bench/velmora_make_fixtures" "$work" 2 >/dev/null
"$build/app/VelmoraConverter" "$work/long.pdf" "$work/sample.rtf" -C -H

bare() {
  "$soffice" --headless --invisible --norestore --nologo --nodefault --nolockcheck \
    "-env:UserInstallation=file://$work/bare-profile" --infilter="Rich Text Format" \
    --convert-to "doc:MS Word 97" --outdir "$work/out" "$work/sample.rtf" >/dev/null 2>&1
}
finish() {
  cp "$work/sample.rtf" "$work/run.doc"
  "$build/bench/velmora_finish_document" "$build/app" "$work/run.doc"
}
# Both profiles are made before anything is timed (a new one asks for a restart first).
bare || bare; finish

now() { date +%s.%N; }
total_bare=0; total_finish=0
for ((i = 1; i <= rounds; i++)); do
  t0=$(now); bare; t1=$(now); finish; t2=$(now)
  b=$(echo "$t1 - $t0" | bc); f=$(echo "$t2 - $t1" | bc)
  printf 'round %2d: bare %.3f s, finishing %.3f s, ratio %.2f\n' "$i" "$b" "$f" "$(echo "$f / $b" | bc -l)"
  total_bare=$(echo "$total_bare + $b" | bc); total_finish=$(echo "$total_finish + $f" | bc)
done
printf 'mean: bare %.3f s, finishing %.3f s, ratio %.2f (target 1.20 at most)\n' \
  "$(echo "$total_bare / $rounds" | bc -l)" "$(echo "$total_finish / $rounds" | bc -l)" \
  "$(echo "$total_finish / $total_bare" | bc -l)"
ls "$TMPDIR" | grep -E '^(~SV|lu)' && echo "left in the temporary folder: see above" || true
