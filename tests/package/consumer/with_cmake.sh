#!/usr/bin/env bash
# with_cmake.sh PREFIX WORK_FOLDER C_COMPILER CXX_COMPILER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$2"
for language in c cxx; do
    compiler=(-DCMAKE_C_COMPILER="$3")
    [[ $language == c ]] || compiler=(-DCMAKE_CXX_COMPILER="$4")
    cmake -G Ninja -S "$here/$language" -B "$2/$language" -DCMAKE_PREFIX_PATH="$1" "${compiler[@]}" >/dev/null
    cmake --build "$2/$language" >/dev/null
    grep -q "^qmml_DIR:PATH=$1/" "$2/$language/CMakeCache.txt" # not another one that the machine may have
    "$2/$language/consumer"
done
"$2/cxx/consumer_static"
