# The part of the tour that goes by keys alone; read by tour.sh.

# What keys show at a window size: the outline of what has them, menus, the bar of a row and the card, and the field
# for what is looked for.
keys() {
    local width=$1 height=$2 name=$3
    start_with_songs "$width" "$height"
    press Return
    wait_dialog gone
    press Home Right
    picture "$name-keys-1-view"
    press Menu
    picture "$name-keys-2-menu" stay
    press Escape F2 Tab Tab Tab
    picture "$name-keys-3-field"
    press Escape Tab
    picture "$name-keys-4-button"
    press ctrl+3 Home alt+Down
    picture "$name-keys-5-row"
    press shift+F10
    picture "$name-keys-6-row-menu" stay
    press Escape ctrl+i
    picture "$name-keys-7-card" stay
    press Escape ctrl+g
    picture "$name-keys-8-table"
    press ctrl+1 ctrl+f e
    picture "$name-keys-9-find"
    press Return Home Down
    picture "$name-keys-10-found"
    rest "$name, keys"
    stop_program
}

press() {
    local each
    for each in "$@"; do
        xdotool key "$each"
        sleep 0.3
    done
}
