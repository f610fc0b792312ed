#!/usr/bin/env bash
# The page-image comparison. Every PDF of a corpus (bench/make-corpus.sh) is converted by the
# engine with each method, the RTF printed to PDF by LibreOffice headless, and the result
# compared with its source by velmora_page_compare: both rendered at 30 dpi in grey, the
# overlap of inked areas (dark pixels widened 2 px, intersection over union) and SSIM per
# page, a missing page counting 0; content F1 over words and F1 over word pairs (order);
# pages out / pages in; pictures. LibreOffice's own PDF import runs in the same comparison.
# MuPDF's docx writer is not in Debian's MuPDF 1.21, so it cannot be measured here.
# It is a measurement, not a test.
# Usage: bench/run-fidelity.sh <build-dir> <corpus-dir> [results-dir] [methods...]
# With FIDELITY_REUSE=1 the documents already printed into results-dir are compared again
# without converting anything (to measure an older run with today's comparison).
set -euo pipefail

build=${1:?usage: run-fidelity.sh <build-dir> <corpus-dir> [results-dir] [methods...]}
corpus=${2:?usage: run-fidelity.sh <build-dir> <corpus-dir> [results-dir] [methods...]}
results=${3:-$(mktemp -d)}
shift $(($# < 3 ? $# : 3))
methods=("$@")
[ ${#methods[@]} -gt 0 ] || methods=(1 2 3 office)
engine="$build/app/VelmoraConverter"
compare="$build/bench/velmora_page_compare"
for tool in "$engine" "$compare"; do
  [ -x "$tool" ] || { echo "missing $tool: build it first" >&2; exit 2; }
done
mkdir -p "$results"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config" HOME="$work"
store="$XDG_CONFIG_HOME/Velmora Technologies/Velmora Sandpiper Converter.conf"
mkdir -p "$(dirname "$store")"
office() { soffice -env:UserInstallation="file://$work/profile" --headless --norestore "$@" >/dev/null 2>&1; }

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

table="$results/fidelity.tsv"
printf 'method\tfile\tpages_in\tpages_out\tink\tssim\tf1\torder\tpictures_in\tpictures_out\n' >"$table"
for method in "${methods[@]}"; do
  out="$results/$method"
  mkdir -p "$out"
  if [ "${FIDELITY_REUSE:-0}" = 1 ]; then
    :
  elif [ "$method" = office ]; then
    office --infilter=writer_pdf_import --convert-to pdf:writer_pdf_Export --outdir "$out" "$corpus"/*.pdf
  else
    store_options ConversionMethod="$method"
    rtfs=()
    for pdf in "$corpus"/*.pdf; do
      name=$(basename "$pdf" .pdf)
      if "$engine" "$pdf" "$out/$name.rtf" -C -H 2>"$out/$name.err"; then
        rtfs+=("$out/$name.rtf")
      fi
    done
    [ ${#rtfs[@]} -eq 0 ] || office --convert-to pdf --outdir "$out" "${rtfs[@]}"
  fi
  for pdf in "$corpus"/*.pdf; do
    name=$(basename "$pdf" .pdf)
    result="$out/$name.pdf"
    [ -f "$result" ] || result=/dev/null
    read -r pin pout ink ssim f1 order picin picout < <("$compare" "$pdf" "$result" || echo "0 0 0 0 0 0 0 0")
    printf '%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\n' "$method" "$name" "$pin" "$pout" "$ink" "$ssim" \
      "$f1" "$order" "$picin" "$picout" >>"$table"
  done
done

column -t -s $'\t' "$table"
echo
# Means over pages for the page measures, over files for the word measures; page counts within
# +-5 % (methods 1 and 2, LibreOffice) or -25 %/+30 % (method 3) per file.
awk -F'\t' 'NR > 1 {
  m = $1; pin[m] += $3; pout[m] += $4; ink[m] += $5 * $3; ssim[m] += $6 * $3
  f1[m] += $7; order[m] += $8; files[m]++; picin[m] += $9; picout[m] += $10
  low = (m == 3) ? 0.75 : 0.95; high = (m == 3) ? 1.30 : 1.05
  if ($3 > 0 && $4 >= low * $3 && $4 <= high * $3) fit[m]++
}
END {
  printf "%-8s %6s %6s %9s %7s %7s %7s %9s %10s\n", "method", "ink", "ssim", "out/in", "F1", "order", "fit", "pictures", "pages"
  for (m in files)
    printf "%-8s %6.3f %6.3f %9.2f %7.4f %7.4f %3d/%-3d %4d/%-4d %5d/%-5d\n", m, ink[m] / pin[m], ssim[m] / pin[m],
      pout[m] / pin[m], f1[m] / files[m], order[m] / files[m], fit[m], files[m], picout[m], picin[m], pout[m], pin[m]
}' "$table" | sort
echo "results in $results"
