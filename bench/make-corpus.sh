#!/usr/bin/env bash
# Builds the corpus of the page-image comparison (bench/run-fidelity.sh) into a folder:
#   - generated PDFs whose content is known (velmora_make_fixtures),
#   - the documents in bench/corpus: RTF printed to PDF by LibreOffice, TeX by pdflatex
#     (skipped when pdflatex is missing: apt-get install texlive-latex-base),
#   - real documents shipped in Debian packages, fetched with `apt-get download` (nothing is
#     installed) and cut to their first pages with mutool.
# Usage: bench/make-corpus.sh <build-dir> <corpus-dir>
set -euo pipefail

build=${1:?usage: make-corpus.sh <build-dir> <corpus-dir>}
corpus=${2:?usage: make-corpus.sh <build-dir> <corpus-dir>}
here=$(cd "$(dirname "$0")" && pwd)
maker="$build/bench/velmora_make_fixtures"
[ -x "$maker" ] || { echo "missing $maker: build velmora_make_fixtures first" >&2; exit 2; }
command -v mutool >/dev/null || { echo "mutool (mupdf-tools) is needed" >&2; exit 2; }
command -v soffice >/dev/null || { echo "soffice (libreoffice-writer-nogui) is needed" >&2; exit 2; }
mkdir -p "$corpus"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Generated: every fixture but the long one and the protected one.
mkdir -p "$work/gen"
"$maker" "$work/gen" 1
for f in "$work"/gen/*.pdf; do
  case $(basename "$f") in long.pdf | locked.pdf) continue ;; esac
  cp "$f" "$corpus/gen-$(basename "$f")"
done

# Written for the corpus.
soffice -env:UserInstallation="file://$work/profile" --headless --norestore \
  --convert-to pdf --outdir "$work/office" "$here"/corpus/*.rtf >/dev/null 2>&1
for f in "$work"/office/*.pdf; do cp "$f" "$corpus/office-$(basename "$f")"; done
if command -v pdflatex >/dev/null; then
  for tex in "$here"/corpus/*.tex; do
    (cd "$work" && pdflatex -interaction=batchmode "$tex" >/dev/null 2>&1 &&
      pdflatex -interaction=batchmode "$tex" >/dev/null 2>&1) || true
    name=$(basename "$tex" .tex)
    [ -f "$work/$name.pdf" ] && cp "$work/$name.pdf" "$corpus/tex-$name.pdf"
  done
else
  echo "pdflatex not found: the TeX documents are left out" >&2
fi

# Real documents: package, path inside it, pages to keep.
real=(
  "asymptote-doc usr/share/doc/asymptote/CAD.pdf 1-8"
  "asymptote-doc usr/share/doc/asymptote/asyRefCard.pdf 1-2"
  "asymptote-doc usr/share/doc/asymptote/asymptote.pdf 1-12"
  "gnuplot-doc usr/share/doc/gnuplot/gnuplot.pdf 20-31"
  "groff usr/share/doc/groff-base/examples/mom/letter.pdf.gz 1-N"
  "groff usr/share/doc/groff-base/examples/mom/sample_docs.pdf.gz 1-8"
  "groff usr/share/doc/groff-base/examples/mom/slide-demo.pdf.gz 1-6"
  "groff usr/share/doc/groff-base/examples/mom/typesetting.pdf.gz 1-N"
  "groff usr/share/doc/groff-base/pdf/pdfmark.pdf.gz 1-8"
  "libtasn1-doc usr/share/doc/libtasn1-doc/libtasn1.pdf 1-10"
  "shared-mime-info usr/share/doc/shared-mime-info/shared-mime-info-spec.pdf 1-N"
)
mkdir -p "$work/debs"
for entry in "${real[@]}"; do
  read -r package path pages <<<"$entry"
  if [ ! -d "$work/debs/$package" ]; then
    (cd "$work/debs" && apt-get download "$package" >/dev/null 2>&1) || {
      echo "cannot fetch $package: left out" >&2
      continue
    }
    dpkg-deb -x "$work"/debs/"$package"_*.deb "$work/debs/$package"
  fi
  file="$work/debs/$package/$path"
  [ -f "$file" ] || { echo "$path is not in $package: left out" >&2; continue; }
  name=$(basename "$path" .gz)
  if [[ $path == *.gz ]]; then
    gunzip -c "$file" >"$work/$name"
    file="$work/$name"
  fi
  mutool merge -o "$corpus/real-$name" "$file" "$pages" 2>/dev/null ||
    echo "cannot cut $name: left out" >&2
done
ls "$corpus"
