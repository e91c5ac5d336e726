#!/usr/bin/env bash
# The client library exports exactly the functions on the list, which are those that the header declares; the
# engine's libraries export what they must and nothing else.
# Usage: exports.sh COMPILER HEADER LIST CLIENT_LIBRARY INTERFACE_LIBRARY CORE_LIBRARY
set -euo pipefail
compiler=$1 header=$2 list=$3 client=$4 interface=$5 core=$6
exported=$(dirname "$0")/../../packaging/abi/exports
export LC_ALL=C

declared() {
    "$compiler" -E -P -x c "$header" | grep -oE '\bVantrel[A-Za-z0-9]+ *\(' | tr -d ' (' | sort
}

failed=0
compare() {
    if ! difference=$(diff "$2" "$3"); then
        printf '%s:\n%s\n' "$1" "$difference"
        failed=1
    fi
}

compare "listed (<) and declared (>) functions differ" <(sort "$list") <(declared)
compare "declared (<) and exported (>) functions differ" <(declared) <("$exported" "$client")
compare "the interface library exports something else (>)" <(echo VNTLEXID) <("$exported" "$interface")
compare "the core library exports something else (>)" <("$exported" "$core" | grep '^vantrelCore') <("$exported" "$core")
exit $failed
