#!/usr/bin/env bash
# Starts Production Desk: installs and builds what is missing first. `./run.sh --help` tells the options.
set -euo pipefail

# needs_display OPTION...: false when one of them makes the program do its work without a window.
needs_display() {
    local option
    for option; do
        case $option in
            -h | -v | -help | --help | -version | --version | -list-plugins | --list-plugins) return 1 ;;
            -screenshot | -screenshot=* | --screenshot | --screenshot=*) return 1 ;;
        esac
    done
}

# Said before the build, which takes its time, in the program's own words.
if [[ -z ${DISPLAY-}${WAYLAND_DISPLAY-}${QT_QPA_PLATFORM-} ]] && needs_display "$@"; then
    echo "production-desk: there is no display to open a window on;" \
        "--screenshot FILE.png writes a picture of it instead" >&2
    exit 2
fi

root=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
source "$root/scripts/prepare.sh"
prepare "$root" release production-desk SharedProjects
exec "$root/build/release/bin/production-desk" "$@"
