#!/bin/bash
# Installs a build, moves what was installed, and builds a program against it in every way that the manual
# names, with the C and the C++ compiler. Of a cross build it only looks at what is installed.
# Usage: install_test.sh BUILD_FOLDER
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$(realpath "$1")
program=$root/tests/library/first_program.c
toolchain=$(cd "$root" && sed -n 's/^CMAKE_TOOLCHAIN_FILE:.*=//p' "$build/CMakeCache.txt" | xargs -r realpath)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
    echo "FAILED: $*"
    exit 1
}

same() {
    diff <(echo "$2") <(echo "$3") || fail "$1: expected (<), found (>)"
}

prints() {
    same "$1" sprocket "$(LD_LIBRARY_PATH=$prefix/lib "$2" "$work/parts.vnt")"
}

installed() {
    (cd "$prefix" && find . \( -type f -o -type l \) ! -path './share/doc/vantrel/docs/*' \
        ! -path './share/doc/vantrel/examples/catalogue/*' -printf '%P\n' | LC_ALL=C sort)
}

echo "-- what is installed"
DESTDIR=$work/staged cmake --install "$build" --prefix /opt/vantrel >/dev/null
prefix=$work/moved
mv staged/opt/vantrel "$prefix"
same "elsewhere" "" "$(find staged -type f)"
same "files" "include/vantrel.h
lib/cmake/Vantrel/VantrelConfig.cmake
lib/cmake/Vantrel/VantrelConfigVersion.cmake
lib/cmake/Vantrel/VantrelTargets-$(sed -n 's/^CMAKE_BUILD_TYPE:.*=//p' "$build/CMakeCache.txt" | tr '[:upper:]' '[:lower:]').cmake
lib/cmake/Vantrel/VantrelTargets.cmake
lib/libvantrelC.so
lib/libvantrelC.so.16
lib/libvantrelC.so.16.0.0
lib/libvantrelcore.so
lib/libvantrelcore.so.16
lib/libvantrelcore.so.16.0.0
lib/libvantrelif.so
lib/libvantrelif.so.16
lib/libvantrelif.so.16.0.0
lib/pkgconfig/vantrel.pc
share/doc/vantrel/README.md
share/doc/vantrel/examples/first_program.c
share/man/man3/vantrel.3
share/man/man7/vantrel.7" "$(installed)"
same "documents" "$(cd "$root" && ls docs/*.md)" "$(cd "$prefix/share/doc/vantrel" && ls docs/*)"
same "demonstration" "$(ls "$root/examples/catalogue")" "$(ls "$prefix/share/doc/vantrel/examples/catalogue")"
while IFS=: read -r document link; do
    [[ -e $(dirname "$document")/$link ]] || fail "${document#"$prefix/"} links $link, which is not there"
done < <(grep -oE '\]\([^)]+\)' --with-filename "$prefix"/share/doc/vantrel/{README.md,docs/*.md} | sed 's/\](//; s/)$//; s/#.*//' |
    grep -vE ':https?:')
for file in "$prefix"/lib/*.so; do
    same "soname of $file" "$(basename "$file").16" \
        "$(readelf --dynamic --wide "$file" | sed -nE 's/.*\(SONAME\).*\[(.*)\]/\1/p')"
    ! readelf --dynamic --wide "$file" | grep -E 'R(UN)?PATH' || fail "$file names folders to search"
done
"$root/tests/library/dependencies.sh" "$prefix/lib/libvantrelC.so"
places=$(grep -rlaF -e "$build" -e "$root" -e "$work" "$prefix/include" "$prefix/lib/pkgconfig" "$prefix/lib/cmake" "$prefix/share" || true)
same "files that name a folder of this machine" "" "$places"

compiler=cc
options=(-DCMAKE_INSTALL_PREFIX=/usr -DVANTREL_BUILD_TESTS=OFF)
if [[ -n $toolchain ]]; then
    compiler=$(sed -nE 's/^set\(vantrel_compiler (.*)\)$/\1-gcc/p' "$toolchain")
    options+=(-DCMAKE_TOOLCHAIN_FILE="$toolchain")
fi
multiarch=$("$compiler" -print-multiarch)
if [[ -n $multiarch ]]; then
    echo "-- Debian's folders under /usr"
    cmake -G Ninja -S "$root" -B usr "${options[@]}" >/dev/null
    same "folder of libraries" "lib/$multiarch" "$(sed -n 's/^CMAKE_INSTALL_LIBDIR:.*=//p' usr/CMakeCache.txt)"
    grep -qF '/../../../include' usr/vantrel.pc || fail "$(<usr/vantrel.pc)"
fi

[[ -z $toolchain ]] || exit 0

echo "-- manual pages"
for section in 3 7; do
    page=$prefix/share/man/man$section/vantrel.$section
    same "warnings of the page in section $section" "" "$(LC_ALL=C.UTF-8 MANROFFSEQ= man --warnings=w -l "$page" 2>&1 >/dev/null)"
done
while read -r function; do
    grep -qF "$function(" "$prefix/share/man/man3/vantrel.3" || fail "no manual for $function"
done <"$root/packaging/abi/libvantrelC.exports"
while read -r constant; do
    grep -qE "\b$constant = " "$prefix"/share/man/man?/vantrel.? || fail "no manual for $constant"
done < <(grep -oE '^    VANTREL_[A-Z0-9_]+ =' "$prefix/include/vantrel.h" | tr -d ' =')

echo "-- a program by the compiler alone"
cc -std=c11 -I"$prefix/include" "$program" -o plain -L"$prefix/lib" -lvantrelC -Wl,-rpath-link,"$prefix/lib"
prints "plain" ./plain
same "what the program needs of it" libvantrelC.so.16 "$(readelf --dynamic --wide plain | grep -oE 'libvantrel[^]]*')"

echo "-- by pkg-config"
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
same "version" 16.0.0 "$(pkg-config --modversion vantrel)"
read -ra flags < <(pkg-config --cflags --libs vantrel)
cc "$program" "${flags[@]}" -o packaged
prints "pkg-config" ./packaged
same "what the program needs of it" libvantrelC.so.16 "$(readelf --dynamic --wide packaged | grep -oE 'libvantrel[^]]*')"
read -ra flags < <(pkg-config --cflags --libs --static vantrel)
cc "$program" "${flags[@]}" -o complete
prints "pkg-config --static" ./complete

echo "-- as C++"
read -ra flags < <(pkg-config --cflags --libs vantrel)
c++ -x c++ "$program" "${flags[@]}" -o plusplus
prints "C++" ./plusplus

echo "-- by find_package"
export CMAKE_PREFIX_PATH=$prefix
cmake -G Ninja -S "$here/consumer" -B consumer -DPROGRAM="$program" -DVERSION=16.0 >/dev/null
cmake --build consumer >/dev/null
prints "find_package" consumer/first_program
prints "find_package, C++" consumer/first_program_cpp
for version in 15 17 16.1; do
    ! cmake -G Ninja -S "$here/consumer" -B "other-$version" -DPROGRAM="$program" -DVERSION=$version >out 2>&1 ||
        fail "version $version was found"
    grep -q "version: 16.0.0" out || fail "version $version: $(<out)"
done
