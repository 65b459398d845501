#!/usr/bin/env bash
# with_pkgconfig.sh PREFIX WORK_FOLDER C_COMPILER CXX_COMPILER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$2"
mkdir -p "$2"
pc=$(find "$1" -name qmml.pc)
PKG_CONFIG_PATH=$(dirname "$pc")
export PKG_CONFIG_PATH
libdir=$(pkg-config --variable=libdir qmml)
read -ra compile <<<"$(pkg-config --cflags qmml)"
read -ra link <<<"$(pkg-config --libs qmml)"
read -ra link_static <<<"$(pkg-config --static --libs-only-l qmml | sed "s,-lqmml,$libdir/libqmml.a,")"

"$3" -std=c11 "${compile[@]}" "$here/c/main.c" "${link[@]}" -lm -o "$2/consumer_c"
"$4" -std=c++17 "${compile[@]}" "$here/cxx/main.cpp" "${link[@]}" -o "$2/consumer_cxx"
"$3" -std=c11 "${compile[@]}" "$here/c/main.c" "${link_static[@]}" -o "$2/consumer_static"
LD_LIBRARY_PATH=$libdir "$2/consumer_c"
LD_LIBRARY_PATH=$libdir "$2/consumer_cxx"
"$2/consumer_static"
