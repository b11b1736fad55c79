#!/usr/bin/env python3
"""How many copies of a recording "melodrift-cli duplicates --by sound" finds, and what it takes for one.

    bench/sound_likeness.py build/release/bin/melodrift-cli [SONGS]

Makes songs with ffmpeg: a tune, a bass and chords that a number draws by chance, over drums of noise, 40 to 60
seconds each. Of each it makes the versions below, has the program group all of them at once, and writes a table: of
each version how many are in the group of the song's FLAC file. Everything is drawn from fixed numbers, so that two
runs of one ffmpeg make the same.
"""
import concurrent.futures
import json
import os
import random
import subprocess
import sys
import tempfile
import time

# label, ending, ffmpeg's options, and whether it is the same recording
VERSIONS = [
    ("WAV", "wav", "", True),
    ("MP3, 64 kbit/s", "mp3", "-b:a 64k", True),
    ("MP3, 128 kbit/s", "mp3", "-b:a 128k", True),
    ("MP3, 320 kbit/s", "mp3", "-b:a 320k", True),
    ("MP3, variable bit rate", "mp3", "-q:a 5", True),
    ("MP3, one channel, 22 kHz", "mp3", "-ac 1 -ar 22050 -b:a 48k", True),
    ("AAC, 64 kbit/s", "aac", "-b:a 64k", True),
    ("M4A, 96 kbit/s", "m4a", "-c:a aac -b:a 96k", True),
    ("M4A, 256 kbit/s", "m4a", "-c:a aac -b:a 256k", True),
    ("M4A, lossless", "m4a", "-c:a alac", True),
    ("OGG, Vorbis", "ogg", "-c:a libvorbis -q:a 3", True),
    ("OGG, Opus, 64 kbit/s", "ogg", "-c:a libopus -b:a 64k", True),
    ("WMA, 64 kbit/s", "wma", "-b:a 64k", True),
    ("WMA, 128 kbit/s", "wma", "-b:a 128k", True),
    ("a third as loud", "mp3", "-af volume=0.33", True),
    ("half a second off the beginning", "mp3", "-ss 0.5", True),
    ("two seconds off the beginning", "mp3", "-ss 2", True),
    ("five seconds off the beginning", "mp3", "-ss 5", True),
    ("three seconds off the end", "mp3", "-t {shorter}", True),
    ("two seconds of silence before", "mp3", "-af adelay=2000|2000", True),
    ("faster by 1 %", "mp3", "-af atempo=1.01", False),
    ("faster by 3 %", "mp3", "-af atempo=1.03", False),
    ("slower by 5 %", "mp3", "-af atempo=0.95", False),
    ("higher by 2 %", "mp3", "-af asetrate=44982,aresample=44100,atempo=0.98039", False),
    ("higher by a semitone", "mp3", "-af asetrate=46722,aresample=44100,atempo=0.94387", False),
    ("another bass and other drums", "remix", "", False),
    ("without tune, as for singing to it", "instrumental", "", False),
]


def chance(seed, beat):
    """Of 0 to 1, another one for each beat."""
    return f"abs(mod(sin(floor(t*{beat:.3f})*12.9898+{seed}*78.233)*437.585\\,1))"


def note(seed, beat, low, steps):
    return f"{low:.2f}*pow(2\\,floor({steps}*{chance(seed, beat)})/12)"


def tone(place, pitch, loud, overtones):
    """The pitch is computed once for all its overtones, and kept in a variable of ffmpeg's."""
    heard = "+".join(f"{loud / n:.3f}*sin({n}*ld({place}))" for n in range(1, overtones + 1))
    return f"0*st({place}\\,2*PI*t*{pitch})+{heard}"


def sound(number, kind):
    draw = random.Random(number)
    beat, low, length = draw.uniform(1.5, 3.5), draw.uniform(180, 360), draw.uniform(40, 60)
    other = 500 if kind == "remix" else 0
    parts = {
        "tune": tone(0, note(number, beat, low, 15), 0.2, 3),
        "bass": tone(1, note(number + 100 + other, beat / 2, low / 4, 9), 0.2, 2),
        "chord": tone(2, note(number + 200, beat / 4, low / 2, 7), 0.1, 2),
        "drums": f"0.3*(random(0)-0.5)*lt(mod(t*{beat * (1.5 if other else 1):.3f}\\,1)\\,0.15)",
    }
    if kind == "instrumental":
        del parts["tune"]
    return f"aevalsrc={'+'.join(parts.values())}:s=44100:d={length:.2f}", length


def encode(source, target, options):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *source, *options.split(), target], check=True)


def make_song(folder, number):
    """The song's number, and the version's, by the path of each file."""
    base = os.path.join(folder, f"{number:03}.flac")
    text, length = sound(number, "song")
    encode(["-f", "lavfi", "-i", text], base, "")
    made = {base: (number, None)}
    for version, (_, ending, options, _) in enumerate(VERSIONS):
        path = os.path.join(folder, f"{number:03}-{version:02}.{ending}")
        source = ["-i", base]
        if ending in ("remix", "instrumental"):
            path += ".mp3"
            source = ["-f", "lavfi", "-i", sound(number, ending)[0]]
        encode(source, path, options.format(shorter=length - 3))
        made[path] = (number, version)
    return made


def make(folder, songs):
    made = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() * 2) as pool:
        for one in pool.map(lambda number: make_song(folder, number), range(songs)):
            made.update(one)
    return made


def group(program, folder, home):
    call = [program, "duplicates", "--by", "sound", "--json", folder]
    begun = time.monotonic()
    output = subprocess.run(call, env={**os.environ, "XDG_CACHE_HOME": home}, stdout=subprocess.PIPE, check=True).stdout
    groups = [[song["path"] for song in one["songs"]] for one in json.loads(output)["groups"]]
    return groups, time.monotonic() - begun


def judge(groups, made, songs):
    found = [0] * len(VERSIONS)
    mixed = 0
    for paths in groups:
        numbers = {made[path][0] for path in paths}
        mixed += len(numbers) > 1
        bases = {made[path][0] for path in paths if made[path][1] is None}
        for path in paths:
            number, version = made[path]
            if version is not None and number in bases:
                found[version] += 1
    print("| version, next to the FLAC file of the song | same recording | found |\n| --- | --- | --- |")
    for (label, _, _, same), count in zip(VERSIONS, found):
        print(f"| {label} | {'yes' if same else 'no'} | {count} of {songs} |")
    right = sum(count for (_, _, _, same), count in zip(VERSIONS, found) if same)
    wrong = sum(found) - right
    wanted = songs * sum(same for _, _, _, same in VERSIONS)
    print(f"\nrecall {right / wanted:.1%}, precision {right / max(1, right + wrong):.1%}, "
          f"groups with two songs: {mixed}")


def main():
    program, songs = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 20
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as home:
        made = make(folder, songs)
        groups, first = group(program, folder, home)
        second = group(program, folder, home)[1]
        judge(groups, made, songs)
        print(f"{len(made)} files, {first:.1f} s, and {second:.1f} s once their fingerprints were kept")


if __name__ == "__main__":
    main()
