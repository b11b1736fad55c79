#!/usr/bin/env bash
# Runs the program in a virtual display as a person would, by mouse, through both modes, and saves a picture of each
# step, at two window sizes and once on a dense screen:  tour.sh BIN_DIR PICTURE_DIR [FILES or FOLDERS]
# Prints the three counts at the end, and for every screen what share of a core the program takes while nothing
# happens; fails where it is too much. Without files a small real collection is made.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
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
    exec 7>&- 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

start_display() {
    mkfifo "$work/display"
    Xvfb -displayfd 3 -screen 0 2600x1720x24 3>"$work/display" 2>/dev/null &
    DISPLAY=:$(head -n 1 "$work/display")
    export DISPLAY
    openbox 2>/dev/null &
    export XDG_RUNTIME_DIR=$work XDG_DATA_HOME=$work/data
}

# Starts the program, which finds others by `program_path` if that is set, and waits for its window.
start_program() {
    (cd "$work" && mkdir -p flat && cd flat && exec env PATH="${program_path:-$PATH}" "$bin/melodrift" "$@") \
        >>"$log" 2>&1 &
    program=$!
    window=$(main_window)
}

main_window() {
    local id width
    for _ in $(seq 100); do
        for id in $(xdotool search --all --onlyvisible --pid "$program" --name '^Melodrift$' 2>/dev/null); do
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
    local wanted=$1 windows count
    for _ in $(seq 600); do
        # Fails when a window goes while it is looked at.
        windows=$(xdotool search --onlyvisible --pid "$program" 2>/dev/null) || { sleep 0.1; continue; }
        count=$(sort -u <<<"$windows" | wc -l)
        if [ "$wanted" = shown ] && [ "$count" -gt 1 ]; then sleep 0.4; return; fi
        if [ "$wanted" = gone ] && [ "$count" -le 1 ]; then sleep 0.4; return; fi
        sleep 0.1
    done
    echo "a dialog was not $wanted" >&2
    return 1
}

# Sizes and places are in points; a dense screen has several pixels to each.
scale=1

size() {
    xdotool windowsize --sync "$window" $(($1 * scale)) $(($2 * scale)) || true
    sleep 0.5
}

click() {
    click_in "$window" "$@"
}

click_in() {
    xdotool mousemove --window "$1" $(($2 * scale)) $(($3 * scale))
    sleep 0.1
    xdotool click 1
    sleep "${4:-0.6}"
}

picture() {
    # Away from everything that would light up or tell a tip.
    [ "${2:-}" = stay ] || xdotool mousemove --window "$window" $((700 * scale)) $((5 * scale))
    sleep 0.3
    import -window root -crop "$(frame)" +repage "$pictures/$1.png"
}

# What shows where the pointer rests.
tip() {
    xdotool mousemove --window "$window" $(($2 * scale)) $(($3 * scale))
    sleep 1.2
    picture "$1" stay
    xdotool mousemove --window "$window" $((700 * scale)) $((5 * scale))
    sleep 0.5
}

# Clock ticks of processor time that the program has taken.
ticks() {
    sed 's/.*) //' "/proc/$program/stat" | awk '{ print $12 + $13 }'
}

# Prints the processor time of five seconds on this screen, after one in which it settles, as a share of a core, which
# has to be under one per cent, or under the one given.
busy=
rest() {
    local before share
    sleep 1
    before=$(ticks)
    sleep 5
    share=$(awk -v ticks=$(($(ticks) - before)) -v hertz="$(getconf CLK_TCK)" \
        'BEGIN { printf "%.1f", 100 * ticks / hertz / 5 }')
    echo "at rest, $1: $share % of a core"
    awk -v share="$share" -v limit="${2:-1}" 'BEGIN { exit !(share < limit) }' && return
    echo "that is too much" >&2
    busy=$1
}

# The window with what lies beside it.
wide_picture() {
    sleep 0.3
    import -window root -crop "$(wide_frame)" +repage "$pictures/$1.png"
}

# The program's window of this size, in points.
window_of_size() {
    local id WINDOW X Y WIDTH HEIGHT SCREEN
    for id in $(xdotool search --onlyvisible --pid "$program" 2>/dev/null); do
        eval "$(xdotool getwindowgeometry --shell "$id")"
        [ "$WIDTH" -eq $(($1 * scale)) ] && [ "$HEIGHT" -eq $(($2 * scale)) ] && { echo "$id"; return; }
    done
    echo "no window of $1 x $2" >&2
    return 1
}

# Holds the program as soon as a dialog shows, for a picture of what is over in a moment.
picture_in_passing() {
    for _ in $(seq 400); do
        if [ "$(xdotool search --onlyvisible --pid "$program" 2>/dev/null | sort -u | wc -l)" -gt "$2" ]; then
            sleep 0.08
            kill -STOP "$program"
            picture "$1" stay
            kill -CONT "$program"
            return
        fi
    done
    echo "nothing showed for $1" >&2
    return 1
}

# The window's place on the screen, as a crop.
frame() {
    xwininfo -id "$window" | awk '/Absolute upper-left X/ { x = $NF } /Absolute upper-left Y/ { y = $NF }
        /Width:/ { w = $NF } /Height:/ { h = $NF } END { printf "%dx%d+%d+%d", w, h, x, y }'
}

# The same with room for a window beside it.
wide_frame() {
    frame | awk -F '[x+]' -v more=$((600 * scale)) '{ printf "%dx%d+%d+%d", $1 + more, $2, $3, $4 }'
}

# Copies of all music under the given paths in one folder, where a file dialog can take it at once.
flatten() {
    local number=0 file
    rm -rf "$work/flat"
    mkdir -p "$work/flat"
    while IFS= read -r -d '' file; do
        number=$((number + 1))
        cp "$file" "$work/flat/$(printf '%04d' "$number").${file##*.}"
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

# Starts the services that identifications ask; `services` tells them how to behave.
start_services() {
    mkfifo "$work/manners" "$work/addresses"
    "$bin/identify_services" <"$work/manners" >"$work/addresses" &
    exec 7>"$work/manners"
    local variable
    while read -r variable; do
        export "${variable?}"
        case $variable in *_KEY=*) break ;; esac
    done <"$work/addresses"
}

services() {
    echo "$1" >&7
    sleep 0.2
}

# The song whose details show: editing, identifying, the failure.
walk_details() {
    local width=$1 name=$2 left=$(($1 - 330))
    click $((left + 96)) 608
    picture "$name-details-1-editing"
    rest "$name, editing"
    click $((left + 160)) 472
    picture "$name-details-2-genres" stay
    xdotool key Escape
    click $((left + 234)) 608
    services silent
    click $((left + 234)) 608 1
    picture "$name-details-3-identifying"
    click $((left + 234)) 608
    services proper
    click $((left + 234)) 608 6
    picture "$name-details-4-identified"
    click $((left + 96)) 608
    picture "$name-details-5-applied"
    services failing
    click $((left + 234)) 608
    wait_dialog shown
    picture "$name-details-6-failed" stay
    xdotool key Return
    wait_dialog gone
    click $((left + 234)) 608
}

# The group whose rows show: tips, playing, the card, the deletion.
walk_group() {
    local width=$1 name=$2 left=$(($1 - 330)) player
    tip "$name-group-1-row" $((left + 100)) 247
    tip "$name-group-1-clear-all" $((left + 245)) $(($3 - 57))
    click $((left + 243)) 281 1.5
    wide_picture "$name-group-2-playing"
    player=$(window_of_size 560 350)
    click_in "$player" 250 320 0.8
    wide_picture "$name-group-3-sought"
    xdotool windowclose "$player"
    wait_dialog gone
    click $((left + 273)) 181
    wait_dialog shown
    picture "$name-group-4-card" stay
    click_in "$(window_of_size 300 230)" 150 190
    wait_dialog gone
    click $((left + 80)) $(($3 - 57))
    wait_dialog shown
    picture "$name-group-5-confirmation" stay
    rest "$name, confirmation"
    click_in "$(window_of_size 441 145)" 247 116
    wait_dialog gone
    picture "$name-group-6-cleared"
}

# The table of all songs: ordered by title and backwards, a find, and one that finds nothing; then as before.
walk_finding() {
    local name=$1
    click 270 152
    picture "$name-6-sorted"
    click 270 152
    picture "$name-6-sorted-backwards"
    xdotool key ctrl+f
    xdotool type "1"
    picture "$name-6-found"
    xdotool type " nowhere"
    picture "$name-6-not-found"
    rest "$name, nothing found"
    xdotool key Escape
    click 270 152
}

# One walk through the local workflow at a window size.
walk() {
    local width=$1 height=$2 name=$3
    start_program
    size "$width" "$height"
    picture "$name-1-itunes-mode"
    rest "$name, iTunes mode"
    click $((width - 70)) 52 1.2
    picture "$name-2-local-mode"
    rest "$name, local mode"
    click $((width / 2 + 68)) 52
    wait_dialog shown
    choose_all
    wait_dialog shown
    picture "$name-3-added" stay
    rest "$name, message"
    xdotool key Return
    wait_dialog gone
    picture "$name-4-all-grid"
    rest "$name, grid"
    click 270 200
    picture "$name-5-song"
    rest "$name, song"
    walk_details "$width" "$name"
    click $((width - 355)) 121
    picture "$name-6-all-table"
    rest "$name, table"
    walk_finding "$name"
    click 100 168
    picture "$name-7-undefined"
    click $((width - 385)) 121
    click 100 212
    picture "$name-8-duplicates"
    rest "$name, duplicates"
    click 270 200
    picture "$name-9-group"
    rest "$name, group"
    walk_group "$width" "$name" "$height"
    click 75 10 0.4
    click 75 30
    wait_dialog shown
    picture "$name-10-about" stay
    rest "$name, about"
    stop_program
}

# A scan of a music library.
walk_library() {
    local width=$1 height=$2 name=$3
    start_program --itunes-library "$4"
    size "$width" "$height"
    click $((width / 2 + 68)) 52 2
    picture "$name-library-1-scanned"
    click 270 200
    picture "$name-library-2-song"
    rest "$name, song of a library"
    stop_program
}

# A scan at work needs a library that takes a moment.
during_scan() {
    "$bin/make_library" "$work/large" "$work/Large.xml"
    start_program --itunes-library "$work/Large.xml"
    size 1120 713
    click 628 52 1
    picture scanning stay
    stop_program
}

# A large folder, to see the intake at work.
during_intake() {
    start_program "$work/large"
    size 1120 713
    sleep 1.3
    picture intake stay
    wait_dialog shown
    xdotool key Return
    wait_dialog gone
    click 100 212
    click 270 200
    click 1030 656 0
    picture_in_passing waiting 1
    wait_dialog gone
    picture cleared
    xdotool key ctrl+z
    picture_in_passing taking-back 1
    wait_dialog gone
    picture taken-back
    stop_program
}

# A large group, and the timers that every song played leaves running.
after_songs() {
    local model song player
    model=$(find "$work/large" -name '*.mp3' -print -quit)
    mkdir "$work/fifty"
    for song in $(seq 50); do cp "$model" "$work/fifty/$song.mp3"; done
    start_program "$work/fifty"
    size 1120 713
    wait_dialog shown
    xdotool key Return
    wait_dialog gone
    click 100 212
    click 270 200
    picture fifty-1-rows
    rest "group of 50 rows"
    : >"$log"
    for song in $(seq 50); do
        click 1033 181 0.1
        click 1033 281 0.1
    done
    player=$(window_of_size 560 350)
    click_in "$player" 26 321
    picture fifty-2-paused stay
    [ "$(grep -c '^playing ' "$log")" -eq 100 ]
    rest "100 songs played, the last paused" 3
    stop_program
}

. "$here/tour_foot.sh"
. "$here/tour_keys.sh"
. "$here/tour_sight.sh"
start_display
start_services
export MELODRIFT_AUDIO_OUTPUT=null
if [ $# -eq 0 ]; then
    "$bin/make_collection" "$work/Music"
    set -- "$work/Music"
fi
# A copy: the tour edits and deletes.
mkdir -p "$work/copy"
cp -rL "$@" "$work/copy"
"$bin/make_library" "$work/copy" "$work/Library.xml"
for width in 1120 1000; do
    height=$((width == 1120 ? 713 : 700))
    walk_library $width $height ${width}x$height "$work/Library.xml"
    flatten "$@"
    walk $width $height ${width}x$height
    foot $width $height ${width}x$height
    keys $width $height ${width}x$height
    sight $width $height ${width}x$height
done
"$bin/make_collection" "$work/large/0" 3000
for copy in 1 2 3 4 5 6; do cp -r "$work/large/0" "$work/large/$copy"; done
during_scan
during_intake
after_songs
scale=2
export QT_SCALE_FACTOR=2
for width in 1120 1000; do
    height=$((width == 1120 ? 713 : 700))
    walk_library $width $height dense-${width}x$height "$work/Library.xml"
    flatten "$@"
    walk $width $height dense-${width}x$height
    foot $width $height dense-${width}x$height
    keys $width $height dense-${width}x$height
    sight $width $height dense-${width}x$height
done
sed -n 's/^songs: /songs: /p' "$log" | head -n 1
echo "pictures: $pictures"
[ -z "$busy" ]
