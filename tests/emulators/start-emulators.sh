#!/bin/sh
# The kvggl_emulators fixture, set-up half: starts kvggl-emulators on a free port in the
# background and writes the port to DIR/emulators.port for the tests that require the fixture.
# usage: start-emulators.sh EXECUTABLE DIR
set -eu
exe="$1"
dir="$2"
# Started already (a repeated run): the same process serves on.
if [ -f "$dir/emulators.pid" ] && [ -f "$dir/emulators.port" ] &&
    kill -0 "$(cat "$dir/emulators.pid")" 2>/dev/null; then
    echo "kvggl-emulators already on 127.0.0.1:$(cat "$dir/emulators.port")"
    exit 0
fi
rm -f "$dir/emulators.port" "$dir/emulators.pid"
# Output to files, input from /dev/null: CTest waits for the pipes it gave us, not for this.
"$exe" --port 0 --auto-approve >"$dir/emulators.out" 2>"$dir/emulators.err" </dev/null &
pid=$!
echo "$pid" >"$dir/emulators.pid"
i=0
while [ "$i" -lt 300 ]; do
    line=$(head -n 1 "$dir/emulators.out" 2>/dev/null || true)
    case "$line" in
    "kvggl-emulators listening on 127.0.0.1:"*)
        port=${line##*:}
        echo "$port" >"$dir/emulators.port.new"
        mv "$dir/emulators.port.new" "$dir/emulators.port"
        echo "kvggl-emulators on 127.0.0.1:$port, pid $pid"
        exit 0
        ;;
    esac
    if ! kill -0 "$pid" 2>/dev/null; then
        echo "kvggl-emulators exited before listening:" >&2
        cat "$dir/emulators.err" >&2
        exit 1
    fi
    sleep 0.1
    i=$((i + 1))
done
echo "kvggl-emulators did not listen within 30 s" >&2
kill "$pid" 2>/dev/null || true
exit 1
