#!/bin/bash
# Checks the Debian packages in a folder with lintian, installs them into a root of their own that holds nothing but
# the libraries they depend on, builds the example that they bring against them, runs it there and removes them.
# Usage: packages_test.sh ARCHITECTURE FOLDER
set -euo pipefail
architecture=$1
folder=$(realpath "$2")
root=$(cd "$(dirname "$0")/../.." && pwd)
asRoot=$root/scripts/as-root
export LC_ALL=C.UTF-8
triplet=$(dpkg-architecture --host-arch "$architecture" --query DEB_HOST_MULTIARCH 2>/dev/null)
machine=$(dpkg --print-architecture)
packages=(libvantrel16 libvantrel-engine16 libvantrel-dev)
work=$(mktemp -d)
trap '"$asRoot" rm -rf "$work"' EXIT
chmod 755 "$work"
scratch=$work/root

fail() {
    echo "FAILED: $*"
    exit 1
}

same() {
    diff <(echo "$2") <(echo "$3") || fail "$1: expected (<), found (>)"
}

file() {
    echo "$folder/$1_"*"_$architecture.deb"
}

# The names in a package's dependencies.
dependencies() {
    dpkg-deb --field "$(file "$1")" Depends | tr ',' '\n' | sed 's/^ *//; s/[ (].*//' | sort
}

# The libraries that the packages depend on, installed as far as dpkg can tell.
prepareRoot() {
    mkdir -p "$scratch"/var/lib/dpkg/{info,updates,triggers}
    printf '%s\n' "$machine" "$architecture" >"$scratch/var/lib/dpkg/arch"
    if [[ $architecture == "$machine" ]]; then
        local needed
        needed=$(dependencies libvantrel-engine16)
        for package in $needed; do
            dpkg-query --status "$package:$machine"
            echo
            dpkg-query --listfiles "$package:$machine" | grep -E '\.so(\.|$)' | sed 's,^/,,' |
                tar -C / --create --files-from - | tar -C "$scratch" --extract
        done >"$scratch/var/lib/dpkg/status"
        return
    fi
    local overlay=$root/build/overlay/$architecture
    cat "$overlay/DEBIAN/status" "$overlay/runtime/DEBIAN/status" >"$scratch/var/lib/dpkg/status"
    tar -C "$overlay" --create usr/lib | tar -C "$scratch" --extract
    tar -C "$overlay/runtime" --create lib usr/lib | tar -C "$scratch" --extract
}

inScratch() {
    "$asRoot" dpkg --root="$scratch" --log=/dev/null "$@" >"$work/dpkg" 2>&1 || fail "dpkg $*: $(<"$work/dpkg")"
}

content() {
    (cd "$scratch" && find . -path ./var/lib/dpkg -prune -o -print | sort)
}

runProgram() {
    if [[ $architecture == "$machine" ]]; then
        "$asRoot" chroot "$scratch" /program /parts.vnt
    else
        timeout --kill-after=10 300 "qemu-${triplet%%-*}" -L "$scratch" "$work/program" "$work/parts.vnt"
    fi
}

echo "-- lintian"
lintian --allow-root --fail-on error,warning "$folder"/*.changes

echo "-- dependencies"
same libvantrel16 "libc6 libvantrel-engine16" "$(dependencies libvantrel16 | xargs)"
same libvantrel-engine16 "libc6 libgcc-s1 libsqlite3-0 libssl3 libstdc++6" "$(dependencies libvantrel-engine16 | xargs)"
same libvantrel-dev "libvantrel-engine16 libvantrel16" "$(dependencies libvantrel-dev | xargs)"

echo "-- installation"
prepareRoot
content >"$work/before"
inScratch --install "$(file libvantrel-engine16)" "$(file libvantrel16)" "$(file libvantrel-dev)"
for package in "${packages[@]}"; do
    same "state of $package" "install ok installed" \
        "$(dpkg-query --admindir="$scratch/var/lib/dpkg" -W -f='${Status}' "$package:$architecture")"
done
for library in libvantrelC libvantrelif libvantrelcore; do
    file=$scratch/usr/lib/$triplet/$library.so.16
    ! readelf --dynamic --wide "$file" | grep -E 'R(UN)?PATH' || fail "$file names folders to search"
done
LC_ALL=C.UTF-8 man --warnings=w -l "$scratch/usr/share/man/man3/vantrel.3.gz" >/dev/null

echo "-- a program"
compiler=cc
[[ $architecture == "$machine" ]] || compiler=$triplet-gcc
read -ra flags < <(PKG_CONFIG_LIBDIR=$scratch/usr/lib/$triplet/pkgconfig pkg-config --cflags --libs vantrel)
"$compiler" "$scratch/usr/share/doc/libvantrel-dev/examples/first_program.c" "${flags[@]}" -o "$work/program"
"$asRoot" cp "$work/program" "$scratch/program"
same "printed" sprocket "$(runProgram)"
"$asRoot" rm -f "$scratch"/program "$scratch"/parts.vnt*

echo "-- removal"
inScratch --purge "${packages[@]/%/:$architecture}"
content | diff "$work/before" - || fail "left behind (>) or taken along (<)"
