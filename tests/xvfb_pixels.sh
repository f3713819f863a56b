#!/usr/bin/env bash
# Starts the viewer under a real X server with a picture on its command line
# and the option size at 1, grabs the screen and checks that Image1 shows the
# decoded bitmap one screen pixel to one picture pixel, and that Label1 reads
# the name in capitals, two blanks and the format's caption.
# Arguments: velmoric (its test build) velmoric-convert velmoric-make-sample velmoric_pixel_check
set -euo pipefail
viewer=$1 convert=$2 make_sample=$3 pixel_check=$4
command -v xvfb-run >/dev/null || { echo "xvfb-run is not installed"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config/velmoric" "$work/data/mime" "$work/ref" "$work/runtime"
chmod 700 "$work/runtime"
printf '[options]\nsize=1\n' > "$work/config/velmoric/velmoric.conf"
# A known *.spu glob: not a first start, so no question waits for an answer.
echo '50:application/x-velmoric-test:*.spu' > "$work/data/mime/globs2"

"$make_sample" "$work/sample.pi1"
cp "$work/sample.pi1" "$work/Medium.PI2"   # the same bytes read as a medium resolution picture

status=0
for picture in "$work/sample.pi1" "$work/Medium.PI2"; do
  name=$(basename "$picture")
  "$convert" -q -f png -o "$work/ref" "$picture"
  caption=$("$convert" --info "$picture" | cut -f2)
  size=$("$convert" --info "$picture" | cut -f4)
  out=$(xvfb-run -a -s "-screen 0 1280x1024x24" \
        env XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_RUNTIME_DIR="$work/runtime" \
            QT_QPA_PLATFORM=xcb VELMORIC_REPORT=1 VELMORIC_SCREENSHOT="$work/screen.png" VELMORIC_SCREENSHOT_SCREEN=1 \
            "$viewer" "$picture" 2>"$work/stderr") || { cat "$work/stderr"; echo "$name: the viewer failed"; status=1; continue; }
  echo "$out"
  label=$(sed -n 's/^Label1: //p' <<<"$out")
  read -r x y w h < <(sed -n 's/^Image1: //p' <<<"$out")
  expected_label="${name^^}  $caption"
  if [ "$label" != "$expected_label" ]; then
    echo "$name: Label1 reads '$label', not '$expected_label'"; status=1
  fi
  if [ "${w}x${h}" != "$size" ]; then
    echo "$name: Image1 is ${w}x${h}, not $size"; status=1; continue
  fi
  if ! "$pixel_check" "$work/screen.png" "$work/ref/$name.png" "$x" "$y"; then
    echo "$name: the screen inside Image1 is not the decoded picture"; status=1
  fi
done
exit $status
