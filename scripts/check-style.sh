#!/usr/bin/env bash
# Fails when a C or C++ file differs from the committed .clang-format, or when
# clang-tidy (the checks in .clang-tidy) reports a finding in src/, tools/ or
# tests/. The two files that replace the process's allocator are left to the
# compiler's warnings: their definitions must differ from the C library's
# declarations in parameter names.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
cd "$top"

mapfile -t sources < <(git ls-files -- src include tools tests bench examples | grep -E '\.(c|cc|cpp|h|hpp)$')
clang-format --dry-run --Werror "${sources[@]}"
echo "check-style: formatting clean (${#sources[@]} files)"

dir="$top/build-tidy"
CC=clang CXX=clang++ cmake -S "$top" -B "$dir" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
mapfile -t units < <(git ls-files -- src tools tests | grep -E '\.(c|cc|cpp)$' |
  grep -v -E '(leak_check_count|failing_allocator)\.cpp$')
printf '%s\n' "${units[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy -quiet -p "$dir"
echo "check-style: clang-tidy clean (${#units[@]} files)"
