#!/bin/sh
# A browser whose user says no: fetches the consent page at the address it is given, then
# submits the page's form with its Deny button, following the provider's answer back to the
# client's redirect address, as a browser would.
# usage: deny-browser.sh URL
set -eu
url="$1"
origin=$(printf '%s\n' "$url" | sed -n 's#^\(https\{0,1\}://[^/]*\).*#\1#p')
page=$(curl -s "$url")
action=$(printf '%s\n' "$page" | sed -n 's#.*<form method="post" action="\([^"]*\)".*#\1#p')
txn=$(printf '%s\n' "$page" | sed -n 's#.*name="txn" value="\([^"]*\)".*#\1#p')
[ -n "$action" ] && [ -n "$txn" ] || { echo "deny-browser: no consent form at $url" >&2; exit 1; }
exec curl -s -L -o /dev/null --data-urlencode "txn=$txn" --data-urlencode "decision=deny" \
    "$origin$action"
