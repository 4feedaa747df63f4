#!/usr/bin/env python3
"""The other program of the property-list tests: Python's plistlib.

make FILE   writes a list with every type and every awkward value
show FILE   prints the list in a plain form, one value a line, that the test prints likewise from its own reading
"""
import datetime
import math
import plistlib
import struct
import sys

AWKWARD = {
    "bools": [True, False],
    "integers": [0, -1, 2**63 - 1, -(2**63), 2009],
    "floats": [0.1, -0.0, 1e300, 5e-324, 1.3888888359069824, float("inf"), float("-inf"), float("nan"), 3.0],
    "strings": ["", "plain", "a < b & c > \"d\" 'e'", "ümläut ñ 日本 🎤", "two\nlines\ttab", " blanks "],
    "dates": [datetime.datetime(2001, 1, 1), datetime.datetime(1, 1, 1), datetime.datetime(9999, 12, 31, 23, 59, 59),
              datetime.datetime(2024, 2, 29, 12, 0, 1)],
    "data": [b"", b"\x00", b"ab", b"abc", bytes(range(256))],
    "deep": {"": {"a": [[], {}, [{"x": 1}]]}},
    "key <&> ö": 1,
}


def show(value, path):
    if isinstance(value, dict):
        print(f"{path} dict {len(value)}")
        for key in sorted(value, key=lambda k: k.encode()):
            show(value[key], f"{path}/{key}")
    elif isinstance(value, list):
        print(f"{path} array {len(value)}")
        for n, member in enumerate(value):
            show(member, f"{path}/{n}")
    elif isinstance(value, bool):
        print(f"{path} bool {int(value)}")
    elif isinstance(value, int):
        print(f"{path} integer {value}")
    elif isinstance(value, float):
        bits = "nan" if math.isnan(value) else struct.pack(">d", value).hex()
        print(f"{path} float {bits}")
    elif isinstance(value, str):
        print(f"{path} string {value.encode().hex()}")
    elif isinstance(value, datetime.datetime):
        print(f"{path} date {int((value - datetime.datetime(2001, 1, 1)).total_seconds())}")
    elif isinstance(value, bytes):
        print(f"{path} data {value.hex()}")


if sys.argv[1] == "make":
    with open(sys.argv[2], "wb") as out:
        plistlib.dump(AWKWARD, out, fmt=plistlib.FMT_XML)
elif sys.argv[1] == "show":
    with open(sys.argv[2], "rb") as given:
        show(plistlib.load(given), "")
