# shellcheck shell=bash
# Sourced by run.sh and test.sh: installs what the build needs, configures once, and builds. Says nothing when
# there is nothing to do; what it says goes to standard error, the whole story to build/PRESET.log.

packages=(g++ cmake ninja-build pkg-config qt6-base-dev qt6-base-private-dev qt6-svg-dev libgl-dev libabsl-dev libicu-dev
          libboost-dev libgtest-dev libgmock-dev libbenchmark-dev libfuse3-dev fuse3 fontconfig
          fonts-dejavu-core)
# Installed along with those, where the distribution has them.
niceties=(fonts-inter qt6-wayland qt6-translations-l10n)

say() { printf '%s\n' "$*" >&2; }

# fail LOG MESSAGE...: the end of the log, then the message.
fail() {
    local log=$1
    shift
    tail -n 30 "$log" >&2
    say "$*" "The whole log: $log"
    exit 1
}

# missing_packages: the names of those that are not installed, on one line.
missing_packages() {
    local installed
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${packages[@]}" 2>/dev/null |
                sed -n 's/^installed //p' || true)
    comm -23 <(printf '%s\n' "${packages[@]}" | sort -u) <(sort -u <<<"$installed") | tr '\n' ' '
}

install_packages() {
    command -v dpkg-query >/dev/null || return 0 # No Debian: the configuration will name what it misses.
    local log=$1 missing as_root=()
    missing=$(missing_packages)
    [[ -z ${missing// /} ]] && return 0
    if [[ $EUID -ne 0 ]]; then
        command -v sudo >/dev/null || {
            say "These packages are missing, and there is no sudo to install them with: $missing"
            say "As root: apt-get install $missing"
            exit 1
        }
        as_root=(sudo)
    fi
    say "Installing with apt: $missing"
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=300)
    "${apt[@]}" update >>"$log" 2>&1 || true # An old list of packages may do.
    local nicety
    for nicety in "${niceties[@]}"; do
        apt-cache show "$nicety" >/dev/null 2>&1 && missing+=" $nicety"
    done
    # shellcheck disable=SC2086
    "${apt[@]}" install --yes --no-install-recommends $missing >>"$log" 2>&1 ||
        fail "$log" "Installing failed; by hand: apt-get install $missing."
}

# show_progress: ninja's lines, only those that build something; on a terminal over one another.
show_progress() {
    local line shown=
    while IFS= read -r line; do
        [[ $line =~ ^\[[0-9]+/([0-9]+)\]\ (Building|Linking|Automatic) ]] || continue
        if [[ -t 2 ]]; then
            printf '\r\033[K%s' "${line:0:${COLUMNS:-80}}" >&2
            shown=1
        elif [[ -z $shown ]]; then
            say "Building (${BASH_REMATCH[1]} steps)"
            shown=1
        fi
    done
    [[ -n $shown && -t 2 ]] && printf '\r\033[K' >&2
    return 0
}

# prepare ROOT PRESET TARGET...: afterwards the targets are built in ROOT/build/PRESET.
prepare() {
    local root=$1 preset=$2
    shift 2
    local folder=$root/build/$preset log=$root/build/$preset.log lock
    mkdir -p "$root/build"
    exec {lock}>"$root/build/.$preset.lock"
    flock -n "$lock" || { say "Another build of $preset is under way; waiting."; flock "$lock"; }
    : >"$log"
    install_packages "$log"
    if [[ ! -f $folder/build.ninja ]]; then
        say "Configuring ($preset)"
        (cd "$root" && cmake --preset "$preset") >>"$log" 2>&1 || fail "$log" "Configuring failed."
    fi
    ninja -C "$folder" "$@" 2>&1 | tee -a "$log" | show_progress || fail "$log" "Building failed."
    exec {lock}>&-
}
