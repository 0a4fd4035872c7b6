#!/bin/sh
# The kvggl_emulators fixture, clean-up half: stops the process with SIGTERM, waits for it, and
# fails if it did not stop or if the sanitizers reported anything on its way out.
# usage: stop-emulators.sh DIR
set -eu
dir="$1"
# Stopped already (a repeated run): nothing to do.
[ -f "$dir/emulators.pid" ] || { echo "kvggl-emulators not running"; exit 0; }
pid=$(cat "$dir/emulators.pid")
rm -f "$dir/emulators.port" "$dir/emulators.pid"
kill -TERM "$pid" 2>/dev/null || { echo "kvggl-emulators (pid $pid) was not running" >&2; exit 1; }
# Gone, or a zombie waiting for whoever adopted it to reap it: either way it has stopped.
running() {
    state=$(sed 's/.*) \(.\).*/\1/' "/proc/$1/stat" 2>/dev/null || true)
    [ -n "$state" ] && [ "$state" != Z ]
}
i=0
while running "$pid"; do
    if [ "$i" -ge 200 ]; then
        echo "kvggl-emulators (pid $pid) ignored SIGTERM for 20 s" >&2
        kill -KILL "$pid" 2>/dev/null || true
        exit 1
    fi
    sleep 0.1
    i=$((i + 1))
done
if grep -q "ERROR: [A-Za-z]*Sanitizer\|runtime error:" "$dir/emulators.err"; then
    cat "$dir/emulators.err" >&2
    exit 1
fi
echo "kvggl-emulators stopped"
