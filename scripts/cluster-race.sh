#!/usr/bin/env bash
# Lets processes compete for lock files through two clients of a replicated GlusterFS volume, all on this machine:
#   scripts/cluster-race.sh [--bricks N]
# As root, on Debian. Installs glusterfs-server and glusterfs-client when they are missing. Everything runs in
# mount, network and process namespaces of its own: no socket is open to the outside, nothing of a GlusterFS that
# runs here already is touched, and however the script ends, its mounts and processes end with it.
set -euo pipefail
script=$(readlink -f "${BASH_SOURCE[0]}")
root=$(dirname "$(dirname "$script")")
address=10.77.0.1 # of the loopback device in our namespace; the volume manager refuses 127.0.0.1
volume="lock-race"

# shellcheck source=scripts/prepare.sh
source "$root/scripts/prepare.sh"

# outside ARGUMENT...: installs, builds, and runs this script again inside namespaces.
outside() {
    [[ $EUID -eq 0 ]] || { say "Mounting takes root: sudo $script"; exit 1; }
    packages+=(glusterfs-server glusterfs-client iproute2 procps)
    prepare "$root" dev volume-tests
    local folder status=0
    folder=$(mktemp -d "${TMPDIR:-/tmp}/lock-race-XXXXXX")
    # shellcheck disable=SC2064
    trap "rm -rf --one-file-system '$folder'" EXIT
    unshare --mount --net --pid --fork --mount-proc --kill-child=KILL -- \
        env CLUSTER_RACE_FOLDER="$folder" "$script" "$@" &
    local inside=$!
    # When the first process of a process namespace ends, all of them have; with them go the mounts.
    trap 'pkill -KILL -P "$inside"' INT TERM HUP
    wait "$inside" || status=$?
    while kill -0 "$inside" 2>/dev/null; do wait "$inside" || true; done
    exit "$status"
}

# run NAME COMMAND...: its output goes to the log; when it fails, the log's end is shown.
run() {
    local what=$1
    shift
    "$@" >>"$folder/log" 2>&1 || { say "$what failed: $*"; tail -n 20 "$folder"/*log >&2; exit 1; }
}

manager=
start_manager() {
    ip link set lo up
    ip address add "$address/32" dev lo
    local place
    for place in /var/lib/glusterd /run/gluster /var/log/glusterfs; do
        mkdir -p "$place"
        mount -t tmpfs tmpfs "$place"
    done
    mkdir /var/log/glusterfs/bricks
    glusterd --no-daemon --log-file="$folder/manager.log" &
    manager=$!
    local deadline=$((SECONDS + 20))
    while ((SECONDS < deadline)); do
        gluster --mode=script volume list >/dev/null 2>&1 && return
        kill -0 "$manager" 2>/dev/null || break
        sleep 0.1
    done
    say "glusterd did not start."
    tail -n 20 "$folder/manager.log" >&2
    exit 1
}

stop_all() {
    umount "$folder"/client-* 2>>"$folder/log" || umount --lazy "$folder"/client-* 2>>"$folder/log" || true
    if [[ -n $manager ]]; then
        gluster --mode=script volume stop "$volume" force >>"$folder/log" 2>&1 || true
        gluster --mode=script volume delete "$volume" >>"$folder/log" 2>&1 || true
        kill "$manager" 2>/dev/null || true
        wait "$manager" 2>/dev/null || true
    fi
}

# inside [--bricks N]: in the namespaces.
inside() {
    folder=$CLUSTER_RACE_FOLDER
    local bricks=3 places=() i
    [[ ${1-} != --bricks ]] || bricks=$2
    trap stop_all EXIT
    start_manager
    for ((i = 1; i <= bricks; ++i)); do
        mkdir "$folder/brick-$i"
        places+=("$address:$folder/brick-$i")
    done
    run "Making the volume" gluster --mode=script volume create "$volume" replica "$bricks" "${places[@]}" force
    run "Starting the volume" gluster --mode=script volume start "$volume"
    for i in 1 2; do
        mkdir "$folder/client-$i"
        run "Mounting" glusterfs --volfile-server="$address" --volfile-id="$volume" "$folder/client-$i"
    done
    mkdir "$folder/client-1/production"
    echo "$(date -u +%F), $(glusterfs --version | head -n 1), $bricks replicas, two FUSE clients," \
         "Linux $(uname -r), $(nproc) cores"
    ZU_LOCK_RACE_FOLDERS="$folder/client-1/production:$folder/client-2/production" QT_QPA_PLATFORM=offscreen \
        "$root/build/dev/bin/volume-tests" --gtest_filter='*LockRace.*/WithLinks'
}

if [[ -n ${CLUSTER_RACE_FOLDER:-} ]]; then inside "$@"; else outside "$@"; fi
