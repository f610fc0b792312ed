#!/usr/bin/env bash
# Text recognition of scanned pages, measured. A scanned corpus with known text
# (velmora_make_scans: prose, a two-column article, a table, Japanese, a page with pictures,
# a page on its side, a page with a hidden text layer; each page drawn at 300 dpi, turned a
# fraction of a degree, soiled with noise and stored as a picture) is converted by the engine
# with each method, read by LibreOffice headless as the fidelity test reads it (plain text for
# methods 1 and 3, the flat document format for the frames of method 2), and scored by
# velmora_ocr_score: content F1 and reading order against the known words. The Japanese scan
# is converted once more under a Japanese locale. It is a measurement, not a test.
# Usage: bench/run-ocr.sh <build-dir> [results-dir] [methods...]
set -euo pipefail

build=${1:?usage: run-ocr.sh <build-dir> [results-dir] [methods...]}
results=${2:-$(mktemp -d)}
shift $(($# < 2 ? $# : 2))
methods=("$@")
[ ${#methods[@]} -gt 0 ] || methods=(1 2 3)
engine="$build/app/VelmoraConverter"
for tool in "$engine" "$build/bench/velmora_make_scans" "$build/bench/velmora_ocr_score"; do
  [ -x "$tool" ] || { echo "missing $tool: build it first" >&2; exit 2; }
done
command -v soffice >/dev/null || { echo "soffice (libreoffice-writer-nogui) is needed" >&2; exit 2; }
mkdir -p "$results/corpus"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" HOME="$work"
store="$XDG_CONFIG_HOME/Velmora Technologies/Velmora Sandpiper Converter.conf"
mkdir -p "$(dirname "$store")"
"$build/bench/velmora_make_scans" "$results/corpus"

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

table="$results/ocr.tsv"
printf 'method\tfile\tlocale\tseconds\tf1\torder\trecall\tprecision\tpictures\n' >"$table"
for method in "${methods[@]}"; do
  out="$results/$method"
  mkdir -p "$out"
  store_options ConversionMethod="$method" DocumentType=2
  runs=()
  for pdf in "$results"/corpus/*.pdf; do
    name=$(basename "$pdf" .pdf)
    runs+=("$name en_US.UTF-8")
    [[ $name == *japanese* ]] && runs+=("$name ja_JP.UTF-8")
  done
  rtfs=()
  for run in "${runs[@]}"; do
    read -r name locale <<<"$run"
    rtf="$out/$name-${locale%%_*}.rtf"
    start=$(date +%s%N)
    LANG=$locale LC_ALL=$locale "$engine" "$results/corpus/$name.pdf" "$rtf" -C -H 2>"${rtf%.rtf}.err" || true
    end=$(date +%s%N)
    echo "$name ${locale%%_*} $(((end - start) / 1000000))" >>"$out/times"
    [ -f "$rtf" ] && rtfs+=("$rtf")
  done
  office() { soffice -env:UserInstallation="file://$work/profile" --headless --norestore "$@" >/dev/null 2>&1; }
  if [ "$method" = 2 ]; then office --convert-to fodt --outdir "$out" "${rtfs[@]}"; else
    office --convert-to "txt:Text (encoded):UTF8" --outdir "$out" "${rtfs[@]}"; fi
  while read -r name locale ms; do
    read_back="$out/$name-$locale.txt"
    [ "$method" = 2 ] && read_back="$out/$name-$locale.fodt"
    [ -f "$read_back" ] || read_back=/dev/null
    read -r f1 order recall precision < <("$build/bench/velmora_ocr_score" "$results/corpus/$name.txt" "$read_back")
    pictures=$({ grep -o '{\\pict' "$out/$name-$locale.rtf" 2>/dev/null || true; } | wc -l)
    printf '%s\t%s\t%s\t%d.%02d\t%s\t%s\t%s\t%s\t%s\n' "$method" "$name" "$locale" $((ms / 1000)) $((ms % 1000 / 10)) "$f1" "$order" \
      "$recall" "$precision" "$pictures" >>"$table"
  done <"$out/times"
done
column -t -s $'\t' "$table"
echo "results in $results"
