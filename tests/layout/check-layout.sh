#!/usr/bin/env bash
# One copybook through cblxml-layout, checked twice:
#  1. every named item's offset and length as the tool computes them, against
#     a program that prints them as GnuCOBOL lays the copybook out;
#  2. the record entries a COBOL program holds after the set-up paragraph of
#     the generated copybooks, against the builder's own linked by the
#     library (layout_dump).
#
#   check-layout.sh TOOL DUMPER LIBRARY COPYBOOKS COPYBOOK [--free]
#
# With --fcb, the control block copybook against the header instead:
#
#   check-layout.sh --fcb LIBRARY COPYBOOKS EXPECTED
#
# Exits 77 (skipped) without a COBOL compiler. Environment as for
# tests/cobol/run-cobol-test.sh, which runs the program.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cobc=${COBC:-cobc}
command -v "$cobc" >/dev/null 2>&1 || { echo "no COBOL compiler: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ "$1" = --fcb ]; then
    library=$2 copybooks=$3 expected=$4
    "$cobc" -x -I "$copybooks" -o "$work/fcbcheck" "$here/fcbcheck.cbl" "$here/dump.c" \
        -A "-I$copybooks/../include" || exit 1
    exec "$here/../cobol/run-cobol-test.sh" run preload "$library" "$work/fcbcheck" "$expected" 0
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
"$cobc" -x "${free[@]}" -o probe probe.cbl || exit 1
./probe >cobc.out || exit 1
if ! cmp -s cobc.out tool.out; then
    echo "offsets and lengths differ from GnuCOBOL's (- GnuCOBOL, + cblxml-layout):"
    diff -u cobc.out tool.out | head -40
    exit 1
fi
echo "$(wc -l <tool.out) items at GnuCOBOL's offsets"

"$tool" $format --prefix LT -o record-xml.cpy record.cpy || exit 1
"$dumper" record.cpy $format >builder.out || exit 1
# The generated copybooks compile in either format, as the input needs.
"$cobc" -x "${free[@]}" -I . -I "$copybooks" -o linkcheck "$here/linkcheck.cbl" "$here/dump.c" \
    -A "-I$copybooks/../include" || exit 1
"$here/../cobol/run-cobol-test.sh" run preload "$library" ./linkcheck builder.out 0
