#!/usr/bin/env bash
# package_check.sh BUILD: makes the Debian packages with cpack in a fresh
# folder and checks them without installing them: together they hold
# exactly what `cmake --install` puts below /usr, no file in two of them;
# none has maintainer scripts (the triggers of shared-mime-info, GdkPixbuf,
# desktop-file-utils and the icon cache bring the caches up to date); each
# depends on the library it needs and only on packages that apt knows, and
# has its copyright; lintian finds no error and no warning. The install
# itself: scripts/deb-roundtrip.
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/out" > "$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail cpack; }
# velmoric, and a package for each image plugin and the loader the build made,
# each holding only its own library's files.
declare -A needs=([velmoric]=libspng [velmoric-qt6-plugin]=libqt6gui6 [velmoric-qt5-plugin]=libqt5gui5
                  [velmoric-pixbuf-loader]=libgdk-pixbuf-2.0-0)
declare -A made=([velmoric]=velmoric [velmoric-qt6-plugin]=qt6-plugins [velmoric-qt5-plugin]=qt5-plugins
                 [velmoric-pixbuf-loader]=gdk-pixbuf-loaders)
for package in "${!made[@]}"; do
  want=0
  [ "$package" = velmoric ] || [ -d "$build/${made[$package]}" ] && want=1
  have=$(ls "$work"/out/"${package}"_*.deb 2>/dev/null | wc -l)
  [ "$have" = "$want" ] || fail "$have packages ${package}_*.deb, expected $want"
done
debs=("$work"/out/*.deb)
: > "$work/packaged"
for deb in "${debs[@]}"; do
  package=$(dpkg-deb -f "$deb" Package)
  echo "$(basename "$deb"): $(du -k "$deb" | cut -f1) KiB"
  [ -n "${needs[$package]:-}" ] || fail "an unexpected package $package"
  files=$(dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { sub(/^\./, "", $6); print $6 }')
  echo "$files" >> "$work/packaged"

  dpkg-deb -e "$deb" "$work/control-$package"
  extra=$(ls "$work/control-$package" | grep -vx -e control -e md5sums || true)
  [ -z "$extra" ] || fail "maintainer scripts in $package: $extra"

  depends=$(dpkg-deb -f "$deb" Depends)
  echo "  Depends: $depends"
  IFS=',' read -ra items <<< "$depends"
  for item in "${items[@]}"; do
    name=$(sed -E 's/^ *([^ (]+).*/\1/' <<< "$item")
    apt-cache show "$name" >/dev/null 2>&1 || dpkg-query -W "$name" >/dev/null 2>&1 || fail "apt knows no package $name"
  done
  grep -q "${needs[$package]}" <<< "$depends" || fail "$package does not depend on ${needs[$package]}"
  grep -qx "/usr/share/doc/$package/copyright" <<< "$files" || fail "$package has no copyright file"

  # lintian, as Debian checks a package: no error and no warning; a tag a
  # package keeps is overridden with its reason.
  lintian --tag-display-limit 0 -I --show-overrides "$deb" > "$work/lintian" 2>/dev/null || true
  if grep -q '^[EW]:' "$work/lintian"; then grep '^[EW]:' "$work/lintian" >&2; fail "lintian errors or warnings in $package"; fi
  echo "  lintian: no errors, no warnings; $(grep -c '^O:' "$work/lintian" || true) tags overridden"
done
echo "every dependency is a package apt knows"
# The converter opens libspng and giflib only when it writes a PNG or a GIF;
# the viewer itself needs no Qt 5 and no GdkPixbuf.
depends=$(dpkg-deb -f "$work"/out/velmoric_*.deb Depends)
grep -q 'libgif' <<< "$depends" || fail "giflib is not among velmoric's dependencies"
! grep -q -e libqt5 -e gdk-pixbuf <<< "$depends" || fail "velmoric depends on a plugin's library: $depends"

sort "$work/packaged" > "$work/packaged.sorted"
DESTDIR=$work/root cmake --install "$build" --prefix /usr >/dev/null
(cd "$work/root" && find . -type f -o -type l) | sed 's/^\.//' | sort > "$work/installed"
diff "$work/installed" "$work/packaged.sorted" || fail "the packages and cmake --install differ"
echo "$(wc -l < "$work/installed") files in ${#debs[@]} packages, as cmake --install puts them, none in two"
