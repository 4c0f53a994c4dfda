#!/usr/bin/env bash
# Starts the catalogue server with the demo data in the background, points the program at it,
# and starts the program. Without a display the program runs under xvfb-run.
set -euo pipefail
build=${1:-build}
port=${ORV_SERVER_PORT:-47443}
exe="$build/bin/orvane"
server="$build/server/orvane-catalogue"
config="$build/server/orvane-client-config"

pid=""
cleanup() { [ -n "$pid" ] && kill "$pid" 2>/dev/null || true; }
trap cleanup EXIT

if [ -x "$server" ] && [ -x "$config" ]; then
    log="$build/server/access.log"
    "$server" --port "$port" >"$log" 2>&1 &
    pid=$!
    for _ in $(seq 1 100); do
        grep -q "listening on" "$log" 2>/dev/null && break
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.1
    done
    if grep -q "listening on" "$log"; then
        "$config" CatalogueServer "https://127.0.0.1:$port"
        echo "Catalogue server on https://127.0.0.1:$port (log: $log)"
    else
        echo "The catalogue server did not start; see $log" >&2
        pid=""
    fi
fi

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    xvfb-run -a "$exe"
else
    "$exe"
fi
