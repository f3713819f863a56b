#!/usr/bin/env bash
# velmoric-convert as a program: a folder of mixed files converted with two
# workers and with one (-j 1 or -j1) gives the same outputs; bad files are reported with
# their reason and the run exits 1.
set -u
convert="$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/in"
head -c 32128 /dev/urandom > "$work/in/one.neo"
head -c 32034 /dev/urandom > "$work/in/two.pi1"
head -c 999 /dev/urandom > "$work/in/three.PI1"
head -c 50 /dev/urandom > "$work/in/skip.txt"
head -c 32128 /dev/urandom > "$work/odd.Neo"

"$convert" -q -j 2 -o "$work/a" "$work/in" "$work/odd.Neo" "$work/missing.pi1" 2> "$work/err2"
status=$?
[ "$status" = 1 ] || { echo "expected exit 1, got $status"; exit 1; }
grep -qx "$work/odd.Neo: no decoder for the extension 'Neo'" "$work/err2" || { cat "$work/err2"; exit 1; }
grep -qx "$work/missing.pi1: cannot read: No such file or directory" "$work/err2" || { cat "$work/err2"; exit 1; }
# One worker, with the count apart or attached.
for jobs in "-j 1" "-j1"; do
  rm -rf "$work/b"
  # shellcheck disable=SC2086
  "$convert" -q $jobs -o "$work/b" "$work/in" "$work/odd.Neo" "$work/missing.pi1" 2> "$work/err1"
  cmp "$work/err1" "$work/err2" || { echo "$jobs: other errors"; exit 1; }
  diff -r "$work/a" "$work/b" || { echo "$jobs: other outputs"; exit 1; }
done
[ "$(ls "$work/a" | wc -l)" = 3 ] || { ls "$work/a"; exit 1; }
"$convert" 2>/dev/null; [ $? = 2 ] || { echo "usage should exit 2"; exit 1; }
echo "1 passed, 0 failed"
