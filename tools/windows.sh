# shellcheck shell=bash disable=SC2154
# Sourced by scripts that work the program's windows on a display which nobody else uses; needs tools/environment.sh, and
# in $screens the folder for pictures.

# shown TITLE: a window with just this title is on the display.
shown() {
    xdotool search --onlyvisible --name "^$1\$"
}

# find_window TITLE [SECONDS]: waits for the window and sets window. A search fails when any window closes meanwhile, so it is repeated.
find_window() {
    wait_for "${2-20}" found "$1" || fail "there is no window $1"
}

found() {
    window=$(shown "$1" | tail -1)
    [ -n "$window" ]
}

any_shown() {
    shown "$1" || shown "$2"
}

hidden() {
    ! shown "$1"
}

look() {
    import -window root ppm:- | md5sum
}

looks_otherwise() {
    [ "$(look)" != "$1" ]
}

# Waits until the display has come to rest: three looks in a row are alike.
settle() {
    local before='' now='' alike=0 tries
    for ((tries = 0; tries < 60 && alike < 2; tries++)); do
        now=$(look)
        if [ "$now" = "$before" ]; then alike=$((alike + 1)); else alike=0; fi
        before=$now
        sleep 0.05
    done
}

# picture NAME [TITLE]: leaves NAME.png in $screens, of the window with this title or of the whole display.
picture() {
    local window=root
    settle
    [ -z "${2-}" ] || find_window "$2"
    import -window "$window" "$screens/$1.png"
}

fail() {
    picture failed
    echo "$1; see $screens/failed.png" >&2
    exit 1
}

# act TITLE ACTION...: gives the window the keyboard, hands the ACTION to xdotool and waits until it shows.
act() {
    local window before
    find_window "$1"
    shift
    settle
    before=$(look)
    xdotool windowfocus "$window" "${@//WINDOW/$window}"
    wait_for 20 looks_otherwise "$before" || fail "nothing came of $*"
}

# press TITLE KEY...
press() {
    local title=$1
    shift
    act "$title" key --delay 60 "$@"
}

# double_click TITLE X Y: at this place in the window.
double_click() {
    act "$1" mousemove --window WINDOW "$2" "$3" click --repeat 2 --delay 60 1
}

# leave PROCESS: Alt+X, and the program must end.
leave() {
    press Pelnor alt+x
    wait_for 20 is_gone "$1" || fail "the program did not end"
}
