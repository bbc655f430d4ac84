#!/usr/bin/env bash
# Release build of the program and the command line into build/release.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build build/release -j"$(nproc)"
echo "built: build/release/src/app/cli/ardelvantine-cli"
