#!/usr/bin/env bash
# The concurrency test (8 threads x 1,000 parses, compared with a
# single-threaded run) built with ThreadSanitizer, in its own build folder.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
dir=${CBLXML_TSAN_BUILD:-$top/build-tsan}
"$top/scripts/setup.sh"
generator=()
command -v ninja >/dev/null 2>&1 && generator=(-G Ninja)
if [ ! -f "$dir/CMakeCache.txt" ]; then
  CC=clang CXX=clang++ cmake -S "$top" -B "$dir" "${generator[@]}" -DCBLXML_TSAN=ON \
    -DCBLXML_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$dir" -j "$(nproc)" --target cblxml_concurrency
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
"$dir/tests/tsan/cblxml_concurrency"
