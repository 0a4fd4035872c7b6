#!/bin/sh
# install_test.sh BUILD_DIR SANITIZED CXX: installs the build into a temporary prefix, then,
# from a folder outside the repository and the build, runs an installed example against the
# installed emulators and kvggl-describe with nothing but the prefix's paths.
set -eu
build=$1
prefix=$(mktemp -d)
emulators=""
trap '[ -z "$emulators" ] || kill "$emulators"; rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
if [ "$2" = ON ]; then
    # The stock interpreter loading instrumented code needs the sanitizers' runtimes first.
    LD_PRELOAD="$("$3" -print-file-name=libasan.so) $("$3" -print-file-name=libubsan.so)"
    export LD_PRELOAD ASAN_OPTIONS=detect_leaks=0
fi
unset KVGGL_COMPONENT LUA_PATH LUA_CPATH
mkdir "$prefix/elsewhere"
cd "$prefix/elsewhere"
export LUA_CPATH="$prefix/lib/lua/5.4/?.so;;" LUA_PATH="$prefix/share/lua/5.4/?.lua;;"

# The installed module, with the installed component beside it.
lua5.4 -e 'local kvggl = require "kvggl"
           local where = kvggl.status().component
           assert(where == arg[1] .. "/lib/lua/5.4/kv220ggl.so", where)' /dev/null "$prefix"

# The installed maps tour against the installed emulators, as a newcomer runs it by hand.
"$prefix/bin/kvggl-emulators" --port 0 --auto-approve >"$prefix/emulators.out" 2>&1 </dev/null &
emulators=$!
trap 'kill $emulators 2>/dev/null; rm -rf "$prefix"' EXIT
for _ in $(seq 100); do
    port=$(sed -n 's/^kvggl-emulators listening on 127.0.0.1://p' "$prefix/emulators.out")
    [ -n "$port" ] && break
    sleep 0.1
done
[ -n "$port" ] || { cat "$prefix/emulators.out" >&2; exit 1; }
KVGGL_ROUTE="*=127.0.0.1:$port" KVGGL_GOOGLE_API_KEY=demo-key KVGGL_MAP_FILE="$prefix/map.png" \
    lua5.4 "$prefix/share/doc/kvggl/examples/maps.lua" >/dev/null
[ -s "$prefix/map.png" ] || { echo "install_test: the tour wrote no map" >&2; exit 1; }

fail() { echo "install_test: $*" >&2; exit 1; }
# NAME, the status describe exits with, a line it prints
while IFS='|' read -r name status line; do
    out=$("$prefix/bin/kvggl-describe" $name 2>&1) && got=0 || got=$?
    [ "$got" = "$status" ] || fail "describe $name: exit $got, not $status"
    printf '%s\n' "$out" | grep -qF -- "$line" || fail "describe $name: no '$line' in
$out"
done <<'CASES'
|0|102 function rows (99 names)
GglRequete|0|buffer (connection: gglConnexion, service: int, url: text, body: text, method: int)
gglrequete|0|method       gglRequeteGET (default)
GglListeAlbum|0|not built yet
GglRecupereCarte|0|image (connection: gglConnexion, address: text, width: int, height: int)
GglAdWListeCampagne|0|registered without a handler
gglParametreCarte|0|Echelle        Pixels per map point
GglNoSuchThing|1|describe: no such name 'GglNoSuchThing'
CASES
