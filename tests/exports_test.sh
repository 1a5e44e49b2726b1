#!/bin/sh
# The exported names are those of the sorted list, of the headers, and no others, and each is written out once in src/;
# the library needs the core library's four functions and the C library only. Intrinsics and processor macros are in src/simd only.
# usage: exports_test.sh SOURCE_DIR LIBRARY_DIR
set -eu
export LC_ALL=C
source_dir=$1 library_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "exports: $1"; exit 1; }

sort -c "$source_dir/tests/exports.txt" || fail "tests/exports.txt is not sorted"
grep -ohE '\bzvp(i|cv)[A-Z][A-Za-z0-9_]*\(' "$source_dir"/include/zvpcv/*.h | tr -d '(' | sort -u > "$work/headers"
diff "$source_dir/tests/exports.txt" "$work/headers" || fail "the list (<) and the headers (>) differ"
grep -rohE '\bzvp(i|cv)[A-Z][A-Za-z0-9_]*' "$source_dir/src" | sort > "$work/bound"
diff "$source_dir/tests/exports.txt" "$work/bound" || fail "each name (<) must stand once in src/ (>), where it is bound"
! grep -rnE '_mm|__AVX' "$source_dir"/include "$source_dir"/zvpcore "$source_dir"/src --exclude-dir=simd ||
  fail "intrinsics outside src/simd"

for library in $(find "$library_dir" -name 'libzvpcv.so' | sort); do
  nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort > "$work/symbols"
  diff "$source_dir/tests/exports.txt" "$work/symbols" || fail "the list (<) and $library (>) differ"
  nm -D --undefined-only "$library" | awk '$1 == "U" { sub(/@.*/, "", $2); print $2 }' | grep '^zvp' > "$work/imports"
  printf '%s\n' zvpFree zvpGetEnabledCpuFeatures zvpGetMaxCacheSizeB zvpMalloc | diff - "$work/imports" ||
    fail "$library imports other functions of the core library"
  if ! nm -D "$library" | grep -qE '__(asan|tsan|ubsan)_'; then
    needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\].*/\1/p' | grep -vE '^lib(zvpcore|c|m)\.so\.[0-9]+$' || true)
    [ -z "$needed" ] || fail "$library needs $needed"
  fi
done
echo "exports: $(wc -l < "$source_dir/tests/exports.txt") names"
