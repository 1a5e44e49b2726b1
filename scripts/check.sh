#!/usr/bin/env bash
# What a change must pass beyond the tests: the formatting, static analysis, Clang without warnings (the benchmarks too)
# and its bits, the address and undefined-behaviour sanitizers, the thread sanitizer, and a short run of the fuzz target.
#
#   check.sh
#
# Installs the Debian packages that are missing (with sudo where you are not root).
set -euo pipefail
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$scripts")
source "$scripts/lib.sh"

install_packages g++ cmake ninja-build pkg-config googletest libbenchmark-dev clang-14 libclang-rt-14-dev \
  clang-format-14 clang-tidy-14

say "Checking the format"
git -C "$root" ls-files -z '*.h' '*.cpp' '*.c' | (cd "$root" && xargs -0 clang-format-14 --dry-run --Werror)

build() {
  say "Building $1"
  cmake -S "$root" --preset "$1" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >/dev/null
  build_folder "$root/build/$1"
}

run_tests() {
  say "Testing $1"
  quietly ctest --test-dir "$root/build/$1" -j "$(nproc)" --output-on-failure
}

for preset in clang asan; do
  build "$preset"
  run_tests "$preset"
done
build tsan
say "Testing threads"
quietly ctest --test-dir "$root/build/tsan" -R Threads --no-tests=error --output-on-failure

build fuzz
# This preset compiles each of these sources once; others compile them for several processors.
say "Analysing the sources"
git -C "$root" ls-files -z 'src/*.cpp' 'zvpcore/*.cpp' 'fuzz/*.cpp' 'tests/calls/*.cpp' |
  (cd "$root" && quietly xargs -0 -n 1 -P "$(nproc)" clang-tidy-14 -p build/fuzz --quiet)

say "Fuzzing for half a minute"
quietly "$root/build/fuzz/bin/zvpcv_fuzz" -max_total_time=30
say "All checks passed"
