#!/usr/bin/env bash
# Times the engine against MuPDF's own tools on generated PDFs and measures its peak memory:
#   - conversion time per page against `mutool draw -F stext` on the same files,
#   - the preview of page 1 at 20 dpi against `mutool draw -r 20` of that page,
#   - peak resident size while converting a 1,000-page text PDF (must stay under 200 MB).
# Use a Release build:
#   cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release
#   cmake --build build/release --target VelmoraConverter velmora_make_fixtures
#   bench/run-bench.sh build/release [runs]
# Uses hyperfine when it is installed, otherwise repeated runs timed here.
set -euo pipefail

build=${1:-build/release}
runs=${2:-5}
engine="$build/app/VelmoraConverter"
maker="$build/bench/velmora_make_fixtures"
for tool in "$engine" "$maker"; do
  [ -x "$tool" ] || { echo "missing $tool: build it first" >&2; exit 2; }
done
command -v mutool >/dev/null || { echo "mutool (mupdf-tools) is needed" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The engine reads its options from the user's settings store; this run gets a private one.
export XDG_CONFIG_HOME="$work/config" HOME="$work"
store="$XDG_CONFIG_HOME/Velmora Technologies/Velmora Sandpiper Converter.conf"
mkdir -p "$(dirname "$store")"

# store_options KEY=VALUE...: an options document with these elements, the rest defaults.
store_options() {
  local doc='<?XML version = "1.0" encoding = "ISO-8859-1"?><conversion><product name = "Vorek"/><options>'
  local kv
  for kv in "$@"; do
    doc+="  <numeric name = \"${kv%%=*}\" value = \"${kv#*=}\" />"
  done
  doc+='</options></conversion>'
  doc=${doc//\\/\\\\}
  doc=${doc//\"/\\\"}
  printf '[General]\nVOREK%%20-%%20RTF="%s"\n' "$doc" >"$store"
}

pages=1000
"$maker" "$work" "$pages"

# seconds COMMAND...: median wall time of $runs runs after one warm-up.
seconds() {
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
  local times=() i start end
  for ((i = 0; i < runs; i++)); do
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s.%N)
    times+=("$(awk -v a="$start" -v b="$end" 'BEGIN { printf "%.6f", b - a }')")
  done
  printf '%s\n' "${times[@]}" | sort -g | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
per_page() { awk -v t="$1" -v n="$2" 'BEGIN { printf "%.3f", 1000 * t / n }'; }

compare() {  # compare LABEL PAGES ENGINE-COMMAND -- MUTOOL-COMMAND
  local label=$1 count=$2
  shift 2
  local engine_cmd=() mutool_cmd=()
  while [ "$1" != "--" ]; do engine_cmd+=("$1"); shift; done
  shift
  mutool_cmd=("$@")
  if command -v hyperfine >/dev/null; then
    hyperfine --warmup 1 --runs "$runs" -N --export-json "$work/h.json" \
      "$(printf '%q ' "${engine_cmd[@]}")" "$(printf '%q ' "${mutool_cmd[@]}")" >/dev/null
    local a b
    a=$(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["results"][0]["median"])' "$work/h.json")
    b=$(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["results"][1]["median"])' "$work/h.json")
  else
    a=$(seconds "${engine_cmd[@]}")
    b=$(seconds "${mutool_cmd[@]}")
  fi
  printf '%-34s engine %8.4f s (%s ms/page)  mutool %8.4f s (%s ms/page)  ratio %s\n' \
    "$label" "$a" "$(per_page "$a" "$count")" "$b" "$(per_page "$b" "$count")" "$(ratio "$a" "$b")"
}

echo "Conversion against mutool draw -F stext (median of $runs runs)"
for method in 3 1 2; do
  store_options ConversionMethod=$method DocumentType=2
  compare "long.pdf ($pages pages), method $method" "$pages" \
    "$engine" "$work/long.pdf" "$work/long.rtf" -C -H -- mutool draw -q -F stext -o "$work/long.stext" "$work/long.pdf"
done
store_options ConversionMethod=3 DocumentType=2
for name in article prose table pictures japanese; do
  count=$(mutool info "$work/$name.pdf" 2>/dev/null | awk '/^Pages:/ { print $2 }')
  compare "$name.pdf ($count pages), method 3" "$count" \
    "$engine" "$work/$name.pdf" "$work/$name.rtf" -C -H -- mutool draw -q -F stext -o "$work/$name.stext" "$work/$name.pdf"
done

echo
echo "Preview of page 1 at 20 dpi against mutool draw -r 20"
store_options UsingPageRange=1 ExtractToBMP=1 PageFrom=0 PageTo=0 ZoomDpi=20
for name in long article pictures; do
  compare "$name.pdf page 1" 1 \
    "$engine" "$work/$name.pdf" "$work/preview.rtf" -C -P -H -- mutool draw -q -r 20 -o "$work/preview.ppm" "$work/$name.pdf" 1
done

echo
echo "Peak memory converting $pages pages (limit 200 MB)"
for method in 3 1 2; do
  store_options ConversionMethod=$method DocumentType=2
  peak=$(/usr/bin/time -v "$engine" "$work/long.pdf" "$work/long.rtf" -C -H 2>&1 >/dev/null |
    awk -F: '/Maximum resident set size/ { gsub(/ /, "", $2); print $2 }')
  verdict=ok
  [ "$peak" -lt 204800 ] || verdict="OVER THE LIMIT"
  printf 'method %s: %s MB  %s\n' "$method" "$(awk -v k="$peak" 'BEGIN { printf "%.1f", k / 1024 }')" "$verdict"
done
