#!/usr/bin/env bash
# The client library needs the C library and the two engine libraries, and carries its soname.
# Usage: dependencies.sh CLIENT_LIBRARY
set -euo pipefail
export LC_ALL=C

dynamic() {
    readelf --dynamic --wide "$1" | sed -nE "s/.*\($2\).*\[(.*)\]/\1/p"
}

expect() {
    if [ "$2" != "$3" ]; then
        printf '%s: expected %s, found %s\n' "$1" "$2" "$3"
        exit 1
    fi
}

expect "soname" "libvantrelC.so.16" "$(dynamic "$1" SONAME)"
expect "needed" "libc.so.6 libvantrelcore.so.16 libvantrelif.so.16" "$(dynamic "$1" NEEDED | sort | xargs)"
