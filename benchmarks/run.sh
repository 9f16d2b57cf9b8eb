#!/usr/bin/env bash
# Builds and runs the benchmarks and prints Markdown tables. Arguments go to the programs:
#   benchmarks/run.sh --benchmark_filter=open --repetitions=3
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
source "$root/scripts/prepare.sh"
prepare "$root" release panel-benchmarks volume-benchmarks slow-volume SharedProjects production-desk
echo "$(date -u +%F), $(nproc) cores of $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1), Linux $(uname -r), load $(cut -d' ' -f1 /proc/loadavg)"
"$root/build/release/bin/panel-benchmarks" "$@"
library=()
for argument in "$@"; do [[ $argument == --benchmark_* ]] && library+=("$argument"); done
# What threads keep of freed memory for themselves would count as used.
export GLIBC_TUNABLES=glibc.malloc.tcache_count=0
exec "$root/build/release/bin/volume-benchmarks" ${library[@]+"${library[@]}"}
