#!/bin/sh
# Assembles an instrument image: the directory the program runs from, as it
# lies on the instrument's flash, with the simulated instrument's libraries.
#
#   scripts/make-image.sh [--fresh] <build-dir> <dest-dir>
#
# Programs and libraries are always replaced. The data a running instrument
# changes (etc_gui/opm.ini, registry.reg, bench.ini) is only written when it
# is absent, or with --fresh, so that rebuilding keeps a unit's calibration
# and settings. Tests build throw-away images in temporary directories.
set -eu

fresh=0
if [ "${1:-}" = "--fresh" ]; then
    fresh=1
    shift
fi
if [ $# -ne 2 ]; then
    echo "usage: $0 [--fresh] <build-dir> <dest-dir>" >&2
    exit 2
fi
build=$1
dest=$2
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$build/bin
data=$root/Resources/sim

for file in tavix_otdr.so tavix_sim_bench.so tavix_sim_olt.so tavix_sim_btd.so opm-bench; do
    if [ ! -f "$bin/$file" ]; then
        echo "make-image: $bin/$file is missing; build the target 'simulator' first" >&2
        exit 1
    fi
done

mkdir -p "$dest/etc_gui"
for file in tavix_otdr.so tavix_sim_bench.so tavix_sim_olt.so tavix_sim_btd.so opm-bench; do
    cp -f "$bin/$file" "$dest/$file"
done
# Built by other parts of the tree once they exist. tavix_btd.so is the real
# instrument's Bluetooth driver (BlueZ); the simulated hive names the
# simulated one; the instrument's own hive, still to come, will name this one.
for file in PowerMeter opm-probe opm_loopback_bind.so tavix_btd.so; do
    if [ -f "$bin/$file" ]; then cp -f "$bin/$file" "$dest/$file"; fi
done
# Language packs lie beside the executable: the hive names them by bare file name.
for pack in "$bin"/lang/*.rcc; do
    if [ -f "$pack" ]; then cp -f "$pack" "$dest/"; fi
done

install_data() {
    if [ "$fresh" = 1 ] || [ ! -f "$2" ]; then cp -f "$1" "$2"; fi
}
install_data "$data/etc_gui/opm.ini" "$dest/etc_gui/opm.ini"
install_data "$data/registry.reg" "$dest/registry.reg"
install_data "$data/bench.ini" "$dest/bench.ini"
