#!/bin/sh
# Installs into a scratch prefix, then builds and runs a C and a C++ program against it: through the CMake package and
# through pkg-config, when that is there.
# usage: install_test.sh BUILD_DIR THIS_DIR CC CXX [FLAGS...]
set -eu
build=$1 here=$2 cc=$3 cxx=$4
shift 4
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT

cmake --install "$build" --prefix "$prefix/usr" > "$prefix/log"
libdir=$(dirname "$(find "$prefix/usr" -name libzvpcv.so -not -path '*hwcaps*')")

cmake -S "$here" -B "$prefix/cmake" -DCMAKE_PREFIX_PATH="$prefix/usr" -DCMAKE_C_COMPILER="$cc" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_C_FLAGS="$*" -DCMAKE_CXX_FLAGS="$*" >> "$prefix/log"
cmake --build "$prefix/cmake" >> "$prefix/log"
"$prefix/cmake/use_c" && "$prefix/cmake/use_cxx"

if command -v pkg-config > /dev/null; then
  flags=$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs zvpcv)
  # The flags are words.
  # shellcheck disable=SC2086
  "$cc" -std=c99 -pedantic -Wall -Werror "$@" "$here/use.c" $flags -o "$prefix/use_c"
  # shellcheck disable=SC2086
  "$cxx" -std=c++17 -pedantic -Wall -Werror "$@" "$here/use.cpp" $flags -o "$prefix/use_cxx"
  LD_LIBRARY_PATH=$libdir "$prefix/use_c" && LD_LIBRARY_PATH=$libdir "$prefix/use_cxx"
fi
