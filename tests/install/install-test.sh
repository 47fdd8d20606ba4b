#!/usr/bin/env bash
# Installs the build into a fresh prefix, then builds and runs, against that
# installed copy alone: a C program through find_package(cblxml), the same
# through pkg-config, the XML PARSE example with cobc and the installed
# copybooks, a program with the XML PARSE statement through the installed
# cblxml-cobc, the layout test program with what the installed
# cblxml-layout writes, and the XML file example orderread with its layout
# made by the installed tool.
#   install-test.sh BUILD_DIR SOURCE_DIR
set -uo pipefail
build=$1 source=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "install test: $*"; exit 1; }

cmake --install "$build" --prefix "$prefix" >"$work/install.log" || { cat "$work/install.log"; fail "install"; }
cp "$here/consumer/consumer.c" "$here/consumer/CMakeLists.txt" "$source/examples/xmlevents.cbl" \
   "$source/examples/data/order.xml" "$source/tests/layout/"{linkcheck.cbl,dump.c} \
   "$source/examples/"{orderread.cbl,files/orders.cpy,data/orders.xml,xmlorder.cbl} \
   "$source/examples/"{order-data.cpy,order-report.cpy} "$work/"
cp "$source/tests/layout/copybooks/order.cpy" "$work/record.cpy"
cd "$work"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
libdir=$(pkg-config --variable=libdir cblxml) || fail "no cblxml.pc"
copybooks=$(pkg-config --variable=copybookdir cblxml)

[ "$(readlink "$libdir/libcblxml.so")" = libcblxml.so.0 ] || fail "libcblxml.so link"
[ -f "$libdir/$(readlink "$libdir/libcblxml.so.0")" ] || fail "libcblxml.so.0 link"
readelf -d "$libdir/libcblxml.so" | grep -q 'SONAME.*\[libcblxml.so.0\]' || fail "SONAME"
[ -x "$prefix/bin/cblxml-parse" ] && [ -f "$prefix/share/doc/cblxml/layout.md" ] || fail "tool, docs"

cmake -S . -B cmake-build -DCMAKE_PREFIX_PATH="$prefix" >cmake.log 2>&1 || { cat cmake.log; fail "find_package"; }
cmake --build cmake-build >>cmake.log 2>&1 || { cat cmake.log; fail "building through find_package"; }
./cmake-build/consumer >find_package.out || fail "the find_package program"
# shellcheck disable=SC2046
cc -o pc-consumer consumer.c $(pkg-config --cflags --libs cblxml) -Wl,-rpath,"$libdir" ||
    fail "building through pkg-config"
./pc-consumer >pkg-config.out || fail "the pkg-config program"
cmp -s find_package.out pkg-config.out || fail "the two C programs differ"

cobc -x -I "$copybooks" -o xmlevents xmlevents.cbl -K CBL_XMLPARSE_INTERFACE \
    -K CBL_XMLPARSE_INTERFACE_WRAP -L "$libdir" -lcblxml -Q "-Wl,-rpath,$libdir" || fail "cobc xmlevents"
./xmlevents order.xml >xmlevents.out || fail "xmlevents"
cmp -s xmlevents.out "$source/tests/cobol/expected/xmlevents-order.out" || fail "xmlevents output"

"$prefix/bin/cblxml-layout" --prefix LT record.cpy || fail "the installed cblxml-layout"
cobc -x -I . -I "$copybooks" -o linkcheck linkcheck.cbl dump.c -A "-I$prefix/include" \
    -K kvt_xe_xml_rec_link -L "$libdir" -lcblxml -Q "-Wl,-rpath,$libdir" || fail "cobc linkcheck"
./linkcheck | grep -q '^record 1: descriptors 12 flags 1 ' || fail "linkcheck"
"$prefix/bin/cblxml-layout" --prefix ORDERS -o orders-file.cpy orders.cpy || fail "orders layout"
cobc -x -I . -I "$copybooks" -o orderread orderread.cbl -K CBL_XMLIO_INTERFACE \
    -K kvt_xe_xml_rec_link -L "$libdir" -lcblxml -Q "-Wl,-rpath,$libdir" || fail "cobc orderread"
./orderread orders.xml >orderread.out || fail "orderread"
cmp -s orderread.out "$source/tests/cobol/expected/orderread-orders.out" || fail "orderread output"
# A program with the XML PARSE statement, built by the installed cblxml-cobc.
"$prefix/bin/cblxml-cobc" -x -I . -o xmlorder xmlorder.cbl || fail "the installed cblxml-cobc"
./xmlorder order.xml >xmlorder.out || fail "xmlorder"
cmp -s xmlorder.out "$source/tests/cobol/expected/orderreport-order.out" || fail "xmlorder output"
echo "installed package: C through find_package and pkg-config, COBOL with the copybooks and" \
    "cblxml-cobc, an XML file example"
