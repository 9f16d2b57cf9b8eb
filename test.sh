#!/usr/bin/env bash
# Builds and runs every test, without a display. Arguments go to ctest (`./test.sh -R Search`).
set -euo pipefail
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
source "$root/scripts/prepare.sh"
prepare "$root" dev all
export QT_QPA_PLATFORM=offscreen
exec ctest --test-dir "$root/build/dev" --output-on-failure --no-tests=error -j2 "$@"
