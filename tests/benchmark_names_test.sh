#!/bin/sh
# The benchmark has a row for every export that works on images, and for none that is not exported. Queries, and what
# makes, changes or releases objects, need no row.
# usage: benchmark_names_test.sh BENCHMARK EXPORTS
set -eu
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$1" --list | sort -u > "$work/rows"
unknown=$(comm -23 "$work/rows" "$2")
missing=$(grep -vE 'Get(Size|Buf|LibVersion|Haar|Pyramid|Distance)|Init|Free|TiltHaar' "$2" | comm -13 "$work/rows" -)
[ -z "$unknown" ] || { echo "rows of functions that are not exported:" $unknown; exit 1; }
[ -z "$missing" ] || { echo "functions without a row:" $missing; exit 1; }
echo "benchmark: $(wc -l < "$work/rows") functions"
