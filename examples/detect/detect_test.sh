#!/usr/bin/env bash
# Tests the program detect: bad input and grouping; what is found in photographs.
source "$(dirname "$0")/../common/program_test.sh"
output=detected.png

# --- Bad input -------------------------------------------------------------------------------------------------------

refuses_cascade() { # NAME WORD JSON
  printf '%s' "$3" >cascade.json
  refuses "$1" "$2" ramp.png --cascade cascade.json
}

# A cascade of one stump, as text; each argument replaces one part of it.
cascade() { # RECTANGLES WINDOW THRESHOLD
  local rects=${1:-[[0,0,20,20,-1],[0,0,10,20,2]]} window=${2:-[20,20]} threshold=${3:-0.5}
  printf '{"window":%s,"norm_rect":[1,1,18,18],"stages":[{"threshold":1,"stumps":[%s]}]}' "$window" \
    "{\"rects\":$rects,\"threshold\":$threshold,\"left\":0,\"right\":2}"
}

make_jpeg() {
  base64 -di >pattern.jpg <<<'
    /9j/4AAQSkZJRgABAQAAAQABAAD/2wBDACgcHiMeGSgjISMtKygwPGRBPDc3PHtYXUlkkYCZlo+AjIqgtObDoKrarYqMyP/L2u71////m8H////6
    /+b9//j/wAALCAAYABgBAREA/8QAFgABAQEAAAAAAAAAAAAAAAAABQQC/8QAJhAAAQMDAwIHAAAAAAAAAAAAAQACEQMSIQQxQQWBExQkUVJhcf/a
    AAgBAQAAPwA2lh0feEhQyY5jZX0ckxkDlCeGZD5EMyfxV6J4q13WzNvPZIMHlwQ/N+0Ip4tY4fILfSB6pzPZhz3CS1ButO0Zhf/Z'
}

test_pictures() {
  local file size cut
  for file in ramp.png pattern.jpg; do
    "$program" "$file" >/dev/null
    count $? "$file is read whole"
    size=$(stat -c %s "$file")
    for cut in 9 $((size / 2)) $((size - 20)) $((size - 1)); do
      head -c "$cut" "$file" >cut
      refuses "$file cut to $cut bytes" malformed cut
    done
  done
  echo 'P5 24 24 255' >ramp.pgm
  refuses "other format" "neither a PNG nor a JPEG" ramp.pgm
  refuses "picture smaller than the window" "no position fits" 19x19.png
}

test_cascades() {
  cascade >cascade.json
  "$program" ramp.png --cascade cascade.json >/dev/null
  count $? "the cascade that is broken below is whole itself"
  refuses "missing cascade" "No such file" ramp.png --cascade none.json
  refuses_cascade "empty file" "malformed JSON" ''
  refuses_cascade "JSON cut short" "malformed JSON" '{"window": [20,'
  refuses_cascade "no object" "expected an object" '[]'
  refuses_cascade "no members" 'missing "window"' '{}'
  refuses_cascade "no stage" '"stages"' '{"window":[20,20],"norm_rect":[1,1,18,18],"stages":[]}'
  refuses_cascade "no stump" '"stumps"' \
    '{"window":[20,20],"norm_rect":[1,1,18,18],"stages":[{"threshold":1,"stumps":[]}]}'
  refuses_cascade "missing threshold" 'missing "threshold"' \
    "$(cascade | sed 's/"threshold":0.5,//')"
  refuses_cascade "no rectangle" '"rects"' "$(cascade '[]')"
  refuses_cascade "rectangle beyond the right edge" "stage 0: stump 0" "$(cascade '[[11,0,10,20,1]]')"
  refuses_cascade "rectangle beyond the lower edge" "stage 0: stump 0" "$(cascade '[[0,1,20,20,1]]')"
  refuses_cascade "rectangle left of the window" "out of range" "$(cascade '[[-1,0,5,5,1]]')"
  refuses_cascade "rectangle of no width" "out of range" "$(cascade '[[0,0,0,5,1]]')"
  refuses_cascade "rectangle beyond 64 bits" "out of range" "$(cascade '[[0,0,18446744073709551615,5,1]]')"
  refuses_cascade "rectangle without weight" "5 numbers" "$(cascade '[[0,0,5,5]]')"
  refuses_cascade "text for a position" "expected an integer" "$(cascade '[["0",0,5,5,1]]')"
  refuses_cascade "text for a threshold" "expected a number" "$(cascade '' '' '"1"')"
  refuses_cascade "threshold beyond single precision" "out of range" "$(cascade '' '' 1e39)"
  refuses_cascade "window that is not square" "not square" "$(cascade '' '[20,21]')"
  refuses_cascade "window too large" '"window"' "$(cascade '' '[1000,1000]')"
}

test_options() {
  refuses "scale step 1" --scale-step ramp.png --scale-step 1
  refuses "scale step beyond 10" --scale-step ramp.png --scale-step 10.5
  refuses "scale step nan" --scale-step ramp.png --scale-step nan
  refuses "no neighbours" --min-neighbours ramp.png --min-neighbours 0
}

# --- Grouping --------------------------------------------------------------------------------------------------------

# All 5 x 5 windows of the picture pass, and the single one at the next scale, whose side is 24.
test_grouping() {
  cascade '' '' 0 | sed 's/"left":0/"left":2/' >cascade.json
  "$program" ramp.png --cascade cascade.json --min-neighbours 26 >stdout
  grep -q '^2 2 20 26$' stdout && grep -q '^boxes: 1 .* raw hits: 26 in 26 windows at 2 scales' stdout
  count $? "one box, the mean of 26 windows: $(cat stdout)"
  "$program" ramp.png --cascade cascade.json --min-neighbours 27 >stdout
  grep -q '^boxes: 0 ' stdout
  count $? "27 neighbours are more than there are: $(cat stdout)"
}

# --- Photographs -----------------------------------------------------------------------------------------------------

# Of the lines "x y side hits" on stdin: the best box must overlap the given square by half (intersection over union),
# and no other may have as many hits.
best_is_face() { # X Y SIDE
  awk -v fx="$1" -v fy="$2" -v fs="$3" '
    function min(a, b) { return a < b ? a : b }
    function max(a, b) { return a > b ? a : b }
    /^[0-9]+ [0-9]+ [0-9]+ [0-9]+$/ {
      if ($4 == best) ties++
      if ($4 > best) { best = $4; ties = 0; x = $1; y = $2; s = $3 }
    }
    END {
      w = min(x + s, fx + fs) - max(x, fx)
      h = min(y + s, fy + fs) - max(y, fy)
      common = w > 0 && h > 0 ? w * h : 0
      exit !(best > 0 && ties == 0 && common / (s * s + fs * fs - common) >= 0.5)
    }'
}

test_face() {
  "$program" "$1/astronaut.png" >stdout
  count $? "astronaut.png is scanned"
  grep -q ' in 755519 windows at 19 scales' stdout
  count $? "every position is judged once: the sum of (side - 19)^2 over the layers of 512, 427, 356, ... 21 pixels"
  best_is_face 176 66 96 <stdout
  count $? "the face in astronaut.png: $(cat stdout)"
  "$program" detected.png --output again.png >/dev/null
  count $? "the picture written can be read again"
  ! cmp -s detected.png again.png
  count $? "boxes are drawn into the picture"
}

test_nothing() { # PHOTOGRAPH
  "$program" "$1" >stdout
  [ $? -eq 0 ] && grep -q '^boxes: 0 ' stdout
  count $? "nothing is found in $1: $(cat stdout)"
}

test_basics() {
  make_jpeg
  refuses_bad_files
  test_pictures
  test_cascades
  test_grouping
  test_options
}

test_photos() { # FOLDER
  test_face "$1"
  test_nothing "$1/camera.png"
  test_nothing "$1/coins.png"
}

run_tests
