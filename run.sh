#!/bin/bash
# ./run.sh        builds Pelnor and shows it with a news server and articles of its own
# ./run.sh --own  builds Pelnor and starts it with your own settings
#
# Installs what is missing. Without a display the demonstration plays itself on a hidden one: it fetches the articles
# and leaves pictures of that in build/screens/. Everything that it started ends with it.
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

program=build/desktop/pelnor.exe
key='HKCU\Software\marrowby\Pelnor'
data=$PWD/build/demo-data
screens=$PWD/build/screens
playing='' display_pid='' server_pid='' program_pid=''

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

# The port differs from start to start, so it is written each time. The rest is only written once: what you change in
# the demonstration stays. One that plays itself starts afresh, to have something to fetch.
prepare_demonstration() {
    [ -z "$playing" ] || rm -rf "$data"
    if [ ! -e "$data/group.dat" ]; then
        mkdir -p "$data"
        find demo/articles -mindepth 1 -maxdepth 1 -type d -printf '%f\r\n' | sort >"$data/group.dat"
    fi
    wine reg query "$key" /v DataPath >/dev/null 2>&1 </dev/null || {
        setting DataPath REG_SZ "$(windows_path "$data")\\"
        setting Limit REG_DWORD 50
    }
    setting Server REG_SZ 127.0.0.1
    setting Port REG_DWORD "$1"
}

# Starts the news server on a free port and answers the port in $port.
start_server() {
    local output=build/demo/server.txt
    : >"$output"
    wine build/desktop/demo/demo_server.exe "$(windows_path "$PWD/demo/articles")" >"$output" 2>&1 </dev/null &
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
    wine "$program" >/dev/null 2>&1 </dev/null &
    program_pid=$!
}

# shown TITLE: a window with just this title is on the display.
shown() {
    xdotool search --onlyvisible --name "^$1\$"
}

any_shown() {
    shown "$1" || shown "$2"
}

hidden() {
    ! shown "$1"
}

# picture NAME: leaves build/screens/NAME.png, once two pictures in a row are alike.
picture() {
    local before='' now='' tries
    for ((tries = 0; tries < 40; tries++)); do
        now=$(import -window root ppm:- | md5sum)
        [ "$now" = "$before" ] && break
        before=$now
        sleep 0.1
    done
    import -window root "$screens/$1.png"
}

# press TITLE KEY: gives the window the keyboard and presses the key.
press() {
    local window
    window=$(shown "$1" | tail -1)
    xdotool windowfocus "$window"
    xdotool key "$2"
}

fail() {
    picture demo-failed
    echo "$1; see build/screens/demo-failed.png" >&2
    exit 1
}

# Does what a user would do: fetch, look, close the end message, leave.
play() {
    mkdir -p "$screens"
    rm -f "$screens"/demo-*.png
    wait_for 60 shown Pelnor || fail "the program's window did not appear"
    xdotool windowfocus "$(shown Pelnor)"
    picture demo-1-start
    press Pelnor i
    wait_for 20 any_shown Articles Disconnect || fail "the download did not start"
    # The download is over in a moment: hold the server for as long as the picture takes.
    kill -STOP "$server_pid"
    picture demo-2-fetching
    kill -CONT "$server_pid"
    wait_for 60 shown Disconnect || fail "the end of the download was not announced"
    picture demo-3-announced
    press Disconnect Return
    wait_for 20 hidden Disconnect || fail "the announcement did not close"
    picture demo-4-fetched
    press Pelnor alt+x
    wait_for 20 is_gone "$program_pid" || fail "the program did not end"
    program_pid=
    echo "The pictures of the demonstration:"
    ls "$screens"/demo-*.png
}


require_packages $build_packages $wine_packages
require_locale
build_desktop --target pelnor demo_server

export LC_ALL=ja_JP.UTF-8 WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

# Each has a Wine of its own, outside the folders that a build writes: the demonstration never touches your settings.
if [ -n "$own" ]; then WINEPREFIX=$PWD/build/own/wine; else WINEPREFIX=$PWD/build/demo/wine; fi
export WINEPREFIX

# The end of one demonstration would end another.
if [ -z "$own" ]; then
    mkdir -p build/demo
    exec 9>build/demo/lock
    flock -n 9 || {
        echo "the demonstration is running already" >&2
        exit 1
    }
fi

trap finish EXIT
trap 'exit 130' INT TERM HUP

if [ -z "${DISPLAY-}" ] || ! xdotool getdisplaygeometry >/dev/null 2>&1; then
    [ -z "$own" ] || {
        echo "there is no display to show your own settings on" >&2
        exit 1
    }
    start_display
    playing=yes
fi

tools/wine_session make "$WINEPREFIX"
if [ -z "$own" ]; then
    start_server
    prepare_demonstration "$port"
    draw_frames "$([ -n "$playing" ] && echo N || echo Y)"
fi
start_program
if [ -n "$playing" ]; then play; else wait "$program_pid"; fi
