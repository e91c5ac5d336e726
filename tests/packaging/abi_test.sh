#!/bin/bash
# Lets the guard of the binary interface compare a build with altered copies of what programs rely on: it names what
# differs, and fails.
# Usage: abi_test.sh ARCHITECTURE FOLDER_OF_LIBRARIES
set -euo pipefail
architecture=$1
libraries=$(realpath "$2")
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
abi=$work/packaging/abi
header=$work/include/vantrel.h
advice="The binary interface has changed. Programs linked before break where something is gone or altered, which"

fail() {
    echo "FAILED: $*"
    exit 1
}

same() {
    diff <(echo "$2") <(echo "$3") || fail "$1: expected (<), found (>)"
}

# A copy of the interface relied on and of the header, for the next trial to alter.
begin() {
    echo "-- $1"
    rm -rf "$work"/*
    mkdir -p "$work"/{packaging,include}
    cp -R "$root/packaging/abi" "$abi"
    cp "$root/include/vantrel.h" "$header"
}

# Alters a file so that at least one line of it differs.
alter() {
    cp "$1" "$work/before"
    sed -i -E "$2" "$1"
    ! cmp -s "$work/before" "$1" || fail "$2 alters nothing in $1"
}

checkEndsWith() {
    local result=0
    "$abi/check" --header "$header" "$architecture" "$libraries" >"$work/report" 2>&1 || result=$?
    [[ $result == "$1" ]] || fail "the check ended with $result: $(<"$work/report")"
}

# What the description calls a type.
identifier() {
    sed -nE "s/.*<typedef-decl name='$1' .* id='([^']*)'.*/\1/p" "$abi/libvantrelC.$architecture.abi"
}

# The check fails, and its report begins with these lines.
reports() {
    local expected
    expected=$(cat)
    checkEndsWith 1
    same "report" "$expected" "$(head -n "$(wc -l <<<"$expected")" "$work/report")"
}

begin "nothing altered"
checkEndsWith 0
same "report" "" "$(<"$work/report")"

begin "a constant altered"
alter "$header" 's/^( +VANTREL_COMPARISON_LIKE) = 7,/\1 = 70,/'
reports <<REPORT
== constants of the header
    gone:  VANTREL_COMPARISON_LIKE = 7
    added: VANTREL_COMPARISON_LIKE = 70

$advice
REPORT

begin "a function gone"
alter "$abi/libvantrelC.exports" '$a VantrelZebra'
reports <<REPORT
== symbols of libvantrelC
    gone:  VantrelZebra

$advice
REPORT

begin "a function added"
alter "$abi/libvantrelC.exports" '/^VantrelClientFree$/d'
reports <<REPORT
== symbols of libvantrelC
    added: VantrelClientFree

$advice
REPORT

begin "the type of a parameter altered"
alter "$abi/libvantrelC.$architecture.abi" \
    "/<function-decl name='VantrelFileAttributesSetFixedRecordLength' /{n;n;s/type-id='[^']*'/type-id='$(identifier uint32_t)'/}"
reports <<REPORT
== functions of libvantrelC and their types, $architecture
Functions changes summary: 0 Removed, 1 Changed, 0 Added function
Variables changes summary: 0 Removed, 0 Changed, 0 Added variable

1 function with some indirect sub-type change:

  [C] 'function VantrelStatus VantrelFileAttributesSetFixedRecordLength(VantrelFileAttributes*, uint32_t)' has some indirect sub-type changes:
    parameter 2 of type 'typedef uint32_t' changed:
      typedef name changed from uint32_t to int32_t
REPORT

for file in "libvantrelC.$architecture.abi" libvantrelC.exports constants; do
    begin "$file is lost"
    rm "$abi/$file"
    checkEndsWith 2
    same "report" "packaging/abi/check: packaging/abi/$file is missing" "$(<"$work/report")"
done
