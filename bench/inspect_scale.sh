#!/usr/bin/env bash
# Times `hostutil inspect` and `hostutil list` on samples of both generations; "floor" is the least that each
# has to do (inspect_baseline.cpp). After scripts/bench:
#
#   bench/inspect_scale.sh build/bench/bin [FILES...]       # 100000 1000000
#
# Warm: the median of five rounds in which the commands take turns, after one that is not counted. Cold: one
# round, the caches dropped before each command, where the machine allows it. Growth: over the number of files
# before.
set -euo pipefail

bin=${1:?usage: inspect_scale.sh BIN_FOLDER [FILES...]}
shift
[ $# -gt 0 ] || set -- 100000 1000000
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
TIMEFORMAT=%R
drop_caches() { { sync && echo 3 >/proc/sys/vm/drop_caches; } 2>/dev/null; }

commands=("$bin/inspect_baseline" "$bin/hostutil inspect --json --jobs 1" "$bin/hostutil inspect --json"
  "$bin/inspect_baseline --scan" "$bin/hostutil list")

# Appends a line "I SECONDS" for each command to the file named. inspect ends with 1 when the backup has
# problems.
run_all() {
  local i
  for i in "${!commands[@]}"; do
    [ "$1" != cold ] || drop_caches
    # shellcheck disable=SC2086  # a command's options are separate words
    echo "$i $({ time ${commands[i]} "$folder/backup" >/dev/null; } 2>&1)" >>"$folder/$1"
  done
}

# LAYOUT CACHE FILES: the medians, over the last floor, and over the medians for the number of files before.
table() {
  local i floor=0 name seconds before
  for i in "${!commands[@]}"; do
    seconds=$(awk -v i="$i" '$1 == i { print $2 }' "$folder/$2" | sort -n |
      awk '{ t[NR] = $1 } END { print t[int((NR + 1) / 2)] }')
    name=${commands[i]#"$bin/"}
    [[ $name != inspect_baseline* ]] || floor=$seconds
    before=$(cat "$folder/$1.$2.$i" 2>/dev/null || echo 0)
    echo "$seconds" >"$folder/$1.$2.$i"
    awk -v row="$(printf '%-9s %8d  %s  %-32s' "$1" "$3" "$2" "$name")" \
      -v t="$seconds" -v f="$floor" -v b="$before" 'BEGIN {
        printf "%s %8.3f %6.2f %6s\n", row, t, (f > 0 ? t / f : 0), (b > 0 ? sprintf("%.1f", t / b) : "-")
      }'
  done
}

printf '%-9s %8s  %s %-32s %8s %6s %6s\n' layout files cache command seconds ratio growth
for layout in two-level flat; do
  for files; do
    rm -rf "$folder"/{backup,warmup,warm,cold}
    "$bin/hostutil" sample "$folder/backup" --files "$files" --layout "$layout" >/dev/null
    run_all warmup
    for _ in 1 2 3 4 5; do run_all warm; done
    table "$layout" warm "$files"
    if drop_caches; then
      run_all cold
      table "$layout" cold "$files"
    fi
  done
done
