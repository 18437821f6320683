#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Whole-folder figures for plendra-batch on 16 generated 24-megapixel JPEGs:
# its time next to the floor (decode + JPEG encode of the same photos on the
# same number of threads) and next to ImageMagick and FFmpeg doing the same
# keying under GNU parallel on all cores; its time with --soft next to its own
# hard key; its peak memory on 16 and 160 photos. Then a booth's figure: one
# 24-megapixel photo onto three backgrounds next to the same photo onto one
# (decoded and keyed once, composed three times).
# Usage: batch_bench.sh BENCH_BUILD_DIR [booth]   (booth: that figure alone)
set -euo pipefail

build=${1:?bench build folder}
only=${2:-}
tool="$build/Plendra.app/Contents/MacOS/plendra-batch"
floor="$build/bench/plendra_batch_floor"
jobs=$(nproc)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

seconds() { local t0 t1; t0=$(date +%s.%N); "$@" >/dev/null 2>&1; t1=$(date +%s.%N); echo "$t1 - $t0" | bc -l; }
fresh() { rm -rf "$work/out"; mkdir -p "$work/out"; }
best_of_3() {
  local best=""
  for _ in 1 2 3; do
    fresh
    local t; t=$(seconds "$@")
    if [[ -z "$best" ]] || (( $(echo "$t < $best" | bc -l) )); then best=$t; fi
  done
  echo "$best"
}

# One photo onto one background, then onto three: decoded and keyed once, the
# composites of one photo encoded side by side. Two figures: a run of that one
# photo (which also reads and fits each background once), and the cost of
# each further photo of a run (what a booth pays per guest, with the
# backgrounds already fitted): (time for 6 photos - time for 1) / 5, one
# photo at a time (-j 1).
booth_figure() {
  mkdir -p "$work/booth" "$work/booth6"
  [[ -f "$work/shoot/shot01.jpg" ]] || convert -size 6000x4000 "xc:#28B43C" -seed 1 -attenuate 0.3 +noise Gaussian \
    -fill "#503028" -draw "ellipse 3000,2600 900,1600 0,360" -quality 92 "$work/shoot/shot01.jpg"
  cp "$work/shoot/shot01.jpg" "$work/booth/guest.jpg"
  for i in 1 2 3 4 5 6; do ln -f "$work/booth/guest.jpg" "$work/booth6/guest$i.jpg"; done
  convert -size 6000x4000 gradient:"#F0C080"-"#3060A0" -quality 92 "$work/backdrop-beach.jpg"
  convert -size 4000x3000 gradient:"#203040"-"#C0D0F0" -quality 92 "$work/backdrop-city.jpg"
  convert -size 3000x2000 plasma:fractal -seed 3 -quality 92 "$work/backdrop-stars.jpg"
  local one=(-b "$work/backdrop-beach.jpg")
  local three=(-b "$work/backdrop-beach.jpg" -b "$work/backdrop-city.jpg" -b "$work/backdrop-stars.jpg")
  local n t1 t3 t1a t3a s1 s3 s1a s3a
  t1=$(best_of_3 "$tool" "${one[@]}" -k 0,0 -o "$work/out" "$work/booth/guest.jpg")
  t3=$(best_of_3 "$tool" "${three[@]}" -k 0,0 -o "$work/out" "$work/booth/guest.jpg")
  n=$(find "$work/out" -name 'guest_*.jpg' -size +0 | wc -l)
  [[ "$n" -eq 3 ]] || { echo "three backgrounds wrote $n of 3 composites" >&2; exit 1; }
  t1a=$(best_of_3 "$tool" -j 1 "${one[@]}" -c auto -o "$work/out" "$work/booth/guest.jpg")
  t3a=$(best_of_3 "$tool" -j 1 "${three[@]}" -c auto -o "$work/out" "$work/booth/guest.jpg")
  s1a=$(best_of_3 "$tool" -j 1 "${one[@]}" -c auto -o "$work/out" "$work/booth6")
  s3a=$(best_of_3 "$tool" -j 1 "${three[@]}" -c auto -o "$work/out" "$work/booth6")
  n=$(find "$work/out" -name 'guest*_*.jpg' -size +0 | wc -l)
  [[ "$n" -eq 18 ]] || { echo "three backgrounds with -c auto wrote $n of 18 composites" >&2; exit 1; }
  s1=$(echo "($s1a - $t1a) / 5" | bc -l)
  s3=$(echo "($s3a - $t3a) / 5" | bc -l)
  printf '\nplendra-batch, a photo of 24 MP onto three backgrounds against one (best of 3, %d cores)\n' "$(nproc)"
  printf '  %-42s %8.2f s\n' "one photo, one background, -k" "$t1" "one photo, three backgrounds, -k" "$t3" \
    "one photo, one background, -c auto -j 1" "$t1a" "one photo, three backgrounds, -c auto -j 1" "$t3a" \
    "six photos, one background, -c auto -j 1" "$s1a" "six photos, three backgrounds, -c auto -j 1" "$s3a" \
    "each further photo, one background" "$s1" "each further photo, three backgrounds" "$s3"
  printf '  %-42s %8.2f\n' "ratio three to one, a run of one photo, -k" "$(echo "$t3 / $t1" | bc -l)" \
    "ratio three to one, a run of one photo, auto" "$(echo "$t3a / $t1a" | bc -l)"
  printf '  %-42s %8.2f (target <= 1.5)\n' "ratio three to one, each further photo" "$(echo "$s3 / $s1" | bc -l)"
}

if [[ "$only" == booth ]]; then
  mkdir -p "$work/shoot"
  booth_figure
  exit 0
fi

# 6000 x 4000: a green backdrop with grain, a dark subject in the middle.
echo "Generating 16 photos of 24 megapixels in $work ..."
mkdir -p "$work/shoot" "$work/many"
for i in $(seq -w 1 16); do
  convert -size 6000x4000 "xc:#28B43C" -seed "$i" -attenuate 0.3 +noise Gaussian \
    -fill "#503028" -draw "ellipse 3000,2600 900,1600 0,360" -quality 92 "$work/shoot/shot$i.jpg"
done
convert -size 6000x4000 gradient:"#F0C080"-"#3060A0" -quality 92 "$work/beach.jpg"
# 160 photos for the memory figure: hard links, no extra disk.
for n in $(seq 0 9); do
  for f in "$work"/shoot/*.jpg; do ln "$f" "$work/many/r${n}_$(basename "$f")"; done
done

# A figure counts only when the run wrote every composite.
check() {
  local n; n=$(find "$work/out" -name '*.jpg' -size +0 | wc -l)
  [[ "$n" -eq 16 ]] || { echo "$1 wrote $n of 16 composites" >&2; exit 1; }
}

key=0,0
colour='#28B43C'
t_tool=$(best_of_3 "$tool" -j "$jobs" -b "$work/beach.jpg" -k "$key" -o "$work/out" "$work/shoot")
check plendra-batch
t_soft=$(best_of_3 "$tool" --soft -j "$jobs" -b "$work/beach.jpg" -k "$key" -o "$work/out" "$work/shoot")
check "plendra-batch --soft"
t_floor=$(best_of_3 "$floor" "$jobs" "$work/out" "$work"/shoot/*.jpg)
check floor
# -q: the commands reach the tools as these words, not through a shell.
t_magick=$(best_of_3 parallel -q -j "$jobs" \
  convert "$work/beach.jpg" '(' {} -fuzz 25% -transparent "$colour" ')' -composite -quality 75 "$work/out/{/}" \
  ::: "$work"/shoot/*.jpg)
check magick
t_ffmpeg=$(best_of_3 parallel -q -j "$jobs" \
  ffmpeg -nostdin -loglevel error -y -i "$work/beach.jpg" -i {} \
  -filter_complex "[1:v]colorkey=0x28B43C:0.25:0.05[k];[0:v][k]overlay" -frames:v 1 -q:v 5 "$work/out/{/}" \
  ::: "$work"/shoot/*.jpg)

check ffmpeg

peak_kb() { fresh; /usr/bin/time -v "$@" 2>&1 >/dev/null | awk -F: '/Maximum resident set size/ {gsub(/ /,"",$2); print $2}'; }
m16=$(peak_kb "$tool" -j "$jobs" -b "$work/beach.jpg" -k "$key" -o "$work/out" "$work/shoot")
m160=$(peak_kb "$tool" -j "$jobs" -b "$work/beach.jpg" -k "$key" -o "$work/out" "$work/many")
photo_mb=$(echo "6000 * 4000 * 4 / 1048576" | bc -l)

fastest_other=$(echo "if ($t_magick < $t_ffmpeg) $t_magick else $t_ffmpeg" | bc -l)
printf '\nplendra-batch, 16 photos of 24 MP, %d jobs (best of 3)\n' "$jobs"
printf '  %-34s %8.2f s\n' "plendra-batch" "$t_tool" "floor (decode + JPEG encode)" "$t_floor" \
  "ImageMagick convert + parallel" "$t_magick" "FFmpeg colorkey/overlay + parallel" "$t_ffmpeg"
printf '  %-34s %8.2f s\n' "plendra-batch --soft" "$t_soft"
printf '  %-34s %8.2f (target <= 1.15)\n' "ratio to the floor" "$(echo "$t_tool / $t_floor" | bc -l)"
printf '  %-34s %8.2f (target <= 1.15)\n' "--soft to the hard key" "$(echo "$t_soft / $t_tool" | bc -l)"
printf '  %-34s %8.2f (target >= 3)\n' "faster than the fastest other tool" "$(echo "$fastest_other / $t_tool" | bc -l)"
printf '  %-34s %8.0f MB (16 photos), %.0f MB (160 photos)\n' "peak memory" "$(echo "$m16 / 1024" | bc -l)" "$(echo "$m160 / 1024" | bc -l)"
printf '  %-34s %8.0f MB ((jobs + 1) x 4 decoded photos of %.0f MB)\n' "memory bound" \
  "$(echo "($jobs + 1) * 4 * $photo_mb" | bc -l)" "$photo_mb"

booth_figure
