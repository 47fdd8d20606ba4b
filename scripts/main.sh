#!/usr/bin/env bash
# The main job: set up, build the library and its tools, and parse the shipped
# sample document through the library, one line per event.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
"$top/scripts/build.sh" "$top/build"
exec "$top/build/tools/cblxml-parse" "${1:-$top/examples/data/order.xml}"
