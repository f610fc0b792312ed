#!/usr/bin/env bash
# Times the engine's text recognition against the `tesseract` command on the same pages:
#   - the English pages of the scanned corpus (velmora_make_scans), each drawn at 300 dpi in
#     grey for `tesseract` as the engine draws it for itself; `tesseract` reads them one after
#     another with its OpenMP loops held to one thread (OMP_THREAD_LIMIT=1), and, for
#     reference, as it comes (OpenMP on every core);
#   - the engine converting the same pages as one PDF, on one core (taskset) and on all;
#   - the Japanese page, with Japanese and English, under a Japanese locale;
#   - the peak resident size converting scans of 4 and 16 pages, which should not grow.
# Times are medians of wall seconds; run it on a quiet machine.
#   bench/run-ocr-bench.sh <build-dir> [runs]
set -euo pipefail

build=${1:?usage: run-ocr-bench.sh <build-dir> [runs]}
runs=${2:-3}
engine="$build/app/VelmoraConverter"
maker="$build/bench/velmora_make_scans"
for tool in "$engine" "$maker"; do
  [ -x "$tool" ] || { echo "missing $tool: build it first" >&2; exit 2; }
done
for tool in tesseract mutool taskset; do
  command -v $tool >/dev/null || { echo "$tool is needed" >&2; exit 2; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" HOME="$work"
mkdir -p "$XDG_CONFIG_HOME/Velmora Technologies"
: >"$XDG_CONFIG_HOME/Velmora Technologies/Velmora Sandpiper Converter.conf"

"$maker" "$work"
mutool merge -o "$work/english.pdf" "$work/scan-prose.pdf" "$work/scan-article.pdf" \
  "$work/scan-table.pdf" "$work/scan-pictures.pdf"
pages=$(mutool info "$work/english.pdf" 2>/dev/null | awk '/^Pages:/ { print $2 }')
mutool draw -q -r 300 -c gray -o "$work/english-%d.png" "$work/english.pdf" 2>/dev/null
mutool draw -q -r 300 -c gray -o "$work/japanese.png" "$work/scan-japanese-prose.pdf" 2>/dev/null

# seconds COMMAND...: median wall time of $runs runs after one warm-up.
seconds() {
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
  local times=() i start end
  for ((i = 0; i < runs; i++)); do
    start=$(date +%s%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s%N)
    times+=("$(((end - start) / 1000))")
  done
  printf '%s\n' "${times[@]}" | sort -n | awk '{ a[NR] = $1 } END { printf "%.3f\n", a[int((NR + 1) / 2)] / 1e6 }'
}

# Every English page through the command, one after another.
cat >"$work/tesseract-pages" <<SCRIPT
#!/usr/bin/env bash
for png in "$work"/english-*.png; do tesseract "\$png" "$work/out" >/dev/null 2>&1; done
SCRIPT
chmod +x "$work/tesseract-pages"

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
per_page() { awk -v t="$1" -v n="$2" 'BEGIN { printf "%.2f", t / n }'; }

export LANG=en_US.UTF-8 LC_ALL=en_US.UTF-8
single=$(seconds env OMP_THREAD_LIMIT=1 taskset -c 0 "$work/tesseract-pages")
openmp=$(seconds "$work/tesseract-pages")
engine_one=$(seconds taskset -c 0 "$engine" "$work/english.pdf" "$work/english.rtf" -C -H)
engine_all=$(seconds "$engine" "$work/english.pdf" "$work/english.rtf" -C -H)
cores=$(nproc)

echo "English scans, $pages pages at 300 dpi (median of $runs runs, wall seconds)"
printf '  tesseract, one thread          %7.2f s  (%s s/page)\n' "$single" "$(per_page "$single" "$pages")"
printf '  tesseract, OpenMP as it comes  %7.2f s  (%s s/page)\n' "$openmp" "$(per_page "$openmp" "$pages")"
printf '  engine, one core               %7.2f s  (%s s/page)  %s x tesseract one thread\n' \
  "$engine_one" "$(per_page "$engine_one" "$pages")" "$(ratio "$engine_one" "$single")"
printf '  engine, %2d cores               %7.2f s  (%s s/page)  %s x tesseract one thread\n' \
  "$cores" "$engine_all" "$(per_page "$engine_all" "$pages")" "$(ratio "$engine_all" "$single")"

export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8
jsingle=$(seconds env OMP_THREAD_LIMIT=1 taskset -c 0 tesseract "$work/japanese.png" "$work/out" -l jpn+eng)
jengine=$(seconds taskset -c 0 "$engine" "$work/scan-japanese-prose.pdf" "$work/japanese.rtf" -C -H)
echo
echo "Japanese scan, 1 page, Japanese and English"
printf '  tesseract -l jpn+eng, one thread %6.2f s\n' "$jsingle"
printf '  engine, one core                 %6.2f s  %s x tesseract\n' "$jengine" "$(ratio "$jengine" "$jsingle")"

export LANG=en_US.UTF-8 LC_ALL=en_US.UTF-8
echo
echo "Peak resident size, all cores"
for count in 4 16; do
  mkdir -p "$work/long$count"
  "$maker" "$work/long$count" "$count"
  peak=$(/usr/bin/time -f '%M' "$engine" "$work/long$count/scan-long.pdf" "$work/long.rtf" -C -H 2>&1 >/dev/null | tail -1)
  printf '  %2d pages: %s MB\n' "$count" "$(awk -v k="$peak" 'BEGIN { printf "%.1f", k / 1024 }')"
done
