#!/bin/bash
# Builds Pelnor and runs every test and check; installs what is missing. The last lines are CTest's summary, the exit
# status is CTest's. Arguments go to ctest: ./test.sh -R store
set -euo pipefail
cd "$(dirname "$0")"
. tools/environment.sh

require_packages $build_packages $wine_packages $check_packages
require_locale
# The news server of the end-to-end tests.
/usr/bin/python3 tests/e2e/inn.py build/desktop/inn
# The benchmarks are built, not run: bench/run.sh does that.
cmake --preset desktop -DPELNOR_BENCH=ON >/dev/null
build_desktop

display_pid=
finish() {
    tools/wine_session end "$PWD/build/desktop/wine"
    end_process $display_pid
}
trap finish EXIT
trap 'exit 130' INT TERM HUP

start_display 1024x768
ctest --preset desktop -j 2 "$@"
