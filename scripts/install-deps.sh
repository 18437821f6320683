#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what Plendra needs for one purpose and is not on the machine yet.
# Safe to run again: it only installs what is missing.
#
#   install-deps.sh build     build and run the program (make run)
#   install-deps.sh test      ... and run every test (make test, make sanitize)
#   install-deps.sh bench     ... and the benchmarks with the tools they race (make bench)
#   install-deps.sh package   ... and build, check and install the .deb (make package-test)
set -euo pipefail

purpose=${1:-test}

# Building and running: the compiler, Qt with its image plugins and the
# faces the window is drawn with (and zlib, which the tests' photo corpus
# links: one build tree serves `make run` and `make test`).
build_packages=(
  build-essential cmake ninja-build pkg-config zlib1g-dev
  qt6-base-dev qt6-base-dev-tools qt6-image-formats-plugins qt6-qpa-plugins libgl-dev
  libxcb1-dev
  fonts-dejavu-core fonts-liberation
)
# The tests: a virtual screen, clicks and screenshots for the end-to-end
# tests (ImageMagick also makes some of the odd photos), xrdb for the
# 2x-screen test.
test_packages=(
  xvfb xauth xdotool imagemagick x11-xserver-utils
)
# The benchmarks: Google Benchmark, and the other tools plendra-batch is
# timed against (ImageMagick, FFmpeg, GNU parallel), with time and bc.
bench_packages=(
  libbenchmark-dev ffmpeg parallel time bc imagemagick
)
# The package: dpkg's tools to build it and the checks a packager runs.
package_packages=(
  dpkg-dev file lintian appstream desktop-file-utils
)

case "$purpose" in
  build) wanted=("${build_packages[@]}") ;;
  test) wanted=("${build_packages[@]}" "${test_packages[@]}") ;;
  bench) wanted=("${build_packages[@]}" "${bench_packages[@]}") ;;
  package) wanted=("${build_packages[@]}" "${test_packages[@]}" "${package_packages[@]}") ;;
  *) echo "usage: $0 build|test|bench|package" >&2; exit 2 ;;
esac

if [[ "$(uname -s)" == "Darwin" ]]; then
  command -v brew >/dev/null || { echo "Homebrew is needed: https://brew.sh" >&2; exit 1; }
  formulae=(cmake ninja qt)
  [[ "$purpose" == bench ]] && formulae+=(google-benchmark ffmpeg parallel imagemagick)
  for f in "${formulae[@]}"; do
    brew list "$f" >/dev/null 2>&1 || brew install "$f"
  done
  exit 0
fi

missing=()
for p in "${wanted[@]}"; do
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
