#!/usr/bin/env bash
# package_check.sh BUILD: makes the Debian package with cpack in a fresh
# folder and checks it without installing it: it holds exactly what
# `cmake --install` puts below /usr, it has no maintainer scripts (the
# triggers of shared-mime-info, GdkPixbuf, desktop-file-utils and the icon
# cache bring the caches up to date), and every package it depends on is one
# that apt knows; lintian finds no error and no warning. The install
# itself: scripts/deb-roundtrip.
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/out" >/dev/null
debs=("$work"/out/velmoric_*.deb)
[ ${#debs[@]} = 1 ] && [ -f "${debs[0]}" ] || fail "cpack made no velmoric_*.deb"
deb=${debs[0]}
echo "$(basename "$deb"): $(du -k "$deb" | cut -f1) KiB"

[ "$(dpkg-deb -f "$deb" Package)" = velmoric ] || fail "package name"
dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { sub(/^\./, "", $6); print $6 }' | sort > "$work/packaged"
DESTDIR=$work/root cmake --install "$build" --prefix /usr >/dev/null
(cd "$work/root" && find . -type f -o -type l) | sed 's/^\.//' | sort > "$work/installed"
diff "$work/installed" "$work/packaged" || fail "the package and cmake --install differ"
echo "$(wc -l < "$work/packaged") files, as cmake --install puts them"

dpkg-deb -e "$deb" "$work/control"
extra=$(ls "$work/control" | grep -vx -e control -e md5sums || true)
[ -z "$extra" ] || fail "maintainer scripts in the package: $extra"

depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
[ -n "$depends" ] || fail "no dependencies"
IFS=',' read -ra items <<< "$depends"
for item in "${items[@]}"; do
  name=$(sed -E 's/^ *([^ (]+).*/\1/' <<< "$item")
  apt-cache show "$name" >/dev/null 2>&1 || dpkg-query -W "$name" >/dev/null 2>&1 || fail "apt knows no package $name"
done
echo "every dependency is a package apt knows"
# The converter opens libspng and giflib only when it writes a PNG or a GIF.
grep -q 'libspng' <<< "$depends" || fail "libspng is not among the dependencies"
grep -q 'libgif' <<< "$depends" || fail "giflib is not among the dependencies"

# lintian, as Debian checks a package: no error and no warning; a tag the
# package keeps is overridden in packaging/lintian-overrides with its reason.
lintian --tag-display-limit 0 -I --show-overrides "$deb" > "$work/lintian" 2>/dev/null || true
if grep -q '^[EW]:' "$work/lintian"; then grep '^[EW]:' "$work/lintian" >&2; fail "lintian errors or warnings"; fi
echo "lintian: no errors, no warnings; $(grep -c '^O:' "$work/lintian" || true) tags overridden, $(grep -c '^I:' "$work/lintian" || true) notes"
