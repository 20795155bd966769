#!/usr/bin/env python3
"""Writes the seeds of fuzz_dds_reader and fuzz_dds_common: one small file for each kind of layout and shape.

Usage: make_dds_corpus.py [FOLDER]   (default: corpus beside this script), which gets a folder for each
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

# What only the common reading knows.
COMMON_CODES = ["DXT2", "DXT4", "RXGB", "ATI1", "BC5S", "A2XY", 23, 41, 50, 60]
COMMON_DXGI = [70, 73, 76, 79, 82, 84, 94, 96, 97]
COMMON_SEEDS = {f"code_{value}": header(5, 6, code(value)) + pixels(1300) for value in COMMON_CODES}
COMMON_SEEDS |= {f"dxgi_{value}": header(5, 6, code("DX10"), dx10=dxgi(value)) + pixels(64) for value in COMMON_DXGI}
COMMON_SEEDS |= {
    "palette": header(3, 2, masks(0x20, 8)) + pixels(1030),
    "palette_alpha": header(3, 2, masks(0x21, 16, 0, 0, 0, 0xFF00)) + pixels(1036),
    "gaps": header(1, 3, LAYOUTS["rgb24"], flags=0x100F)[:20] + b"\4\0\0\0" + header(1, 3, LAYOUTS["rgb24"])[24:] + pixels(12),
    "no_flags": header(3, 2, masks(0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000)) + pixels(24),
    "15_bits": header(3, 2, masks(0x40, 15, 0x7C00, 0x3E0, 0x1F)) + pixels(12),
    "rows_missing": header(2, 6, LAYOUTS["565"]) + pixels(11),
    "blocks_missing": header(9, 9, code("DX10"), dx10=dxgi(97)) + pixels(60),
    "cube_rows_missing": header(4, 4, code("BC5S"), 0x21007, mips=2, caps1=0x401008, caps2=0xFE00) + pixels(100),
    "volume_565": header(3, 2, LAYOUTS["565"], 0x821007, depth=3, mips=2, caps1=0x401008, caps2=0x200000) + pixels(38),
    "levels_unflagged": header(2, 2, LAYOUTS["565"], mips=2, caps1=0x1008, caps2=0xFE00) + pixels(60),
    "alpha_custom": header(3, 2, code("DX10"), dx10=dxgi(28)[:16] + b"\4\0\0\0") + pixels(24),
    "huge_565": header(1 << 20, 1 << 20, LAYOUTS["565"]) + pixels(16),
}


def main():
    corpus = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "corpus"
    for target, seeds in (("fuzz_dds_reader", SEEDS), ("fuzz_dds_common", SEEDS | COMMON_SEEDS)):
        folder = corpus / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, data in seeds.items():
            (folder / f"{name}.dds").write_bytes(data)
        print(f"{target}: {len(seeds)} seeds")


main()
