#!/usr/bin/env bash
# Builds the library when needed, compiles a COBOL example against it and
# runs it on a document:
#
#     run-example.sh [--example NAME] [DOCUMENT]
#
# NAME is one of examples/*.cbl without .cbl (default xmlevents, which prints
# every parse event); DOCUMENT defaults to the example's own sample document.
# The build folder is build/ unless CBLXML_BUILD_DIR names another.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${CBLXML_BUILD_DIR:-$top/build}

example=xmlevents
if [ "${1:-}" = --example ]; then
    [ $# -ge 2 ] || { echo "run-example: --example needs a name" >&2; exit 2; }
    example=$2
    shift 2
fi
source=$top/examples/$example.cbl
[ -f "$source" ] || { echo "run-example: no example $source" >&2; exit 2; }

if ! command -v cobc >/dev/null 2>&1 || ! command -v cmake >/dev/null 2>&1; then
    "$top/scripts/setup.sh"
fi

# Only the library is built here; its output is shown when it fails.
mkdir -p "$build"
log=$build/run-example.log
if ! {
    if [ ! -f "$build/CMakeCache.txt" ]; then
        generator=()
        command -v ninja >/dev/null 2>&1 && generator=(-G Ninja)
        cmake -S "$top" -B "$build" "${generator[@]}"
    fi
    cmake --build "$build" --target cblxml
} >"$log" 2>&1; then
    cat "$log" >&2
    echo "run-example: building the library failed" >&2
    exit 1
fi

# Static calls of the two entries keep the library linked; the run path
# lets the program find it where it was built.
mkdir -p "$build/examples"
program=$build/examples/$example
cobc -x -I "$top/copybooks" -I "$top/examples" -o "$program" "$source" \
    -K CBL_XMLPARSE_INTERFACE -K CBL_XMLPARSE_INTERFACE_WRAP \
    -L "$build" -lcblxml -Q "-Wl,-rpath,$build"

# The examples name their sample documents relative to the top folder.
if [ $# -ge 1 ]; then
    document=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
    cd "$top"
    exec "$program" "$document"
fi
cd "$top"
exec "$program"
