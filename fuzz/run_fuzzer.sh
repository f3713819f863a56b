#!/usr/bin/env bash
# Runs one libFuzzer target for a while from the seeds and the kept crashers.
# A crash, a sanitizer report, a leak or an input slower than a second fails.
# Whatever it finds is left under the artifact prefix to be kept in
# tests/crashers/.
set -u
target=$1 work=$2 seeds=$3 crashers=$4 prefix=$5 seconds=$6
mkdir -p "$work" "$(dirname "$prefix")" "$crashers"
exec "$target" -max_total_time="$seconds" -timeout=1 -rss_limit_mb=2048 -print_final_stats=1 \
     -artifact_prefix="$prefix" "$work" "$seeds" "$crashers"
