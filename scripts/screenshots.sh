#!/usr/bin/env bash
# Makes the README's screenshots (docs/screenshots/*.png) from the real program under Xvfb:
# a settings home of its own, the catalogue server with the demo catalogue, a new collection
# filled from the catalogue through the add dialog, then pictures of the add dialog with results,
# the cards view, the table view grouped with its summaries and the item editor. Run it again
# after a change of look:   bash scripts/screenshots.sh [outDir]
set -euo pipefail
cd "$(dirname "$0")/.."
make build BUILD=${BUILD:-build} >/dev/null
build=build
out=$(realpath -m "${1:-docs/screenshots}")
mkdir -p "$out"

home=$(mktemp -d)
pid=""
cleanup() { [ -n "$pid" ] && kill "$pid" 2>/dev/null; rm -rf "$home"; }
trap cleanup EXIT
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_RUNTIME_DIR="$home/runtime"
mkdir -p -m 700 "$XDG_RUNTIME_DIR"

port=${ORV_SERVER_PORT:-47498}
"$build/server/orvane-catalogue" --port "$port" >"$home/server.log" 2>&1 &
pid=$!
for _ in $(seq 1 100); do
    grep -q "listening on" "$home/server.log" 2>/dev/null && break
    sleep 0.1
done
grep -q "listening on" "$home/server.log" || { cat "$home/server.log" >&2; exit 1; }
"$build/server/orvane-client-config" CatalogueServer "https://127.0.0.1:$port"

# An empty collection, which the program opens by itself; the add dialog fills it.
"$build/bench/items/bench_items_gen" "$home/Demo collection.orv" 0 >/dev/null
python3 - "$XDG_CONFIG_HOME/orvane/registry.json" "$home/Demo collection.orv" <<'PY'
import json, sys
path, db = sys.argv[1], sys.argv[2]
data = json.load(open(path))
data["Software\\Brenmoor\\Orvane"]["DBPath"] = {"data": db, "type": "REG_SZ"}
json.dump(data, open(path, "w"), indent=4)
PY

steps="size:1280:800;wait:1500"
steps+=";act:actAdd;wait:2000;set:edtSearch:gold;act:actSearch;wait:6000;shot:add-dialog"
steps+=";act:actSelectAll;act:actSaveAndContinue;wait:5000;close;wait:4000"
steps+=";act:actRefresh;wait:2000;act:actViewCards;wait:2500;shot:cards-view"
steps+=";act:actViewTable;wait:2500;shot:table-view"
steps+=";act:actSelectAll;act:actEdit;wait:2500;shot:item-editor;close;wait:500;quit"

ORV_SHOT_DIR="$out" ORV_SHOT_STEPS="$steps" LD_PRELOAD="$build/bench/screenshots/liborv_screenshot_probe.so" \
    xvfb-run -a -s "-screen 0 1400x900x24" "$build/bin/orvane"
ls -1 "$out"
