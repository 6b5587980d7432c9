# shellcheck shell=bash disable=SC2034
# Sourced from the repository's root by every script that builds or runs something (run.sh, test.sh, build-device.sh,
# bench/run.sh, try_package, the loops): what the machine must have, a display and a way to wait.

build_packages="cmake ninja-build g++-mingw-w64-x86-64-posix googletest"
wine_packages="wine wine64 fonts-wine fonts-ipafont-gothic locales xvfb xdotool imagemagick"
device_packages="cmake ninja-build python3 gcc-arm-none-eabi libnewlib-arm-none-eabi libstdc++-arm-none-eabi-newlib
    g++-mipsel-linux-gnu binutils-mingw-w64-x86-64 mingw-w64-common"
fuzz_packages="cmake ninja-build clang libclang-rt-14-dev"
# The last two are python3-unicorn's, which does not ask for them.
check_packages="$device_packages $fuzz_packages clang-format python3-pefile python3-unicorn
    python3-distutils python3-pkg-resources"

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# require_packages NAME...: installs those that are missing.
require_packages() {
    local name missing=()
    for name; do
        [ "$(dpkg-query -W -f='${db:Status-Abbrev}' "$name" 2>/dev/null)" = "ii " ] || missing+=("$name")
    done
    [ ${#missing[@]} = 0 ] && return
    echo "installing ${missing[*]}"
    as_root apt-get -q update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends "${missing[@]}"
}

# Wine shows Japanese, and has code page 932, only under a Japanese locale.
require_locale() {
    [ -z "$(locale -a 2>/dev/null | grep -ix 'ja_JP\.utf-\?8')" ] || return 0
    echo "making the locale ja_JP.UTF-8"
    as_root localedef -i ja_JP -f UTF-8 ja_JP.UTF-8
}

build_desktop() {
    cmake --preset desktop
    cmake --build --preset desktop "$@"
}

# wait_for SECONDS COMMAND...: polls until COMMAND succeeds; fails when it has not by then.
wait_for() {
    local end=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.05
    done
}

# start_display [SIZE]: starts an X server without a screen on a free display and sets DISPLAY and display_pid.
start_display() {
    local number
    number=$(mktemp)
    Xvfb -displayfd 3 -screen 0 "${1-640x480}x24" -nolisten tcp 3>"$number" >/dev/null 2>&1 &
    display_pid=$!
    wait_for 20 grep -q . "$number" || {
        echo "Xvfb did not start" >&2
        return 1
    }
    DISPLAY=:$(cat "$number")
    export DISPLAY
    rm -f "$number"
}

# end_process PID...: ends processes that the script started, and waits for them.
end_process() {
    local process
    for process; do
        kill "$process" 2>/dev/null || continue
        wait_for 5 is_gone "$process" || kill -9 "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
}

is_gone() {
    ! kill -0 "$1" 2>/dev/null
}
