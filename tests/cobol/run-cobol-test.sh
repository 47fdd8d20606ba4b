#!/usr/bin/env bash
# Compiles a COBOL program against the library, or runs one and compares
# what it prints with the expected output, byte for byte.
#
#   run-cobol-test.sh compile MODE LIBRARY COPYBOOKS SOURCE EXECUTABLE [OPTION...]
#   run-cobol-test.sh run MODE LIBRARY EXECUTABLE EXPECTED STATUS [ARG...]
#   run-cobol-test.sh diagnose SOURCE STATUS MESSAGE [OPTION...]
#
# MODE is how the program reaches the library, one of the ways a user
# builds against it:
#   static      the parse entries are called statically (-K), -lcblxml
#   staticcall  every CALL is static (-fstatic-call), -lcblxml
#   linked      dynamic CALLs, the library linked in (--no-as-needed)
#   preload     dynamic CALLs, the run-time loads it through COB_PRE_LOAD
#   tool        built with cblxml-cobc (XML PARSE statements), as it links
#   tool-preload  built with cblxml-cobc, dynamic CALLs, COB_PRE_LOAD
# diagnose builds SOURCE with cblxml-cobc and expects exit status STATUS and
# MESSAGE as a line of what it reports; with STATUS 2, as its only line.
# The run happens in the current folder; STATUS is the expected exit status.
#
# For programs that read and write files, run takes from the environment:
# CBLXML_RUN_IN, a folder made afresh to run in; CBLXML_COPY_IN, a file
# copied into it first; CBLXML_WRITTEN, "FILE EXPECTED": a file the program
# writes there, compared byte for byte; CBLXML_STDIN, a request piped into
# standard input with CONTENT_LENGTH set to its size and more bytes after
# it, which the program must not read.
#
# Environment: COBC, the compiler (default cobc); CBLXML_COBC_TOOL, the
# cblxml-cobc command. CBLXML_SANITIZER_RUNTIME:
# the sanitizer run-time of a library built with sanitizers; the program,
# which is not, needs it loaded first. CBLXML_LSAN_SUPPRESSIONS: leak
# suppressions for the COBOL run-time.
#
# Exits 77, which the tests treat as skipped, when there is no COBOL compiler.
set -uo pipefail

skipped=77
cobc=${COBC:-cobc}
if ! command -v "$cobc" >/dev/null 2>&1; then
    echo "no COBOL compiler ($cobc): skipped"
    exit $skipped
fi

usage() {
    sed -n '5,7p' "$0" >&2
    exit 2
}

compile() {
    local mode=$1 library=$2 copybooks=$3 source=$4 executable=$5
    shift 5
    local libdir
    libdir=$(dirname "$library")
    local link=(-L "$libdir" -lcblxml -Q "-Wl,-rpath,$libdir")
    local options
    case $mode in
        static) options=(-K CBL_XMLPARSE_INTERFACE -K CBL_XMLPARSE_INTERFACE_WRAP
            -K CBL_XMLIO_INTERFACE -K kvt_xe_xml_rec_link "${link[@]}") ;;
        staticcall) options=(-fstatic-call "${link[@]}") ;;
        linked) options=(-Q -Wl,--no-as-needed "${link[@]}") ;;
        preload) options=() ;;
        tool | tool-preload) ;;
        *) usage ;;
    esac
    mkdir -p "$(dirname "$executable")"
    case $mode in
        tool) "$CBLXML_COBC_TOOL" -x -o "$executable" "$source" "$@" ;;
        tool-preload) CBLXML_COBC_LINK=dynamic "$CBLXML_COBC_TOOL" -x -o "$executable" "$source" "$@" ;;
        *) "$cobc" -x -Wall -I "$copybooks" -o "$executable" "$source" "${options[@]}" "$@" ;;
    esac
}

diagnose() {
    local source=$1 status=$2 message=$3 out
    shift 3
    out=$(mktemp -d)
    trap 'rm -rf "$out"' EXIT
    "$CBLXML_COBC_TOOL" -x -o "$out/program" "$source" "$@" 2>"$out/stderr" >/dev/null
    local got=$?
    # A refused form is the one line; a cobc error is among cobc's lines.
    if [ "$got" -eq "$status" ] && grep -qxF -- "$message" "$out/stderr" &&
        { [ "$status" -ne 2 ] || [ "$(wc -l <"$out/stderr")" -eq 1 ]; }; then
        return 0
    fi
    echo "exit status $got, expected $status and: $message"
    cat "$out/stderr"
    return 1
}

run() {
    local mode=$1 library=$2 executable=$3 expected=$4 status=$5
    shift 5
    local env=()
    case $mode in preload | tool-preload) env+=("COB_PRE_LOAD=$library") ;; esac
    if [ -n "${CBLXML_SANITIZER_RUNTIME:-}" ]; then
        env+=("LD_PRELOAD=$CBLXML_SANITIZER_RUNTIME")
        # The COBOL run-time is built without frame pointers: only the slow
        # unwinder sees it on an allocation's stack, so that its leaks and
        # no others can be suppressed.
        env+=("ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}fast_unwind_on_malloc=0")
        [ -n "${CBLXML_LSAN_SUPPRESSIONS:-}" ] &&
            env+=("LSAN_OPTIONS=${LSAN_OPTIONS:+$LSAN_OPTIONS:}suppressions=$CBLXML_LSAN_SUPPRESSIONS")
    fi
    actual=$(mktemp)
    trap 'rm -f "$actual"' EXIT
    if [ -n "${CBLXML_RUN_IN:-}" ]; then
        rm -rf "$CBLXML_RUN_IN" && mkdir -p "$CBLXML_RUN_IN" && cd "$CBLXML_RUN_IN" || return 1
        [ -z "${CBLXML_COPY_IN:-}" ] || cp "$CBLXML_COPY_IN" . || return 1
    fi
    if [ -n "${CBLXML_STDIN:-}" ]; then
        env+=("CONTENT_LENGTH=$(wc -c <"$CBLXML_STDIN")")
        { cat "$CBLXML_STDIN"; echo "bytes past the request body"; } |
            env "${env[@]}" "$executable" "$@" >"$actual"
    else
        env "${env[@]}" "$executable" "$@" >"$actual"
    fi
    local got=$?
    local failed=0
    if [ -n "${CBLXML_WRITTEN:-}" ]; then
        read -r written expected_file <<<"$CBLXML_WRITTEN"
        if ! cmp -s "$expected_file" "$written"; then
            echo "$written differs from $expected_file:"
            diff -u "$expected_file" "$written" | head -60
            failed=1
        fi
    fi
    if [ "$got" -ne "$status" ]; then
        echo "exit status $got, expected $status"
        failed=1
    fi
    if ! cmp -s "$expected" "$actual"; then
        echo "output differs from $expected:"
        diff -u "$expected" "$actual" | head -60
        failed=1
    fi
    return $failed
}

[ $# -ge 2 ] || usage
action=$1
shift
# A program that starts with a sanitized library (and so with its XML
# parser's dependencies) already loaded hangs in the C library's setlocale
# before its first statement when the sanitizer run-time is preloaded. Loaded
# by the COBOL run-time after its own start-up, the library runs fine: under
# the sanitizers every program is built and run that way. The normal build
# covers the other link modes.
if [ -n "${CBLXML_SANITIZER_RUNTIME:-}" ] && [ "$action" != diagnose ] &&
    [ "$1" != preload ] && [ "$1" != tool-preload ]; then
    replacement=preload
    [ "$1" = tool ] && replacement=tool-preload
    echo "sanitizer build: $1 mode replaced by $replacement"
    set -- "$replacement" "${@:2}"
fi
case $action in
    compile) [ $# -ge 5 ] || usage; compile "$@" ;;
    diagnose) [ $# -ge 3 ] || usage; diagnose "$@" ;;
    run) [ $# -ge 5 ] || usage; run "$@" ;;
    *) usage ;;
esac
