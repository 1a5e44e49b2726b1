#!/usr/bin/env bash
# Tests the program filter.
#
#   filter_test.sh FILTER basics          small pictures; bad input: one line on stderr, a failing exit code, no picture
#   filter_test.sh FILTER photos FOLDER   the sheet of a photograph; exit code 77 (skipped) where it is missing
set -u
filter=$(realpath "$1")
folder=$(realpath -m "${3-.}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit
passed=0
failed=0

count() { # RESULT NAME: counts a check by the result it came to
  if [ "$1" -eq 0 ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $2"
  fi
}

finish() {
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
  exit
}

png_size() { # FILE: prints width and height
  od -An -j16 -N8 --endian=big -t u4 "$1" | awk '{ print $1, $2 }'
}

makes_sheet() { # PICTURE WIDTH HEIGHT: the sheet of four columns and two rows, with gaps of 8 pixels
  local status=0
  rm -f filtered.png
  "$filter" "$1" >stdout 2>stderr || status=$?
  [ "$status" -eq 0 ] && [ ! -s stderr ] && [ "$(wc -l <stdout)" -eq 7 ] && grep -q '^row 2, column 3: gradient$' stdout &&
    [ "$(png_size filtered.png)" = "$(($2 * 4 + 24)) $(($3 * 2 + 8))" ]
  count $? "the sheet of $1: exit code $status, stderr: $(cat stderr)"
}

refuses() { # NAME WORD ARGUMENT...: filter must fail with one line on stderr that has the word in it
  local name=$1 word=$2 status=0
  shift 2
  rm -f filtered.png
  "$filter" "$@" >stdout 2>stderr || status=$?
  [ "$status" -ne 0 ] && [ "$status" -lt 128 ] && [ "$(wc -l <stderr)" -eq 1 ] && [ ! -s stdout ] &&
    grep -qF -- "$word" stderr && [ ! -e filtered.png ]
  count $? "$name: exit code $status, stderr: $(cat stderr)"
}

make_pictures() {
  base64 -di >ramp.png <<<'
    iVBORw0KGgoAAAANSUhEUgAAABgAAAAYCAAAAADFHGIkAAAAKUlEQVR42mNg4BKR0zCycQuISsmraOqZtmDVln0nLt15xjAqMSpBvgQAFr0C0F1wDx0A
    AAAASUVORK5CYII='
  base64 -di >19x19.png <<<'
    iVBORw0KGgoAAAANSUhEUgAAABMAAAATCAAAAABXO2kQAAAADUlEQVR42mNgGAUDBQABfAABoNdrMwAAAABJRU5ErkJggg=='
}

test_bad_input() {
  refuses "missing picture" "No such file" none.png
  refuses "a folder" "Is a directory" .
  : >empty
  refuses "empty picture" "neither a PNG nor a JPEG" empty
  head -c 60 ramp.png >cut
  refuses "picture cut short" malformed cut
  refuses "output into no folder" "No such file" ramp.png --output none/out.png
  refuses "output onto a full disk" "No space left" ramp.png --output /dev/full
  refuses "no picture named" image
  refuses "unknown option" --bogus ramp.png --bogus
}

test_photo() { # FOLDER
  makes_sheet "$1/astronaut.png" 512 512
  "$filter" "$1/astronaut.png" -o again.png >/dev/null
  cmp -s filtered.png again.png
  count $? "the same sheet again under another name"
  makes_sheet again.png 2072 1032
}

case ${2-} in
  basics)
    make_pictures
    makes_sheet ramp.png 24 24
    makes_sheet 19x19.png 19 19
    test_bad_input
    finish
    ;;
  photos)
    if [ ! -e "$folder/astronaut.png" ]; then
      echo "No photographs in $folder"
      exit 77
    fi
    test_photo "$folder"
    finish
    ;;
  *)
    echo "Usage: filter_test.sh FILTER basics|photos [FOLDER]" >&2
    exit 2
    ;;
esac
