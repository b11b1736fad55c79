#!/usr/bin/env python3
"""melodrift-cli next to other programs that look for copies, on the same files in one run.

    bench/beside_others.py build/release/bin/melodrift-cli [SONGS] [ROUNDS]

Makes songs of 30 seconds with ffmpeg. Of each there is an MP3 file, the same file once more, one that differs in its
tags alone, and an OGG file of the same sound. All programs take turns, so that what else the machine does is shared
by all of them; of the rounds the medians are told. Those that are not installed are left out: jdupes, rmlint, beets,
and fpcalc of libchromaprint-tools. Writes a table for docs/cli.md.
"""
import json
import os
import random
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile

# fpcalc alone says what a file sounds like; which ones are equal takes a script.
EQUAL_SOUNDS = r"""find "$1" -type f | sort | while read -r file; do
    echo "$(fpcalc -raw "$file" | sed -n s/^FINGERPRINT=//p | md5sum | cut -c1-32) $file"
done | sort | uniq -w32 --all-repeated=separate
"""
EQUAL_SOUNDS_PARALLEL = r"""export LC_ALL=C; find "$1" -type f -print0 |
    xargs -0 -n1 -P"$(nproc)" sh -c 'echo "$(fpcalc -raw "$0" | sed -n s/^FINGERPRINT=//p | md5sum | cut -c1-32) $0"' |
    sort | uniq -w32 --all-repeated=separate
"""


def note(seed, beat, low, steps):
    """A tone that changes with each beat, by chance."""
    step = f"floor({steps}*abs(mod(sin(floor(t*{beat:.3f})*12.9898+{seed}*78.233)*437.585\\,1)))"
    return f"0.25*sin(2*PI*mod(t*{low:.1f}*pow(2\\,{step}/12)\\,1))"


def make_song(cli, folder, number):
    draw = random.Random(number)
    beat, low = draw.uniform(1.5, 3.5), draw.uniform(180, 360)
    sound = f"aevalsrc={note(number, beat, low, 15)}+{note(number + 500, beat / 2, low / 2, 9)}:s=44100:d=30"
    album = os.path.join(folder, "Artist", f"Album {number // 10}")
    copies = os.path.join(folder, "Copies", f"{number // 10}")
    os.makedirs(album, exist_ok=True)
    os.makedirs(copies, exist_ok=True)
    tags = []
    for name, text in (("title", f"Song {number}"), ("artist", "Artist"), ("album", f"Album {number // 10}")):
        tags += ["-metadata", f"{name}={text}"]
    mp3 = os.path.join(album, f"{number:03}.mp3")
    ogg = os.path.join(copies, f"{number:03}.ogg")
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", sound, *tags, "-b:a", "192k", mp3,
                    *tags, "-c:a", "libvorbis", ogg], check=True)
    shutil.copy(mp3, os.path.join(copies, f"{number:03}.mp3"))
    other = os.path.join(copies, f"{number:03} other tags.mp3")
    shutil.copy(mp3, other)
    subprocess.run([cli, "tag", "-q", "--title", f"Other {number}", "--genre", "Rock", other], check=True)


class Peer:
    """A call, and how the groups in its answer are counted."""

    def __init__(self, what, name, command, groups, needs=None, before=None):
        self.what, self.name, self.command, self.groups = what, name, command, groups
        self.needs = needs or command[0]
        self.before = before
        self.runs = []
        self.found = ""

    def is_there(self):
        return shutil.which(self.needs) is not None

    def run(self):
        if self.before:
            self.before()
        with tempfile.TemporaryFile() as output:
            child = subprocess.Popen(self.command, stdout=output, stderr=subprocess.DEVNULL)
            begun = os.times().elapsed
            _, status, usage = os.wait4(child.pid, 0)
            elapsed = os.times().elapsed - begun
            child.returncode = os.waitstatus_to_exitcode(status)
            if child.returncode != 0:
                raise SystemExit(f"{self.name} ended with {child.returncode}")
            output.seek(0)
            self.found = self.groups(output.read().decode(errors="replace"))
        self.runs.append((elapsed, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024))

    def row(self, floor):
        elapsed, processor, memory = (statistics.median(column) for column in zip(*self.runs))
        fewest = min(run[0] for run in self.runs)
        largest = f"< {floor:.0f}" if memory <= floor else f"{memory:.0f}"
        return (f"| {self.what} | {self.name} | {self.found} | {elapsed:.2f} | {fewest:.2f} | {processor:.2f} "
                f"| {largest} |")


def in_json(output):
    counts = json.loads(output)["counts"]
    return f"{counts['groups']} of {counts['in_groups']}" if "groups" in counts else f"{counts['songs']} songs"


def in_paragraphs(output):
    groups = [group for group in output.strip().split("\n\n") if group]
    return f"{len(groups)} of {sum(len(group.splitlines()) for group in groups)}"


def in_rmlint(output):
    files = [entry for entry in json.loads(output) if entry.get("type") == "duplicate_file"]
    return f"{len({entry['checksum'] for entry in files})} of {len(files)}"


def in_lines(output):
    lines = output.splitlines()
    return f"{len(set(lines))} of {len(lines)}"


def peers(cli, folder, home):
    library = os.path.join(home, "beets")
    cache = os.path.join(home, "cache")
    os.makedirs(library)
    os.environ["BEETSDIR"] = library
    os.environ["XDG_CACHE_HOME"] = cache
    with open(os.path.join(library, "config.yaml"), "w", encoding="utf-8") as config:
        config.write("plugins: duplicates\n")

    def forget(name):
        return lambda: shutil.rmtree(name, ignore_errors=True)

    def forget_library():
        for name in ("library.db", "state.pickle"):
            if os.path.exists(os.path.join(library, name)):
                os.remove(os.path.join(library, name))

    ours = [cli, "duplicates", "-q", "--json", folder]
    yield Peer("read all tags", "melodrift-cli undefined", [cli, "undefined", "-q", "--json", folder], in_json)
    yield Peer("read all tags", "beet import -A -C", ["beet", "import", "-q", "-A", "-C", folder],
               lambda _: "", before=forget_library)
    yield Peer("one artist and title", "melodrift-cli --by artist+title", ours + ["--by", "artist+title"], in_json)
    yield Peer("one artist and title", "beet duplicates, once imported",
               ["beet", "duplicates", "-F", "-k", "artist", "-k", "title", "-f", "$artist $title"], in_lines)
    yield Peer("equal content", "melodrift-cli --by content", ours + ["--by", "content"], in_json)
    yield Peer("equal files", "jdupes", ["jdupes", "-r", "-q", folder], in_paragraphs)
    yield Peer("equal files", "rmlint", ["rmlint", "-T", "df", "-o", "json:stdout", folder], in_rmlint)
    yield Peer("one sound", "melodrift-cli --by sound", ours + ["--by", "sound"], in_json, before=forget(cache))
    yield Peer("one sound", "melodrift-cli --by sound, again", ours + ["--by", "sound"], in_json)
    yield Peer("equal fingerprints", "fpcalc and a script", ["sh", "-c", EQUAL_SOUNDS, "sh", folder],
               in_paragraphs, needs="fpcalc")
    yield Peer("equal fingerprints", "the same on all processors", ["sh", "-c", EQUAL_SOUNDS_PARALLEL, "sh", folder],
               in_paragraphs, needs="fpcalc")


def main():
    cli = os.path.abspath(sys.argv[1])
    songs = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 5
    with tempfile.TemporaryDirectory() as home:
        os.environ["HOME"] = home
        os.environ["XDG_STATE_HOME"] = os.path.join(home, "state")
        folder = os.path.join(home, "songs")
        for number in range(songs):
            make_song(cli, folder, number)
        there = [peer for peer in peers(cli, folder, home) if peer.is_there()]
        for _ in range(rounds):
            for peer in there:
                peer.run()
    print(f"{4 * songs} files of 30 seconds, {rounds} rounds, {os.cpu_count()} processors\n")
    print("| what | program | groups of files | seconds | least | processor's | MB |")
    print("| --- | --- | --- | --- | --- | --- | --- |")
    # Of a program that needs less than this one nothing is known: it begins as a copy.
    floor = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024 + 1
    for peer in there:
        print(peer.row(floor))


if __name__ == "__main__":
    main()
