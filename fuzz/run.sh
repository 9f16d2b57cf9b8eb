#!/usr/bin/env bash
# Lets the fuzzers look for inputs that break the readers: fuzz/run.sh [SECONDS each, 60 by default]
# What they find is in build/fuzz/found; a case that broke something belongs into tests/data/fuzz/NAME.
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
source "$root/scripts/prepare.sh"
# An older clang does not know all of C++20.
packages+=(clang-16 libclang-rt-16-dev)
names=(panel-settings lock-record)
prepare "$root" fuzz "${names[@]/#/fuzz-}"
for name in "${names[@]}"; do
    found=$root/build/fuzz/found/$name
    mkdir -p "$found"
    # Standard error of the readers is their log.
    "$root/build/fuzz/bin/fuzz-$name" -max_total_time="${1:-60}" -max_len=4096 -timeout=10 -close_fd_mask=2 \
        -dict="$root/fuzz/$name.dict" -artifact_prefix="$found/broken-" "$found" "$root/tests/data/fuzz/$name" ||
        { echo "$name: broken by $(ls "$found"/broken-* 2>/dev/null | tail -1)"; exit 1; }
    echo "$name: nothing broken; $(find "$found" -type f | wc -l) cases in $found"
done
