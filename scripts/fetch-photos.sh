#!/usr/bin/env bash
# Puts sample photographs (astronaut.png, camera.png, coins.png, motorcycle_left.png, motorcycle_right.png and others)
# into a folder, once. They come out of Debian's package python3-skimage, which is not installed.
#
#   fetch-photos.sh FOLDER
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

if [ $# -ne 1 ]; then
  echo "Usage: fetch-photos.sh FOLDER" >&2
  exit 2
fi
photos=$1

complete() {
  local name
  for name in astronaut camera coins motorcycle_left motorcycle_right; do
    [ -s "$photos/$name.png" ] || return 1
  done
}

# Into the current folder, which apt's own user need not be allowed to write to.
download() { apt-get download -q -o APT::Sandbox::User=root python3-skimage; }

complete && exit

say "Fetching sample photographs into $photos"
mkdir -p "$photos"
work=$(mktemp -d "$photos/fetch.XXXXXX")
trap 'rm -rf "$work"' EXIT
(
  cd "$work"
  download >/dev/null 2>&1 || { quietly as_root apt-get update -q && quietly download; }
  dpkg-deb -x python3-skimage_*.deb .
)
find "$work" -path '*/skimage/data/*' \( -name '*.png' -o -name '*.jpg' \) -exec mv -t "$photos" {} +
complete || { echo "python3-skimage no longer holds the photographs that were expected" >&2; exit 1; }
