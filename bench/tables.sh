#!/usr/bin/env bash
# Measures again what docs/performance.md shows: its tables, of the build that the loader picks and of the baseline, and
# its picture.
#
#   tables.sh BUILD [--quick]
#
# BUILD is a folder that was configured with ZVP_BUILD_BENCHMARKS.
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
build=$(readlink -f "$1") quick=${2:-}
bench=$build/bin/zvpcv_bench page=$root/docs/performance.md
pictured='AbsDiff_8u_C1R|AddWeighted_8u32f_C1IR|iIntegral_8u32s_C1R|iRectStdDev_32f|DistanceTransform_.*8u32f_C1R( |, discs)|'
pictured+='4Con_8u_C1IR, uniform|Grad8Con_8u_C1IR, slope|Row.*_8u16s_C1R, 5|Column.*_16s8u_C1R, 5|Intersect_8u_C1R, 63|'
pictured+='ErodeBorder_8u_C1R, [35]|GradientBorder_8u_C1R|Pyr.*_Gauss5x5_8u_C1R|PyrLK_8u|Peaks.*_32f.*few peaks |16s.*some noise'

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
LD_PRELOAD=$build/lib/libzvpcv.so.8 "$bench" --filter=640x480 $quick >"$work/baseline"
"$bench" --markdown="$work/baseline" $quick >"$work/tables"
"$bench" --filter="($pictured).*640x480" $quick --chart="$root/docs/pictures/speed.svg" >/dev/null
{ sed '/^## All rows/q' "$page" && cat "$work/tables"; } >"$work/page"
cp "$work/page" "$page"
