# shellcheck shell=bash disable=SC2154
# Sourced by run.sh: what the demonstration does when nobody is there to do it, and the pictures that it takes of that.

# The frame, whatever group its title names.
frame='(.* - )?Pelnor'

# choose KEY...: opens the menu bar and walks to a command with these keys.
choose() {
    press "$frame" F10 "$@" Return
}

fetch() {
    press "$frame" i
    wait_for 20 any_shown Articles Disconnect || fail "the download did not start"
    # The download is over in a moment: hold the server for as long as the picture takes.
    kill -STOP "$server_pid"
    picture demo-2-fetching
    kill -CONT "$server_pid"
    find_window Disconnect 60
    picture demo-3-announced
    press Disconnect Return
    wait_for 20 hidden Disconnect || fail "the announcement did not close"
}

# Three articles on the railway, so that the list has something read in it; then one with quotes of three depths.
read_some() {
    press "$frame" Down Down Down Down Return
    press "$frame" Return Return Return
    press "$frame" Escape
    picture demo-4-subjects "$frame"
    press "$frame" Escape
    press "$frame" Up Up Return
    press "$frame" Down Down Down Down Return
    picture demo-5-article "$frame"
    press "$frame" Escape Escape
    picture demo-6-groups "$frame"
}

# The busy group, where the limit left articles on the server: what is offered to whoever cannot keep up.
consider_catch_up() {
    local dialog='記事の読み飛ばし'
    press "$frame" Down
    choose Return Down Down Down
    find_window "$dialog"
    press "$dialog" space
    picture demo-7-catch-up
    press "$dialog" Escape
}

# The only category is the first row, the group that is left to choose the fifth of its groups.
subscribe() {
    local dialog='ｸﾞﾙｰﾌﾟの購読/中止'
    choose Return Down Down
    find_window "$dialog"
    press "$dialog" space
    double_click "$dialog" 40 57
    double_click "$dialog" 40 113
    picture demo-8-subscribe "$dialog"
    press "$dialog" Return
}

look_at_settings() {
    local dialog='プロパティ'
    choose Right Return Down
    find_window "$dialog"
    picture demo-9-settings
    press "$dialog" Escape
}

play() {
    mkdir -p "$screens"
    rm -f "$screens"/demo-*.png
    find_window "$frame" 60
    picture demo-1-start
    fetch
    read_some
    consider_catch_up
    subscribe
    look_at_settings
    leave "$program_pid"
    program_pid=
    echo "The pictures of the demonstration:"
    ls "$screens"/demo-*.png
}
