# shellcheck shell=bash
# Functions for the other scripts, which source it:
#
#   source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"
#   need build test            # installs the missing packages of these groups
#   build_preset release       # configures and builds the preset into build/release
#
# Sets $root, the checkout, and changes to it, so that every script works from any folder.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

say() { printf '\033[1m== %s\033[0m\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

debian_packages() {
  case $1 in
    build) echo g++ make cmake ninja-build pkg-config libplist-dev libgoogle-glog-dev libsqlite3-dev \
                nettle-dev uuid-dev libcli11-dev nlohmann-json3-dev libfmt-dev help2man ;;
    test) echo libgtest-dev libgmock-dev locales ;;
    check) echo git clang-format-14 clang-tidy-14 clang-14 shellcheck ;;
    bench) echo libbenchmark-dev libabsl-dev gnuplot-nox python3 ;;
    fuzz) echo clang-14 libclang-rt-14-dev ;;
    docs) echo doxygen ;;
    page) echo chromium poppler-utils ;;
    package) echo dpkg-dev file ;;
    systems) echo git debootstrap ;;
    libc++) echo clang libc++-dev libc++abi-dev googletest ;;
    foundation) echo gobjc++ libgnustep-base-dev ;;
    foreign) echo g++-s390x-linux-gnu g++-aarch64-linux-gnu qemu-user-static ;;
    *) fail "no such group of packages: $1" ;;
  esac
}

brew_packages() {
  case $1 in
    build) echo cmake ninja pkg-config libplist glog sqlite nettle cli11 nlohmann-json fmt help2man ;;
    test) echo googletest ;;
    check) echo git llvm shellcheck ;;
    bench) echo google-benchmark abseil gnuplot python ;;
    fuzz) echo llvm ;;
    docs) echo doxygen ;;
    *) fail "not available on macOS: $1" ;;
  esac
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() {
  if [ "$(uname)" = Darwin ]; then
    brew list --versions "$1" >/dev/null 2>&1
  else
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
  fi
}

# Uses the network only when a package is missing.
need() {
  local list=brew_packages group package missing=()
  if [ "$(uname)" != Darwin ]; then
    list=debian_packages
    command -v dpkg-query >/dev/null || fail "installs packages on Debian, Ubuntu and macOS only"
  fi
  for group; do
    for package in $($list "$group"); do
      is_installed "$package" || missing+=("$package")
    done
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "Installing ${missing[*]}"
  if [ "$(uname)" = Darwin ]; then
    brew install "${missing[@]}"
  else
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
  fi
}

# Arguments: a preset, then options for its configuration.
build_preset() {
  local preset=$1
  shift
  local generator=()  # expanded with "+" below: macOS's bash treats an empty array as unset
  command -v ninja >/dev/null && [ ! -e "build/$preset/CMakeCache.txt" ] && generator=(-G Ninja)
  cmake --preset "$preset" ${generator[@]+"${generator[@]}"} "$@" --log-level=WARNING >/dev/null
  cmake --build --preset "$preset" --parallel "$(getconf _NPROCESSORS_ONLN)"
}
