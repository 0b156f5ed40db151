#!/usr/bin/env bash
# Installs the Debian packages a task needs, only those missing.
#   tools/setup-debian.sh build|fuzz|cross|aarch64|tools|host ...
# "build" is what building and testing need; the others add to it.
set -euo pipefail

packages_for() {
  case "$1" in
    build) echo cmake ninja-build g++ make pkg-config libgtest-dev libgmock-dev libbenchmark-dev \
                libpng-dev zlib1g-dev libcurl4-openssl-dev libx11-dev \
                libfreetype-dev libfontconfig-dev fonts-dejavu-core locales ;;
    fuzz)  echo clang libclang-rt-14-dev ;;
    cross) echo g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix libz-mingw-w64-dev ;;
    aarch64) echo g++-aarch64-linux-gnu qemu-user ;;
    tools) echo libfreetype-dev fonts-league-spartan fonts-open-sans ;;
    host)  echo ardour wine64 python3 g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev xvfb xauth ;;
    *) echo "setup-debian: unknown package group '$1'" >&2; exit 1 ;;
  esac
}

wanted=()
for group in "$@"; do
  # An unknown group stops the script (a failure inside $(...) alone would not).
  list=$(packages_for "$group") || exit 1
  for p in $list; do wanted+=("$p"); done
done

missing=()
for p in "${wanted[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# Update the package lists once, only when something has to be installed.
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
