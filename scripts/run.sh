#!/usr/bin/env bash
# Starts the program from a build folder. Without a display it runs under xvfb-run.
set -euo pipefail
build=${1:-build}
exe="$build/bin/orvane"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    exec xvfb-run -a "$exe"
fi
exec "$exe"
