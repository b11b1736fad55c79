# The part of the tour that makes the foot of the window say whatever it can say; read by tour.sh.

# What the foot of the window tells at a window size.
foot() {
    foot_of_songs "$@"
    foot_of_covers "$@"
    foot_of_drops "$@"
    foot_of_deletions "$@"
    foot_of_groups "$@"
    foot_of_shortages "$@"
    foot_of_libraries "$@"
}

# Songs, one of them twice, and a file that is none.
gather_songs() {
    rm -rf "$work/foot"
    mkdir "$work/foot"
    find -L "$work/copy" -name '*.mp3' -exec cp -t "$work/foot" {} +
    cp "$(find "$work/foot" -name '*.mp3' -print -quit)" "$work/foot/copy.mp3"
    echo "no music" >"$work/foot/broken.mp3"
}

# All are taken in.
start_with_songs() {
    gather_songs
    start_program "$work/foot"
    size "$1" "$2"
    wait_dialog shown
}

# Presses a key and waits for what comes of it.
key() {
    xdotool key "$1"
    sleep "${2:-1}"
}

# Types a title for the first song.
retitle() {
    click 270 200
    click $(($1 + 96)) 608
    xdotool key ctrl+a
    xdotool type "$2"
    sleep 0.3
}

# An intake, saves and songs that were left.
foot_of_songs() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330))
    start_with_songs "$width" "$height"
    picture "$name-foot-1-intake" stay
    key Return
    wait_dialog gone
    rest "$name, foot line"
    click 240 $((height - 13)) # behind one of so many files
    picture "$name-foot-2-list"
    key Escape
    retitle "$left" "Harbour lights at dusk"
    click $((left + 96)) 608
    picture "$name-foot-3-saved"
    tip "$name-foot-4-undo" 310 $((height - 13))
    key ctrl+z
    picture "$name-foot-5-edit-taken-back"
    chmod a-w "$work/foot"
    retitle "$left" "Midnight Ferry"
    click $((left + 96)) 608
    picture "$name-foot-6-failed"
    chmod u+w "$work/foot"
    retitle "$left" "A title that nobody ever saved"
    click 380 200
    picture "$name-foot-7-left"
    retitle "$left" "Saved, and then changed by another program"
    click $((left + 96)) 608
    touch "$work"/foot/*.mp3
    key ctrl+z
    picture "$name-foot-8-not-taken-back"
    stop_program
}

# Clears the group that shows.
clear_group() {
    click $(($1 + 80)) $(($2 - 57))
    wait_dialog shown
    click_in "$(window_of_size 441 145)" 247 116
    wait_dialog gone
}

# Deletions of one group and of all, and what cannot go or come back.
foot_of_deletions() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330)) file
    start_with_songs "$width" "$height"
    key Return
    wait_dialog gone
    click 100 212
    click 270 200
    find "$work/foot" -name '*.mp3' >"$work/before"
    clear_group "$left" "$height"
    picture "$name-foot-deletion-1-group"
    key ctrl+z
    picture "$name-foot-deletion-2-taken-back"
    click $((left + 240)) $((height - 57)) 1.5
    picture "$name-foot-deletion-3-all"
    while read -r file; do [ -e "$file" ] || echo "somebody's" >"$file"; done <"$work/before"
    key ctrl+z
    picture "$name-foot-deletion-4-paths-taken"
    stop_program
    start_with_songs "$width" "$height"
    key Return
    wait_dialog gone
    touch "$work"/foot/*.mp3
    click 100 212
    click 270 200
    click $((left + 240)) $((height - 57)) 1.5
    picture "$name-foot-deletion-5-stayed"
    stop_program
}

# Pictures that are no cover: one that is none, and one that the song's file has no room for.
foot_of_covers() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330))
    echo "no picture" >"$work/No picture.png"
    convert -size 400x400 xc:teal "$work/Large picture.png"
    truncate -s 1G "$work/Large picture.png"
    start_with_songs "$width" "$height"
    key Return
    wait_dialog gone
    click 270 200
    click $((left + 96)) 608
    choose_cover "$left" "$work/No picture.png"
    picture "$name-foot-cover-1-none"
    choose_cover "$left" "$work/Large picture.png"
    picture "$name-foot-cover-2-large"
    stop_program
}

choose_cover() {
    click $(($1 + 165)) 230
    wait_dialog shown
    xdotool type "$2"
    key Return
    wait_dialog gone
}

# A drop of Windows Media files, which are left out where nobody named them, and what "Show" tells of them.
foot_of_drops() {
    local width=$1 height=$2 name=$3 offering offer
    rm -rf "$work/flat"
    mkdir "$work/flat"
    find -L "$work/copy" -name '*.mp3' -exec cp -t "$work/flat" {} \; -quit
    find -L "$work/copy" -name '*.wma' -exec cp -t "$work/flat" {} +
    echo "no music" >"$work/flat/broken.mp3"
    offer_files
    start_program
    xdotool windowmove "$window" 0 0
    size "$width" "$height"
    click $((width - 70)) 52 1.2
    drop_offered
    wait_dialog shown
    kill "$offering"
    wait "$offering" || true
    key Return
    wait_dialog gone
    picture "$name-foot-drop-1-left-out"
    click 463 $((height - 13))
    picture "$name-foot-drop-2-list"
    rest "$name, list of files"
    stop_program
}

# Another run of the program, which lies in the corner of the screen with its dialog to open files.
offer_files() {
    start_program
    size 1000 700
    click 930 52 1.2
    xdotool key ctrl+o
    wait_dialog shown
    offering=$program
    offer=$(xdotool search --all --onlyvisible --pid "$program" --name '^open$' | tail -n 1)
    xdotool windowmove "$window" 1300 850 windowmove "$offer" 1300 850
}

# Drags all that it offers onto the list of songs.
drop_offered() {
    xdotool windowactivate --sync "$offer"
    click_in "$offer" 300 200
    key ctrl+a
    xdotool mousemove --window "$offer" $((160 * scale)) $((68 * scale)) mousedown 1
    xdotool mousemove_relative -- -60 -60
    sleep 0.3
    xdotool mousemove --window "$window" $((320 * scale)) $((400 * scale))
    sleep 0.3
    xdotool mousemove_relative 9 9
    sleep 0.3
    xdotool mouseup 1
}

# The next group is a link away until there is none; what came of the last one is a column as at the start.
foot_of_groups() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330)) song
    rm -rf "$work/foot"
    mkdir "$work/foot"
    find -L "$work/copy" -name '*.mp3' | sort | head -n 2 | while read -r song; do
        cp "$song" "$work/foot"
        cp "$song" "$work/foot/again $(basename "$song")"
    done
    start_program "$work/foot"
    size "$width" "$height"
    wait_dialog shown
    key Return
    wait_dialog gone
    click 100 212
    click 270 200
    clear_group "$left" "$height"
    picture "$name-foot-groups-1-next"
    click 206 $((height - 13))
    picture "$name-foot-groups-2-shown"
    clear_group "$left" "$height"
    picture "$name-foot-groups-3-none"
    stop_program
}

# No trash, no sound device, no program that opens anything.
foot_of_shortages() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330))
    echo "no folder" >"$work/nothing"
    export XDG_DATA_HOME=$work/nothing MELODRIFT_AUDIO_OUTPUT=pcm:/no/such/folder/sound.wav
    program_path=$work/nothing start_with_songs "$width" "$height"
    key Return
    wait_dialog gone
    key F1
    picture "$name-foot-shortage-1-help"
    click 100 212
    click 270 200
    click $((left + 243)) 181 2
    picture "$name-foot-shortage-2-sound"
    xdotool windowclose "$(window_of_size 560 350)"
    wait_dialog gone
    click $((left + 240)) $((height - 57)) 1.5
    picture "$name-foot-shortage-3-for-good"
    export XDG_DATA_HOME=$work/data MELODRIFT_AUDIO_OUTPUT=null
    stop_program
}

# Libraries that are missing, broken and empty, and tracks that leave one.
foot_of_libraries() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330)) kind
    head -n 40 "$work/Library.xml" >"$work/broken.xml"
    echo '<plist version="1.0"><dict><key>Tracks</key><dict></dict></dict></plist>' >"$work/empty.xml"
    for kind in missing broken empty; do
        start_program --itunes-library "$work/$kind.xml"
        size "$width" "$height"
        click $((width / 2 + 68)) 52 1.5
        picture "$name-foot-library-$kind" stay
        key Return
        stop_program
    done
    cp "$work/Library.xml" "$work/cleared.xml"
    start_program --itunes-library "$work/cleared.xml"
    size "$width" "$height"
    click $((width / 2 + 68)) 52 2
    click 100 212
    click 270 200
    click $((left + 240)) $((height - 57)) 2
    picture "$name-foot-library-cleared"
    stop_program
}
