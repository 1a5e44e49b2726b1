#!/usr/bin/env bash
# Tests the program segment: small pictures and bad input; the coins in a photograph, and a stereo pair.
source "$(dirname "$0")/../common/program_test.sh"
output=segmented.png

segments() { # LINES WIDTH HEIGHT PICTURE [OPTION...]: succeeds with so many lines and a picture of that size
  local lines=$1 size="$2 $3" status=0
  shift 3
  rm -f "$output"
  "$program" "$@" >stdout 2>stderr || status=$?
  [ "$status" -eq 0 ] && [ ! -s stderr ] && [ "$(wc -l <stdout)" -eq "$lines" ] && [ "$(png_size "$output")" = "$size" ]
  count $? "$*: exit code $status, stdout: $(cat stdout), stderr: $(cat stderr)"
}

test_basics() {
  segments 2 24 24 ramp.png
  segments 2 19 19 19x19.png
  grep -q '^coins: 0$' stdout
  count $? "no coins in a picture of one colour: $(cat stdout)"
  segments 3 56 24 ramp.png --right ramp.png
  refuses_bad_files
  refuses_bad_files --right ramp.png
  refuses "missing right picture" "No such file" ramp.png --right none.png
  refuses "pictures of two sizes" size ramp.png --right 19x19.png
}

test_coins() { # FOLDER
  segments 26 384 303 "$1/coins.png"
  grep -q '^coins: 24$' stdout
  count $? "coins.png shows 24 coins: $(cat stdout)"
  awk '/^ / { if ($2 < 700 || $2 > 3600 || $2 > $5 * $6 || $2 < 0.6 * $5 * $6) exit 1 }' stdout
  count $? "each fills its box as a disc does: $(cat stdout)"
}

test_stereo() { # FOLDER
  segments 3 1490 500 "$1/motorcycle_left.png" --right "$1/motorcycle_right.png"
  awk '/^matched/ { m = $2 } /^speckles/ { s = $2 } /^kept/ { k = $2 }
       END { exit !(m == s + k && m > 340000 && s > m / 20 && s < m / 3) }' stdout
  count $? "some of the map is speckles: $(cat stdout)"
}

test_photos() { # FOLDER
  test_coins "$1"
  test_stereo "$1"
}

run_tests
