#!/bin/sh
# Runs every benchmark executable the build placed under <build-dir>/bench.
#
#   scripts/run-benchmarks.sh <build-dir> [benchmark options...]
set -eu

if [ $# -lt 1 ]; then
    echo "usage: $0 <build-dir> [benchmark options...]" >&2
    exit 2
fi
build=$1
shift
if [ ! -d "$build/bench" ]; then
    echo "run-benchmarks: $build/bench does not exist; build with OPM_BUILD_BENCH=ON" >&2
    exit 1
fi

status=0
found=0
for program in $(find "$build/bench" -path '*/CMakeFiles' -prune -o -type f -perm -u+x -print | sort); do
    found=1
    echo "== $(basename "$program")"
    "$program" "$@" || status=1
done
if [ "$found" = 0 ]; then
    echo "run-benchmarks: no benchmark executables under $build/bench" >&2
    exit 1
fi
exit $status
