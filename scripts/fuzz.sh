#!/usr/bin/env bash
# Runs the libFuzzer targets for a bounded time each, with AddressSanitizer and
# UndefinedBehaviorSanitizer.
#
#   scripts/fuzz.sh [SECONDS] [TARGET...]      e.g. scripts/fuzz.sh 60 abf_open
#
# New inputs go to build/fuzz/corpus/<target>/ (the seeds in fuzz/corpus/<target>/ stay as
# they are); a crash is written to build/fuzz/artifacts/<target>/ and ends the run with a
# non-zero status. Copy a crash input into fuzz/corpus/<target>/ once it is fixed, so that the
# test build replays it from then on.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-60}
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
    targets=()
    for dir in "$root"/fuzz/corpus/*/; do targets+=("$(basename "$dir")"); done
fi

build=${ARDEL_FUZZ_BUILD:-$root/build/fuzz}
cxx=${CXX:-}
if [ -z "$cxx" ]; then
    for c in clang++ clang++-16 clang++-15 clang++-14; do
        if command -v "$c" >/dev/null 2>&1; then cxx=$c; break; fi
    done
fi
if [ -z "$cxx" ]; then
    echo "fuzz.sh: clang++ not found (apt-get install clang)" >&2
    exit 1
fi

cmake -S "$root" -B "$build" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DARDEL_FUZZ=ON -DARDEL_SANITIZE=ON -DARDEL_BUILD_TESTS=OFF -DARDEL_BUILD_GUI=OFF >/dev/null
jobs=$(nproc 2>/dev/null || echo 2)

status=0
for t in "${targets[@]}"; do
    cmake --build "$build" --target "fuzz_$t" -j "$jobs"
    work="$build/corpus/$t"
    artifacts="$build/artifacts/$t"
    mkdir -p "$work" "$artifacts"
    echo "fuzz_$t: ${seconds}s" >&2
    if ! "$build/fuzz/fuzz_$t" "$work" "$root/fuzz/corpus/$t" -max_total_time="$seconds" \
        -timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=1024 -print_final_stats=1 \
        -artifact_prefix="$artifacts/"; then
        echo "fuzz_$t: failure, input in $artifacts/" >&2
        status=1
    fi
done
exit $status
