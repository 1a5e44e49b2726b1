#!/usr/bin/env bash
# Tests the program filter: small pictures and bad input; the sheet of a photograph.
source "$(dirname "$0")/../common/program_test.sh"
output=filtered.png

makes_sheet() { # PICTURE WIDTH HEIGHT: the sheet of four columns and two rows, with gaps of 8 pixels
  local status=0
  rm -f "$output"
  "$program" "$1" >stdout 2>stderr || status=$?
  [ "$status" -eq 0 ] && [ ! -s stderr ] && [ "$(wc -l <stdout)" -eq 7 ] && grep -q '^row 2, column 3: gradient$' stdout &&
    [ "$(png_size "$output")" = "$(($2 * 4 + 24)) $(($3 * 2 + 8))" ]
  count $? "the sheet of $1: exit code $status, stderr: $(cat stderr)"
}

test_basics() {
  makes_sheet ramp.png 24 24
  makes_sheet 19x19.png 19 19
  refuses_bad_files
}

test_photos() { # FOLDER
  makes_sheet "$1/astronaut.png" 512 512
  "$program" "$1/astronaut.png" -o again.png >/dev/null
  cmp -s "$output" again.png
  count $? "the same sheet again under another name"
  makes_sheet again.png 2072 1032
}

run_tests
