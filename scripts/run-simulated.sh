#!/bin/sh
# Starts the power meter from an instrument image on the simulated instrument.
#
#   scripts/run-simulated.sh <image-dir> [program arguments]
#
# With a display (DISPLAY or WAYLAND_DISPLAY) the program opens a 640x480
# window. Without one it serves its screen over Qt's VNC platform on
# 127.0.0.1:5900 (OPM_VNC_PORT chooses another port), for this machine only.
set -eu

if [ $# -lt 1 ]; then
    echo "usage: $0 <image-dir> [program arguments]" >&2
    exit 2
fi
image=$(cd "$1" && pwd)
shift
program=$image/PowerMeter
if [ ! -x "$program" ]; then
    echo "run-simulated: $program does not exist: build the target 'instrument-image' first." >&2
    exit 1
fi

export TAVIX_REGISTRY="$image/registry.reg"
export TAVIX_BENCH="${TAVIX_BENCH:-$image/bench.ini}"
if [ -z "${QT_QPA_PLATFORM:-}" ] && [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    port=${OPM_VNC_PORT:-5900}
    export QT_QPA_PLATFORM="vnc:size=640x480:port=$port"
    # Qt's VNC server would listen on every interface.
    export LD_PRELOAD="$image/opm_loopback_bind.so${LD_PRELOAD:+:$LD_PRELOAD}"
    cat >&2 <<MESSAGE
run-simulated: no display, so the screen is served over VNC on 127.0.0.1:$port.
run-simulated: connect from this machine with a VNC viewer, for example
run-simulated:     vncviewer 127.0.0.1::$port
run-simulated: or from another one through an SSH tunnel:
run-simulated:     ssh -L $port:127.0.0.1:$port $(hostname) and then vncviewer 127.0.0.1::$port
run-simulated: keys: F1-F4 soft keys, arrows, Enter (menu), Escape; change the light with
run-simulated:     $image/opm-bench set input.dBm -23.5
MESSAGE
fi
echo "run-simulated: the log is $image/PowerMeter.log" >&2
exec "$program" "$@"
