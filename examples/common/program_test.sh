# Shell functions that the tests of the example programs share; source this file with the test's own arguments:
#
#   PROGRAM basics          what needs no photographs
#   PROGRAM photos FOLDER   photographs; exit code 77 (skipped) where they are missing
#
# The test sets `output`, the picture that its program writes, and calls run_tests.
set -u
program=$(realpath "$1")
group=${2-}
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

refuses() { # NAME WORD ARGUMENT...: the program must fail with one line on stderr that has the word in it
  local name=$1 word=$2 status=0
  shift 2
  rm -f "$output"
  "$program" "$@" >stdout 2>stderr || status=$?
  [ "$status" -ne 0 ] && [ "$status" -lt 128 ] && [ "$(wc -l <stderr)" -eq 1 ] && [ ! -s stdout ] &&
    grep -qF -- "$word" stderr && [ ! -e "$output" ]
  count $? "$name: exit code $status, stderr: $(cat stderr)"
}

refuses_bad_files() { # ARGUMENT...: what the program needs beside its first picture, and a good one (ramp.png)
  refuses "missing picture" "No such file" none.png "$@"
  refuses "a folder" "Is a directory" . "$@"
  : >empty
  refuses "empty picture" "neither a PNG nor a JPEG" empty "$@"
  head -c 60 ramp.png >cut
  refuses "picture cut short" malformed cut "$@"
  refuses "output into no folder" "No such file" ramp.png "$@" --output none/out.png
  refuses "output onto a full disk" "No space left" ramp.png "$@" --output /dev/full
  refuses "no picture named" required
  refuses "unknown option" --bogus ramp.png "$@" --bogus
}

png_size() { # FILE: prints width and height
  od -An -j16 -N8 --endian=big -t u4 "$1" | awk '{ print $1, $2 }'
}

# ramp.png has 24 x 24 pixels, 19x19.png as many as its name says.
make_pictures() {
  base64 -di >ramp.png <<<'
    iVBORw0KGgoAAAANSUhEUgAAABgAAAAYCAAAAADFHGIkAAAAKUlEQVR42mNg4BKR0zCycQuISsmraOqZtmDVln0nLt15xjAqMSpBvgQAFr0C0F1wDx0A
    AAAASUVORK5CYII='
  base64 -di >19x19.png <<<'
    iVBORw0KGgoAAAANSUhEUgAAABMAAAATCAAAAABXO2kQAAAADUlEQVR42mNgGAUDBQABfAABoNdrMwAAAABJRU5ErkJggg=='
}

run_tests() { # Calls test_basics, or test_photos with the folder.
  case $group in
    basics)
      make_pictures
      test_basics
      ;;
    photos)
      if [ ! -e "$folder/astronaut.png" ]; then
        echo "No photographs in $folder"
        exit 77
      fi
      test_photos "$folder"
      ;;
    *)
      echo "Usage: $0 PROGRAM basics|photos [FOLDER]" >&2
      exit 2
      ;;
  esac
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
