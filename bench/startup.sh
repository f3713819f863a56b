#!/usr/bin/env bash
# Measures the viewer's start-up: from starting the program with a picture on
# its command line to that picture on screen (window mapped, laid out and
# painted). Runs under Xvfb when there is no display and xvfb-run is
# installed, else offscreen. Usage: bench/startup.sh [build folder] [runs]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-7}
# The test build of the viewer: the same window, and it reports when the picture is on screen.
viewer=$build/testable/velmoric
[ -x "$viewer" ] || { echo "no viewer at $viewer; build the target velmoric-testable first" >&2; exit 2; }

if [ -z "${VELMORIC_BENCH_UNDER_XVFB:-}" ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] &&
   command -v xvfb-run >/dev/null; then
  # The same script again, inside a fresh X server.
  VELMORIC_BENCH_UNDER_XVFB=1 exec xvfb-run -a -s "-screen 0 1280x1024x24" "$0" "$build" "$runs"
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/config/velmoric" "$work/data/mime" "$work/runtime"
chmod 700 "$work/runtime"
printf '[options]\nsize=1\n' > "$work/config/velmoric/velmoric.conf"
echo '50:application/x-velmoric-test:*.spu' > "$work/data/mime/globs2"   # no first-run question
"$build/app/velmoric-make-sample" "$work/SAMPLE.PI1"

measure_all() {
  local i start end line times=()
  for ((i = 0; i < runs; i++)); do
    start=$(date +%s%N)
    end=
    while IFS= read -r line; do
      case $line in "Shown after:"*) end=$(date +%s%N) ;; esac
    done < <(env XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_RUNTIME_DIR="$work/runtime" \
                 VELMORIC_REPORT=1 VELMORIC_EXIT_WHEN_SHOWN=1 "$viewer" "$work/SAMPLE.PI1" 2>/dev/null)
    [ -n "$end" ] || { echo "run $i: the picture never showed" >&2; return 1; }
    times+=($(((end - start) / 1000000)))
  done
  printf '%s\n' "${times[@]}" | sort -n | awk -v where="$where" '
    { t[NR] = $1 }
    END {
      median = t[int((NR + 1) / 2)]
      printf "start-up to the picture on screen (%s, %d runs): median %d ms, fastest %d ms, slowest %d ms\n",
             where, NR, median, t[1], t[NR]
      if (median < 500) print "under 0.5 s: yes"; else { print "under 0.5 s: no"; exit 1 }
    }'
}

if [ -n "${VELMORIC_BENCH_UNDER_XVFB:-}" ]; then
  where=Xvfb QT_QPA_PLATFORM=xcb measure_all
elif [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  where=offscreen QT_QPA_PLATFORM=offscreen measure_all
else
  where="this display" measure_all
fi
