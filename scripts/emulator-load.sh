#!/usr/bin/env bash
# Load on the Tessaro service emulator from a second process on loopback:
# 10,000 requests (GET messages and POST cart creation, bearer token) with ab.
#   scripts/emulator-load.sh [path/to/tessaro-emulator] [requests] [concurrency]
# Needs ab (Debian package apache2-utils) and curl.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
program="${1:-$here/build/bin/tessaro-emulator}"
requests="${2:-10000}"
concurrency="${3:-8}"
work="$(mktemp -d)"
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT

cat > "$work/settings.json" <<'JSON'
{"basePath": "/api", "messages": {"info": ["load"]}}
JSON
echo '{"storeNo": 1, "tillNo": 2}' > "$work/cart.json"

"$program" --port 0 --config "$work/settings.json" > "$work/out" 2> "$work/err" &
pid=$!
until [ -s "$work/out" ]; do
    kill -0 "$pid" 2>/dev/null || { cat "$work/err" >&2; exit 1; }
    sleep 0.05
done
port="$(head -n 1 "$work/out")"
base="http://127.0.0.1:$port"

token="$(curl -sf -X POST -H 'Authorization: Basic dGlsbDpzZWNyZXQ=' \
    -d 'grant_type=client_credentials&client_id=till&realm_id=tessaro' "$base/token" |
    sed -n 's/.*"access_token":"\([^"]*\)".*/\1/p')"
[ -n "$token" ] || { echo "no token" >&2; exit 1; }

# ab counts answers whose length differs from the first one as "Length"
# failures: cart answers carry fresh uuids, so the journal's statuses decide.
run() {
    echo "== $1"
    shift
    ab -q -k -n "$requests" -c "$concurrency" -H "Authorization: Bearer $token" "$@" > "$work/ab"
    grep -E 'Complete requests|Non-2xx|Requests per second|Time per request.*mean\)$|99%' "$work/ab"
    grep -E -A1 'Failed requests' "$work/ab"
}
run "GET /api/messages/info" "$base/api/messages/info"
run "POST /api/cart/create" -p "$work/cart.json" -T application/json "$base/api/cart/create"

answered="$(curl -sf "$base/_emulator/requests" | grep -o '"status":[0-9]*' | sort | uniq -c)"
echo "== statuses in the journal (count, status)"
echo "$answered"
