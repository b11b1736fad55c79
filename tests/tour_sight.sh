# The part of the tour that looks at views with nothing to show; read by tour.sh.

# What the middle of the window says at a window size, before a scan and after one that finds nothing to tidy.
sight() {
    sight_of_libraries "$@"
    sight_of_tidy_songs "$@"
}

# No library, another one that is chosen by keys, and one that was named.
sight_of_libraries() {
    local width=$1 height=$2 name=$3
    mkdir -p "$work/nobody"
    cp "$work/Library.xml" "$work/nobody/My library.xml"
    HOME=$work/nobody start_program
    size "$width" "$height"
    picture "$name-sight-1-no-library"
    rest "$name, no library"
    press Tab
    picture "$name-sight-2-button"
    press space
    wait_dialog shown
    picture "$name-sight-3-dialog" stay
    xdotool type "$work/nobody/My library.xml"
    press Return
    wait_dialog gone
    picture "$name-sight-4-chosen"
    rest "$name, chosen library"
    click $((width / 2 + 68)) 52 2
    picture "$name-sight-5-scanned"
    stop_program
}

# Songs that are added, and scanned after a look at the other views.
sight_of_tidy_songs() {
    local width=$1 height=$2 name=$3
    rm -rf "$work/tidy"
    "$bin/make_collection" "$work/tidy" 2
    start_program "$work/tidy"
    size "$width" "$height"
    wait_dialog shown
    press Escape
    wait_dialog gone
    press ctrl+2
    picture "$name-sight-6-undefined-not-scanned"
    press ctrl+3
    picture "$name-sight-7-duplicates-not-scanned"
    click $((width / 2 + 68)) 52 1
    press ctrl+2
    picture "$name-sight-8-undefined"
    press ctrl+3
    picture "$name-sight-9-duplicates"
    press ctrl+g
    picture "$name-sight-10-table"
    rest "$name, nothing to tidy"
    stop_program
}
