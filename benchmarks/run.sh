#!/usr/bin/env bash
# Builds and runs the benchmarks and prints a Markdown table. Arguments go to the program:
#   benchmarks/run.sh --benchmark_filter=open --repetitions=3
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
source "$root/scripts/prepare.sh"
prepare "$root" release panel-benchmarks slow-volume SharedProjects
echo "$(date -u +%F), $(nproc) cores of $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1), Linux $(uname -r), load $(cut -d' ' -f1 /proc/loadavg)"
exec "$root/build/release/bin/panel-benchmarks" "$@"
