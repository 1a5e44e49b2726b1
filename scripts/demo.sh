#!/usr/bin/env bash
# Builds zvpCV on a fresh Debian 12 machine and runs the examples on photographs: finds the faces, filters, tracks points
# between two pictures, counts coins, cleans a disparity map. All results stand on one page, out/index.html.
#
#   demo.sh                        sample photographs
#   demo.sh PHOTO.png|PHOTO.jpg    your own: what one photograph is enough for
#
# Installs the Debian packages that are missing (with sudo where you are not root).
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
build_folder "$root/build/demo"

photos=$root/build/photos
photo=${1-$photos/astronaut.png}
[ $# -eq 1 ] || "$scripts/fetch-photos.sh" "$photos"
[ -r "$photo" ] || { echo "demo.sh: cannot read $photo" >&2; exit 1; }

out=$root/out
page=$out/index.html
mkdir -p "$out"
printed=$(mktemp)
trap 'rm -f "$printed"' EXIT

escaped() { sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g'; }

# Runs an example and puts the picture that it writes on the page, with its caption, its time and what it printed.
show() { # PICTURE CAPTION PROGRAM ARGUMENT...
  local picture=$1 caption=$2 program=$3 start milliseconds
  shift 3
  say "$caption"
  start=$(date +%s%N)
  "$root/build/demo/bin/$program" "$@" --output "$out/$picture" | tee "$printed"
  milliseconds=$((($(date +%s%N) - start) / 1000000))
  {
    echo "<figure><img src=\"$(escaped <<<"$picture")\" alt=\"\"><figcaption>"
    echo "<p>$(escaped <<<"$caption") <small>$program, $milliseconds ms with reading and writing</small></p>"
    echo "<pre>$(escaped <"$printed")</pre></figcaption></figure>"
  } >>"$page"
}

cat >"$page" <<'HTML'
<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<title>zvpCV: the examples</title>
<style>
  body { font: 16px/1.4 sans-serif; max-width: 70rem; margin: 2rem auto; padding: 0 1rem }
  figure { margin: 0 0 3rem } img { max-width: 100% } small { color: #666 } pre { max-height: 14rem; overflow: auto }
</style>
<h1>zvpCV: the examples</h1>
HTML

name=$(basename "$photo")
name=${name%.*}
show "$name-faces.png" "Faces in $name" detect "$photo"
show "$name-filters.png" "$name filtered: a Gaussian blur made band by band, and composite morphology" filter "$photo"
if [ $# -eq 0 ]; then
  show motorcycle-motion.png "Points tracked from the left to the right picture of a stereo pair" \
    track "$photos/motorcycle_left.png" "$photos/motorcycle_right.png"
  show coins-counted.png "Coins, each filled with a colour of its own" segment "$photos/coins.png"
  show motorcycle-disparities.png "Disparities of the stereo pair by matching blocks, and without their speckles" \
    segment "$photos/motorcycle_left.png" --right "$photos/motorcycle_right.png"
fi
say "All pictures are on one page: $page"
