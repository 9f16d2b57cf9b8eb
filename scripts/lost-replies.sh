#!/usr/bin/env bash
# Tries what the tests only take a sample of: in each operation of the user's, on mounts that keep names for 0, 1 and
# 5 seconds, with and without rename flags and links, each of the first five calls of each kind fails once, before or
# after it is done. Behind the mount everything must be whole then, and what the user was told must be true. Prints
# each case that fails, and a summary. About six minutes on two cores.
#   --at-a-time N   so many cases at a time (they mostly wait); 60
#   --only TEXT     cases whose names contain it, as "MoveFolder unlink" or "cache 5"
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
export LOST_REPLIES=all LOST_REPLIES_AT_A_TIME=60 QT_QPA_PLATFORM=offscreen
while [[ $# -gt 0 ]]; do
    case $1 in
        --at-a-time) LOST_REPLIES_AT_A_TIME=$2; shift 2 ;;
        --only) export LOST_REPLIES_ONLY=$2; shift 2 ;;
        *) sed -n '2,/^set/p' "$0" | sed '$d;s/^# \?//'; exit 2 ;;
    esac
done
source "$root/scripts/prepare.sh"
prepare "$root" dev volume-tests
exec "$root/build/dev/bin/volume-tests" --gtest_filter='LostReplies.*'
