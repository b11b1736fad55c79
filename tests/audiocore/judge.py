#!/usr/bin/env python3
"""What mutagen makes of music files, many at once: the second judge beside ffmpeg.

judge.py fill    tags files with whatever of the rare things their format can hold:
                 several values, pictures, fields that nobody knows, chapters, further tags
judge.py read    tells what is in files

Both take an object as JSON from standard input, whose "songs" to fill are [path, version of ID3], 5 being a broken
tag of the newest one, and paths to read; "back" and "front" are the pictures to fill them with, in base 64. Reading
answers an object with the path as key: a list of [tag, field, key, value]. The field is one of ours, or empty. Values
tell everything that mutagen knows, their type and encoding, too; large ones by their checksum.

ADTS is where mutagen has a limit of its own: it does not look for tags there, nor for the music behind an ID3 tag.
Tags of MPEG audio are therefore read as what they are, whatever they are of. Of WAV it reads the ID3 tag alone.
"""
import base64
import hashlib
import json
import sys

import mutagen
from mutagen import apev2, asf, flac, id3, mp4, oggflac, oggopus, oggvorbis, wave

FIELDS = {
    "id3": {"title": ["TIT2"], "artist": ["TPE1"], "album": ["TALB"], "genre": ["TCON"],
            "year": ["TDRC", "TYER", "TDAT", "TIME"], "track": ["TRCK"], "picture": ["APIC"]},
    "ape": {"title": ["title"], "artist": ["artist"], "album": ["album"], "genre": ["genre"], "year": ["year"],
            "track": ["track"], "picture": ["cover art (front)", "cover art (back)"]},
    "vorbis": {"title": ["title"], "artist": ["artist"], "album": ["album"], "genre": ["genre"], "year": ["date"],
               "track": ["tracknumber"], "picture": ["metadata_block_picture"]},
    "mp4": {"title": ["\xa9nam"], "artist": ["\xa9ART"], "album": ["\xa9alb"], "genre": ["\xa9gen"],
            "year": ["\xa9day"], "track": ["trkn"], "picture": ["covr"]},
    "asf": {"title": ["Title"], "artist": ["Author"], "album": ["WM/AlbumTitle"], "genre": ["WM/Genre"],
            "year": ["WM/Year"], "track": ["WM/TrackNumber"], "picture": ["WM/Picture"]},
}

TEXTS = {"title": ["The old title"], "artist": ["First singer", "Second singer"], "album": ["The album"],
         "genre": ["Rock", "Blues"], "year": ["2012-03-15"], "track": ["3/12"]}
RARE = {"composer": ["One", "Two", "Three"], "mood": ["Calm"], "replaygain_track_gain": ["-6.50 dB"],
        "nobody_knows": ["this", "nor this"]}
CHAPTERS = [("Opening", 0, 400), ("Finale", 400, 900)]


QUESTION = json.load(sys.stdin)
PICTURES = [(kind, text, base64.b64decode(QUESTION.get(name, "")))
            for kind, text, name in ((4, "the back", "back"), (3, "", "front"))]


# --- filling

def fill_id3(tag, version):
    old = version == 3
    for field, values in TEXTS.items():
        if old and field == "year":
            tag.add(id3.TYER(encoding=1, text="2012"))
            tag.add(id3.TDAT(encoding=1, text="1503"))
            continue
        tag.add(id3.Frames[FIELDS["id3"][field][0]](encoding=1 if old else 3, text=values))
    for key, values in RARE.items():
        tag.add(id3.TXXX(encoding=1, desc=key, text=values))
    tag.add(id3.TCOM(encoding=1, text=RARE["composer"]))
    tag.add(id3.COMM(encoding=0, lang="deu", desc="of one kind", text="Ein Kommentar"))
    tag.add(id3.COMM(encoding=0, lang="eng", desc="", text="A comment"))
    tag.add(id3.USLT(encoding=1, lang="eng", desc="", text="La la la"))
    tag.add(id3.POPM(email="a@b", rating=200, count=3))
    tag.add(id3.PRIV(owner="nobody", data=b"\xff\xe0\0 knows"))
    tag.add(id3.UFID(owner="nobody", data=b"1"))
    for kind, text, data in PICTURES:
        tag.add(id3.APIC(encoding=0, mime="image/jpeg", type=kind, desc=text, data=data))
    names = []
    for name, begin, end in CHAPTERS:
        names.append(name.lower())
        tag.add(id3.CHAP(element_id=names[-1], start_time=begin, end_time=end,
                         sub_frames=[id3.TIT2(encoding=1, text=name)]))
    tag.add(id3.CTOC(element_id="toc", flags=id3.CTOCFlags.TOP_LEVEL | id3.CTOCFlags.ORDERED,
                     child_element_ids=names, sub_frames=[]))


def save_oldest_id3(path):
    """Version 2.2, which mutagen reads and does not write."""
    bodies = [(name, b"\0" + text) for name, text in (
        (b"TT2", b"The old title"), (b"TP1", b"Singer"), (b"TAL", b"The album"), (b"TCO", b"(17)"), (b"TYE", b"2012"),
        (b"TRK", b"3/12"), (b"TCM", b"One"), (b"TXX", b"nobody\0knows"), (b"COM", b"eng\0A comment"),
        (b"ULT", b"eng\0La la la"))]
    bodies += [(b"PIC", b"\0JPG" + bytes([kind]) + text.encode() + b"\0" + data) for kind, text, data in PICTURES]
    bodies += [(b"POP", b"a@b\0\xc8\0\0\0\3"), (b"UFI", b"nobody\x001")]
    frames = b"".join(name + len(body).to_bytes(3, "big") + body for name, body in bodies)
    with open(path, "rb") as file:
        music = file.read()
    with open(path, "wb") as file:
        file.write(b"ID3\2\0\0\0\0" + bytes([len(frames) >> 7, len(frames) & 127]) + frames + music)


def break_id3(path):
    """Between the frames of the newest version an empty one, and others with ids that none can have."""
    def number(begin):
        return sum(byte << 7 * place for place, byte in enumerate(reversed(content[begin:begin + 4])))

    with open(path, "rb") as file:
        content = file.read()
    odd = b"TENC" + bytes(6) + b"T\xe9XX\0\0\0\3\0\0\3\xc3\xa9" + b"t xx\0\0\0\2\0\0\3x"
    behind_first = 20 + number(14)
    size = number(6) + len(odd)
    head = content[:6] + bytes(size >> shift & 127 for shift in (21, 14, 7, 0))
    with open(path, "wb") as file:
        file.write(head + content[10:behind_first] + odd + content[behind_first:])


def save_id3(path, version, v1):
    tag = id3.ID3()
    fill_id3(tag, version)
    tag.save(path, v1=2 if v1 else 0, v2_version=version, v23_sep=None)


def save_ape(path, pictures):
    tag = apev2.APEv2()
    names = {field: keys[0].title() for field, keys in FIELDS["ape"].items()}
    for field, values in TEXTS.items():
        tag[names[field]] = values
    for key, values in RARE.items():
        tag[key] = values
    for kind, _, data in pictures:
        name = "Cover Art (Front)" if kind == 3 else "Cover Art (Back)"
        tag[name] = apev2.APEValue(b"cover.jpg\0" + data, apev2.BINARY)
    tag["Elsewhere"] = apev2.APEValue("http://example.com/", apev2.EXTERNAL)
    tag.save(path)


def flac_picture(kind, text, data):
    picture = flac.Picture()
    picture.type, picture.desc, picture.mime, picture.data = kind, text, "image/jpeg", data
    return picture


def fill_vorbis(tags):
    for field, values in TEXTS.items():
        tags[FIELDS["vorbis"][field][0]] = values
    for key, values in RARE.items():
        tags[key] = values
    for number, (name, begin, _) in enumerate(CHAPTERS, 1):
        tags[f"CHAPTER{number:03}"] = f"00:00:00.{begin:03}"
        tags[f"CHAPTER{number:03}NAME"] = name
    tags.append(("artist", "Third singer, apart"))


def fill_flac(path):
    file = flac.FLAC(path)
    if file.tags is None:
        file.add_tags()
    fill_vorbis(file.tags)
    for picture in PICTURES:
        file.add_picture(flac_picture(*picture))
    application = flac.MetadataBlock(b"abcdof an application")
    application.code = 2
    file.metadata_blocks.append(application)
    sheet = flac.CueSheet(None)
    first = flac.CueSheetTrack(1, 0, isrc=b"NOBODY")
    first.indexes.append(flac.CueSheetTrackIndex(1, 0))
    sheet.tracks += [first, flac.CueSheetTrack(170, 44100, isrc=b"")]
    file.metadata_blocks.append(sheet)
    file.save()


def fill_ogg(path, kind):
    file = kind(path)
    fill_vorbis(file.tags)
    pictures = [base64.b64encode(flac_picture(*one).write()).decode("ascii") for one in PICTURES]
    file.tags["metadata_block_picture"] = pictures
    file.save()


def fill_mp4(path):
    file = mp4.MP4(path)
    if file.tags is None:
        file.add_tags()
    tags = file.tags
    for field, values in TEXTS.items():
        tags[FIELDS["mp4"][field][0]] = [(3, 12)] if field == "track" else values
    for key, values in RARE.items():
        tags["----:com.apple.iTunes:" + key] = [mp4.MP4FreeForm(value.encode()) for value in values]
    tags["----:org.nobody:bytes"] = [mp4.MP4FreeForm(b"\0\1\2", mp4.AtomDataType.IMPLICIT)]
    tags["\xa9wrt"], tags["\xa9lyr"], tags["cpil"], tags["tmpo"] = RARE["composer"], "La la la", True, [120]
    tags["disk"] = [(1, 2)]
    tags["covr"] = [mp4.MP4Cover(data, mp4.MP4Cover.FORMAT_JPEG) for _, _, data in PICTURES]
    file.save()


def asf_picture(kind, text, data):
    wide = lambda value: value.encode("utf-16-le") + b"\0\0"
    return bytes([kind]) + len(data).to_bytes(4, "little") + wide("image/jpeg") + wide(text) + data


def fill_asf(path):
    file = asf.ASF(path)
    for field, values in TEXTS.items():
        file.tags[FIELDS["asf"][field][0]] = values
    for key, values in RARE.items():
        file.tags["Nobody/" + key] = values
    file.tags["WM/Composer"] = [asf.ASFUnicodeAttribute("One"), asf.ASFUnicodeAttribute("Two"),
                                asf.ASFUnicodeAttribute("of a language", language=1),
                                asf.ASFUnicodeAttribute("of a stream", stream=1)]
    file.tags["IsVBR"], file.tags["Number"] = [asf.ASFBoolAttribute(True)], [asf.ASFQWordAttribute(1 << 40)]
    file.tags["WM/MediaClassPrimaryID"] = [asf.ASFGUIDAttribute(b"g" * 16)]
    file.tags["WM/Picture"] = [asf.ASFByteArrayAttribute(asf_picture(*one)) for one in PICTURES]
    file.save()
    # mutagen leaves the file's size as it was, and ffmpeg takes the end of the last chapter from it.
    with open(path, "r+b") as file:
        content = file.read()
        file.seek(content.index(bytes.fromhex("A1DCAB8C47A9CF118EE400C00C205365")) + 40)
        file.write(len(content).to_bytes(8, "little"))


def fill_wav(path, version):
    file = wave.WAVE(path)
    file.add_tags()
    fill_id3(file.tags, version)
    file.save(v2_version=version, v23_sep=None)


def fill(path, version):
    end = path.rsplit(".", 1)[1]
    if end in ("mp3", "aac") and version == 2:
        save_oldest_id3(path)
    elif version == 5:
        save_id3(path, 4, v1=False)
        break_id3(path)
    elif end in ("mp3", "aac"):
        save_id3(path, version, v1=False)
        # ffmpeg takes a long tag at the end of MP3 for sound.
        save_ape(path, PICTURES if end == "aac" else [])
        save_id3(path, version, v1=True)
    elif end == "wav":
        fill_wav(path, version)
    elif end == "ape":
        save_ape(path, PICTURES)
    elif end == "flac":
        fill_flac(path)
    elif end == "m4a":
        fill_mp4(path)
    elif end == "wma":
        fill_asf(path)
    else:
        fill_ogg(path, type(mutagen.File(path, [oggvorbis.OggVorbis, oggopus.OggOpus, oggflac.OggFLAC])))


# --- reading

def shown(value):
    """Everything that it says of itself, in a line."""
    if isinstance(value, mp4.MP4Cover):
        return f"{value.imageformat} {shown(bytes(value))}"
    if isinstance(value, mp4.MP4FreeForm):
        return f"{value.dataformat} {value.version} {bytes(value)}"
    if isinstance(value, bytes):
        return hashlib.sha1(value).hexdigest()
    if isinstance(value, id3.APIC):
        return f"{value.encoding} {value.mime} {value.type} {value.desc} {shown(value.data)}"
    if isinstance(value, flac.Picture):
        return f"{value.mime} {value.type} {value.desc} {value.width} {value.depth} {shown(value.data)}"
    if isinstance(value, apev2.APEBinaryValue):
        return shown(value.value.split(b"\0", 1)[-1])
    if isinstance(value, asf.ASFByteArrayAttribute):
        return f"{value.language} {value.stream} {asf_value(value.value)}"
    if isinstance(value, asf.ASFBaseAttribute):
        return f"{value.language} {value.stream} {value!r}"
    return repr(value)


def asf_value(value):
    """The data of a picture, as far as it is one."""
    size = int.from_bytes(value[1:5], "little")
    return f"{value[:1]} {shown(value[-size:] if 0 < size < len(value) else value)} {len(value)}"


def entry(tag, family, key, value):
    name = key if family == "mp4" else key.split(":")[0].lower()
    field = next((field for field, keys in FIELDS[family].items() if name in keys or name in map(str.lower, keys)), "")
    if family == "vorbis" and field == "picture":
            value = flac.Picture(base64.b64decode(value))
    return [tag, field, key, shown(value)]


def entries(tag, family, pairs):
    return [entry(tag, family, key, value) for key, value in pairs]


def read_mpeg(path):
    found = []
    try:
        found += entries("id3", "id3", id3.ID3(path, translate=False, load_v1=False).items())
    except id3.ID3NoHeaderError:
        pass
    return found


def read_end(path):
    """What tags stand at a file's end."""
    found = []
    try:
        tag = apev2.APEv2(path)
        found += [one for key, value in tag.items()
                  for one in entries("ape", "ape", [(key, part) for part in (value if value.kind == apev2.TEXT
                                                                             else [value])])]
    except apev2.APENoHeaderError:
        pass
    with open(path, "rb") as file:
        found += entries("id3v1", "id3", (id3.ParseID3v1(file.read()[-128:]) or {}).items())
    return found


def read_flac(path):
    file = flac.FLAC(path)
    found = entries("comment", "vorbis", file.tags or [])
    found += [["block", "picture", "picture", shown(picture)] for picture in file.pictures]
    for block in file.metadata_blocks:
        if block.code not in (1, 4, 6):
            found.append(["block", "", str(block.code), shown(block.write())])
    return found


def read_mp4(path):
    file = mp4.MP4(path)
    found = [one for key, values in (file.tags or {}).items()
             for one in entries("list", "mp4", [(key, value) for value in (values if isinstance(values, list)
                                                                           else [values])])]
    return found + [["chapter", "", str(chapter.start), chapter.title] for chapter in file.chapters or []]


def read(path):
    end = path.rsplit(".", 1)[1]
    if end in ("mp3", "aac"):
        return read_mpeg(path) + read_end(path)
    if end == "wav":
        return entries("id3", "id3", (wave.WAVE(path, translate=False).tags or {}).items())
    if end == "ape":
        return read_end(path)
    if end == "flac":
        return read_flac(path)
    if end == "m4a":
        return read_mp4(path)
    if end == "wma":
        return entries("header", "asf", asf.ASF(path).tags)
    file = mutagen.File(path, [oggvorbis.OggVorbis, oggopus.OggOpus, oggflac.OggFLAC])
    return entries("comment", "vorbis", file.tags)


if sys.argv[1] == "fill":
    for song in QUESTION["songs"]:
        fill(*song)
else:
    json.dump({song: read(song) for song in QUESTION["songs"]}, sys.stdout)
