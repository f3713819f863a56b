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
#  - GIO, as a file manager asks it, types every shared picture by its name,
#    and by content where another type shares the name (a PKCS#7 bundle
#    named *.spc stays one) or there is no name;
#  - the AppStream metadata validates and its screenshots are files of the
#    tree; every program has its man page; copyright and changelog are there;
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

echo "== types as a file manager guesses them (GIO: by name, by content where names are shared or missing)"
guess() { GIO_USE_VFS=local gio info -a standard::content-type "$1" | sed -n 's/^ *standard::content-type: //p'; }
check_type() {  # FILE TYPE
  local got
  got=$(guess "$1")
  [ "$got" = "$2" ] || { echo "FAIL: $1 is typed $got, not $2" >&2; status=1; }
}
status=0
# Every shared picture under its own name has the type of its extension's row.
awk '/<mime-type /{ split($0, q, "\""); type = q[2] } /<glob pattern="\*\.[a-z0-9]*"/{ split($0, q, "\""); print substr(q[2], 3), type }' \
  "$usr/share/mime/packages/velmoric.xml" > "$work/ext-types"
named=0
for picture in "$shared"/synthetic/*.*; do
  ext=$(tr 'A-Z' 'a-z' <<< "${picture##*.}")
  type=$(awk -v e="$ext" '$1 == e { print $2 }' "$work/ext-types")
  [ -n "$type" ] || continue
  check_type "$picture" "$type"
  named=$((named + 1))
done
# By content: a certificate bundle keeps the type of .spc that shared-mime-info
# gives it; pictures without a name, or under the shared name, are ours by
# their signature. Smooshed Spectrum carries the same bytes as compressed and
# goes to the earlier row.
mkdir -p "$work/types"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj /CN=velmoric-test -days 1 \
  -keyout "$work/types/key.pem" -out "$work/types/cert.pem" 2>/dev/null
openssl crl2pkcs7 -nocrl -certfile "$work/types/cert.pem" -outform DER -out "$work/types/bundle.spc"
first() { ls "$shared"/synthetic/"$1"_* | head -1; }
for picture in "$shared"/synthetic/mac_*; do
  [ "$(dd if="$picture" bs=1 skip=65 count=4 2>/dev/null)" = PNTG ] && cp "$picture" "$work/types/macbinary" && break
done
cp "$(first spc)" "$work/types/spectrum.spc"
for ext in spc sps ca1 ca2 ca3; do cp "$(first $ext)" "$work/types/$ext-without-name"; done
while read -r name type; do
  check_type "$work/types/$name" "$type"
done <<'CASES'
bundle.spc application/x-pkcs7-certificates
spectrum.spc image/x-spectrum512-spc
spc-without-name image/x-spectrum512-spc
sps-without-name image/x-spectrum512-spc
ca1-without-name image/x-crack-art-ca1
ca2-without-name image/x-crack-art-ca2
ca3-without-name image/x-crack-art-ca3
macbinary image/x-macpaint
CASES
[ $status = 0 ] || exit 1
echo "$named pictures typed by name, 8 files by content"

echo "== AppStream, man pages, copyright"
appstreamcli validate --no-net "$usr/share/metainfo/$id.metainfo.xml" || fail "appstreamcli validate"
# Each screenshot is a file of the source tree, at the end of its address.
source_tree=$(cd "$(dirname "$0")/../.." && pwd)
for url in $(sed -n 's|.*<image>\(.*\)</image>.*|\1|p' "$usr/share/metainfo/$id.metainfo.xml"); do
  rel=${url#*://*/}
  while [ ! -f "$source_tree/$rel" ]; do
    [[ $rel == */* ]] || fail "screenshot $url names no file of the tree"
    rel=${rel#*/}
  done
  [ "$(head -c 8 "$source_tree/$rel" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a ] || fail "$rel is no PNG"
done
for program in "$usr"/bin/*; do
  page=$usr/share/man/man1/$(basename "$program").1.gz
  [ -f "$page" ] && gzip -t "$page" || fail "no man page for $(basename "$program")"
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "man $(basename "$page"): $warnings"
done
grep -q '^Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/' \
  "$usr/share/doc/velmoric/copyright" || fail "no machine-readable copyright file"
gzip -t "$usr/share/doc/velmoric/changelog.Debian.gz" || fail "no changelog.Debian.gz"
echo "metainfo valid; $(ls "$usr"/bin | wc -l) man pages; copyright and changelog in place"

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
