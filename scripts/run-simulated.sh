#!/bin/sh
# Starts the power meter from an instrument image on the simulated instrument.
#
#   scripts/run-simulated.sh <image-dir> [program arguments]
#
# Without a display the program runs headless behind Qt's VNC platform:
# point a VNC viewer at localhost:5900.
set -eu

if [ $# -lt 1 ]; then
    echo "usage: $0 <image-dir> [program arguments]" >&2
    exit 2
fi
image=$(cd "$1" && pwd)
shift
program=$image/PowerMeter
if [ ! -x "$program" ]; then
    echo "run-simulated: $program does not exist: the application executable is not built yet." >&2
    echo "run-simulated: the image in $image holds the simulated instrument only" >&2
    echo "run-simulated: (try: $image/opm-bench show)." >&2
    exit 1
fi

export TAVIX_REGISTRY="$image/registry.reg"
export TAVIX_BENCH="${TAVIX_BENCH:-$image/bench.ini}"
if [ -z "${QT_QPA_PLATFORM:-}" ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    export QT_QPA_PLATFORM="vnc:size=640x480"
    echo "run-simulated: no display; serving the screen over VNC on localhost:5900" >&2
fi
exec "$program" "$@"
