#!/usr/bin/env bash
# Builds zvpCV on a fresh Debian 12 machine, finds the faces in a photograph and filters it: a sample, or your own.
# Without one it also tracks points from the left to the right picture of a stereo camera.
#
#   demo.sh [PHOTO.png|PHOTO.jpg]
#
# Installs the Debian packages that are missing (with sudo where you are not root). The build goes to build/demo, the
# sample photographs to build/photos, the results to out.
set -euo pipefail
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$scripts")
source "$scripts/lib.sh"

if [ $# -gt 1 ] || [[ "${1-}" == -* ]]; then
  echo "Usage: demo.sh [PHOTO.png|PHOTO.jpg]" >&2
  exit 2
fi

install_packages g++ cmake ninja-build libpng-dev libjpeg-dev nlohmann-json3-dev libcli11-dev

say "Building into $root/build/demo"
quietly cmake -S "$root" -B "$root/build/demo" -G Ninja -DCMAKE_BUILD_TYPE=Release -DZVP_BUILD_EXAMPLES=ON \
  -DZVP_BUILD_TESTS=OFF -DZVP_BUILD_BENCHMARKS=OFF
quietly cmake --build "$root/build/demo"

if [ $# -eq 1 ]; then
  photo=$1
else
  "$scripts/fetch-photos.sh" "$root/build/photos"
  photo=$root/build/photos/astronaut.png
fi

mkdir -p "$root/out"
name=$(basename "$photo")
result=$root/out/${name%.*}-faces.png
say "Looking for faces in $photo"
"$root/build/demo/bin/detect" "$photo" --output "$result"
say "The picture with the boxes is $result"

sheet=$root/out/${name%.*}-filters.png
say "Filtering $photo"
"$root/build/demo/bin/filter" "$photo" --output "$sheet"
say "The sheet with the filtered pictures is $sheet"

[ $# -eq 0 ] || exit 0
left=$root/build/photos/motorcycle_left.png right=$root/build/photos/motorcycle_right.png
motion=$root/out/motorcycle-motion.png
say "Tracking points from $left to $right"
"$root/build/demo/bin/track" "$left" "$right" --output "$motion"
say "The picture with the arrows is $motion"
