#!/bin/bash
# ./run.sh        builds Pelnor and shows it with a news server and articles of its own
# ./run.sh --own  builds Pelnor and starts it with your own settings
#
# Installs what is missing. Without a display the demonstration plays itself on a hidden one: it fetches articles, reads
# some, subscribes to a group, and leaves pictures of all that in build/screens/. Everything that it started ends with it.
set -euo pipefail
cd "$(dirname "$0")"
. tools/environment.sh

own=
case ${1-} in
"") ;;
--own) own=yes ;;
*)
    echo "usage: ./run.sh [--own]" >&2
    exit 2
    ;;
esac

# The tests name a build folder that is ready; the demonstration then stays inside it.
build=$PWD/build/desktop state=$PWD/build
[ -z "${PELNOR_BUILD-}" ] || build=$PELNOR_BUILD state=$PELNOR_BUILD/demonstration
key='HKCU\Software\marrowby\Pelnor'
data=$state/demo-data
screens=$state/screens
playing='' display_pid='' server_pid='' program_pid=''
. tools/windows.sh
. demo/play.sh

finish() {
    end_process $program_pid $server_pid
    # Your own Wine ends by itself a little after its last program; the demonstration's is ended with all it holds.
    [ -n "$own" ] || tools/wine_session end "$WINEPREFIX"
    end_process $display_pid
}

# setting NAME TYPE VALUE: writes one of the program's settings into the registry of this run's Wine.
setting() {
    wine reg add "$key" /v "$1" /t "$2" /d "$3" /f >/dev/null 2>&1 </dev/null
}

windows_path() {
    echo "Z:${1//\//\\}"
}

# Subscribes to all groups but the last, which is left to be chosen, and writes the keyword files as the program would.
make_data() {
    local file
    mkdir -p "$data"
    find demo/articles -mindepth 1 -maxdepth 1 -name 'fj.*' ! -name '*.test' -printf '%f\r\n' | sort >"$data/group.dat"
    for file in demo/keywords/*.txt; do
        sed 's/$/\r/' "$file" | iconv -f UTF-8 -t CP932 >"$data/$(basename "$file" .txt).flt"
    done
}

# The port differs from start to start, so it is written each time. The rest is only written once: what you change in
# the demonstration stays. One that plays itself starts afresh, to have something to fetch.
prepare_demonstration() {
    if [ -n "$playing" ]; then
        rm -rf "$data"
        wine reg delete "$key" /f >/dev/null 2>&1 </dev/null || true
    fi
    [ -e "$data/group.dat" ] || make_data
    wine reg query "$key" /v DataPath >/dev/null 2>&1 </dev/null || {
        wine reg import "$(windows_path "$PWD/demo/settings.reg")" >/dev/null 2>&1 </dev/null
        setting DataPath REG_SZ "$(windows_path "$data")\\"
        setting FontName REG_SZ IPAゴシック
    }
    setting Server REG_SZ 127.0.0.1
    setting Port REG_DWORD "$1"
}

# Starts the news server on a free port and answers the port in $port.
start_server() {
    local output=$state/demo/server.txt
    : >"$output"
    wine "$build/demo/demo_server.exe" "$(windows_path "$PWD/demo/articles")" >"$output" 2>&1 </dev/null &
    server_pid=$!
    wait_for 30 grep -q listening "$output" || {
        echo "the demonstration's news server did not start:" >&2
        cat "$output" >&2
        return 1
    }
    port=$(tr -d '\r' <"$output" | sed -n 's/^listening on 127\.0\.0\.1:\([0-9]*\)$/\1/p')
}

# On the hidden display no window manager draws the windows' frames: Wine then draws them itself.
draw_frames() {
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d "$1" /f >/dev/null 2>&1 </dev/null
}

start_program() {
    wine "$build/pelnor.exe" >/dev/null 2>&1 </dev/null &
    program_pid=$!
}

require_packages $build_packages $wine_packages
require_locale
[ -n "${PELNOR_BUILD-}" ] || build_desktop --target pelnor demo_server

# A locale that was made just now is one that this shell does not know yet.
export LC_ALL=ja_JP.UTF-8 WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml= 2>/dev/null

# Each has a Wine of its own, outside the folders that a build writes: the demonstration never touches your settings.
if [ -n "$own" ]; then WINEPREFIX=$state/own/wine; else WINEPREFIX=$state/demo/wine; fi
export WINEPREFIX

# The end of one demonstration would end another.
if [ -z "$own" ]; then
    mkdir -p "$state/demo"
    exec 9>"$state/demo/lock"
    flock -n 9 || {
        echo "the demonstration is running already" >&2
        exit 1
    }
fi

trap finish EXIT
trap 'exit 130' INT TERM HUP

show() {
    if [ -z "${DISPLAY-}" ] || ! xdotool getdisplaygeometry >/dev/null 2>&1; then
        [ -z "$own" ] || {
            echo "there is no display to show your own settings on" >&2
            exit 1
        }
        start_display 348x348
        playing=yes
    fi

    tools/wine_session make "$WINEPREFIX"
    # The font that the program starts with, where Debian has it; Wine does not look there.
    cp /usr/share/wine/fonts/tahoma*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" || true
    if [ -z "$own" ]; then
        start_server
        prepare_demonstration "$port"
        draw_frames "$([ -n "$playing" ] && echo N || echo Y)"
    fi
    start_program
    if [ -n "$playing" ]; then play; else wait "$program_pid"; fi
}

# Without the lock, which whatever outlives a killed demonstration would go on holding.
show 9>&-
