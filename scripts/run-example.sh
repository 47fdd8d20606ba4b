#!/usr/bin/env bash
# Builds the library when needed, compiles a COBOL example against it and
# runs it on a document:
#
#     run-example.sh [--example NAME] [DOCUMENT]
#     run-example.sh --files
#
# --files runs the XML file examples one after the other in build/examples/files:
# orderwrite writes orders.xml, orderread prints it, orderupdate updates it in
# place, orderread prints it again, and ordercgi answers the request
# examples/data/order-request.xml piped in with CONTENT_LENGTH set.
# NAME is one of examples/*.cbl without .cbl (default xmlevents, which prints
# every parse event); DOCUMENT defaults to the example's own sample document.
# The build folder is build/ unless CBLXML_BUILD_DIR names another.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${CBLXML_BUILD_DIR:-$top/build}

example=xmlevents
files=0
if [ "${1:-}" = --files ]; then
    files=1
    example=orderwrite
elif [ "${1:-}" = --example ]; then
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
    cmake --build "$build" --target cblxml cblxml-layout
} >"$log" 2>&1; then
    cat "$log" >&2
    echo "run-example: building the library failed" >&2
    exit 1
fi

# Static calls of the entries keep the library linked; the run path lets the
# program find it where it was built.
mkdir -p "$build/examples"
compile() {
    cobc -x -I "$top/copybooks" -I "$top/examples" -I "$build/examples" -I "$top/examples/files" \
        -o "$build/examples/$1" "$top/examples/$1.cbl" \
        -K CBL_XMLPARSE_INTERFACE -K CBL_XMLPARSE_INTERFACE_WRAP \
        -K CBL_XMLIO_INTERFACE -K kvt_xe_xml_rec_link \
        -L "$build" -lcblxml -Q "-Wl,-rpath,$build"
}

if [ $files = 1 ]; then
    # The file layouts, from the record descriptions, by cblxml-layout.
    "$build/tools/cblxml-layout" --prefix ORDERS -o "$build/examples/orders-file.cpy" \
        "$top/examples/files/orders.cpy"
    "$build/tools/cblxml-layout" --prefix CONFIRM -o "$build/examples/confirm-file.cpy" \
        "$top/examples/files/confirm.cpy"
    for program in orderwrite orderread orderupdate ordercgi; do
        compile $program
    done
    run=$build/examples/files
    rm -rf "$run" && mkdir -p "$run" && cd "$run"
    step() { printf '\n== %s\n' "$*"; }
    step "orderwrite: writes orders.xml" && ../orderwrite && cat orders.xml
    step "orderread: READ and READ NEXT" && ../orderread orders.xml
    step "orderupdate: DELETE, REWRITE, WRITE, START, write-document" && ../orderupdate
    step "orderread: the updated file" && ../orderread orders.xml
    request=$top/examples/data/order-request.xml
    step "ordercgi: the request $request, CONTENT_LENGTH=$(wc -c <"$request")"
    CONTENT_LENGTH=$(wc -c <"$request") ../ordercgi <"$request"
    exit 0
fi
compile "$example"
program=$build/examples/$example

# The examples name their sample documents relative to the top folder.
if [ $# -ge 1 ]; then
    document=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
    cd "$top"
    exec "$program" "$document"
fi
cd "$top"
exec "$program"
