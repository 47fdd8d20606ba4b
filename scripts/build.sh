#!/usr/bin/env bash
# Configures and builds into a build folder: build.sh [build-dir] [cmake options...]
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dir=${1:-$top/build}
shift || true
generator=()
command -v ninja >/dev/null 2>&1 && generator=(-G Ninja)
if [ ! -f "$dir/CMakeCache.txt" ]; then
  cmake -S "$top" -B "$dir" "${generator[@]}" "$@"
else
  cmake "$dir" "$@" >/dev/null
fi
cmake --build "$dir" -j "$(nproc)"
