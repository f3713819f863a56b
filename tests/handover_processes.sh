#!/usr/bin/env bash
# Copies of the built viewer handing files over on a private session bus,
# offscreen, with private desktop folders: a second copy passes its command
# line to the first and ends, a relative name made absolute; `single` 1 keeps
# copies apart; a killed first copy leaves the channel free; ten copies at
# once leave one window with the nine other command lines; without a bus a
# copy runs alone.
# Usage: handover_processes.sh VELMORIC
set -u
viewer=$1
command -v dbus-run-session >/dev/null && command -v dbus-send >/dev/null ||
  { echo "dbus-run-session or dbus-send is not installed"; exit 77; }
if [ -z "${VELMORIC_PRIVATE_BUS:-}" ]; then
  VELMORIC_PRIVATE_BUS=1 exec dbus-run-session -- "$0" "$@"
fi

work=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null; wait 2>/dev/null; rm -rf "$work"' EXIT
mkdir -p "$work/runtime" "$work/data/mime"
chmod 700 "$work/runtime"
# A desktop that knows the picture types already: no first-run question.
echo '50:image/x-test:*.spu' > "$work/data/mime/globs2"
for n in 0 1 2 3 4 5 6 7 8 9; do head -c 32128 /dev/urandom > "$work/pic$n.neo"; done
failed=0
fail() { echo "FAIL: $*"; failed=$((failed + 1)); }

# Options of one copy: its own configuration folder with `single`.
config() {
  mkdir -p "$work/$1/velmoric"
  printf '[options]\nsingle=%s\n' "$2" > "$work/$1/velmoric/velmoric.conf"
}
config one 0
config apart 1

# copy CONFIG [ARGS...]: one copy in the foreground, with its trace lines.
copy() {
  local cfg=$1; shift
  XDG_RUNTIME_DIR=$work/runtime XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/$cfg QT_QPA_PLATFORM=offscreen \
    VELMORIC_TRACE=1 timeout 30 "$viewer" "$@" 2>/dev/null
}
# start NAME CONFIG [ARGS...]: a copy in the background, its lines in
# NAME.out, its process id in $last.
start() {
  local name=$1 cfg=$2; shift 2
  XDG_RUNTIME_DIR=$work/runtime XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/$cfg QT_QPA_PLATFORM=offscreen \
    VELMORIC_TRACE=1 "$viewer" "$@" > "$work/$name.out" 2>/dev/null &
  last=$!
  pids+=($last)
}
# wait_for NAME TEXT: up to 10 s for a line that begins with TEXT.
wait_for() {
  for _ in $(seq 100); do
    awk -v p="$2" 'index($0, p) == 1 { f = 1 } END { exit !f }' "$work/$1.out" 2>/dev/null && return 0
    sleep 0.1
  done
  return 1
}
owned() {
  dbus-send --session --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.NameHasOwner \
    string:velmoric.cmdLine | grep -q 'boolean true'
}

# ---- one copy takes all ------------------------------------------------------
start first one; first=$last
wait_for first shown || fail "the first copy did not show its window"
owned || fail "the first copy does not own the name"
before=$(stat -c %Y.%s "$work/one/velmoric/velmoric.conf"; cat "$work/one/velmoric/velmoric.conf")
t0=$(date +%s%N)
copy one "$work/pic1.neo" > "$work/second.out"
status=$? ms=$((($(date +%s%N) - t0) / 1000000))
[ "$status" = 0 ] || fail "the second copy ended with $status"
[ "$ms" -lt 1000 ] || fail "the second copy took $ms ms to end"
[ ! -s "$work/second.out" ] || fail "the second copy showed or said: $(cat "$work/second.out")"
[ "$before" = "$(stat -c %Y.%s "$work/one/velmoric/velmoric.conf"; cat "$work/one/velmoric/velmoric.conf")" ] ||
  fail "the second copy wrote its options"
wait_for first "caption: PIC1.NEO  Neo" || fail "the first copy did not open the second's file"

# Trailing text stays part of the name: its last three characters are the
# extension of the file error box.
copy one "$work/pic2.neo" /x
wait_for first "box: Error.  /x##Sorry a file error has occured." || fail "no file error box for the trailing text"
grep -qxF "command: $work/pic2.neo /x" "$work/first.out" || fail "the command did not arrive unchanged"

# A name relative to the second copy's folder (the first runs in another)
# goes over made absolute, what follows it unchanged.
[ "$(pwd)" != "$work" ] || fail "the first copy runs in the pictures' folder"
(cd "$work" && copy one pic6.neo)
wait_for first "caption: PIC6.NEO  Neo" || fail "the first copy did not open a relative name from another folder"
(cd "$work" && copy one pic7.neo /x)
wait_for first "command: $work/pic7.neo /x" || fail "a relative name with trailing text did not arrive absolute"

# Without a file: the second copy ends, the first does nothing.
copy one || fail "a second copy without a file did not end cleanly"
wait_for first "command: " && sleep 0.3
[ "$(tail -n 1 "$work/first.out")" = "command: " ] || fail "the first copy reacted to an empty command: $(tail -n 2 "$work/first.out")"

# Killed: the name goes with the process, and the next start is first.
kill -KILL "$first"
wait "$first" 2>/dev/null
start next one "$work/pic3.neo"
wait_for next "caption: PIC3.NEO  Neo" || fail "after a killed first copy the next start did not open its own file"
owned || fail "after a killed first copy the next start does not own the name"
kill "$last"
wait "$last" 2>/dev/null

# ---- `single` 1: each start a copy of its own ----------------------------------
start a apart; a=$last
wait_for a shown || fail "the first copy apart did not show"
start b apart "$work/pic4.neo"; b=$last
wait_for b "caption: PIC4.NEO  Neo" || fail "the second copy apart did not open its own file"
kill -0 "$a" 2>/dev/null && kill -0 "$b" 2>/dev/null || fail "copies apart did not both stay"
owned && fail "a copy with single 1 owns the name"
kill "$a" "$b"
wait "$a" "$b" 2>/dev/null

# ---- ten copies at the same moment ---------------------------------------------------
ten=()
for n in 0 1 2 3 4 5 6 7 8 9; do start "ten$n" one "$work/pic$n.neo"; ten+=($last); done
for _ in $(seq 100); do
  alive=0
  for p in "${ten[@]}"; do kill -0 "$p" 2>/dev/null && alive=$((alive + 1)); done
  [ "$alive" -le 1 ] && break
  sleep 0.1
done
sleep 0.5
shown=$(grep -lx shown "$work"/ten*.out | wc -l)
[ "$alive" = 1 ] && [ "$shown" = 1 ] || fail "ten copies left $alive processes and $shown windows"
if [ "$shown" = 1 ]; then
  window=$(grep -lx shown "$work"/ten*.out)
  own=$(basename "$window" .out); own=${own#ten}
  want=$(for n in 0 1 2 3 4 5 6 7 8 9; do [ "$n" = "$own" ] || echo "command: $work/pic$n.neo"; done | sort)
  got=$(grep '^command: ' "$window" | sort)
  [ "$want" = "$got" ] || fail "the window received: $got"
fi
kill "${ten[@]}" 2>/dev/null
wait "${ten[@]}" 2>/dev/null

# ---- no session bus: a lone copy -----------------------------------------------------
out=$(DBUS_SESSION_BUS_ADDRESS=unix:path=$work/no-bus DISPLAY= VELMORIC_EXIT_WHEN_SHOWN=1 copy one "$work/pic5.neo")
grep -qx shown <<<"$out" && grep -q '^caption: PIC5.NEO  Neo' <<<"$out" || fail "without a bus the copy did not run alone: $out"

echo "$failed failed"
[ "$failed" = 0 ]
