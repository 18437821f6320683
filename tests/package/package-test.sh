#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the .deb, installs it with apt-get as a user would, checks where its
# files went, keys and saves with the installed program on a virtual screen,
# removes it and checks that nothing of it is left under /usr.
#   package-test.sh SOURCE_DIR BUILD_DIR INSTALLED_SAVE_TEST BATCH_EXPECTED(ON|OFF)
set -euo pipefail
source=$1 build=$2 check=$3 batch=$4

if [[ "$(id -u)" -ne 0 ]]; then
  echo "SKIPPED: the package test installs and removes a .deb with apt-get and needs root" \
       "(CI runs it as root on a throwaway machine)"
  exit 77
fi
if dpkg-query -W -f='${Status}' plendra 2>/dev/null | grep -q "ok installed"; then
  echo "SKIPPED: a plendra package is installed on this machine already; the test would remove it"
  exit 77
fi

fail() { echo "FAIL: $*" >&2; exit 1; }

cd "$build"
rm -f package/plendra_*.deb
cpack --config CPackConfig.cmake -G DEB >/dev/null
debs=(package/plendra_*.deb)
[[ ${#debs[@]} -eq 1 && -f ${debs[0]} ]] || fail "cpack made no single plendra_*.deb"
echo "Built ${debs[0]}"
# What a distribution's packager runs first: no lintian error, a valid
# metainfo and desktop entry.
lintian --fail-on error --info "${debs[0]}"
appstreamcli validate --no-net packaging/org.plendra.Plendra.metainfo.xml
desktop-file-validate "$source/packaging/org.plendra.Plendra.desktop"

removed=no
cleanup() { [[ $removed == yes ]] || apt-get remove -y -qq plendra >/dev/null 2>&1 || true; }
trap cleanup EXIT
export DEBIAN_FRONTEND=noninteractive
apt-get install -y -qq --no-install-recommends "./${debs[0]}" >/dev/null

listing=$(dpkg -L plendra)
echo "dpkg -L plendra:"
echo "$listing"

expected=(
  /usr/bin/plendra
  /usr/lib/plendra/Plendra.app/Contents/MacOS/Plendra
  /usr/lib/plendra/1green.JPG /usr/lib/plendra/blue1.JPG /usr/lib/plendra/icon.png /usr/lib/plendra/Bkg
  /usr/share/plendra/1green.JPG /usr/share/plendra/blue1.JPG /usr/share/plendra/icon.png
  /usr/share/applications/org.plendra.Plendra.desktop
  /usr/share/metainfo/org.plendra.Plendra.metainfo.xml
  /usr/share/man/man1/plendra.1.gz
  /usr/share/doc/plendra/copyright /usr/share/doc/plendra/changelog.gz
)
for size in 16 32 48 64 128 256 512; do
  expected+=("/usr/share/icons/hicolor/${size}x${size}/apps/org.plendra.Plendra.png")
done
if [[ $batch == ON ]]; then
  expected+=(/usr/bin/plendra-batch /usr/share/man/man1/plendra-batch.1.gz)
fi
for path in "${expected[@]}"; do
  grep -qxF "$path" <<<"$listing" || fail "dpkg -L does not list $path"
  [[ -e $path ]] || fail "$path is listed but missing or a broken link"
done
# Nothing outside /usr, nothing at the prefix's root.
while IFS= read -r path; do
  [[ $path == /. || $path == /usr ]] && continue
  [[ $path == /usr/* ]] || fail "$path lies outside /usr"
  if [[ $(dirname "$path") == /usr && ! -d $path ]]; then
    fail "$path lies at the prefix's root"
  fi
done <<<"$listing"
[[ $(ls /usr/share/plendra/Bkg | wc -l) -gt 0 ]] || fail "no backgrounds installed"
if [[ $batch == ON ]]; then
  version=$(/usr/bin/plendra-batch --version) || fail "the installed plendra-batch does not start"
  echo "Installed: $version"
  # A headless booth computer or server needs no widget stack for it.
  libraries=$(ldd "$(readlink -f /usr/bin/plendra-batch)") || fail "ldd cannot read the installed plendra-batch"
  grep -q libQt6Core <<<"$libraries" || fail "ldd names no Qt library for plendra-batch"
  ! grep -q libQt6Widgets <<<"$libraries" || fail "the installed plendra-batch loads libQt6Widgets"
  # Its manual page lists every option its help does.
  for option in $(/usr/bin/plendra-batch --help | grep -oE -- '^ +(-[a-z], )?--[a-z-]+' | grep -oE -- '--[a-z-]+'); do
    zcat /usr/share/man/man1/plendra-batch.1.gz | grep -qF -- "${option//-/\\-}" \
      || fail "plendra-batch(1) does not describe $option"
  done
fi
echo "The window's icon at 512 pixels: $(file -b /usr/share/icons/hicolor/512x512/apps/org.plendra.Plendra.png)"

# The installed program, from a fresh home, on a virtual screen.
xvfb-run -a -s "-screen 0 1280x1024x24" env QT_QPA_PLATFORM=xcb "$check"

apt-get remove -y -qq plendra >/dev/null
removed=yes
while IFS= read -r path; do
  [[ $path == /. ]] && continue
  if [[ -d $path && ! -L $path ]]; then
    # Shared folders (/usr/bin, the icon theme's) stay; ours must be gone.
    case $path in
      */plendra|*/plendra/*|*/Plendra.app*) fail "folder $path is left after removal" ;;
    esac
  elif [[ -e $path || -L $path ]]; then
    fail "$path is left after removal"
  fi
done <<<"$listing"
left=$(find /usr -iname '*plendra*' 2>/dev/null || true)
[[ -z $left ]] || fail "left under /usr after removal: $left"
echo "Installed, used and removed cleanly."
