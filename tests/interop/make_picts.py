#!/usr/bin/env python3
"""Writes PICT files of many kinds with known pixels:  tests/interop/make_picts.py FOLDER

Beside each NAME.pict stands NAME.want: its pixels as they are meant, four bytes each (red, green, blue, alpha) from the
top, worked out here from "Inside Macintosh: Imaging With QuickDraw" (1994), appendix A and chapters 2, 3 and 4, and not
by any reader. NAME.size holds the width and the height.
"""

import io
import struct
import sys
import zlib
from pathlib import Path

from PIL import Image

WHITE, BLACK = (255, 255, 255), (0, 0, 0)
RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)


# --- pixels ----------------------------------------------------------------------------------------------------------


class Page:
    """White until something is put on it."""

    def __init__(self, width, height):
        self.width, self.height = width, height
        self.pixels = [[(*WHITE, 255)] * width for _ in range(height)]

    def put(self, left, top, picture, combine=lambda new, old: new):
        for y, row in enumerate(picture):
            for x, pixel in enumerate(row):
                if 0 <= top + y < self.height and 0 <= left + x < self.width:
                    new = combine(pixel[:3], self.pixels[top + y][left + x][:3])
                    self.pixels[top + y][left + x] = (*new, pixel[3] if len(pixel) == 4 else 255)
        return self

    def bytes(self):
        return bytes(value for row in self.pixels for pixel in row for value in pixel)


def colourful(width, height, step=1):
    """No two neighbours alike, and every channel with all its bits in use."""
    return [
        [((x * 37 * step + y * 11) % 256, (x * 5 + y * 71 * step) % 256, (x * 91 + y * 29 + 128) % 256) for x in range(width)]
        for y in range(height)
    ]


def patchwork(width, height, patches):
    """Patches of one colour, so that the way a scaled picture is sampled does not matter at their middles."""
    return [[patches[(y * len(patches) // height + x * 3 // width) % len(patches)] for x in range(width)] for y in range(height)]


def bits_picture(width, height, ink=BLACK, paper=WHITE):
    return [[ink if (x * 7 + y * 3 + x * y) % 5 < 2 else paper for x in range(width)] for y in range(height)]


def to555(pixel):
    return pixel[0] >> 3 << 10 | pixel[1] >> 3 << 5 | pixel[2] >> 3


def from555(pixel):
    return tuple((pixel >> shift & 31) << 3 | (pixel >> shift & 31) >> 2 for shift in (10, 5, 0))


# --- rows ------------------------------------------------------------------------------------------------------------


def pack_bits(data, unit=1):
    units = [data[i : i + unit] for i in range(0, len(data), unit)]
    out, at = b"", 0
    while at < len(units):
        run = 1
        while at + run < len(units) and run < 128 and units[at + run] == units[at]:
            run += 1
        if run > 1:
            out += bytes([257 - run]) + units[at]
            at += run
            continue
        end = at + 1
        while end < len(units) and end - at < 128 and (end + 1 == len(units) or units[end] != units[end + 1]):
            end += 1
        out += bytes([end - at - 1]) + b"".join(units[at:end])
        at = end
    return out


def store(rows, row_bytes, packed=True, unit=1, wide=None):
    """Rows as they stand in a file: `rows` are bytes each."""
    out = b""
    for row in rows:
        if packed and row_bytes >= 8:
            data = pack_bits(row, unit)
            out += struct.pack(">H" if (wide if wide is not None else row_bytes > 250) else ">B", len(data)) + data
        else:
            out += row
    return out


def index_rows(indices, bits, row_bytes):
    rows = []
    for line in indices:
        number = 0
        for index in line:
            number = number << bits | index
        length = (len(line) * bits + 7) // 8
        rows.append((number << (length * 8 - len(line) * bits)).to_bytes(length, "big").ljust(row_bytes, b"\0"))
    return rows


def even(number):
    return (number + 1) // 2 * 2


# --- files -----------------------------------------------------------------------------------------------------------


def rect(top, left, bottom, right):
    return struct.pack(">4h", top, left, bottom, right)


def at(left, top, picture):
    """The rectangle of a picture whose corner is there."""
    return rect(top, left, top + len(picture), left + len(picture[0]))


def op(code, data=b""):
    return struct.pack(">H", code) + data + b"\0" * (len(data) % 2)


def rgb16(colour):
    return struct.pack(">3H", *(value * 257 for value in colour))


def region(*rows, box):
    """Rows are (y, x, x ...)."""
    data = b"".join(struct.pack(f">{len(row) + 1}H", *row, 0x7FFF) for row in rows)
    if rows:
        data += struct.pack(">H", 0x7FFF)
    return struct.pack(">H", 10 + len(data)) + rect(*box) + data


def header(width, height, frame=None, native=None, dpi=72):
    """Version 2: the frame, the version and a header, extended where there is a native rectangle."""
    frame = frame or (0, 0, height, width)
    out = b"\0\0" + rect(*frame) + op(0x11, b"\x02\xff")
    if native:
        return out + op(0x0C00, struct.pack(">hhii", -2, 0, dpi << 16, dpi << 16) + rect(*native) + b"\0\0\0\0")
    fixed = struct.pack(">4i", *(value << 16 for value in (frame[1], frame[0], frame[3], frame[2])))
    return out + op(0x0C00, struct.pack(">i", -1) + fixed + b"\0\0\0\0")


def pixel_map(bounds, row_bytes, bits, components=1, component_bits=None, packing=0, direct=False):
    return struct.pack(">H", row_bytes | 0x8000) + bounds + struct.pack(
        ">hhiiihhhhiii", 0, packing, 0, 72 << 16, 72 << 16, 16 if direct else 0, bits, components, component_bits or bits, 0, 0, 0
    )


def colour_table(colours, numbers=None, flags=0):
    out = struct.pack(">iHh", 0, flags, len(colours) - 1)
    for i, colour in enumerate(colours):
        out += struct.pack(">H", numbers[i] if numbers else i) + rgb16(colour)
    return out


def placed(bounds, source=None, destination=None, mode=0, mask=b""):
    return (source or bounds) + (destination or source or bounds) + struct.pack(">H", mode) + mask


def direct(picture, bits=32, packing=0, components=3, left=0, top=0, destination=None, source=None, mode=0, mask=None, pad=0, wide=None):
    """A DirectBitsRect, or with a mask a DirectBitsRgn. `pad` is what stands in unused bytes."""
    width = len(picture[0])
    bounds = at(left, top, picture)
    row_bytes = width * bits // 8
    unit = 1
    if bits == 16:
        row_bytes = even(row_bytes)
        rows, unit = [b"".join(struct.pack(">H", to555(pixel)) for pixel in row) for row in picture], 2
        packed = packing in (0, 3)
    else:
        alpha = lambda pixel: pixel[3] if len(pixel) == 4 else pad
        packed = packing in (0, 4) and row_bytes >= 8
        if packed:
            planes = ([alpha] if components == 4 else []) + [lambda pixel, i=i: pixel[i] for i in range(3)]
            rows = [bytes(plane(pixel) for plane in planes for pixel in row) for row in picture]
        elif packing == 2 and row_bytes >= 8:
            rows = [bytes(value for pixel in row for value in pixel[:3]) for row in picture]
        else:
            rows = [bytes(value for pixel in row for value in (alpha(pixel), *pixel[:3])) for row in picture]
    data = b"\0\0\0\xff" + pixel_map(bounds, row_bytes, bits, components, 5 if bits == 16 else 8, packing, True)
    data += placed(bounds, source, destination, mode, mask or b"") + store(rows, row_bytes, packed, unit, wide)
    return op(0x9B if mask else 0x9A, data)


def indexed(indices, bits, colours, left=0, top=0, destination=None, source=None, mode=0, mask=None, numbers=None, flags=0, pad=0):
    width = len(indices[0])
    bounds = at(left, top, indices)
    row_bytes = even((width * bits + 7) // 8) + pad
    data = pixel_map(bounds, row_bytes, bits) + colour_table(colours, numbers, flags)
    data += placed(bounds, source, destination, mode, mask or b"") + store(index_rows(indices, bits, row_bytes), row_bytes)
    plain = row_bytes < 8
    return op((0x91 if mask else 0x90) if plain else (0x99 if mask else 0x98), data)


def bitmap_data(bits, left=0, top=0, destination=None, source=None, mode=0, mask=b"", packed=True):
    bounds = at(left, top, bits)
    row_bytes = even((len(bits[0]) + 7) // 8)
    rows = index_rows(bits, 1, row_bytes)
    return struct.pack(">H", row_bytes) + bounds + placed(bounds, source, destination, mode, mask) + store(rows, row_bytes, packed)


def bitmap(bits, code=None, **placement):
    wide = len(bits[0]) > 48
    mask = placement.get("mask")
    code = code or ((0x99 if mask else 0x98) if wide else (0x91 if mask else 0x90))
    return op(code, bitmap_data(bits, **placement))


def as_bits(picture, ink=BLACK):
    return [[int(pixel == ink) for pixel in row] for row in picture]


class Folder:
    def __init__(self, path):
        self.path = Path(path)
        self.path.mkdir(parents=True, exist_ok=True)

    def write(self, name, page, stream, preamble=512, tail=op(0xFF)):
        data = stream + tail
        data = struct.pack(">H", len(data) & 0xFFFF) + data[2:]
        (self.path / f"{name}.pict").write_bytes(b"\0" * preamble + data)
        (self.path / f"{name}.want").write_bytes(page.bytes())
        (self.path / f"{name}.size").write_text(f"{page.width} {page.height}\n")

    def simple(self, name, picture, *bitmaps, **how):
        """A page that one picture fills."""
        page = Page(len(picture[0]), len(picture)).put(0, 0, picture)
        self.write(name, page, header(page.width, page.height) + b"".join(bitmaps), **how)


# --- the kinds -------------------------------------------------------------------------------------------------------


def write_direct(out):
    for width in (1, 3, 62, 63, 101, 300):
        picture = colourful(width, 9)
        small = [[from555(to555(pixel)) for pixel in row] for row in picture]
        for packing in (0, 1, 2, 4):
            out.simple(f"direct32-pack{packing}-{width}", picture, direct(picture, 32, packing))
        for packing in (0, 1, 3):
            out.simple(f"direct16-pack{packing}-{width}", small, direct(picture, 16, packing))
    picture = colourful(70, 9)
    out.simple("direct32-four-components-0", picture, direct(picture, components=4, pad=0))
    out.simple("direct32-four-components-255", picture, direct(picture, components=4, pad=255))
    out.simple("direct32-plain-junk-in-pad", picture, direct(picture, packing=1, pad=0x5A))
    clear = [[(*pixel, (x * 40 + y * 9) % 256) for x, pixel in enumerate(row)] for y, row in enumerate(picture)]
    out.simple("direct32-alpha", clear, direct(clear, components=4))
    out.simple("direct32-alpha-plain", clear, direct(clear, components=4, packing=1))
    out.simple("direct32-word-counts-20", colourful(20, 7), direct(colourful(20, 7), wide=True))
    out.simple("direct16-ramp", [[from555(i << 10 | i << 5 | i) for i in range(32)]] * 2,
               direct([[(i * 8, i * 8, i * 8) for i in range(32)]] * 2, 16))


def write_indexed(out):
    for bits in (1, 2, 4, 8):
        colours = [((i * 53) % 256, (i * 101 + 7) % 256, 255 - i * 255 // (2**bits - 1)) for i in range(2**bits)]
        for width in (5, 33, 270):
            indices = [[(x * 3 + y * 5) % 2**bits for x in range(width)] for y in range(11)]
            picture = [[colours[i] for i in row] for row in indices]
            out.simple(f"indexed{bits}-{width}", picture, indexed(indices, bits, colours))
    colours = [(10, 200, 30), (250, 3, 99), (0, 90, 180), (77, 7, 177)]
    indices = [[(x + y) % 4 for x in range(40)] for y in range(6)]
    picture = [[colours[i] for i in row] for row in indices]
    by_place = [colours[i] for i in (2, 0, 3, 1)]
    out.simple("indexed-by-number", picture, indexed(indices, 8, by_place, numbers=[2, 0, 3, 1]))
    out.simple("indexed-device-table", picture, indexed(indices, 8, colours, numbers=[0, 0, 0, 0], flags=0x8000))
    out.simple("indexed-padded-rows", picture, indexed(indices, 4, colours, pad=6))


def write_bitmaps(out):
    for width in (9, 48, 49, 64, 2100):
        picture = bits_picture(width, 7)
        out.simple(f"bitmap-{width}", picture, bitmap(as_bits(picture)))
    picture = bits_picture(100, 7)
    out.simple("bitmap-90-plain", picture, bitmap(as_bits(picture), 0x90, packed=False))
    out.simple("bitmap-90-packed", picture, bitmap(as_bits(picture), 0x90))
    for width, code, packed in ((20, 0x90, False), (100, 0x98, True), (100, 0x90, False), (20, 0x91, False), (100, 0x99, True)):
        picture = bits_picture(width, 9)
        box = region(box=(0, 0, 9, width)) if code & 1 else b""
        stream = b"\0\0" + rect(0, 0, 9, width) + b"\x11\x01" + b"\x01" + region(box=(0, 0, 9, width))
        stream += bytes([code]) + bitmap_data(as_bits(picture), mask=box, packed=packed)
        page = Page(width, 9).put(0, 0, picture)
        for preamble in (0, 512):
            name = f"version1-{code:x}-{width}-{'packed' if packed else 'plain'}-{preamble}"
            out.write(name, page, stream, preamble, tail=b"\xff")


def write_colours(out):
    picture = bits_picture(30, 10)
    bits = as_bits(picture)
    two = lambda ink, paper: [[ink if bit else paper for bit in row] for row in bits]
    page = Page(60, 20)
    stream = header(60, 20)
    for number, (ink, paper) in enumerate(((RED, WHITE), (BLUE, (255, 255, 0)), ((12, 34, 56), (200, 100, 50)), (BLACK, WHITE))):
        left, top = number % 2 * 30, number // 2 * 10
        stream += op(0x1A, rgb16(ink)) + op(0x1B, rgb16(paper)) + bitmap(bits, destination=rect(top, left, top + 10, left + 30))
        page.put(left, top, two(ink, paper))
    out.write("colours-at-the-bitmap", page, stream + op(0x1A, rgb16(GREEN)))
    classic = {33: BLACK, 30: WHITE, 205: RED, 341: GREEN, 409: BLUE, 273: (0, 255, 255), 137: (255, 0, 255), 69: (255, 255, 0)}
    page, stream = Page(30, 80), header(30, 80)
    for row, (number, colour) in enumerate(classic.items()):
        paper = 30 if number != 30 else 33
        stream += op(0x0E, struct.pack(">I", number)) + op(0x0F, struct.pack(">I", paper))
        stream += bitmap(bits, destination=rect(10 * row, 0, 10 * row + 10, 30))
        page.put(0, 10 * row, two(colour, classic[paper]))
    out.write("colours-classic", page, stream)
    picture = colourful(40, 8)
    page = Page(40, 8).put(0, 0, picture)
    out.write("colours-do-not-tint-copies", page, header(40, 8) + op(0x1A, rgb16(RED)) + op(0x1B, rgb16(BLUE)) + direct(picture))


def write_modes(out):
    below, above = colourful(40, 12), colourful(40, 12, 3)
    fore, back, weight = (20, 60, 200), (250, 240, 10), (64, 128, 192)
    sixteen = lambda value: value * 257
    per_channel = lambda f: lambda s, d: tuple(f(sixteen(s[i]), sixteen(d[i]), sixteen(weight[i])) >> 8 for i in range(3))
    mix = lambda dark, light: lambda s, d: tuple((~s[i] & dark(d)[i] | s[i] & light(d)[i]) & 255 for i in range(3))
    fg, bg, same = lambda d: fore, lambda d: back, lambda d: d
    modes = {
        0: lambda s, d: s,
        1: mix(fg, same),
        2: lambda s, d: tuple(d[i] ^ ~s[i] & 255 for i in range(3)),
        3: mix(bg, same),
        4: mix(bg, fg),
        5: mix(same, fg),
        6: lambda s, d: tuple(d[i] ^ s[i] for i in range(3)),
        7: mix(same, bg),
        32: per_channel(lambda s, d, o: (s * o + d * (65535 - o) + 32767) // 65535),
        33: per_channel(lambda s, d, o: min(s + d, o)),
        34: per_channel(lambda s, d, o: (s + d) % 65536),
        35: per_channel(lambda s, d, o: max(d - s, o)),
        36: lambda s, d: d if s == back else s,
        37: per_channel(lambda s, d, o: max(s, d)),
        38: per_channel(lambda s, d, o: (d - s) % 65536),
        39: per_channel(lambda s, d, o: min(s, d)),
        64: lambda s, d: s,
        100: lambda s, d: d if s == back else s,
    }
    above[3][5:30] = [back] * 25
    for mode, combine in modes.items():
        page = Page(40, 12).put(0, 0, below).put(0, 0, above, combine)
        colours = op(0x1A, rgb16(fore)) + op(0x1B, rgb16(back)) + op(0x1F, rgb16(weight))
        out.write(f"mode{mode}", page, header(40, 12) + direct(below) + colours + direct(above, mode=mode))
    # Of bitmaps: black and white become the two colours, in the modes of bits where these are put in.
    drawing = bits_picture(40, 12)
    for mode in (0, 1, 3, 4, 5, 7, 33, 36, 37):
        coloured = drawing if 1 <= mode <= 7 else [[fore if pixel == BLACK else back for pixel in row] for row in drawing]
        page = Page(40, 12).put(0, 0, below).put(0, 0, coloured, modes[mode])
        out.write(f"bitmap-mode{mode}", page, header(40, 12) + direct(below) + colours + bitmap(as_bits(drawing), mode=mode))


def write_places(out):
    patches = [RED, GREEN, BLUE, (255, 200, 0), (0, 128, 128)]
    small = [[patches[(x + y) % 5] for x in range(20)] for y in range(10)]
    grown = lambda picture, n: [[pixel for pixel in row for _ in range(n)] for row in picture for _ in range(n)]
    out.simple("scaled-3-times", grown(small, 3), direct(small, destination=rect(0, 0, 30, 60)))
    out.simple("scaled-to-a-third", small, direct(grown(small, 3), destination=rect(0, 0, 10, 20)))
    out.simple("scaled-bitmap", grown(bits_picture(20, 10), 2), bitmap(as_bits(bits_picture(20, 10)), destination=rect(0, 0, 20, 40)))
    wide = [[pixel for pixel in row for _ in range(4)] for row in small]
    out.simple("scaled-in-width", wide, direct(small, destination=rect(0, 0, 10, 80)))
    tall = [row for row in small for _ in range(4)]
    out.simple("scaled-in-height", tall, direct(small, destination=rect(0, 0, 40, 20)))
    picture = colourful(40, 20)
    part = [row[10:30] for row in picture[5:15]]
    out.write("part-of-source-moved", Page(50, 30).put(7, 9, part), header(50, 30) + direct(picture, source=rect(5, 10, 15, 30), destination=rect(9, 7, 19, 27)))
    frame = (-30, -20, 10, 40)
    page = Page(60, 40).put(0, 0, picture).put(20, 30, picture)
    stream = header(60, 40, frame) + direct(picture, left=-20, top=-30) + direct(picture)
    out.write("frame-above-the-origin", page, stream)
    page = Page(60, 40).put(0, 0, picture)
    out.write("frame-behind-the-origin", page, header(60, 40, (100, 200, 140, 260)) + direct(picture, left=200, top=100))
    page = Page(40, 60)
    stream = header(40, 60)
    for band in range(6):
        picture = colourful(40, 10, band + 1)
        stream += direct(picture, top=10 * band)
        page.put(0, 10 * band, picture)
    out.write("bands", page, stream)
    colours = [((i * 53) % 256, (i * 101 + 7) % 256, i) for i in range(200)]
    page, stream = Page(40, 60), header(40, 60)
    for band in range(3):
        indices = [[(x * 3 + y * 5 + band * 17) % 200 for x in range(40)] for y in range(20)]
        stream += indexed(indices, 8, colours, top=20 * band)
        page.put(0, 20 * band, [[colours[i] for i in row] for row in indices])
    out.write("bands-indexed", page, stream)
    picture = colourful(100, 60)
    fine = header(24, 14, (0, 0, 14, 24), (0, 0, 60, 100), 300) + op(1, region(box=(0, 0, 60, 100))) + direct(picture)
    out.write("resolution-300", Page(100, 60).put(0, 0, picture), fine)


def write_regions(out):
    picture = colourful(40, 20)
    # A step: the upper half is 10 wide, the lower one 30.
    steps = region((2, 5, 15), (10, 15, 35), (18, 5, 35), box=(2, 5, 18, 35))
    inside = lambda x, y: 2 <= y < 18 and 5 <= x < (15 if y < 10 else 35)
    ring = region((0, 0, 40), (5, 10, 30), (15, 10, 30), (20, 0, 40), box=(0, 0, 20, 40))
    outside = lambda x, y: not (5 <= y < 15 and 10 <= x < 30)

    def cut(test):
        page = Page(40, 20).put(0, 0, picture)
        for y in range(20):
            for x in range(40):
                if not test(x, y):
                    page.pixels[y][x] = (*WHITE, 255)
        return page

    out.write("clip-box", cut(lambda x, y: 3 <= x < 20 and 4 <= y < 15), header(40, 20) + op(1, region(box=(4, 3, 15, 20))) + direct(picture))
    out.write("clip-steps", cut(inside), header(40, 20) + op(1, steps) + direct(picture))
    out.write("mask-steps", cut(inside), header(40, 20) + direct(picture, mask=steps))
    out.write("mask-ring", cut(outside), header(40, 20) + direct(picture, mask=ring))
    both = lambda x, y: inside(x, y) and outside(x, y)
    out.write("clip-and-mask", cut(both), header(40, 20) + op(1, ring) + direct(picture, mask=steps))
    colours = [((i * 53) % 256, (i * 101 + 7) % 256, i) for i in range(256)]
    indices = [[(x * 3 + y * 5) % 256 for x in range(40)] for y in range(20)]
    picture = [[colours[i] for i in row] for row in indices]
    out.write("mask-indexed", cut(inside), header(40, 20) + indexed(indices, 8, colours, mask=steps))
    picture = bits_picture(64, 20)
    page = Page(64, 20).put(0, 0, [row[:40] for row in picture])
    for y in range(20):
        for x in range(40):
            if not inside(x, y):
                page.pixels[y][x] = (*WHITE, 255)
    out.write("mask-bitmap", page, header(64, 20) + bitmap(as_bits(picture), mask=steps))


def write_streams(out):
    picture = colourful(40, 8)
    page = Page(40, 8).put(0, 0, picture)
    others = b"".join([
        op(0x0002, bytes(8)), op(0x0003, bytes(2)), op(0x0004, b"\0"), op(0x0007, bytes(4)), op(0x0009, b"\xff" * 8), op(0x0022, bytes(6)),
        op(0x0028, bytes(4) + b"\x03abc"), op(0x0029, b"\x05\x02hi"), op(0x002B, b"\1\2\1x"), op(0x002C, b"\0\5\0\1\2ab"),
        op(0x00A0, b"\0\x82"), op(0x00A1, b"\0\x64\0\3abc"), op(0x00B5), op(0x00D3, b"\0\0\0\5abcde"), op(0x0130, bytes(2)), op(0x01F0, bytes(2)),
        op(0x02FF, bytes(4)), op(0x7F80, bytes(254)), op(0x8042), op(0x8123, b"\0\0\0\4abcd"), op(0x8200, b"\0\0\0\6private"[:10]),
        op(0x0092, b"\0\3abc"), op(0x001E), op(0x001C), op(0x001D, bytes(6)), op(0x0015, bytes(2)), op(0x0016, bytes(2)),
        op(0x0012, b"\0\2" + bytes(8) + bytes(6)),
    ])
    out.write("opcodes-skipped", page, header(40, 8) + others + direct(picture) + others)
    for preamble in (0, 512):
        out.write(f"preamble-{preamble}", page, header(40, 8) + direct(picture), preamble)
        tiny = [[RED, BLUE], [GREEN, WHITE]]
        out.write(f"tiny-{preamble}", Page(2, 2).put(0, 0, tiny), header(2, 2) + direct(tiny), preamble)
    out.write("no-end", page, header(40, 8) + direct(picture), tail=b"")
    cut = header(40, 8) + direct(picture)
    kept = Page(40, 8).put(0, 0, picture[:5])
    planar = lambda line: bytes(pixel[i] for i in range(3) for pixel in line)
    before_rows = 2 + 4 + 46 + 18
    end = len(header(40, 8)) + before_rows + len(store(map(planar, picture[:5]), 160))
    out.write("cut-in-row-6", kept, cut[: end + 40], tail=b"")


def png(picture):
    chunk = lambda kind, data: struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + bytes(value for pixel in row for value in pixel) for row in picture)
    head = struct.pack(">IIBBBBB", len(picture[0]), len(picture), 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def compressed(codec, data, width, height, scale=1, left=0, top=0, mask=b"", matte=b""):
    """A CompressedQuickTime opcode."""
    fixed = lambda value: int(value * 65536)
    matrix = struct.pack(">9i", fixed(scale), 0, 0, 0, fixed(scale), 0, fixed(left), fixed(top), 1 << 30)
    out = b"\0\0" + matrix + struct.pack(">I", len(matte)) + bytes(8) + b"\0\0" + rect(0, 0, height, width)
    out += bytes(4) + struct.pack(">I", len(mask))
    out += (struct.pack(">I", 86) + bytes(82) + matte if matte else b"") + mask
    out += struct.pack(">I4s8xHH12xHHiiIh", 86, codec, 1, 1, width, height, 72 << 16, 72 << 16, len(data), 1) + bytes(32)
    out += struct.pack(">hh", 24, -1) + data
    return op(0x8200, struct.pack(">I", len(out)) + out)


def write_quicktime(out):
    picture = colourful(64, 20)
    stand_in = bitmap(as_bits(bits_picture(64, 20)))
    out.simple("quicktime-png", picture, compressed(b"png ", png(picture), 64, 20), stand_in)
    page = Page(64, 20).put(0, 0, picture)
    out.write("quicktime-matte", page, header(64, 20) + compressed(b"png ", png(picture), 64, 20, matte=bytes(9)) + stand_in)
    page = Page(140, 50).put(5, 7, [[pixel for pixel in row for _ in range(2)] for row in picture for _ in range(2)])
    out.write("quicktime-scaled-moved", page, header(140, 50) + compressed(b"png ", png(picture), 64, 20, 2, 5, 7))
    mask = region((2, 5, 60), (10, 5, 60), box=(2, 5, 10, 60))
    page = Page(64, 20).put(5, 2, [row[5:60] for row in picture[2:10]])
    out.write("quicktime-mask", page, header(64, 20) + compressed(b"png ", png(picture), 64, 20, mask=mask))
    photo = Image.new("RGB", (64, 20))
    photo.putdata([(x * 4, y * 12, 128) for y in range(20) for x in range(64)])
    for codec, form in ((b"jpeg", "jpeg"), (b"WRLE", "bmp")):
        data = io.BytesIO()
        photo.save(data, form)
        decoded = Image.open(io.BytesIO(data.getvalue())).convert("RGB").tobytes()
        pixels = [tuple(decoded[at : at + 3]) for at in range(0, len(decoded), 3)]
        rows = [pixels[64 * y : 64 * y + 64] for y in range(20)]
        out.simple(f"quicktime-{form}", rows, compressed(codec, data.getvalue(), 64, 20), stand_in)
    unknown = compressed(b"SVQ3", bytes(300), 64, 20)
    out.simple("quicktime-unknown", bits_picture(64, 20), unknown, stand_in)
    identity = struct.pack(">9i", 65536, 0, 0, 0, 65536, 0, 0, 0, 1 << 30)
    plain = b"\0\0" + identity + bytes(4) + bytes(8) + direct(picture)
    out.simple("quicktime-uncompressed", picture, op(0x8201, struct.pack(">I", len(plain)) + plain))


def main():
    out = Folder(sys.argv[1])
    for write in (write_direct, write_indexed, write_bitmaps, write_colours, write_modes, write_places, write_regions, write_streams,
                  write_quicktime):
        write(out)


main()
