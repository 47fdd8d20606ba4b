#!/usr/bin/env bash
# Sets up, builds (warnings are errors) and runs the whole test suite.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
"$top/scripts/build.sh" "$top/build" -DCBLXML_WERROR=ON
cd "$top/build"
ctest --output-on-failure -j "$(nproc)"
