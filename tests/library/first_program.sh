#!/usr/bin/env bash
# A program of one file, built in a folder of its own with a C compiler and nothing else, reads a record back;
# the header is clean as C11 and as C++.
# Usage: first_program.sh C_COMPILER CXX_COMPILER INCLUDE_FOLDER LIBRARY_FOLDER
set -euo pipefail
c_compiler=$1 cxx_compiler=$2 include=$3 library=$4
source=$(cd "$(dirname "$0")" && pwd)/first_program.c
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

"$c_compiler" -std=c11 -Wall -Wextra -Wpedantic -Werror -I"$include" "$source" -o program \
    -L"$library" -lvantrelC -Wl,-rpath-link,"$library"
printed=$(LD_LIBRARY_PATH=$library ./program parts.vnt)
if [ "$printed" != "sprocket" ]; then
    echo "the program printed: $printed"
    exit 1
fi
for standard in c++11 c++20; do
    "$cxx_compiler" -std=$standard -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c++ "$include/vantrel.h"
done
