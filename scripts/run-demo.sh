#!/usr/bin/env bash
# Builds the release version and detects the events of the bundled demo recording.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/build.sh
out=build/demo
mkdir -p "$out"
build/release/src/app/cli/ardelvantine-cli detect examples/demo.abf \
  --csv "$out/demo_events.csv" --grid "$out/demo_grid.txt"
echo "The demo holds $(($(wc -l < examples/demo_events.csv) - 1)) known events (examples/demo_events.csv)."
