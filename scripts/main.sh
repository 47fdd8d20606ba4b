#!/usr/bin/env bash
# The main job: set up, build the library and its tools, then compile the
# COBOL example program and let it parse the shipped sample document (or the
# document named) through the library, one line per event.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
"$top/scripts/build.sh" "$top/build"
exec "$top/scripts/run-example.sh" "$@"
