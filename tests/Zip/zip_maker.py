#!/usr/bin/env python3
"""Archives for the tests of zips, by Python's zipfile and by 7z: zip_maker.py FOLDER"""
import os, random, struct, subprocess, sys, zipfile, zlib

folder = sys.argv[1]
os.chdir(folder)
r = random.Random(7)


def big():
    """3 MB with what the packers find hard and easy: noise, long runs, repeats from near and from up to 64 KB back."""
    out = bytearray()
    while len(out) < 3_000_000:
        kind = r.randrange(5)
        if kind == 0:
            out += r.randbytes(r.randrange(1, 60_000))
        elif kind == 1:
            out += bytes([r.randrange(256)]) * r.choice([200, 300, 3_000, 70_000, 150_000])
        elif kind == 2 and len(out) > 70_000:
            back, n = r.choice([33_000, 50_000, 65_000, 65_536]), r.randrange(10, 20_000)
            out += out[len(out) - back:len(out) - back + n]
        elif kind == 3:
            out += b" ".join(r.choice([b"sing", b"a", b"song", b"of", b"sixpence"]) for _ in range(2_000))
        else:
            unit = r.randbytes(r.randrange(1, 12))
            out += unit * r.randrange(1, 4_000)
    return bytes(out[:3_000_000])


files = {"song.mp3": r.randbytes(90_000), "song.cdg": bytes(r.choice([0, 9, 6]) for _ in range(96_024)), "big.bin": big(), "empty.txt": b""}
for name, data in files.items():
    with open(name, "wb") as f:
        f.write(data)


def make(name, how, members, comment=b"", force=False):
    with zipfile.ZipFile(name, "w", how) as z:
        z.comment = comment
        for inside, data in members:
            with z.open(inside, "w", force_zip64=force) as f:
                f.write(data)


everything = list(files.items())
make("stored.zip", zipfile.ZIP_STORED, everything)
make("deflated.zip", zipfile.ZIP_DEFLATED, everything, b"a comment with PK\5\6 and PK\1\2 in it, then " + b"x" * 40_000)
make("zip64.zip", zipfile.ZIP_DEFLATED, everything, force=True)
make("bzip2.zip", zipfile.ZIP_BZIP2, [("song.mp3", files["song.mp3"])])
make("none.zip", zipfile.ZIP_STORED, [])
make("names.zip", zipfile.ZIP_STORED, [(n, b"bytes %d" % len(n)) for n in
     ["../../up.mp3", "/etc/root.mp3", "C:\\windows\\drive.mp3", "dir/..\\..\\mix.cdg", "Über/Ñandú 歌.mp3", "M?ller.cdg", "plain/"]])
data = open("names.zip", "rb").read().replace(b"M?ller", b"M\x81ller")
open("names.zip", "wb").write(data)
with zipfile.ZipFile("many.zip", "w") as z:
    for n in range(70_000):
        z.writestr(zipfile.ZipInfo(f"{n}"), b"")


class Pipe:
    """An output that cannot seek: sizes go behind the data."""
    def __init__(self, f): self.f = f
    def write(self, b): return self.f.write(b)
    def flush(self): self.f.flush()


def bomb(name, inside, head, megabytes):
    """One member of `head` and zeros, a thousand times as long as what it is packed in; its checksum is wrong."""
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    packed = packer.compress(head) + packer.flush(zlib.Z_FULL_FLUSH)
    packer.compress(bytes(1 << 20)), packer.flush(zlib.Z_FULL_FLUSH)
    packed += (packer.compress(bytes(1 << 20)) + packer.flush(zlib.Z_FULL_FLUSH)) * megabytes + packer.flush()
    fields = struct.pack("<HHHHHIIIHH", 20, 0, 8, 0, 0x21, 0, len(packed), len(head) + (megabytes << 20), len(inside), 0)
    local = b"PK\3\4" + fields + inside + packed
    central = b"PK\1\2" + struct.pack("<H", 20) + fields + struct.pack("<HHHII", 0, 0, 0, 0, 0) + inside
    end = b"PK\5\6" + struct.pack("<HHHHIIH", 0, 0, 1, 1, len(central), len(local), 0)
    open(name, "wb").write(local + central + end)


# A movie whose index would stand at its end.
brand = struct.pack(">I4s4sI4s4s", 24, b"ftyp", b"isom", 512, b"isom", b"mp41")
bomb("bomb.zip", b"song.m4a", brand + struct.pack(">I4s", 8 + (4_000 << 20), b"mdat"), 4_000)

with open("streamed.zip", "wb") as f, zipfile.ZipFile(Pipe(f), "w", zipfile.ZIP_DEFLATED) as z:
    for name, data in everything:
        z.writestr(name, data)
plain = open("deflated.zip", "rb").read()
open("moved.zip", "wb").write(b"#!/bin/sh\nexit\n" * 50 + plain)
open("followed.zip", "wb").write(plain + b"<html>" * 5_000)
z64 = open("zip64.zip", "rb").read()

# A 64-bit end record, as for huge archives: the plain one is made to point at it.
end = z64.rindex(b"PK\5\6")
count, size, at = (int.from_bytes(z64[end + a:end + a + n], "little") for a, n in ((10, 2), (12, 4), (16, 4)))
record = b"PK\6\6" + (44).to_bytes(8, "little") + b"\x2d\0\x2d\0" + bytes(8) + count.to_bytes(8, "little") * 2 + size.to_bytes(8, "little") + at.to_bytes(8, "little")
locator = b"PK\6\7" + bytes(4) + end.to_bytes(8, "little") + (1).to_bytes(4, "little")
end64 = z64[:end] + record + locator + b"PK\5\6" + bytes(4) + b"\xff\xff\xff\xff" + b"\xff" * 8 + z64[end + 20:]
open("end64.zip", "wb").write(end64)
with zipfile.ZipFile("end64.zip") as z:
    assert z.testzip() is None
open("end64moved.zip", "wb").write(b"junk!" * 100 + end64)


def seven(*args):
    subprocess.run(["7z", "a", "-bd", "-tzip", *args], check=True, stdout=subprocess.DEVNULL)


seven("-mm=Deflate64", "-mx=9", "deflate64.zip", *files)
seven("-mm=Deflate64", "-mx=1", "deflate64fast.zip", *files)
seven("-psecret", "-mem=ZipCrypto", "encrypted.zip", "song.mp3")
seven("-psecret", "-mem=AES256", "aes.zip", "song.mp3")
