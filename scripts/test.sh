#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer and runs all tests.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset sanitize >/dev/null
cmake --build build/sanitize -j"$(nproc)"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export QT_QPA_PLATFORM=offscreen
ctest --test-dir build/sanitize --output-on-failure -j"$(nproc)"
