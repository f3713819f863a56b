#!/usr/bin/env bash
# install_check.sh BUILD SHARED: installs the build with DESTDIR into a fresh
# folder (prefix /usr) and checks it as the desktop uses it:
#  - every file lies where the freedesktop specifications, Qt and GdkPixbuf
#    look, desktop-file-validate passes the desktop entry, and the MIME
#    package, the desktop entry and the thumbnailer entry name the same types;
#  - update-mime-database over the system's types and the installed package
#    maps every shared picture to its format's type (checked by Qt's MIME
#    lookup in the Qt checker);
#  - the Qt 6 and Qt 5 plugins (checkers $qt6, $qt5 with plugin folders
#    $qt6dir, $qt5dir) and the GdkPixbuf loader ($pixbuf, with a loader cache
#    made by $query over the modules in $loaderdir) read every picture of
#    corpus.tsv and EXPECTED.tsv with the converter's pixels and refuse broken
#    files (empty, noise, cut, of every extension) with an error;
#  - the thumbnailer entry's Exec line, run as a file manager runs it, makes a
#    PNG of at most the asked size of every picture.
# A checker that is not set (its plugin was not built) is skipped with a note.
set -euo pipefail
build=$(cd "$1" && pwd) shared=$(cd "$2" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
file_uri() {
  local LC_ALL=C path=$1 uri=file:// c i
  for ((i = 0; i < ${#path}; i++)); do
    c=${path:i:1}
    case $c in [a-zA-Z0-9/._~-]) uri+=$c ;; *) printf -v c '%%%02X' "'$c"; uri+=$c ;; esac
  done
  echo "$uri"
}

DESTDIR=$work/root cmake --install "$build" --prefix /usr >/dev/null
usr=$work/root/usr
id=org.velmoric.Velmoric

echo "== files where the desktop looks"
expected=(bin/velmoric-convert bin/velmoric-thumbnailer share/mime/packages/velmoric.xml
          share/applications/$id.desktop share/thumbnailers/velmoric.thumbnailer)
for size in 16 32 48 128 256; do expected+=("share/icons/hicolor/${size}x$size/apps/$id.png"); done
[ -f "$build/app/velmoric" ] && expected+=(bin/velmoric)
[ -n "${qt6:-}" ] && expected+=("$qt6dir/imageformats/libqvelmoric.so")
[ -n "${qt5:-}" ] && expected+=("$qt5dir/imageformats/libqvelmoric.so")
for f in "${expected[@]}"; do [ -f "$usr/$f" ] || fail "not installed: /usr/$f"; done
if [ -n "${pixbuf:-}" ]; then
  modules=$(find "$usr/$loaderdir" -name 'libpixbufloader-velmoric-*.so' | wc -l)
  [ "$modules" = 18 ] || fail "$modules GdkPixbuf modules installed, not 18"
fi
desktop-file-validate "$usr/share/applications/$id.desktop" || fail "desktop-file-validate: $id.desktop"
# The MIME package, the desktop entry and the thumbnailer entry name the same 18 types.
types() { sed -n "s/^$1//p" "$2" | tr ';' '\n' | sed '/^$/d' | sort; }
package_types=$(sed -n 's/.*<mime-type type="\([^"]*\)".*/\1/p' "$usr/share/mime/packages/velmoric.xml" | sort)
[ "$(wc -l <<< "$package_types")" = 18 ] || fail "the MIME package has not 18 types"
[ "$(types MimeType= "$usr/share/applications/$id.desktop")" = "$package_types" ] || fail "the desktop entry's types"
[ "$(types MimeType= "$usr/share/thumbnailers/velmoric.thumbnailer")" = "$package_types" ] || fail "the thumbnailer's types"
echo "${#expected[@]} files and ${modules:-no} loader modules in place; the desktop entry is valid"

echo "== MIME database: the system's types and the installed package"
mkdir -p "$work/share/mime/packages" "$work/home"
[ -f /usr/share/mime/packages/freedesktop.org.xml ] && cp /usr/share/mime/packages/freedesktop.org.xml "$work/share/mime/packages/"
cp "$usr/share/mime/packages/velmoric.xml" "$work/share/mime/packages/"
export XDG_DATA_DIRS=$work/share XDG_DATA_HOME=$work/home/data XDG_CONFIG_HOME=$work/home/config
update-mime-database "$work/share/mime"

echo "== the converter's bitmaps of every shared picture"
"$usr/bin/velmoric-convert" -q -r -o "$work/bmp/corpus" "$shared/corpus"
"$usr/bin/velmoric-convert" -q -o "$work/bmp/synthetic" "$shared/synthetic"
{ tail -n +2 "$shared/expected/corpus.tsv" | cut -f1 | sed 's|^|corpus/|'
  tail -n +2 "$shared/synthetic/EXPECTED.tsv" | cut -f1 | sed 's|^|synthetic/|'; } |
  while IFS= read -r rel; do printf '%s\t%s\n' "$shared/$rel" "$work/bmp/$rel.bmp"; done > "$work/list.tsv"
echo "$(wc -l < "$work/list.tsv") pictures"

echo "== broken files: empty, 100 bytes of noise, cut to 60 bytes or half"
mkdir -p "$work/broken"
noise() {  # 100 bytes that depend on $1 alone
  local i hex=
  for i in 1 2 3 4; do hex+=$(printf '%s' "$1-$i" | sha256sum | cut -c1-64); done
  printf "$(sed 's/../\\x&/g' <<< "${hex:0:200}")"
}
extensions=$(sed -n 's/.*pattern="\*\.\([a-z0-9]*\)".*/\1/p' "$usr/share/mime/packages/velmoric.xml")
for ext in $extensions; do
  : > "$work/broken/empty.$ext"
  for n in 0 1 2; do noise "$ext$n" > "$work/broken/noise$n.$ext"; done
  first=$(grep -m1 -i "\.$ext"$'\t' "$work/list.tsv" | cut -f1)
  size=$(stat -c %s "$first")
  head -c $((size / 2 < 60 ? size / 2 : 60)) "$first" > "$work/broken/cut.$ext"
done
ls "$work"/broken/* > "$work/broken.tsv"
echo "$(wc -l < "$work/broken.tsv") broken files"

status=0
for major in 6 5; do
  checker=qt$major dir=qt${major}dir
  if [ -z "${!checker:-}" ]; then echo "== Qt $major: no plugin built, skipped"; continue; fi
  echo "== Qt $major plugin"
  QT_QPA_PLATFORM=offscreen "${!checker}" "$usr/${!dir}" "$work/list.tsv" "$work/broken.tsv" > "$work/qt.log" 2>&1 ||
    status=1
  # The plugin's warnings about the broken files and the allocation limit are expected.
  grep -v 'velmoric image plugin: .*/broken/\|allocation limit' "$work/qt.log" || true
done

if [ -n "${pixbuf:-}" ]; then
  echo "== GdkPixbuf loader"
  system_loaders=$(dirname "$(pkg-config --variable=gdk_pixbuf_cache_file gdk-pixbuf-2.0)")/loaders
  "$query" "$usr/$loaderdir"/*.so "$system_loaders"/libpixbufloader-bmp.so > "$work/loaders.cache"
  GDK_PIXBUF_MODULE_FILE=$work/loaders.cache "$pixbuf" "$work/list.tsv" "$work/broken.tsv" || status=1
else
  echo "== GdkPixbuf: no loader built, skipped"
fi

echo "== thumbnailer entry, run as a file manager runs it"
entry=$usr/share/thumbnailers/velmoric.thumbnailer
exec_line=$(sed -n 's/^Exec=//p' "$entry")
try_exec=$(sed -n 's/^TryExec=//p' "$entry")
PATH=$usr/bin:$PATH command -v "$try_exec" >/dev/null || fail "TryExec $try_exec is not on the PATH"
read -ra template <<< "$exec_line"
made=0
while IFS=$'\t' read -r picture _; do
  for size in 128 256; do
    out=$work/thumb.png
    rm -f "$out"
    args=()
    for word in "${template[@]}"; do
      case $word in
        %s) args+=("$size") ;; %i) args+=("$picture") ;; %o) args+=("$out") ;;
        %u) args+=("$(file_uri "$picture")") ;;
        *) args+=("$word") ;;
      esac
    done
    PATH=$usr/bin:$PATH "${args[@]}" || { echo "thumbnailer failed: $picture" >&2; status=1; continue; }
    read -r width height < <(od -An -tu1 -j16 -N8 "$out" |
      awk '{ print $1 * 16777216 + $2 * 65536 + $3 * 256 + $4, $5 * 16777216 + $6 * 65536 + $7 * 256 + $8 }')
    if [ "$(head -c 8 "$out" | od -An -tx1 | tr -d ' \n')" != 89504e470d0a1a0a ] ||
       [ "$width" -gt "$size" ] || [ "$height" -gt "$size" ] || [ "$width" -lt 1 ]; then
      echo "thumbnail of $picture at $size: ${width}x$height" >&2; status=1
    fi
    made=$((made + 1))
  done
done < "$work/list.tsv"
echo "$made thumbnails"
exit $status
