#!/bin/bash
# Builds the benchmarks, runs them under Wine and prints one table, which docs/performance.md explains. Installs what is
# missing; all that it starts ends with it.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/environment.sh

build=$PWD/build/bench
display_pid=
finish() {
    tools/wine_session end "$build/wine"
    end_process $display_pid
}
trap finish EXIT
trap 'exit 130' INT TERM HUP

require_packages $build_packages $wine_packages bsdextrautils
require_locale
{
    cmake --preset desktop -B "$build" -DPELNOR_BENCH=ON -DBUILD_TESTING=OFF
    cmake --build "$build" --target reading_bench choose_bench
} >&2

# All on one core: a call that asks the wineserver costs three times as much when that runs on the other one, and where
# it runs changes in the midst of a measurement.
core=$(taskset -cp $$ | sed 's/.*: *//; s/[,-].*//')
taskset -cp "$core" $$ >&2

start_display
tools/wine_session start "$build/wine" unmanaged
export LC_ALL=ja_JP.UTF-8 WINEPREFIX=$build/wine WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

# A program prints its rows as fields with tabs between them, or what has failed.
rows=$build/rows.txt
: >"$rows"
for program in reading_bench choose_bench; do
    tools/wine_run "$build/bench/$program.exe" | tr -d '\r' >"$rows.part" || {
        cat "$rows.part" >&2
        exit 1
    }
    cat "$rows.part" >>"$rows"
done
{
    printf 'Pelnor\tsize\ttakes\tagainst\ttakes\tratio\tgrowth\n'
    cat "$rows"
} | column -t -s $'\t' -o ' | ' -R 2,3,5,6,7
