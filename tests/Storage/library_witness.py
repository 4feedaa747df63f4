#!/usr/bin/env python3
"""The other program of the library-file tests, written from the description of the formats: struct and plistlib.

make FILE [ORDER]    writes a song file with every awkward song, big-endian or "little", and prints what a reader must see
show FILE            prints what this reader sees in a song file, one song a line
misread FILE         a song file whose zip offset is 65536, and what must be seen of it
lists FOLDER         writes Library.xml, a playlist, singers and a song list, in the order of another writer
check FOLDER         reads the same files as the program wrote them; prints what is in them
library FOLDER       reads all files of a library; prints its counter, each song, and each list with its songs
saved FOLDER         reads a library as the program saved it; prints its lists, rows and singers, one a line
trouble FOLDER       writes a library of an older program with everything that can be wrong about ids and accounts
"""
import datetime
import plistlib
import struct
import sys
import os

EPOCH = datetime.datetime(2001, 1, 1)
FIELDS = ["id", "duration", "track", "sung", "date", "size", "rating", "vocal", "pitch", "tempo", "year", "flags",
          "channels", "format", "start", "added"]
TEXTS = ["name", "artist", "album", "genre", "comment", "video", "audio", "zip", "project", "launch", "spare", "spare2"]


def packed_date(year, month, day, hour, minute, second):
    """The bits as one runs through them from the lowest of the first byte: year, then the halves of the others."""
    bits = [(year - 2000, 6), (month >> 2, 2), (month & 3, 2), (day, 5), (hour >> 4, 1), (hour & 15, 4),
            (minute >> 2, 4), (minute & 3, 2), (second, 6)]
    word, at = 0, 0
    for value, width in bits:
        word |= value << at
        at += width
    return word


def song(number, name="", **more):
    row = {field: 0 for field in FIELDS} | {"id": number, "tempo": 100, "format": 0xFFFFFFFF} | {t: b"" for t in TEXTS}
    row["name"] = name if isinstance(name, bytes) else name.encode()
    for key, value in more.items():
        row[key] = value.encode() if isinstance(value, str) else value
    return row


AWKWARD = [
    song(1),
    song(2, "Plain", artist="Somebody", album="An Album", genre="Pop", audio="Somebody/Plain.mp3",
         video="Somebody/Plain.cdg", flags=0x00C, duration=215, track=7, sung=3, size=5_000_000, year=1984, rating=80),
    song(3, "日本の歌 ナナ", artist="Дмитрий", album="한국어 노래", genre="שלום", comment="مرحبا بالعالم", zip="中文/歌.zip",
         flags=0x010),
    song(4, "e\u0301 Zalgo: a\u0300\u0301\u0302\u0303", artist="🎤👩‍👩‍👧‍👧🇩🇪", comment="\u202eright to left\u202c"),
    song(5, "x" * 255, artist="ä" * 127, video="/music/" + "v" * 255, launch="/opt/launch"),
    song(6, b"not utf-8 \xff\xfe", audio=b"/music/caf\xe9.mp3", project=b"/music/\x80.vlp"),
    song(0xFFFFFFFF, "numbers at their ends", duration=0xFFFFFFFF, track=0xFFFFFFFF, sung=0xFFFFFFFF,
         date=-(2**63), size=0xFFFFFFFF, rating=255, vocal=255, pitch=-1, tempo=255, year=0xFFFF, flags=0xFFFF,
         channels=0xFFFF, format=0xFFFFFFFE, start=0xFFFFFFFF, added=0xFFFFFFFF),
    song(8, "pitch and format", pitch=-7, format=int.from_bytes(b"mp3\xca", "big"), tempo=29, channels=5,
         date=2**63 - 1, added=packed_date(2024, 2, 29, 23, 59, 58)),
    song(9, "a date", date=int((datetime.datetime(2009, 4, 1, 12) - EPOCH).total_seconds()) - 3061152000,
         added=packed_date(2000, 1, 1, 0, 0, 0)),
    song(10, "a long comment", comment="c" * 70_000, zip="z.zip", project="p.vlp", launch="l"),
    song(11, "offsets of 256 and more", comment="c" * 300, zip="z" * 300, project="p" * 300, launch="l" * 300),
    song(12, "six\nlines\ttabs \x01\x7f"),
]


def expected(row):
    return " ".join(str(row[field]) for field in FIELDS) + " " + " ".join(row[text].hex() or "-" for text in TEXTS)


def write(rows, big=True, version=(1, 10), count=None):
    mark = ">" if big else "<"
    out = struct.pack(mark + "HHHBBIIII", 1, *version, 0, 0, len(rows) if count is None else count, 0, 0, 0)
    for row in rows:
        ends, total = [], 0
        for text in TEXTS:
            total += len(row[text]) + 1
            ends.append(total)
        head = struct.pack(mark + "IIIIqIBBbBHHHHII", *(row[field] for field in FIELDS[:13]), 0, row["format"],
                           row["start"])
        words = [struct.pack(mark + "I", end) for end in ends]
        words[7], words[8] = struct.pack("<I", ends[7]), struct.pack("<I", ends[8])
        record = head + struct.pack("<I", row["added"]) + b"".join(words)
        assert len(head) == 48 and len(record) == 100
        out += record + b"".join(row[text] + b"\0" for text in TEXTS)
    return out


def read(data):
    big = int.from_bytes(data[2:4], "big") in (1, 2, 3)
    mark = ">" if big else "<"
    count = struct.unpack_from(mark + "I", data, 8)[0]
    rows, at = [], 24
    while at < len(data):
        values = struct.unpack_from(mark + "IIIIqIBBbBHHHHII", data, at)
        row = dict(zip(FIELDS, values[:13] + values[14:16]))
        row["added"] = struct.unpack_from("<I", data, at + 48)[0]
        ends = list(struct.unpack_from(mark + "12I", data, at + 52))
        if big:
            for n in (7, 8):
                raw = data[at + 52 + 4 * n:at + 56 + 4 * n]
                ends[n] = int.from_bytes(raw, "big" if raw[:2] == b"\0\0" else "little")
        block, start = data[at + 100:at + 100 + ends[11]], 0
        for text, end in zip(TEXTS, ends):
            assert block[end - 1] == 0
            row[text], start = block[start:end - 1], end
        rows.append(row)
        at += 100 + ends[11]
    assert len(rows) == count, (len(rows), count)
    return rows


LIBRARY = {"Library": {
    "Playlists": [{"Playlist ID": 1, "Playlist Type": 1, "Name": "Library", "Sort By": 0x6E616D65, "Ascending": 1,
                   "Playlist Items": [{"Song ID": 2, "ID": 1}, {"ID": 2, "Song": 3, "Play": False, "colr": 4}]},
                  {"Playlist ID": 40, "Playlist Type": 3, "Name": "Duette 🎤"}],
    "Major Version": 1, "Minor Version": 7, "Next item ID (don't change this!!)": 4711,
    "Current Venue": "Zum Löwen", "Application Version": "1.0", "Library Search Paths": ["/music", "/musik/שלום"]}}
PLAYLIST = {"Playlist Items": [{"ID": n, "Song ID": 2 + n % 3, "Item Type": 1, "Play": n % 2 == 0} for n in range(1, 6)]
            + [{"ID": 6, "Singer": 77, "Item Type": 2, "PSNT": True}],
            "Playlist ID": 40, "Playlist Type": 3, "Name": "Duette 🎤", "Ascending": 0, "Sort By": 0x70694978,
            "Current Playlist Item ID": 3, "Columns": {"name": {"Width": 120}},
            "Music Store Data": datetime.datetime(2024, 2, 29, 12, 0, 1), "Unknown key": [1, {"a": b"bytes"}]}
SINGER = {"Singer": {"siID": 77, "name": "Ann-Søphie 李"}, "Tonight": 81, "Favorites": 82, "History": 83,
          "Twirled Down": True, "Song Info": {"2": {"PICH": -1, "TMPO": 1.05}}}
SONGS = {"Tracks": {"2": {"ID": 2, "Name": "Plain", "Artist": "Ann", "Times Sung": 3, "Track Number": 7, "Year": 1984,
                          "Date": datetime.datetime(2009, 4, 1, 12)}, "3": {"ID": 3, "Name": "日本の歌"}}}


def dump(folder, name, value):
    os.makedirs(os.path.dirname(os.path.join(folder, name)), exist_ok=True)
    with open(os.path.join(folder, name), "wb") as out:
        plistlib.dump(value, out, fmt=plistlib.FMT_XML, sort_keys=False)


def load(folder, name):
    with open(os.path.join(folder, name), "rb") as given:
        return plistlib.load(given)


def whole_library(folder):
    """Whatever another program can make of a library: it fails where a file is not whole."""
    with open(os.path.join(folder, "Songs.vlb"), "rb") as given:
        songs = read(given.read())
    assert len({song["id"] for song in songs}) == len(songs), "an id is there twice"
    index = load(folder, "Library.xml")["Library"]
    print("next", index["Next item ID (don't change this!!)"])
    for song in songs:
        print("song", song["id"], song["name"].decode())
    lists = [one for one in index["Playlists"] if "Playlist Items" in one]
    playlists = os.path.join(folder, "Playlists")   # made with the first list
    for name in sorted(os.listdir(playlists) if os.path.isdir(playlists) else []):
        if not name.startswith("~") and name.endswith(".xml"):
            lists.append(load(folder, os.path.join("Playlists", name)))
    assert len({one["Playlist ID"] for one in lists}) == len(lists), "two lists have one id"
    for one in lists:
        rows = one["Playlist Items"]
        assert len({row["ID"] for row in rows}) == len(rows), "a row is there twice"
        print("list", one["Playlist ID"], one["Name"], *(row.get("Song ID", row.get("Song")) for row in rows))


def show_list(name, plist):
    print("list", name, plist["Playlist ID"], plist["Playlist Type"], plist["Name"], plist.get("Columns", {}),
          plist.get("Current Playlist Item ID", 0))
    for row in plist["Playlist Items"]:
        print("row", sorted(row.items()))


def show_library(path):
    root = load(path, "Library.xml")["Library"]
    with open(os.path.join(path, "Songs.vlb"), "rb") as given:
        songs = read(given.read())
    ids = [song["id"] for song in songs] + [entry["Playlist ID"] for entry in root["Playlists"]]
    assert root["Next item ID (don't change this!!)"] > max(ids) and len(set(ids)) == len(ids), ids
    print("version", root["Major Version"], root["Minor Version"], root["Current Venue"], root["Library Search Paths"])
    own, named = root["Playlists"][0], root["Playlists"][1:]
    show_list("Library.xml", own)
    assert sorted(row["Song ID"] for row in own["Playlist Items"]) == sorted(song["id"] for song in songs)
    found = []
    for folder, folders, names in os.walk(path):
        folders[:] = sorted(entry for entry in folders if not entry.startswith((".", "~")))
        for name in sorted(names):
            file = os.path.relpath(os.path.join(folder, name), path)
            if name == "Singer.xml":
                singer = load(path, file)
                print("singer", file, singer["Singer"].get("SNGR"), singer["Singer"]["siID"], singer["Tonight"],
                      singer["Favorites"], singer["History"], singer["Singer"].get("Spas"), singer["Song Info"])
            elif name.endswith(".xml") and os.sep in file:
                plist = load(path, file)
                found.append((plist["Playlist ID"], plist["Playlist Type"], plist["Name"]))
                show_list(file, plist)
    assert sorted(found) == sorted((e["Playlist ID"], e["Playlist Type"], e["Name"]) for e in named), (found, named)


def playlist(number, kind, name, songs, **more):
    items = [{"ID": row, "Song ID": song, "Item Type": 1} for row, song in enumerate(songs, 1)]
    return {"Playlist ID": number, "Playlist Type": kind, "Name": name, "Playlist Items": items} | more


def account(number, name, tonight, favorites, history):
    return {"Singer": {"siID": number, "SNGR": name}, "Tonight": tonight, "Favorites": favorites, "History": history,
            "Song Info": {}}


TROUBLE = {
    "Library.xml": {"Vopla Library": {
        "Major Version": 1, "Minor Version": 5, "Next item ID (don't change this!!)": 10, "Current Venue": "Club",
        "Further key": 1, "Playlists": [playlist(1, 1, "Library", [2, 99])]}},
    "Songs.xml": {"Tracks": {str(n): {"ID": n, "Name": f"Song {n}", "Track Number": n, "Sectors": 75,
                                      "Audio Location": f"/music/{n}.mp3"} for n in (2, 3, 4)}},
    "Songs Meta.xml": {"3": {"SUBg": "words"}},
    "Playlists/One.xml": playlist(40, 3, "One", [2, 3, 98], **{"Strange key": [1]}),
    "Playlists/Two.xml": playlist(40, 3, "Two", [4]),
    "Playlists/High.xml": playlist(5000, 3, "High", [2]),
    "Playlists/Mine.xml": playlist(41, 7, "Mine", [2, 2]),
    "Playlists/~Hidden.xml": playlist(42, 3, "Hidden", [2]),
    "Playlists/Singer.xml": playlist(43, 3, "Singer", [3]),
    "Venues/Club/Singers.xml": {"Singers": [account(77, "Ann of old", 51, 52, 53), account(78, "Bob", 0, 0, 0)]},
    "Venues/Club/Ann/Singer.xml": account(77, "Ann", 51, 52, 53),
    "Venues/Club/Ann/Tonight.xml": playlist(51, 7, "Tonight", [3, 3, 4]),
    "Venues/Club/Ann/Favorites.xml": playlist(52, 8, "Favorites", []),
    "Venues/Club/Twin/Singer.xml": account(77, "Twin", 0, 0, 0),
    "Venues/Club/Lost/History.xml": playlist(61, 9, "History", [2]),
}


def main(command, path, *more):
    if command == "make":
        with open(path, "wb") as out:
            out.write(write(AWKWARD, big=more != ("little",)))
        for row in AWKWARD:
            print(expected(row))
    elif command == "show":
        with open(path, "rb") as given:
            for row in read(given.read()):
                print(expected(row))
    elif command == "library":
        whole_library(path)
    elif command == "misread":
        # name, artist, album, genre, comment, video and audio take 65536 - 6 bytes; the zip's end is then 65536.
        row = song(5, "misread", comment="c" * (65536 - 6 - 7 - 7), zip="z.zip", project="kept.vlp", launch="kept too")
        with open(path, "wb") as out:
            out.write(write([row, song(6, "the next one")]))
        print(expected(row | {"zip": b""}))
        print(expected(song(6, "the next one")))
    elif command == "lists":
        dump(path, "Library.xml", LIBRARY)
        dump(path, "Playlists/Duette.xml", PLAYLIST)
        dump(path, "Singer.xml", SINGER)
        dump(path, "Singers.xml", {"Singers": [SINGER, SINGER | {"Singer": {"siID": 78, "name": "Bob"}}]})
        dump(path, "Songs.xml", SONGS)
        dump(path, "Songs Meta.xml", {"2": {"lVoc": "words"}, "x": {"bad": 1}, "9": 5})
        dump(path, "Old.xml", {"Vopla Library": LIBRARY["Library"]})
    elif command == "check":
        library = load(path, "Library.xml")["Library"]
        assert library == LIBRARY["Library"] | {"Playlists": library["Playlists"]}, library
        whole, short = library["Playlists"]
        assert short == LIBRARY["Library"]["Playlists"][1], short
        assert whole["Playlist Items"][1] == {"ID": 2, "Song ID": 3, "Item Type": 1, "Play": False, "colr": 4}, whole
        assert load(path, "Playlists/Duette.xml") == PLAYLIST
        assert load(path, "Singer.xml") == SINGER
        assert [s["Singer"]["siID"] for s in load(path, "Singers.xml")["Singers"]] == [77, 78]
        print("as written")
    elif command == "saved":
        show_library(path)
    elif command == "trouble":
        for name, value in TROUBLE.items():
            dump(path, name, value)
    else:
        sys.exit(f"{command}?")


if __name__ == "__main__":
    main(*sys.argv[1:])
