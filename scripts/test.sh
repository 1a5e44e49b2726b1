#!/usr/bin/env bash
# Builds zvpCV on a fresh Debian 12 machine and runs all tests, on 64 bits (every loader variant that this processor
# runs, and the examples) and on 32 bits. The last line counts them.
#
#   test.sh
#
# Installs the Debian packages that are missing (with sudo where you are not root).
set -euo pipefail
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$scripts")
source "$scripts/lib.sh"

install_packages g++ g++-multilib cmake ninja-build pkg-config googletest libpng-dev libjpeg-dev nlohmann-json3-dev \
  libcli11-dev
"$scripts/fetch-photos.sh" "$root/build/photos"

passed=0 failed=0 skipped=0
for preset in release x86-32; do
  say "Building $preset"
  cmake -S "$root" --preset "$preset" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DZVP_BUILD_BENCHMARKS=OFF >/dev/null
  build_folder "$root/build/$preset"

  say "Testing $preset"
  log=$root/build/$preset/test.log
  ctest --test-dir "$root/build/$preset" -j "$(nproc)" --output-on-failure --progress 2>&1 | tee "$log" || true
  # "94% tests passed, 6 tests failed out of 105"; skipped tests count as passed there.
  read -r bad all < <(sed -n 's/.* tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$log")
  if [ "${all:-0}" -eq 0 ]; then
    echo "No test ran" >&2
    exit 1
  fi
  omitted=$(grep -c '(Skipped)$' "$log" || true)
  passed=$((passed + all - bad - omitted)) failed=$((failed + bad)) skipped=$((skipped + omitted))
done

echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]
