#!/usr/bin/env bash
# Starts Production Desk: installs and builds what is missing first. `./run.sh --help` tells the options.
set -euo pipefail
root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
source "$root/scripts/prepare.sh"
prepare "$root" release production-desk SharedProjects
exec "$root/build/release/bin/production-desk" "$@"
