#!/usr/bin/env bash
# Times the engine's text recognition against the `tesseract` command on the same pages:
#   - the English pages of the scanned corpus (velmora_make_scans), each drawn at 300 dpi in
#     grey for `tesseract` as the engine draws it for itself; `tesseract` reads them one after
#     another with its OpenMP loops held to one thread (OMP_THREAD_LIMIT=1), and, for
#     reference, as it comes (OpenMP on every core);
#   - the engine converting the same pages as one PDF, on one core (taskset) and on all;
#   - a page of English prose alone, and the Japanese page with Japanese and English under a
#     Japanese locale, each as a document of its own on one core;
#   - the peak resident size converting scans of 4 and 16 pages, which should not grow.
# Times are medians of wall and of CPU seconds; wall times want a quiet machine.
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

# measure COMMAND...: median wall and median CPU (user + system) seconds of $runs runs after
# one warm-up. On a shared machine the CPU seconds are the steadier figure.
measure() {
  "$@" >/dev/null 2>&1 || { echo "failed: $*" >&2; return 1; }
  local walls=() cpus=() i wall user system
  for ((i = 0; i < runs; i++)); do
    /usr/bin/time -f '%e %U %S' -o "$work/time" "$@" >/dev/null 2>&1
    read -r wall user system <"$work/time"
    walls+=("$wall")
    cpus+=("$(awk -v u="$user" -v s="$system" 'BEGIN { print u + s }')")
  done
  local median='{ a[NR] = $1 } END { printf "%.2f", a[int((NR + 1) / 2)] }'
  echo "$(printf '%s\n' "${walls[@]}" | sort -g | awk "$median") $(printf '%s\n' "${cpus[@]}" | sort -g | awk "$median")"
}

# Every English page through the command, one after another.
cat >"$work/tesseract-pages" <<SCRIPT
#!/usr/bin/env bash
for png in "$work"/english-*.png; do tesseract "\$png" "$work/out" >/dev/null 2>&1; done
SCRIPT
chmod +x "$work/tesseract-pages"

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
per_page() { awk -v t="$1" -v n="$2" 'BEGIN { printf "%.2f", t / n }'; }
# row LABEL WALL CPU [REFERENCE-WALL REFERENCE-CPU]
row() {
  printf '  %-32s wall %6.2f s (%s s/page)  cpu %6.2f s' "$1" "$2" "$(per_page "$2" "$pages")" "$3"
  [ $# -lt 5 ] || printf '  ratio wall %s cpu %s' "$(ratio "$2" "$4")" "$(ratio "$3" "$5")"
  echo
}

english=(env LANG=en_US.UTF-8 LC_ALL=en_US.UTF-8)
japanese=(env LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8)
read -r single single_cpu < <(measure env OMP_THREAD_LIMIT=1 taskset -c 0 "$work/tesseract-pages")
read -r openmp openmp_cpu < <(measure "$work/tesseract-pages")
read -r one one_cpu < <(measure "${english[@]}" taskset -c 0 "$engine" "$work/english.pdf" "$work/english.rtf" -C -H)
read -r all all_cpu < <(measure "${english[@]}" "$engine" "$work/english.pdf" "$work/english.rtf" -C -H)

echo "English scans, $pages pages at 300 dpi (medians of $runs runs; ratios against tesseract, one thread)"
row "tesseract, one thread" "$single" "$single_cpu"
row "tesseract, OpenMP as it comes" "$openmp" "$openmp_cpu" "$single" "$single_cpu"
row "engine, one core" "$one" "$one_cpu" "$single" "$single_cpu"
row "engine, all $(nproc) cores" "$all" "$all_cpu" "$single" "$single_cpu"

pages=1
read -r psingle psingle_cpu < <(measure env OMP_THREAD_LIMIT=1 taskset -c 0 tesseract "$work/english-1.png" "$work/out")
read -r pone pone_cpu < <(measure "${english[@]}" taskset -c 0 "$engine" "$work/scan-prose.pdf" "$work/prose.rtf" -C -H)
echo
echo "English prose, 1 page"
row "tesseract, one thread" "$psingle" "$psingle_cpu"
row "engine, one core" "$pone" "$pone_cpu" "$psingle" "$psingle_cpu"

read -r jsingle jsingle_cpu < <(measure env OMP_THREAD_LIMIT=1 taskset -c 0 tesseract "$work/japanese.png" "$work/out" -l jpn+eng)
read -r jone jone_cpu < <(measure "${japanese[@]}" taskset -c 0 "$engine" "$work/scan-japanese-prose.pdf" "$work/japanese.rtf" -C -H)
echo
echo "Japanese scan, 1 page, Japanese and English"
row "tesseract -l jpn+eng, one thread" "$jsingle" "$jsingle_cpu"
row "engine, one core" "$jone" "$jone_cpu" "$jsingle" "$jsingle_cpu"

echo
echo "Peak resident size, all cores"
for count in 4 16; do
  mkdir -p "$work/long$count"
  "$maker" "$work/long$count" "$count"
  peak=$(/usr/bin/time -f '%M' "${english[@]}" "$engine" "$work/long$count/scan-long.pdf" "$work/long.rtf" -C -H 2>&1 >/dev/null | tail -1)
  printf '  %2d pages: %s MB\n' "$count" "$(awk -v k="$peak" 'BEGIN { printf "%.1f", k / 1024 }')"
done
