#!/usr/bin/env python3
"""Writes the hostile files of the legacy formats:  tests/hostile/make_legacy_files.py [FOLDER]

Each is small and asks for much: memory, rows, pixels drawn over one another, messages. The name says what a load
at the file's own size answers: legacy-loaded-* give pixels, legacy-refused-* do not. At a smaller size those that are
refused only for the memory of their block give pixels, too.
"""

import struct
import sys
from pathlib import Path


def cals(width, height, codes=b"", orientation="000,270"):
    """A Group 4 drawing: records of 128 bytes, of which four count, then the codes."""
    header = bytearray(b" " * 2048)
    records = {0: "srcdocid: NONE", 6: "rtype: 1", 7: f"rorient: {orientation}", 8: f"rpelcnt: {width:06},{height:06}"}
    for number, text in records.items():
        header[128 * number : 128 * number + len(text)] = text.encode()
    return bytes(header) + codes


def pcx(bits, planes, width, height, line_bytes, data=b""):
    """Version 3, which has its colours in the header."""
    head = struct.pack("<4B4H4x", 10, 3, 1, bits, 0, 0, width - 1, height - 1)
    return head + bytes(range(48)) + struct.pack("<xBHH", planes, line_bytes, 1) + bytes(58) + data


def rectangle(top, left, bottom, right):
    return struct.pack(">4h", top, left, bottom, right)


def pict(frame, bitmaps):
    """Version 2: opcodes begin at even offsets. Files of 1024 bytes and less are not known as PICT."""
    stream = bytes(514) + rectangle(*frame) + b"\0\x11\x02\xff"
    for bitmap in bitmaps:
        stream += b"\xee" * (len(stream) % 2) + bitmap
    stream += b"\xee" * (len(stream) % 2) + b"\0\xff"
    return stream.ljust(1026, b"\0")


def pixel_map(bounds, row_bytes, bits, colours, mode, rows, last=None):
    out = struct.pack(">HH", 0x98, row_bytes | 0x8000) + rectangle(*bounds) + bytes(18)
    out += struct.pack(">HH14x", bits, 1)
    out += struct.pack(">4xHh", 0, len(colours) - 1 if last is None else last)
    for number, colour in enumerate(colours):
        out += struct.pack(">4H", number, *colour)
    return out + 2 * rectangle(*bounds) + struct.pack(">H", mode) + rows


def bitmap(bounds, row_bytes, mode, rows):
    return struct.pack(">HH", 0x90, row_bytes) + 3 * rectangle(*bounds) + struct.pack(">H", mode) + rows


def packed_row(row_bytes, byte):
    """One byte again and again: runs of up to 128, behind their length in two bytes."""
    runs = b""
    while row_bytes > 0:
        count = min(row_bytes, 128)
        runs += bytes([(257 - count) & 0xFF, byte])
        row_bytes -= count
    return struct.pack(">H", len(runs)) + runs


def flic(width, height, frames, chunks=b""):
    return struct.pack("<I4H", 0, 0xAF12, frames, width, height).ljust(128, b"\0") + chunks


def chunk(kind, body=b""):
    return struct.pack("<IH", 6 + len(body), kind) + body


def rlc(columns, rows, trailer=b""):
    """Rows are lists of runs."""
    body = b"".join(struct.pack(">h", len(row)) + b"".join(struct.pack(">2H", *run) for run in row) for row in rows)
    return struct.pack(">2h", len(rows), columns) + body + trailer


def rlc_directory():
    """With it only a quarter of the rows is looked through before a file is taken for RLC."""
    trailer = bytearray(344)
    trailer[8:16] = bytes([0x1A, 0x1A, 0x55, 0x64, 0x73, 0x82, 0x43, 0x4A])
    trailer[26] = 2
    return bytes(trailer)


def cals_files():
    same_as_above = b"\xff"  # eight rows
    yield "loaded-page.cal", cals(6800, 8800, same_as_above * 1100)
    yield "loaded-page-turned.cal", cals(6800, 8800, same_as_above * 1100, "090,270")
    end_of_line_cut_short = b"\x01"
    yield "loaded-bad-rows.cal", cals(8, 1000000, end_of_line_cut_short * 40000)
    yield "refused-above-2-gib.cal", cals(23171, 23171, same_as_above * 100)
    yield "refused-million-squared.cal", cals(1000000, 1000000)


def pcx_files():
    yield "loaded-196608-warnings.pcx", pcx(8, 3, 1, 65536, 1, b"x" * 19)
    yield "loaded-long-lines-without-data.pcx", pcx(8, 3, 64, 65536, 65535)
    yield "loaded-eight-planes-without-data.pcx", pcx(1, 8, 64, 65536, 65535)
    yield "refused-65536-squared.pcx", pcx(8, 3, 65536, 65536, 65535)


def pict_files():
    band = (0, 0, 1000, 32760)
    red = [(65535, 0, 0)]
    alternating = pixel_map((0, 0, 30, 32760), 4095, 1, red, 36, packed_row(4095, 0x55) * 30)
    yield "loaded-every-second-pixel.pict", pict((0, 0, 30, 32760), [alternating] * 20)
    empty_rows = pixel_map(band, 4095, 1, red * 2, 32, b"\0\0" * 1000)
    yield "loaded-drawn-over-and-over.pict", pict(band, [empty_rows] * 16)
    yield "loaded-no-colour-table.pict", pict((0, 0, 1, 4), [pixel_map((0, 0, 1, 4), 4, 8, [], 0, bytes([0, 85, 170, 255]))])
    dots = [bitmap((y, x, y + 1, x + 1), 1, 1, b"\x80") for y in range(40) for x in range(40)]
    yield "loaded-many-bitmaps.pict", pict((0, 0, 40, 40), dots)
    largest = (0, 0, 32767, 32767)  # that is known as PICT
    layers = [bitmap(largest, 4096, 0, b"\0\0" * 32767)] * 2 + [bitmap((0, 0, 5, 32767), 4096, 0, b"\0\0" * 5)]
    yield "refused-more-than-2-31-pixels.pict", pict(largest, layers)
    yield "refused-table-without-end.pict", pict((0, 0, 1, 4), [pixel_map((0, 0, 1, 4), 4, 8, [], 0, b"", 0x7FFF)])
    yield "refused-frame-32767-squared.pict", pict(largest, [])


def flic_files():
    one_packet = chunk(12, struct.pack("<HHBBbB", 0, 1, 1, 0, -127, 7))
    yield "loaded-black-again-and-again.flc", flic(4000, 4000, 65535, (one_packet + chunk(13)) * 2000)
    yield "refused-five-bytes-a-pixel.flc", flic(20730, 20730, 1)
    yield "refused-65535-squared.flc", flic(65535, 65535, 65535, chunk(13) * 10)


def rlc_files():
    full = [(1, 7000)] * 400
    yield "loaded-rows-of-full-runs.rlc", rlc(8000, [[(0, 1)]] * 100 + [full] * 20 + [[]] * 80, rlc_directory())
    yield "refused-32767-squared.rlc", rlc(32767, [[]] * 32767)


def band_files():
    yield "loaded-rows-without-bytes.hdr", b"NCOLS 8000\nNROWS 8000\nTOTALROWBYTES 0\n"
    yield "loaded-rows-without-bytes.bil", b"0"
    yield "loaded-rows-that-overlap.hdr", (
        b"NCOLS 500\nNROWS 30000\nNBANDS 3\nLAYOUT bsq\nTOTALROWBYTES 0\nBANDROWBYTES 1\n"
    )
    yield "loaded-rows-that-overlap.bil", bytes(range(256)) * 100
    yield "refused-rows-without-bytes.hdr", b"NCOLS 1000000\nNROWS 3000\nTOTALROWBYTES 0\n"
    yield "refused-rows-without-bytes.bil", b"0"


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent / "files"
    folder.mkdir(parents=True, exist_ok=True)
    for files in (cals_files, pcx_files, pict_files, flic_files, rlc_files, band_files):
        for name, content in files():
            (folder / f"legacy-{name}").write_bytes(content)


if __name__ == "__main__":
    main()
