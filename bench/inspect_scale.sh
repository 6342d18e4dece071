#!/usr/bin/env bash
# How long `hostutil inspect` takes for a large backup, beside the least that such a look takes.
#
#   bench/inspect_scale.sh BUILD/bin [FILES] [ROUNDS]
#
# Both programs run in turn on one sample, after a run of each that warms the caches; the medians are compared.
set -euo pipefail

bin=${1:?usage: inspect_scale.sh BIN_FOLDER [FILES] [ROUNDS]}
files=${2:-100000}
rounds=${3:-7}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
backup=$folder/backup
"$bin/hostutil" sample "$backup" --files "$files"

TIMEFORMAT=%R
seconds() { { time "$@" > "$folder/output"; } 2>&1; }
median() { sort -n | sed -n "$(((rounds + 1) / 2))p"; }

"$bin/hostutil" inspect "$backup" > "$folder/output"
"$bin/inspect_baseline" "$backup"
for ((round = 0; round < rounds; ++round)); do
  seconds "$bin/inspect_baseline" "$backup" >> "$folder/baseline"
  seconds "$bin/hostutil" inspect "$backup" --json >> "$folder/inspect"
done

baseline=$(median < "$folder/baseline")
inspect=$(median < "$folder/inspect")
awk -v files="$files" -v inspect="$inspect" -v baseline="$baseline" 'BEGIN {
  printf "%d files: hostutil inspect %.3f s, baseline %.3f s, ratio %.2f\n", files, inspect, baseline, inspect / baseline
}'
