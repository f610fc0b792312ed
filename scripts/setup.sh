#!/usr/bin/env bash
# Installs every Debian package the build, the tests and the run need. Safe to run again:
# apt-get skips what is already there, and nothing is fetched when all is installed.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git ccache
  qt6-base-dev qt6-base-dev-tools libqt6svg6
  libgl-dev libxkbcommon-dev
  libx11-dev libglib2.0-dev
  libmupdf-dev mupdf-tools libmujs-dev libgumbo-dev libopenjp2-7-dev libjbig2dec0-dev
  libtesseract-dev tesseract-ocr tesseract-ocr-eng tesseract-ocr-jpn tesseract-ocr-osd
  libhunspell-dev hunspell-en-us
  libgtest-dev googletest
  clang clang-format clang-tidy libclang-rt-14-dev gcovr
  fonts-ipafont-gothic fonts-dejavu-core fonts-dejavu-extra fonts-wine
  fonts-liberation2 fonts-crosextra-carlito fonts-crosextra-caladea
  xdg-utils xvfb xauth bc time
  libreoffice-writer-nogui
  scdoc librsvg2-bin desktop-file-utils appstream dpkg-dev file lintian
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
