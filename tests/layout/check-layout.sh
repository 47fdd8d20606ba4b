#!/usr/bin/env bash
# One copybook through cblxml-layout: (1) every named item's offset and
# length against a program printing them as GnuCOBOL lays the copybook out;
# (2) the record entries a COBOL program holds after the generated set-up
# paragraph against the builder's, linked by the library (layout_dump).
#   check-layout.sh TOOL DUMPER LIBRARY COPYBOOKS COPYBOOK [--free]
#   check-layout.sh --fcb LIBRARY COPYBOOKS EXPECTED   (cblxml-file.cpy)
# Exits 77 (skipped) without cobc; programs run through run-cobol-test.sh.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cobc=${COBC:-cobc}
command -v "$cobc" >/dev/null 2>&1 || { echo "no COBOL compiler: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
run=$here/../cobol/run-cobol-test.sh

if [ "$1" = --fcb ]; then
    "$cobc" -x -I "$3" -o "$work/fcbcheck" "$here/fcbcheck.cbl" "$here/dump.c" \
        -A "-I$3/../include" || exit 1
    exec "$run" run preload "$2" "$work/fcbcheck" "$4" 0
fi

tool=$1 dumper=$2 library=$3 copybooks=$4 copybook=$5 format=${6:-}
free=()
[ "$format" = --free ] && free=(-free)
name=$(basename "$copybook")
cp "$copybook" "$work/$name"
cp "$copybook" "$work/record.cpy"
cd "$work"
"$tool" $format --list "$name" >tool.out || exit 1
"$tool" $format --probe "$name" >probe.cbl || exit 1
"$cobc" -x "${free[@]}" -o probe probe.cbl && ./probe >cobc.out || exit 1
if ! cmp -s cobc.out tool.out; then
    echo "offsets and lengths differ from GnuCOBOL's (- GnuCOBOL, + cblxml-layout):"
    diff -u cobc.out tool.out | head -40
    exit 1
fi
echo "$(wc -l <tool.out) items at GnuCOBOL's offsets"
"$tool" $format --prefix LT -o record-xml.cpy record.cpy || exit 1
"$dumper" record.cpy $format >builder.out || exit 1
"$cobc" -x "${free[@]}" -I . -I "$copybooks" -o linkcheck "$here/linkcheck.cbl" "$here/dump.c" \
    -A "-I$copybooks/../include" || exit 1
"$run" run preload "$library" ./linkcheck builder.out 0
