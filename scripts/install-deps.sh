#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs whatever Plendra needs to build, run, test and benchmark that is
# not on the machine yet. Safe to run again: it only installs what is missing.
set -euo pipefail

debian_packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-image-formats-plugins libgl-dev
  libbenchmark-dev zlib1g-dev
  libxcb1-dev
  xvfb xauth xdotool imagemagick x11-xserver-utils
  dpkg-dev file lintian appstream desktop-file-utils
  fonts-dejavu-core fonts-liberation qt6-qpa-plugins
  ffmpeg parallel time bc
)

if [[ "$(uname -s)" == "Darwin" ]]; then
  command -v brew >/dev/null || { echo "Homebrew is needed: https://brew.sh" >&2; exit 1; }
  for f in cmake ninja qt google-benchmark; do
    brew list "$f" >/dev/null 2>&1 || brew install "$f"
  done
  exit 0
fi

missing=()
for p in "${debian_packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
if [[ "$(id -u)" -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "Run as root or install sudo to get: ${missing[*]}" >&2; exit 1; }
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
