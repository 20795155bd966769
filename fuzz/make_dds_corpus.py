#!/usr/bin/env python3
"""Writes the seeds of fuzz_dds_reader: one small file for each kind of layout and shape.

Usage: make_dds_corpus.py [FOLDER]   (default: corpus/fuzz_dds_reader beside this script)
"""

import pathlib
import struct
import sys


def header(width, height, pixel, flags=0x1007, depth=0, mips=0, caps1=0x1000, caps2=0, dx10=b""):
    """The 128 bytes of a DDS header and its extension; `pixel` is (flags, FourCC, bits, four masks)."""
    fields = [0x20534444, 124, flags, height, width, 0, depth, mips] + [0] * 11
    fields += [32, *pixel, caps1, caps2, 0, 0, 0]
    return struct.pack("<32I", *fields) + dx10


def masks(flags, bits, *values):
    return (flags, 0, bits, *(list(values) + [0] * (4 - len(values))))


def code(value):
    number = int.from_bytes(value.encode(), "little") if isinstance(value, str) else value
    return (4, number, 0, 0, 0, 0, 0)


def dxgi(value, dimension=3, misc=0, array=1):
    return struct.pack("<5I", value, dimension, misc, array, 0)


def pixels(count):
    return bytes((i * 37 + 11) % 256 for i in range(count))


LAYOUTS = {
    "l8": masks(0x20000, 8, 0xFF),
    "l16": masks(0x20000, 16, 0xFFFF),
    "a8": masks(0x2, 8, 0, 0, 0, 0xFF),
    "a8l8": masks(0x20001, 16, 0xFF, 0, 0, 0xFF00),
    "bgra": masks(0x41, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000),
    "rgbx": masks(0x40, 32, 0xFF, 0xFF00, 0xFF0000),
    "rgb24": masks(0x40, 24, 0xFF0000, 0xFF00, 0xFF),
    "565": masks(0x40, 16, 0xF800, 0x7E0, 0x1F),
    "4444": masks(0x41, 16, 0xF00, 0xF0, 0xF, 0xF000),
    "332": masks(0x40, 8, 0xE0, 0x1C, 0x3),
    "2101010": masks(0x41, 32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000),
    "g16r16": masks(0x40, 32, 0xFFFF, 0xFFFF0000),
    "v8u8": masks(0x80000, 16, 0xFF, 0xFF00),
    "v16u16": masks(0x80000, 32, 0xFFFF, 0xFFFF0000),
    "l6v5u5": masks(0x40000, 16, 0x1F, 0x3E0, 0xFC00),
    "yuv": masks(0x200, 24, 0xFF, 0xFF00, 0xFF0000),
}
CODES = ["DXT1", "DXT5", "ATI2", "BC4S", "YUY2", "UYVY", "RGBG", "GRGB", 36, 110, 111, 112, 113, 114, 115, 116, 117]
DXGI = [2, 6, 10, 24, 26, 28, 31, 37, 49, 58, 61, 63, 67, 81, 86, 89, 95, 99, 100, 115, 191]
GREY = LAYOUTS["l8"]

SEEDS = {f"masks_{name}": header(3, 2, pixel) + pixels(24) for name, pixel in LAYOUTS.items()}
SEEDS |= {f"code_{value}": header(3, 2, code(value)) + pixels(96) for value in CODES}
SEEDS |= {f"dxgi_{value}": header(3, 2, code("DX10"), dx10=dxgi(value)) + pixels(96) for value in DXGI}
SEEDS |= {
    "mips": header(8, 2, GREY, flags=0x21007, mips=4, caps1=0x401008) + pixels(23),
    "mips_beyond": header(4, 4, GREY, flags=0x21007, mips=0x7FFFFFFF, caps1=0x401008) + pixels(21),
    "cube": header(2, 2, GREY, caps1=0x1008, caps2=0xFE00) + pixels(24),
    "cube_partial_mips": header(2, 2, GREY, 0x21007, mips=2, caps1=0x401008, caps2=0x200 | 0b100101 << 10) + pixels(15),
    "cube_dx10": header(1, 1, code("DX10"), dx10=dxgi(61, 3, 4, 2)) + pixels(12),
    "volume_mips": header(2, 2, GREY, 0x821007, depth=4, mips=3, caps1=0x401008, caps2=0x200000) + pixels(19),
    "volume_dx10": header(2, 1, code("DX10"), depth=2, dx10=dxgi(28, 4)) + pixels(16),
    "truncated": header(4, 4, GREY) + pixels(15),
    "huge": header(1 << 20, 1 << 20, code("DXT5")) + pixels(16),
    "empty": header(0, 0, GREY),
}


def main():
    beside = pathlib.Path(__file__).parent / "corpus" / "fuzz_dds_reader"
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else beside
    folder.mkdir(parents=True, exist_ok=True)
    for name, data in SEEDS.items():
        (folder / f"{name}.dds").write_bytes(data)
    print(f"{len(SEEDS)} seeds")


main()
