#!/bin/sh
# CTest: builds the site, then drives Debian's Chromium over it. Exit 77
# (skipped) when the shared pictures, Chromium, Emscripten or puppeteer-core
# are not there.
set -e
root=$(cd "$(dirname "$0")/../.." && pwd)
shared=${1:-$root/../shared}
skip() { echo "skipped: $1"; exit 77; }
[ -f "$shared/expected/corpus.tsv" ] || skip "no $shared"
command -v chromium >/dev/null || skip "no chromium"
command -v emcc >/dev/null || skip "no emcc (scripts/deps installs emscripten)"
[ -d "$root/web/node_modules/puppeteer-core" ] || skip "no puppeteer-core (scripts/deps runs npm ci in web/)"
site=$("$root/scripts/web" build | tail -n 1)
exec node "$root/web/test/browser.mjs" "$site" "$shared"
