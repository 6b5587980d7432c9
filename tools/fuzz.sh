#!/bin/bash
# fuzz.sh HOURS [TARGET...]: fuzzes the targets of fuzz/ (all, when none is named), HOURS hours each (0.5 is half an
# hour), as many at once as there are processors, or JOBS. First each runs its seeds and all that was ever found.
# Prints one table; the exit status is 1 when something was found. With RUNS, which is for the test run, each target
# stops after so many executions whatever the time, and begins with the seeds alone.
#
# What a target made of its time stands in build/native-sanitize/run/TARGET/ (or below RUN): `log`, `corpus` (inputs
# that reach something new, the next run's start) and `found` (inputs that break something). A finding that is mended
# stays as fuzz/regressions/TARGET/NAME, whose name says what it was.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/environment.sh

hours=${1:?usage: tools/fuzz.sh HOURS [TARGET...]}
shift
seconds=$(awk -v hours="$hours" 'BEGIN { printf "%d", hours * 3600 }')
targets=("$@")
[ $# -gt 0 ] || targets=($(cd fuzz/corpus && ls))
build=build/native-sanitize
run=${RUN:-$build/run}

require_packages $fuzz_packages
cmake --preset native-sanitize >/dev/null
cmake --build --preset native-sanitize -- --quiet

mkdir -p "$run"
# A quarantine of the default size would hide nothing more, only fill the memory.
export ASAN_OPTIONS=quarantine_size_mb=32

seeds_of() {
    find "fuzz/corpus/$1" "fuzz/regressions/$1" -maxdepth 0 2>/dev/null
}

# fuzz_target TARGET SECONDS: a finding ends the target's run.
fuzz_target() {
    local dir=$run/$1
    rm -rf "$dir/found" ${RUNS:+"$dir/corpus"}
    mkdir -p "$dir/found" "$dir/corpus"
    "$build/fuzz/$1" -max_total_time="$2" -runs="${RUNS:--1}" -timeout=30 -report_slow_units=30 -print_final_stats=1 \
        -artifact_prefix="$dir/found/" "$dir/corpus" $(seeds_of "$1") >"$dir/log" 2>&1 || true
}

# value TARGET PATTERN: the last number behind the pattern in the target's log.
value() {
    grep -oP "$2\s*\K[0-9]+" "$run/$1/log" | tail -n 1 || echo -
}

for target in "${targets[@]}"; do
    if ! "$build/fuzz/$target" -runs=0 -artifact_prefix="$run/" $(seeds_of "$target") >"$run/replay.log" 2>&1; then
        cat "$run/replay.log"
        echo "$target: an input that is kept breaks it"
        exit 1
    fi
done

export -f fuzz_target seeds_of
export build run
printf '%s\n' "${targets[@]}" | xargs -P "${JOBS:-$(nproc)}" -I{} bash -c "fuzz_target {} $seconds"

status=0
printf '%-16s %14s %8s %6s\n' target executions edges found
for target in "${targets[@]}"; do
    found=$(find "$run/$target/found" -type f | wc -l)
    [ "$found" = 0 ] || status=1
    printf '%-16s %14s %8s %6s\n' "$target" "$(value "$target" stat::number_of_executed_units:)" \
        "$(value "$target" cov:)" "$found"
done
(cd "$run" && find "${targets[@]}" -path '*/found/*' -printf "$run/%p\n")
exit $status
