#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes docs/booth.png: a booth's inputs (a generated guest before a green
# backdrop with falloff and grain, two generated backgrounds and a generated
# frame) above what plendra-batch makes of them with -c auto, two -b,
# --overlay and --size. Needs ImageMagick's convert.
# Usage: docs/booth-picture.sh BUILD_DIR
set -euo pipefail

build=${1:?build folder}
tool="$build/Plendra.app/Contents/MacOS/plendra-batch"
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The guest: head, hair and shoulders before an unevenly lit green backdrop.
convert -size 900x600 radial-gradient:"#46DC5A"-"#22A034" -seed 5 -attenuate 0.4 +noise Gaussian \
  -fill "#B8343C" -draw "roundrectangle 300,330 600,640 60,60" \
  -fill "#E0AC8C" -draw "ellipse 450,250 80,105 0,360" \
  -fill "#3C2A20" -draw "ellipse 450,175 84,50 180,360" \
  -blur 0x0.7 "$work/guest.png"
# Two backgrounds: a beach with its sun, a city at dusk.
convert -size 900x600 gradient:"#8CC8F0"-"#F0D8A0" \
  -fill "#F8E060" -draw "circle 700,150 700,210" \
  -fill "#D8B878" -draw "rectangle 0,450 900,600" "$work/beach.png"
convert -size 900x600 gradient:"#202850"-"#D07040" \
  -fill "#181820" -draw "rectangle 40,300 160,600" -draw "rectangle 190,220 300,600" \
  -draw "rectangle 340,330 470,600" -draw "rectangle 520,180 640,600" -draw "rectangle 690,280 860,600" \
  "$work/city.png"
# The frame: an opaque white border, a half-transparent band at the bottom
# and a badge in a corner; clear elsewhere.
convert -size 600x400 xc:none \
  -fill none -stroke white -strokewidth 24 -draw "rectangle 0,0 599,399" \
  -stroke none -fill "#FFFFFF80" -draw "rectangle 12,330 588,388" \
  -fill "#D02040" -draw "circle 540,60 540,96" \
  -fill white -draw "polygon 540,36 547,54 566,54 551,66 557,84 540,73 523,84 529,66 514,54 533,54" \
  "PNG32:$work/frame.png"

"$tool" -c auto -b "$work/beach.png" -b "$work/city.png" --overlay "$work/frame.png" --size 600x400 \
  -o "$work/out" "$work/guest.png"

# Inputs small on top (the frame over a checkerboard), the two prints below.
convert -size 300x200 pattern:checkerboard "$work/checker.png"
convert "$work/checker.png" \( "$work/frame.png" -resize 300x200 \) -composite "$work/frame-shown.png"
convert \( "$work/guest.png" "$work/beach.png" "$work/city.png" -resize 300x200 "$work/frame-shown.png" +append \) \
  \( "$work/out/guest_beach.png" "$work/out/guest_city.png" +append \) -append -strip "$here/booth.png"
echo "wrote $here/booth.png"
