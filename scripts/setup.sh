#!/usr/bin/env bash
# Installs, only when missing, what the build, the tests and the examples need
# on Debian 12. Runs as root (or through sudo when it is there).
set -euo pipefail

packages=(cmake make ninja-build g++ clang pkg-config libxerces-c-dev libgtest-dev
          libbenchmark-dev gnucobol3 python3 clang-format clang-tidy)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
# gnucobol3 and gnucobol both provide cobc; either will do.
if [[ " ${missing[*]} " == *" gnucobol3 "* ]] && command -v cobc >/dev/null 2>&1; then
  missing=("${missing[@]/gnucobol3}")
fi
read -r -a missing <<<"${missing[*]}"
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
if ! $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"; then
  # Older or newer releases name the COBOL compiler package gnucobol.
  fallback=("${missing[@]/gnucobol3/gnucobol}")
  $sudo apt-get install -y -qq --no-install-recommends "${fallback[@]}"
fi
