#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The hot folder's figures for plendra-batch --watch at its default settings:
# how long a guest waits, from the close of a photo written into the hot
# folder to its composite in the output folder, next to the photo's own keying
# time (its "ms" in --json), for 2 MP and 24 MP photos; and the CPU an idle
# watcher takes over folders of 0, 5,000 and 20,000 photos it has keyed (with
# kernel events, and polled as on a network share, for comparison).
# Usage: hotfolder_bench.sh BENCH_BUILD_DIR
set -euo pipefail

build=${1:?bench build folder}
tool="$build/Plendra.app/Contents/MacOS/plendra-batch"
latency="$build/bench/plendra_hotfolder_latency"
work=$(mktemp -d)
watcher=""
cleanup() { [[ -n "$watcher" ]] && kill "$watcher" 2>/dev/null; rm -rf "$work"; }
trap cleanup EXIT

convert -size 1200x800 gradient:"#F0C080"-"#3060A0" -quality 92 "$work/beach.jpg"
shot() { # WIDTH HEIGHT FILE: a green backdrop with grain, a dark subject
  convert -size "$1x$2" "xc:#28B43C" -seed 7 -attenuate 0.3 +noise Gaussian \
    -fill "#503028" -draw "ellipse $(($1 / 2)),$(($2 * 2 / 3)) $(($1 / 7)),$(($2 * 2 / 5)) 0,360" -quality 92 "$3"
}

# Starts a watcher of $1 into $2 (more options after), its JSON in $2.json.
start_watch() {
  local in=$1 out=$2; shift 2
  "$tool" --watch --json -b "$work/beach.jpg" -k 0,0 -o "$out" "$@" "$in" >"$out.json" 2>"$out.err" &
  watcher=$!
}
stop_watch() { kill "$watcher"; wait "$watcher" || true; watcher=""; }
median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
# Waits until file $1 holds at least $2 lines matching $3.
wait_lines() { until [[ $(grep -c "$3" "$1" || true) -ge $2 ]]; do sleep 0.2; done; }

printf '\nplendra-batch --watch, from close to composite (default settings; median of the guests)\n'
for size in "2 1732 1155 7" "24 6000 4000 5"; do
  read -r mp w h guests <<<"$size"
  shot "$w" "$h" "$work/photo$mp.jpg"
  mkdir -p "$work/in$mp" "$work/out$mp"
  start_watch "$work/in$mp" "$work/out$mp"
  sleep 1
  "$latency" "$work/photo$mp.jpg" "$work/in$mp" "$work/out$mp" "$guests" >"$work/latency$mp"
  wait_lines "$work/out$mp.json" "$guests" '"error":null'
  stop_watch
  wait_ms=$(awk '{ print $2 }' "$work/latency$mp" | median)
  key_ms=$(grep -o '"ms":[0-9]*' "$work/out$mp.json" | cut -d: -f2 | median)
  printf '  %2d MP: %7.0f ms from close to composite, keying %5.0f ms: ratio %.2f, %+.0f ms beyond keying (target <= +200 ms)\n' \
    "$mp" "$wait_ms" "$key_ms" "$(echo "$wait_ms / $key_ms" | bc -l)" "$(echo "$wait_ms - $key_ms" | bc -l)"
done

# Folders of N keyed photos: hard links of one small photo, keyed once by a
# first watcher; the figure is a second watcher's, restarted over them.
cpu_ticks() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }
idle_percent() { # WATCHER_PID SECONDS
  local t0 t1; t0=$(cpu_ticks "$1"); sleep "$2"; t1=$(cpu_ticks "$1")
  echo "($t1 - $t0) * 100 / ($(getconf CLK_TCK) * $2)" | bc -l
}
shot 320 240 "$work/small.jpg"
printf '\nplendra-batch --watch, idle CPU over folders of photos it has keyed (20 s each, %% of one core)\n' 
for n in 0 5000 20000; do
  in="$work/keyed$n" out="$work/keyedout$n"
  mkdir -p "$in" "$out"
  for ((i = 0; i < n; i++)); do ln "$work/small.jpg" "$in/p$i.jpg"; done
  if ((n > 0)); then
    start_watch "$in" "$out"; wait_lines "$out.json" "$n" '"error":null'; stop_watch
  fi
  line="  $(printf '%6d photos:' "$n")"
  for mode in events poll; do
    extra=(); [[ $mode == poll ]] && extra=(--poll)
    start_watch "$in" "$out" "${extra[@]}"
    wait_lines "$out.json" "$n" '"skipped":true'
    sleep 2
    line+=$(printf ' %6.3f %% (%s)' "$(idle_percent "$watcher" 20)" "$mode")
    stop_watch
  done
  echo "$line"
done
printf '  (target: under 1 %% of a core at 20,000 photos with events)\n'
