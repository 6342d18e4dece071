#!/usr/bin/env bash
# Times `hostutil extract` and `cp -r` of the same backup: 100,000 small files, and 2 GiB in sixteen large
# ones. After scripts/bench:
#
#   bench/extract_speed.sh build/bench/bin [FOLDER]       # FOLDER: on the file system to measure
#
# The two take turns in five rounds after one that is not counted. The last copy is removed before each. The
# times and the ratio are medians over the rounds; in brackets the least and the greatest ratio.
set -euo pipefail

bin=$(realpath "${1:?usage: extract_speed.sh BIN_FOLDER [FOLDER]}")
folder=$(mktemp -d -p "${2:-${TMPDIR:-/tmp}}")
trap 'rm -rf "$folder"' EXIT
cd "$folder"
TIMEFORMAT=%R

# Prints the seconds that the command takes. Exit status 1 is a backup with problems.
seconds() {
  rm -rf out
  { time "$@" >/dev/null || [ $? -eq 1 ]; } 2>&1
}

# The value of rank $2 of an expression over the lines of rounds.
ranked() { awk "{ print $1 }" rounds | sort -n | sed -n "$2p"; }

compare() {
  local round copied extracted
  for round in 0 1 2 3 4 5; do
    copied=$(seconds cp -r backup out)
    extracted=$(seconds "$bin/hostutil" extract backup out)
    [ "$round" = 0 ] || echo "$copied $extracted"
  done >rounds
  printf '%-22s cp -r %7.3f s  extract %7.3f s  ratio %4.2f (%4.2f to %4.2f)\n' "$1" "$(ranked '$1' 3)" \
    "$(ranked '$2' 3)" "$(ranked '$2 / $1' 3)" "$(ranked '$2 / $1' 1)" "$(ranked '$2 / $1' 5)"
}

"$bin/hostutil" sample backup --files 100000 >/dev/null
compare "100,000 small files"

# The files grow beyond the size that the manifest records, which extract reports and copies all the same.
rm -rf backup
"$bin/hostutil" sample backup --files 16 >/dev/null
find backup -mindepth 2 -type f | while read -r file; do head -c 134217728 /dev/urandom >"$file"; done
compare "2 GiB in large files"
