#!/bin/sh
# Gateway signature vectors, worked out with the standard tools rather than
# with the code under test.
#
# Each folder is one request:
#   request.txt    verb and URL, the caller's headers, an empty line, the body
#   time.txt       the clock's time (ISO 8601)
#   canonical.txt  the canonical request, written by hand
# From canonical.txt and settings.ini this script derives
#   stringtosign.txt   "SDK-HMAC-SHA256", x-sdk-date, sha256 of canonical.txt
#   signature.txt      HMAC-SHA256 of the string to sign, keyed with appSecret
#   authorization.txt  the "Authorization" header the request must carry
# and checks the payload hash (last line of canonical.txt) against the body.
#
# Usage: make-vectors.sh          rewrite the derived files
#        make-vectors.sh --check  fail when a derived file is out of date
set -eu
cd "$(dirname "$0")"
check=${1:-}

setting() { sed -n "s/^$1=//p" settings.ini; }
appKey=$(setting appKey)
appSecret=$(setting appSecret)

status=0
emit() { # file content
    if [ "$check" = --check ]; then
        if [ "$(cat "$1")" != "$2" ]; then
            echo "out of date: $1" >&2
            status=1
        fi
    else
        printf '%s\n' "$2" > "$1"
    fi
}

for dir in */; do
    dir=${dir%/}
    [ -f "$dir/canonical.txt" ] || continue
    canonical=$(cat "$dir/canonical.txt")

    verb=$(printf '%s\n' "$canonical" | sed -n 1p)
    if [ "$verb" = GET ]; then
        payload=$(printf '' | sha256sum | cut -d' ' -f1)
    else
        payload=$(printf '%s' "$(sed '1,/^$/d' "$dir/request.txt")" | sha256sum | cut -d' ' -f1)
    fi
    if [ "$(printf '%s\n' "$canonical" | tail -n 1)" != "$payload" ]; then
        echo "payload hash in $dir/canonical.txt should be $payload" >&2
        status=1
    fi

    date=$(printf '%s\n' "$canonical" | sed -n 's/^x-sdk-date://p')
    signedHeaders=$(printf '%s\n' "$canonical" | tail -n 2 | head -n 1)
    hash=$(printf '%s' "$canonical" | sha256sum | cut -d' ' -f1)
    stringToSign=$(printf 'SDK-HMAC-SHA256\n%s\n%s' "$date" "$hash")
    signature=$(printf '%s' "$stringToSign" | openssl dgst -sha256 -hmac "$appSecret" | sed 's/^.*= //')

    emit "$dir/stringtosign.txt" "$stringToSign"
    emit "$dir/signature.txt" "$signature"
    emit "$dir/authorization.txt" "SDK-HMAC-SHA256 Access=$appKey, SignedHeaders=$signedHeaders, Signature=$signature"
done
exit $status
