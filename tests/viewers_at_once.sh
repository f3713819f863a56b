#!/usr/bin/env bash
# Two viewers opening different pictures at the same moment each show their
# own picture, trial after trial, and leave no private folder behind.
# Usage: viewers_at_once.sh VELMORIC VELMORIC_CONVERT [TRIALS]
set -u
viewer=$1 convert=$2 trials=${3:-50}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/runtime" "$work/data/mime" "$work/config/velmoric"
# Each start a copy of its own: with a session bus the second would hand its
# file to the first.
printf '[options]\nsingle=1\n' > "$work/config/velmoric/velmoric.conf"
chmod 700 "$work/runtime"
# A desktop that knows the picture types already, so no first-run question.
echo '50:image/x-test:*.spu' > "$work/data/mime/globs2"
head -c 32034 /dev/urandom > "$work/one.pi1"
head -c 32128 /dev/urandom > "$work/two.neo"
"$convert" -q -o "$work/expected" "$work/one.pi1" "$work/two.neo" || exit 1
want_one=$(sha256sum < "$work/expected/one.pi1.bmp" | cut -d' ' -f1)
want_two=$(sha256sum < "$work/expected/two.neo.bmp" | cut -d' ' -f1)

run() {
  XDG_RUNTIME_DIR=$work/runtime XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=offscreen \
    VELMORIC_REPORT=1 VELMORIC_EXIT_WHEN_SHOWN=1 timeout 20 "$viewer" "$1" 2>/dev/null | sed -n 's/^Picture: //p'
}

failed=0
for trial in $(seq "$trials"); do
  run "$work/one.pi1" > "$work/a" & run "$work/two.neo" > "$work/b" & wait
  if [ "$(cat "$work/a")" != "$want_one" ] || [ "$(cat "$work/b")" != "$want_two" ]; then
    echo "trial $trial: a viewer showed another picture or none"; failed=$((failed + 1))
  fi
done
left=$(ls -A "$work/runtime")
[ -z "$left" ] || { echo "left behind in the runtime folder: $left"; failed=$((failed + 1)); }
echo "$((trials - failed)) passed, $failed failed"
[ "$failed" = 0 ]
