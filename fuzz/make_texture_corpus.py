#!/usr/bin/env python3
"""Writes the seeds of fuzz_texture_file: one small file for each shape and each way that a kind of file says something.

Usage: make_texture_corpus.py [FOLDER]   (default: corpus/fuzz_texture_file beside this script)
"""

import pathlib
import struct
import sys


def pixels(count):
    return bytes((i * 37 + 11) % 256 for i in range(count))


# --- DDS -------------------------------------------------------------------------------------------------------------

def dds(width, height, number, data, dimension=3, misc=0, array=1, alpha=0, mips=1, depth=0, code="DX10", caps2=0):
    flags = 0x1007 | (0x20000 if mips > 1 else 0) | (0x800000 if depth else 0)
    fields = [0x20534444, 124, flags, height, width, 0, depth, mips] + [0] * 11
    fields += [32, 4, int.from_bytes(code.encode(), "little"), 0, 0, 0, 0, 0, 0x1000, caps2, 0, 0, 0]
    extension = struct.pack("<5I", number, dimension, misc, array, alpha) if code == "DX10" else b""
    return struct.pack("<32I", *fields) + extension + pixels(data)


# --- KTX2 ------------------------------------------------------------------------------------------------------------

def frame(data):
    """A Zstandard frame of one block of bytes as they are (RFC 8878)."""
    return b"\x28\xb5\x2f\xfd\x20" + bytes([len(data)]) + (1 | len(data) << 3).to_bytes(3, "little") + data


def run(length):
    """The same of one byte that is repeated."""
    return b"\x28\xb5\x2f\xfd\x60" + (length - 256).to_bytes(2, "little") + (3 | length << 3).to_bytes(3, "little") + b"\x07"


def pair(key, value):
    both = key.encode() + b"\0" + value
    return struct.pack("<I", len(both)) + both + bytes(-len(both) % 4)


def ktx(format, width, height, levels, depth=0, layers=0, faces=1, count=None, scheme=0, transfer=1, flags=0, texts=b""):
    """`levels` holds the bytes of each level, the largest first, or pairs of packed bytes and their unpacked number."""
    levels = [level if isinstance(level, tuple) else (pixels(level), level) for level in levels]
    descriptor = struct.pack("<IIHH4B4BII", 44, 0, 2, 40, 1, 1, transfer, flags, 0, 0, 0, 0, 1, 0) + bytes(16)
    start = 80 + 24 * len(levels)
    body, places = descriptor + texts, {}
    for index in reversed(range(len(levels))):
        body += bytes(-(start + len(body)) % 48) if scheme == 0 else b""
        places[index] = struct.pack("<3Q", start + len(body), len(levels[index][0]), levels[index][1])
        body += levels[index][0]
    head = b"\xabKTX 20\xbb\r\n\x1a\n" + struct.pack(
        "<13I2Q", format, 1, width, height, depth, layers, faces, len(levels) if count is None else count, scheme,
        start, len(descriptor), start + len(descriptor) if texts else 0, len(texts), 0, 0)
    return head + b"".join(places[i] for i in range(len(levels))) + body


SEEDS = {
    "dds_array": dds(4, 4, 71, 2 * 3 * 8, array=2, mips=3),
    "dds_cubes": dds(4, 4, 98, 2 * 6 * 16, misc=4, array=2),
    "dds_faces": dds(2, 2, 0, 3 * 8, code="DXT1", caps2=0x200 | 0b10101 << 10),
    "dds_srgb": dds(3, 2, 29, 24, alpha=2),
    "dds_typeless": dds(4, 4, 97, 16, alpha=3),
    "dds_volume": dds(2, 2, 61, 16, dimension=4, depth=4),
    "dds_ati2": dds(4, 4, 0, 16, code="ATI2"),
    "dds_dxt4": dds(4, 4, 0, 16, code="DXT4"),
    "dds_rxgb": dds(4, 4, 0, 16, code="RXGB"),
    "ktx_flat": ktx(37, 3, 2, [24]),
    "ktx_levels": ktx(9, 4, 2, [8, 2, 1]),
    "ktx_cubes": ktx(133, 4, 4, [96, 96, 96], layers=2, faces=6),
    "ktx_volume": ktx(100, 2, 2, [32, 4], depth=2),
    "ktx_array": ktx(146, 5, 3, [96, 48], layers=3, transfer=2),
    "ktx_row": ktx(70, 4, 0, [8], count=0),
    "ktx_premultiplied": ktx(97, 1, 1, [8], flags=1),
    "ktx_curve": ktx(91, 1, 1, [8], transfer=2),
    "ktx_three": ktx(23, 3, 1, [9]),
    "ktx_565": ktx(4, 2, 2, [8]),
    "ktx_grey": ktx(9, 2, 2, [4], texts=pair("KTXorientation", b"ru\0") + pair("KTXswizzle", b"rrr1\0")),
    "ktx_alpha": ktx(9, 2, 2, [4], texts=pair("KTXswizzle", b"000r\0")),
    "ktx_grey_alpha": ktx(16, 2, 2, [8], texts=pair("KTXswizzle", b"rrrg")),
    "ktx_opaque": ktx(37, 1, 1, [4], texts=pair("KTXswizzle", b"rgb1\0")),
    "ktx_faces": ktx(9, 1, 1, [4], layers=4, texts=pair("KTXcubemapIncomplete", b"\x22")),
    "ktx_zstd": ktx(9, 4, 4, [(frame(pixels(16)), 16), (frame(pixels(4)), 4)], scheme=2),
    "ktx_zstd_run": ktx(9, 64, 64, [(run(4096), 4096)], scheme=2),
    "ktx_zstd_cubes": ktx(145, 4, 4, [(frame(pixels(192)), 192)], scheme=2, layers=2, faces=6),
    "ktx_basis": ktx(0, 4, 4, [(pixels(3), 0)], scheme=1),
}

if __name__ == "__main__":
    own = pathlib.Path(__file__).parent / "corpus" / "fuzz_texture_file"
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else own
    folder.mkdir(parents=True, exist_ok=True)
    for name, data in SEEDS.items():
        (folder / name).write_bytes(data)
