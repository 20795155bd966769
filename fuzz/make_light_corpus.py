#!/usr/bin/env python3
"""Writes the seeds of fuzz_light:  make_light_corpus.py FOLDER"""

import math
import pathlib
import struct
import sys

FORMATS = {46: "B", 48: "B", 52: "B", 53: "B", 54: "B", 58: "e", 66: "f"}


def seed(pattern=b"", form=66, kind=3, offset=0, lights=8, width=16, height=8, pitch=None):
    if pitch is None:
        pitch = width * 4 * struct.calcsize(FORMATS.get(form, "f"))
    return struct.pack("<BBBHiii", form, kind, offset, lights, width, height, pitch) + pattern


def pixels(form, values):
    if FORMATS[form] == "B":
        values = [min(255, round(255 * v)) for v in values]
    return struct.pack(f"<{len(values)}{FORMATS[form]}", *values)


def spot(form):
    """Black but for one pixel in eleven."""
    return pixels(form, [0, 0, 0, 1] * 10 + [1, 0.5, 0.25, 1])


seeds = {f"spots-{form}": seed(spot(form), form, width=40, height=20) for form in FORMATS}
seeds |= {
    "uniform": seed(pixels(66, [0.3, 0.3, 0.3, 1]), width=200, height=100, lights=400),
    "nan-first": seed(pixels(66, [math.nan, 1, 1, 1] + [1, 1, 1, 1] * 7)),
    "nan-and-infinite": seed(pixels(66, [math.inf, 1, -math.inf, 1, 0, math.nan, 0, 1, 1, 1, 1, 1])),
    "infinite-halves": seed(struct.pack("<12H", 0x7C00, 0, 0xFC00, 0, 0x7E00, 0x7D01, 1, 0, 0x3C00, 0x3C00, 0x3C00, 0), 58),
    "overflowing-squares": seed(pixels(66, [3e38, 3e38, 3e38, 1] + [0, 0, 0, 1] * 3)),
    "padded-unaligned": seed(spot(58), 58, offset=1, pitch=133, height=9),
    "upwards": seed(spot(66), pitch=-256),
    "one-row-again-and-again": seed(spot(66), pitch=0, height=4096),
    "rows-overlap": seed(spot(46), 46, width=50, height=30, pitch=7),
    "one-wide": seed(spot(66), width=1, height=100),
    "two-wide": seed(spot(66), width=2, height=1),
    "one-row": seed(spot(46), 46, width=3000, height=1),
    "empty-width": seed(width=0),
    "negative-width": seed(width=-7, pitch=16),
    "smallest-height": seed(height=-(1 << 31), pitch=16),
    "negative-pitch-of-one-row": seed(spot(46), 46, width=5, height=1, pitch=-(1 << 31)),
    "cube": seed(spot(66), kind=5, height=96),
    "words": seed(b"\1\2", form=59),
    "no-lights": seed(spot(66), lights=0),
    "many-lights": seed(bytes(range(256)) * 3, 46, width=211, height=97, lights=65535),
}

folder = pathlib.Path(sys.argv[1])
folder.mkdir(parents=True, exist_ok=True)
for name, data in seeds.items():
    (folder / name).write_bytes(data)
