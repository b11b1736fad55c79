# The part of the tour that makes the foot of the window say whatever it can say; read by tour.sh.

# What the foot of the window tells at a window size.
foot() {
    foot_of_songs "$@"
    foot_of_deletions "$@"
    foot_of_shortages "$@"
    foot_of_libraries "$@"
}

# Songs, one of them twice, and a file that is none; all are taken in.
start_with_songs() {
    rm -rf "$work/foot"
    mkdir "$work/foot"
    find -L "$work/copy" -name '*.mp3' -exec cp -t "$work/foot" {} +
    cp "$(find "$work/foot" -name '*.mp3' -print -quit)" "$work/foot/copy.mp3"
    echo "no music" >"$work/foot/broken.mp3"
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
    retitle "$left" "Harbour Lights"
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

# Deletions of one group and of all, and what cannot go or come back.
foot_of_deletions() {
    local width=$1 height=$2 name=$3 left=$(($1 - 330)) file
    start_with_songs "$width" "$height"
    key Return
    wait_dialog gone
    click 100 212
    click 270 200
    find "$work/foot" -name '*.mp3' >"$work/before"
    click $((left + 80)) $((height - 57))
    wait_dialog shown
    click_in "$(window_of_size 441 145)" 247 116
    wait_dialog gone
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
