#!/usr/bin/env bash
# Takes the README's screenshots from the real program on a private X server (Xvfb), driving
# it with key presses as a user would. Needs a default build (scripts/run.sh or test.sh) and
# installs the few X tools it uses.
#   scripts/screenshots.sh [output folder]        default: docs/screenshots
set -euo pipefail
cd "$(dirname "$0")/.."
out="${1:-docs/screenshots}"
build="${BUILD_DIR:-build/default}"
app="$build/app"
mkdir -p "$out"

need=()
for p in xvfb xdotool imagemagick; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || need+=("$p")
done
if [ ${#need[@]} -gt 0 ]; then
  apt-get install -y -qq --no-install-recommends "${need[@]}" >/dev/null
fi

work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
export DISPLAY=:93 HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" TMPDIR="$work/tmp"
mkdir -p "$HOME" "$TMPDIR" "$work/pdf"
Xvfb "$DISPLAY" -screen 0 1280x800x24 >/dev/null 2>&1 &
sleep 1
"$build/bench/velmora_make_fixtures" "$work/pdf" 3 >/dev/null

# A visible window of the program with this title that is none of the ones already seen
# (given after the title).
top() {
  local title="$1" id candidate
  shift
  for _ in $(seq 1 100); do
    id=""
    for candidate in $(xdotool search --onlyvisible --name "$title" 2>/dev/null || true); do
      [[ " $* " == *" $candidate "* ]] || id="$candidate"
    done
    [ -n "$id" ] && break
    sleep 0.1
  done
  echo "$id"
}
shoot() { sleep 0.8; import -window "$1" "$out/$2.png"; }
# Without a window manager nothing gives focus: give it, then type.
press() { xdotool windowfocus "$1" 2>/dev/null || true; sleep 0.2; xdotool key "$2" 2>/dev/null; }

# The options editor and its three pages.
"$app/marvash" /o &
program=$!
main=$(top "Convert PDF to Word"); shoot "$main" main-options
press "$main" alt+e; page=$(top "Convert PDF to Word" "$main"); shoot "$page" document-type
press "$page" alt+c; next=$(top "Convert PDF to Word" "$main" "$page"); shoot "$next" conversion-method
press "$next" alt+a; last=$(top "Convert PDF to Word" "$main" "$page" "$next"); shoot "$last" advanced-options
page="$last"
press "$page" alt+d; sleep 0.5
press "$main" alt+d; wait "$program" || true

# The convert face with its preview, after the password of a protected PDF.
"$app/marvash" /c "$work/pdf/locked.pdf" &
program=$!
sleep 2
pw=$(top "Convert PDF to Word")
xdotool windowfocus "$pw" 2>/dev/null || true; xdotool type "secret" 2>/dev/null; shoot "$pw" password
press "$pw" Return
sleep 3
main=$(top "Convert PDF to Word"); shoot "$main" main-convert
press "$main" Escape; wait "$program" || true

# The same dialog in Japanese.
LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8 "$app/marvash" /c "$work/pdf/prose.pdf" &
program=$!
sleep 4
main=$(top "PDF"); shoot "$main" main-convert-ja
press "$main" Escape; wait "$program" || true
echo "screenshots in $out"
