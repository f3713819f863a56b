#!/usr/bin/env bash
# The viewer under a real X server with a window manager (openbox), as a
# user has it: maximise and restore give back the earlier size in free mode;
# at device pixel ratios 1.5 and 2 native mode shows every picture pixel as
# the same whole number of device pixels; Label1 shows a name in full
# Unicode capitals.
# Maximising and restoring go through wmctrl, as a pager asks for them.
# Usage: window_manager.sh VELMORIC VELMORIC_CONVERT VELMORIC_MAKE_SAMPLE VELMORIC_PIXEL_CHECK
set -u
viewer=$1 convert=$2 make_sample=$3 pixel_check=$4
for t in xvfb-run openbox wmctrl xwininfo; do command -v $t >/dev/null || { echo "$t is not installed"; exit 77; }; done
if [ -z "${VELMORIC_UNDER_XVFB:-}" ]; then
  VELMORIC_UNDER_XVFB=1 exec xvfb-run -a -s "-screen 0 1280x1024x24" "$0" "$@"
fi

work=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null; wait 2>/dev/null; rm -rf "$work"' EXIT
mkdir -p "$work/runtime" "$work/data/mime" "$work/free/velmoric" "$work/native/velmoric" "$work/ref"
chmod 700 "$work/runtime"
echo '50:image/x-test:*.spu' > "$work/data/mime/globs2"
printf '[options]\nsize=0\nsingle=1\n' > "$work/free/velmoric/velmoric.conf"
printf '[options]\nsize=1\nsingle=1\n' > "$work/native/velmoric/velmoric.conf"
export XDG_RUNTIME_DIR=$work/runtime XDG_DATA_HOME=$work/data QT_QPA_PLATFORM=xcb
failed=0
fail() { echo "FAIL: $*"; failed=$((failed + 1)); }

XDG_CONFIG_HOME=$work/ob openbox >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 50); do wmctrl -m >/dev/null 2>&1 && break; sleep 0.1; done
wmctrl -m >/dev/null 2>&1 || { echo "openbox did not start"; exit 1; }

"$make_sample" "$work/sample.pi1"
head -c 60000 /dev/urandom > "$work/tall.mac"
head -c 32128 /dev/urandom > "$work/café.neo"

size() { xwininfo -id "$1" | awk '/Width:/ { w = $2 } /Height:/ { h = $2 } END { print w "x" h }'; }
window() {
  for _ in $(seq 50); do
    xwininfo -name "Velmoric Picture Viewer." 2>/dev/null | awk '/Window id:/ { print $4 }' | grep . && return 0
    sleep 0.1
  done
  return 1
}
# Waits until the window has SIZE, or has left SIZE when it begins with "!".
wait_size() {
  local id=$1 want=$2 now
  for _ in $(seq 40); do
    now=$(size "$id")
    if [ "${want:0:1}" = "!" ]; then [ "$now" != "${want:1}" ] && break; else [ "$now" = "$want" ] && break; fi
    sleep 0.1
  done
  sleep 0.4  # and it stays so
  size "$id"
}

# ---- free mode: maximise, then restore -------------------------------------------
for picture in "$work/sample.pi1" "$work/tall.mac"; do
  XDG_CONFIG_HOME=$work/free VELMORIC_REPORT=1 "$viewer" "$picture" > "$work/report" 2>/dev/null &
  pids+=($!); app=$!
  id=$(window) || { fail "no window for $picture"; continue; }
  for _ in $(seq 50); do grep -q '^Picture:' "$work/report" && break; sleep 0.1; done
  before=$(size "$id")
  wmctrl -i -r "$id" -b add,maximized_vert,maximized_horz
  maximised=$(wait_size "$id" "!$before")
  wmctrl -i -r "$id" -b remove,maximized_vert,maximized_horz
  after=$(wait_size "$id" "$before")
  echo "$(basename "$picture"): $before, maximised $maximised, restored $after"
  [ "$maximised" != "$before" ] || fail "$(basename "$picture"): the window manager did not maximise the window"
  [ "$after" = "$before" ] || fail "$(basename "$picture"): restored to $after, not to the earlier $before"
  kill "$app"; wait "$app" 2>/dev/null
done

# ---- native mode at fractional and whole device pixel ratios ------------------------
"$convert" -q -f png -o "$work/ref" "$work/sample.pi1"
for factor in 1.5 2; do
  scale=${factor%.*}
  out=$(XDG_CONFIG_HOME=$work/native QT_SCALE_FACTOR=$factor VELMORIC_REPORT=1 VELMORIC_SCREENSHOT="$work/shot.png" \
        VELMORIC_SCREENSHOT_SCREEN=1 timeout 20 "$viewer" "$work/sample.pi1" 2>/dev/null)
  read -r x y _ < <(sed -n 's/^Image1: //p' <<<"$out")
  [ -n "${x:-}" ] || { fail "factor $factor: the viewer gave no report"; continue; }
  dx=$(awk -v v="$x" -v f="$factor" 'BEGIN { printf "%d", v * f + 0.5 }')
  dy=$(awk -v v="$y" -v f="$factor" 'BEGIN { printf "%d", v * f + 0.5 }')
  "$pixel_check" "$work/shot.png" "$work/ref/sample.pi1.png" "$dx" "$dy" "$scale" ||
    fail "factor $factor: native mode does not show each picture pixel as $scale by $scale device pixels"
done

# ---- Label1: full Unicode capitals ------------------------------------------------------
caption=$("$convert" --info "$work/café.neo" | cut -f2)
out=$(XDG_CONFIG_HOME=$work/free VELMORIC_REPORT=1 VELMORIC_EXIT_WHEN_SHOWN=1 timeout 20 "$viewer" "$work/café.neo" 2>/dev/null)
label=$(sed -n 's/^Label1: //p' <<<"$out")
[ "$label" = "CAFÉ.NEO  $caption" ] || fail "Label1 reads '$label'"

echo "$failed failed"
[ "$failed" = 0 ]
