#!/usr/bin/env bash
# Tests the program track: small pictures and bad input; a photograph with itself, and a stereo pair.
source "$(dirname "$0")/../common/program_test.sh"
output=motion.png

tracks() { # PICTURE PICTURE LEAST_KEPT LEAST_PERCENT: the points kept, and how many of those found they are
  local status=0
  rm -f "$output"
  "$program" "$1" "$2" >stdout 2>stderr || status=$?
  [ "$status" -eq 0 ] && [ ! -s stderr ] && [ "$(wc -l <stdout)" -eq 3 ] &&
    [ "$(png_size "$output")" = "$(png_size "$1")" ] &&
    awk -v kept="$3" -v percent="$4" '/^points/ { if ($6 < kept) exit 1 } / %$/ { if ($(NF - 1) < percent) exit 1 }' stdout
  count $? "$1 to $2: exit code $status, stdout: $(cat stdout), stderr: $(cat stderr)"
}

test_basics() {
  tracks ramp.png ramp.png 0 0
  tracks 19x19.png 19x19.png 0 0
  refuses "pictures of two sizes" size ramp.png 19x19.png
  refuses "no points" --points ramp.png ramp.png --points 0
  refuses_bad_files ramp.png
}

test_photos() { # FOLDER
  tracks "$1/astronaut.png" "$1/astronaut.png" 700 99
  grep -q '^median motion: 0.00, 0.00$' stdout
  count $? "a photograph has not moved: $(cat stdout)"
  tracks "$1/motorcycle_left.png" "$1/motorcycle_right.png" 400 60
  awk '/^median/ { exit !($3 + 0 < -15 && $3 + 0 > -60 && $4 > -1 && $4 < 1) }' stdout
  count $? "the right camera sees everything further left: $(cat stdout)"
}

run_tests
