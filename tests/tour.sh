#!/usr/bin/env bash
# Runs the program in a virtual display as a person would, by mouse, through the local workflow, and saves a picture
# of each step:  tour.sh BIN_DIR PICTURE_DIR [FILES or FOLDERS]
# Prints the three counts at the end. Without files a small real collection is made.
set -euo pipefail
bin=$(realpath "$1")
pictures=$2
shift 2
mkdir -p "$pictures"
pictures=$(realpath "$pictures")
rm -f "$pictures"/*.png
work=$(mktemp -d)
log=$work/log

cleanup() {
    kill $(jobs -p) 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

start_display() {
    mkfifo "$work/display"
    Xvfb -displayfd 3 -screen 0 1300x860x24 3>"$work/display" 2>/dev/null &
    DISPLAY=:$(head -n 1 "$work/display")
    export DISPLAY
    openbox 2>/dev/null &
    export XDG_RUNTIME_DIR=$work
}

# Starts the program and waits for its window.
start_program() {
    (cd "$work/flat" && exec "$bin/melodrift" "$@") >>"$log" 2>&1 &
    program=$!
    window=$(main_window)
}

main_window() {
    local id width
    for _ in $(seq 100); do
        for id in $(xdotool search --onlyvisible --name '^Melodrift$' 2>/dev/null); do
            width=$(xdotool getwindowgeometry --shell "$id" | sed -n 's/^WIDTH=//p')
            [ "$width" -ge 900 ] && { echo "$id"; return; }
        done
        sleep 0.1
    done
    echo "the window did not appear" >&2
    return 1
}

stop_program() {
    kill "$program" 2>/dev/null || true
    wait "$program" 2>/dev/null || true
}

# Waits until a second window of the program is there, or gone.
wait_dialog() {
    local wanted=$1 count
    for _ in $(seq 600); do
        count=$(xdotool search --onlyvisible --pid "$program" 2>/dev/null | sort -u | wc -l)
        if [ "$wanted" = shown ] && [ "$count" -gt 1 ]; then sleep 0.4; return; fi
        if [ "$wanted" = gone ] && [ "$count" -le 1 ]; then sleep 0.4; return; fi
        sleep 0.1
    done
    echo "a dialog was not $wanted" >&2
    return 1
}

size() {
    xdotool windowsize --sync "$window" "$1" "$2" || true
    sleep 0.5
}

click() {
    xdotool mousemove --window "$window" "$1" "$2"
    sleep 0.1
    xdotool click 1
    sleep "${3:-0.6}"
}

picture() {
    # Away from everything that would light up or tell a tip.
    [ "${2:-}" = stay ] || xdotool mousemove --window "$window" 700 5
    sleep 0.3
    import -window root -crop "$(frame)" +repage "$pictures/$1.png"
}

# The window's place on the screen, as a crop.
frame() {
    xwininfo -id "$window" | awk '/Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF }
        /Width:/ { w = $NF } /Height:/ { h = $NF } END { printf "%dx%d+%d+%d", w, h, x, y }'
}

# All music under the given paths in one folder, as links, where a file dialog can take it at once.
flatten() {
    local number=0 file
    mkdir -p "$work/flat"
    while IFS= read -r -d '' file; do
        number=$((number + 1))
        ln -s "$file" "$work/flat/$(printf '%04d' "$number").${file##*.}"
    done < <(find -L "$@" -type f -print0 | sort -z)
}

# Takes everything that the open file dialog shows.
choose_all() {
    local dialog WIDTH HEIGHT WINDOW X Y SCREEN
    dialog=$(xdotool search --all --onlyvisible --pid "$program" --name '^open$' | tail -n 1)
    eval "$(xdotool getwindowgeometry --shell "$dialog")"
    xdotool mousemove --window "$dialog" $((WIDTH / 2)) $((HEIGHT / 2))
    xdotool click 1
    sleep 0.3
    xdotool key ctrl+a
    sleep 0.3
    xdotool key alt+o
    for _ in $(seq 50); do
        xdotool search --all --onlyvisible --pid "$program" --name '^open$' >/dev/null 2>&1 || return 0
        sleep 0.1
    done
    echo "the file dialog did not take the files" >&2
    return 1
}

# One walk through the local workflow at a window size.
walk() {
    local width=$1 height=$2 name=$1x$2
    start_program
    size "$width" "$height"
    picture "$name-1-itunes-mode"
    click $((width - 70)) 52 1.2
    picture "$name-2-local-mode"
    click $((width / 2 + 68)) 52
    wait_dialog shown
    choose_all
    wait_dialog shown
    picture "$name-3-added" stay
    xdotool key Return
    wait_dialog gone
    picture "$name-4-all-grid"
    click 270 200
    picture "$name-5-song"
    click $((width - 355)) 121
    picture "$name-6-all-table"
    click 100 168
    picture "$name-7-undefined"
    click $((width - 385)) 121
    click 100 212
    picture "$name-8-duplicates"
    click 270 200
    picture "$name-9-group"
    click 75 10 0.4
    click 75 30
    wait_dialog shown
    picture "$name-10-about" stay
    stop_program
}

# A large folder, to see the intake at work.
during_intake() {
    "$bin/make_collection" "$work/large" 3000
    for copy in 1 2 3 4 5 6; do cp -r "$work/large" "$work/large$copy"; done
    start_program "$work/large" "$work"/large?
    size 1120 713
    sleep 1.3
    picture intake stay
    stop_program
}

start_display
if [ $# -eq 0 ]; then
    "$bin/make_collection" "$work/Music"
    set -- "$work/Music"
fi
flatten "$@"
walk 1120 713
walk 1000 700
during_intake
sed -n 's/^songs: /songs: /p' "$log" | head -n 1
echo "pictures: $pictures"
