#!/usr/bin/env bash
# The test suite built with AddressSanitizer (LeakSanitizer on) and
# UndefinedBehaviorSanitizer, in its own build folder.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
CC=clang CXX=clang++ "$top/scripts/build.sh" "$top/build-asan" -DCBLXML_SANITIZE=ON -DCBLXML_WERROR=ON -DCMAKE_BUILD_TYPE=Debug
cd "$top/build-asan"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --output-on-failure -j "$(nproc)"
