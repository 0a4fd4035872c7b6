#!/bin/sh
# A browser whose way back is tampered with: it asks the (auto-approving) consent page for its
# answer, changes the state in the address it is sent back to, then follows it.
# usage: tamper-browser.sh URL
set -eu
back=$(curl -s -o /dev/null -w '%{redirect_url}' "$1")
[ -n "$back" ] || { echo "tamper-browser: no way back from $1" >&2; exit 1; }
exec curl -s -o /dev/null "$(printf '%s\n' "$back" | sed 's/state=[^&]*/state=forged/')"
