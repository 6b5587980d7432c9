#!/bin/bash
# bench/run.sh [quick] [PART...]: builds the benchmarks, runs them and prints one table, which docs/performance.md
# explains. Parts: layout choose fill store text startup download; all when none is named. `quick` has the download
# measured once and with few articles. `bench/run.sh device` counts instead what the device's executable does and keeps
# the counts in bench/device.txt. Installs what is missing; all that it starts ends with it.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/environment.sh

if [ "${1-}" = device ]; then
    require_packages $device_packages python3-pefile python3-unicorn python3-distutils python3-pkg-resources
    { cmake --preset device-arm && cmake --build --preset device-arm; } >&2
    /usr/bin/python3 bench/device.py build/device | tee bench/device.txt
    exit
fi

quick=
if [ "${1-}" = quick ]; then
    quick=quick
    shift
fi
parts=${*:-layout choose fill store text startup download}

build=$PWD/build/bench
display_pid=
finish() {
    tools/wine_session end "$build/wine"
    end_process $display_pid
}
trap finish EXIT
trap 'exit 130' INT TERM HUP

require_packages $build_packages $wine_packages bsdextrautils g++ python3
require_locale
{
    cmake --preset desktop -B "$build" -DPELNOR_BENCH=ON -DBUILD_TESTING=OFF
    cmake --build "$build"
    cmake -S bench/native -B "$build/native" -G Ninja
    cmake --build "$build/native"
} >&2

# All on one core: a call that asks the wineserver costs three times as much when that runs on the other one, and where
# it runs changes in the midst of a measurement.
core=$(taskset -cp $$ | sed 's/.*: *//; s/[,-].*//')
taskset -cp "$core" $$ >&2

start_display
tools/wine_session start "$build/wine" unmanaged
export LC_ALL=ja_JP.UTF-8 WINEPREFIX=$build/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

run_part() {
    case $1 in
    text) "$build/native/text_bench" ;;
    download) /usr/bin/python3 bench/download.py "$build" $quick ;;
    *) tools/wine_run "$build/bench/${1}_bench.exe" ;;
    esac
}

# A part prints its rows as fields with tabs between them, or what has failed.
rows=$build/rows.txt
: >"$rows"
for part in $parts; do
    run_part "$part" | tr -d '\r' >"$rows.part" || {
        cat "$rows.part" >&2
        exit 1
    }
    cat "$rows.part" >>"$rows"
done
{
    printf 'Pelnor\tsize\ttakes\tagainst\ttakes\tratio\tgrowth\tgoal\n'
    cat "$rows"
} | column -t -s $'\t' -o ' | ' -R 2,3,5,6,7
