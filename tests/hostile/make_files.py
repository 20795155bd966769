#!/usr/bin/env python3
"""Makes the files in files/: small, by hand, each with one lie in it.  make_files.py [FOLDER]

Every file is made of the formats' public descriptions alone (PNG: RFC 2083; TIFF: revision 6.0; OpenEXR: "File Layout"),
with the standard library of Python. What each is for stands beside it below.
"""
import pathlib
import struct
import sys
import zlib

folder = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "files")


def write(name, data):
    assert len(data) < 50_000, name
    (folder / name).write_bytes(data)


def ramp(count):
    return bytes(i * 7 % 251 for i in range(count))


# --- PNG -------------------------------------------------------------------------------------------------------------


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def png(width, height, channels, texts=(), deep=False, offset=None):
    """8 or 16 bits a sample; `texts` become tEXt chunks, which the image library takes for attributes of the picture;
    `offset` is where on a page the picture lies."""
    colour = {1: 0, 2: 4, 3: 2, 4: 6}[channels]
    row = width * channels * (2 if deep else 1)
    pixels = ramp(row * height)
    rows = b"".join(b"\0" + pixels[y * row : (y + 1) * row] for y in range(height))
    out = b"\x89PNG\r\n\x1a\n"
    out += chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 16 if deep else 8, colour, 0, 0, 0))
    if offset:
        out += chunk(b"oFFs", struct.pack(">iiB", *offset, 0))
    for key, value in texts:
        out += chunk(b"tEXt", key.encode() + b"\0" + value.encode())
    return out + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")


CUBE = ("textureformat", "CubeFace Environment")
VOLUME = ("textureformat", "Volume Texture")


def make_png():
    # A flat picture that says it is six faces, or slices.
    write("text-cube.png", png(16, 16, 4, [CUBE]))
    write("text-cube-strip.png", png(4, 24, 3, [CUBE]))
    write("text-volume.png", png(16, 12, 4, [VOLUME]))
    # Each attribute that a load asks for, as text that looks like a value.
    write("text-grey.png", png(8, 8, 3, [("tiff:PhotometricInterpretation", "1")]))
    write("text-orientation.png", png(8, 6, 3, [("Orientation", "6")]))
    write("text-line-order.png", png(8, 6, 3, [("openexr:lineOrder", "decreasingY")]))
    write("text-planar.png", png(8, 6, 4, [("planarconfig", "separate")]))
    write("text-gamma.png", png(8, 6, 3, [("oiio:Gamma", "0"), ("Exif:Gamma", "-1")]))
    write("text-bits.png", png(8, 6, 1, [("oiio:BitsPerSample", "16")]))
    write("text-cube-turned.png", png(16, 16, 4, [CUBE, ("openexr:lineOrder", "decreasingY"), ("Orientation", "5")]))
    # The library rounds its reads up to this many rows: it divides by zero, or counts up past the largest integer.
    for rows in ("0", "-1", "-64", "2147483647", "2147483584", "99999999999"):
        write(f"text-rows-per-strip-{rows}.png", png(8, 70, 3, [("tiff:RowsPerStrip", rows)], deep=True))
    # Positions to which no size can be added.
    write("offset-7fffffff.png", png(8, 6, 3, offset=(0x7FFFFFFF, 0x7FFFFFFF)))
    write("offset-7fffffc0.png", png(8, 70, 3, offset=(0, 0x7FFFFFC0), deep=True))
    write("offset-80000000.png", png(8, 6, 3, offset=(-0x80000000, -0x80000000)))
    whole = png(64, 64, 4, [CUBE])
    write("cut-half.png", whole[: len(whole) // 2])
    write("cut-header.png", whole[:30])


# --- TIFF ------------------------------------------------------------------------------------------------------------

BYTE, ASCII, SHORT, LONG, FLOAT = 1, 2, 3, 4, 11
SIZES = {BYTE: 1, ASCII: 1, SHORT: 2, LONG: 4, FLOAT: 4}
NONE, LZW, DEFLATE, PACKBITS = 1, 5, 8, 32773


def lzw(data):
    """9-bit literals with a clear code before the table would need more bits."""
    bits, count, out = 0, 0, bytearray()
    codes = []
    for i, byte in enumerate(data):
        if i % 200 == 0:
            codes.append(256)
        codes.append(byte)
    for code in codes + [257]:
        bits, count = bits << 9 | code, count + 9
        while count >= 8:
            count -= 8
            out.append(bits >> count & 255)
    return bytes(out) + bytes([bits << 8 - count & 255] if count else [])


def packbits(data):
    return b"".join(bytes([len(part) - 1]) + part for part in (data[i : i + 128] for i in range(0, len(data), 128)))


PACK = {NONE: lambda data: data, LZW: lzw, DEFLATE: lambda data: zlib.compress(data, 9), PACKBITS: packbits}


def directory(entries, at, next_at):
    """One directory for offset `at`, its long values behind it. `entries`: (tag, type, values)."""
    entries = sorted(entries)
    body, tail = b"", b""
    tail_at = at + 2 + 12 * len(entries) + 4
    for tag, kind, values in entries:
        if kind == ASCII:
            data, count = values, len(values)
        else:
            data = b"".join(struct.pack({BYTE: "<B", SHORT: "<H", LONG: "<I", FLOAT: "<f"}[kind], v) for v in values)
            count = len(values)
        if len(data) <= 4:
            body += struct.pack("<HHI", tag, kind, count) + data.ljust(4, b"\0")
        else:
            body += struct.pack("<HHII", tag, kind, count, tail_at + len(tail))
            tail += data + b"\0" * (len(data) % 2)
    return struct.pack("<H", len(entries)) + body + struct.pack("<I", next_at) + tail


def tiff(width, height, channels, compression=NONE, rows=None, extra=(), tile=None, drop=(), loops=False, runs_on=False):
    """One picture of 8-bit samples in one strip or tile. `extra` adds entries or replaces them; with `runs_on` runs of
    bytes go on from one row into the next, as they should not."""
    pixels = ramp(width * height * channels)
    if compression == PACKBITS and not runs_on:
        row = width * channels
        data = b"".join(packbits(pixels[i : i + row]) for i in range(0, len(pixels), row))
    else:
        data = PACK[compression](pixels)
    at = 8 + len(data) + len(data) % 2
    entries = {
        256: (LONG, [width]),
        257: (LONG, [height]),
        258: (SHORT, [8] * channels),
        259: (SHORT, [compression]),
        262: (SHORT, [2 if channels > 2 else 1]),
        277: (SHORT, [channels]),
    }
    if channels == 4:
        entries[338] = (SHORT, [2])
    if tile:
        entries |= {322: (LONG, [tile[0]]), 323: (LONG, [tile[1]]), 324: (LONG, [8]), 325: (LONG, [len(data)])}
    else:
        entries |= {273: (LONG, [8]), 279: (LONG, [len(data)]), 278: (LONG, [height if rows is None else rows])}
    for tag, kind, values in extra:
        entries[tag] = (kind, values)
    listed = [(tag, *entry) for tag, entry in entries.items() if tag not in drop]
    return (
        struct.pack("<2sHI", b"II", 42, at)
        + data.ljust(at - 8, b"\0")
        + directory(listed, at, at if loops else 0)
    )


def chained(count, last_next):
    """`count` directories of one shared picture, one after another; the last goes on at directory `last_next`."""
    pixels = ramp(16)
    size = 2 + 12 * 9 + 4
    start = 8 + 16
    out = struct.pack("<2sHI", b"II", 42, start) + pixels
    entries = [(256, LONG, [4]), (257, LONG, [4]), (258, SHORT, [8]), (259, SHORT, [1]), (262, SHORT, [2])]
    entries += [(273, LONG, [8]), (277, SHORT, [1]), (278, LONG, [4]), (279, LONG, [16])]
    for i in range(count):
        at = start + i * size
        following = at + size if i + 1 < count else 0 if last_next is None else start + last_next * size
        out += directory(entries, at, following)
    return out


def make_tiff():
    # What a texture tool calls six faces, without and with faces; and slices of a flat picture.
    cube, volume = b"CubeFace Environment\0", b"Volume Texture\0"
    write("cube-tag.tif", tiff(16, 16, 4, extra=[(33302, ASCII, cube)]))
    write("cube-tag-strip.tif", tiff(4, 24, 3, extra=[(33302, ASCII, cube)]))
    write("cube-tag-faces.tif", tiff(4, 24, 3, extra=[(33302, ASCII, cube), (33300, LONG, [4]), (33301, LONG, [4])]))
    write("cube-tag-small-faces.tif", tiff(16, 16, 3, extra=[(33302, ASCII, cube), (33300, LONG, [2]), (33301, LONG, [2])]))
    write("cube-tag-large-faces.tif", tiff(16, 16, 3, extra=[(33302, ASCII, cube), (33300, LONG, [16]), (33301, LONG, [1 << 20])]))
    write("volume-tag.tif", tiff(16, 16, 3, extra=[(33302, ASCII, volume)]))
    # Slices that are not there.
    for depth in (0, 2, 0x7FFFFFFF, 0xFFFFFFFF):
        write(f"depth-{depth:x}.tif", tiff(8, 8, 3, extra=[(32997, LONG, [depth])]))
    # More rows a strip than there are: common, and harmless but for those near the largest integer.
    packers = {"none": NONE, "lzw": LZW, "deflate": DEFLATE, "packbits": PACKBITS}
    for rows in (0, 1 << 20, 0x7FFFFFC0, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF):
        for name, compression in packers.items():
            write(f"rows-per-strip-{rows:x}-{name}.tif", tiff(5, 70, 3, compression, rows))
        write(f"rows-per-strip-{rows:x}-two-rows.tif", tiff(5, 2, 3, DEFLATE, rows))
        write(f"rows-per-strip-{rows:x}-grey.tif", tiff(5, 70, 1, DEFLATE, rows))
    write("rows-per-strip-64-runs-on.tif", tiff(5, 70, 3, PACKBITS, 100, runs_on=True))
    write("rows-per-strip-none.tif", tiff(5, 70, 3, DEFLATE, drop=[278]))
    # Tiles beyond all sense.
    for wide, high in ((0x7FFFFFF0, 16), (16, 0x7FFFFFF0), (0xFFFFFFF0, 16), (16, 0xFFFFFFF0), (0, 0), (65536, 65536),
                       (0x10000, 0x7FFF), (0x7FFFFFF0, 0x7FFFFFF0), (1, 1)):  # fmt: skip
        for name in ("none", "deflate"):
            write(f"tile-{wide:x}-{high:x}-{name}.tif", tiff(16, 16, 3, packers[name], tile=(wide, high)))
    # Sizes beyond all sense, and strips that are not there.
    write("height-7fffffff.tif", tiff(16, 16, 3, DEFLATE, extra=[(257, LONG, [0x7FFFFFFF])]))
    write("height-ffffffff.tif", tiff(16, 16, 3, DEFLATE, extra=[(257, LONG, [0xFFFFFFFF])]))
    write("height-100000-one-row-strips.tif", tiff(16, 16, 3, DEFLATE, 1, extra=[(257, LONG, [0x100000])]))
    write("strip-beyond-the-end.tif", tiff(16, 16, 3, DEFLATE, extra=[(273, LONG, [0xFFFFFF00])]))
    write("strip-of-4-gigabytes.tif", tiff(16, 16, 3, DEFLATE, extra=[(279, LONG, [0xFFFFFFFF])]))
    # Positions to which no size can be added.
    for at in (3e9, 2147483520.0, -3e9):
        place = [(286, FLOAT, [at]), (287, FLOAT, [at]), (282, FLOAT, [1.0]), (283, FLOAT, [1.0])]
        write(f"position-{at:.0f}.tif", tiff(5, 70, 3, DEFLATE, extra=place))
    # A strip whose size no 32 bits hold; and a row.
    write("rows-per-strip-100000-wide.tif", tiff(1000, 4, 3, DEFLATE, 1 << 20))
    write("width-60000000.tif", tiff(16, 16, 3, DEFLATE, extra=[(256, LONG, [60_000_000])]))
    write("width-7fffffff.tif", tiff(16, 16, 1, DEFLATE, extra=[(256, LONG, [0x7FFFFFFF]), (257, LONG, [2])]))
    # Directories that follow one another for ever, or for long.
    write("directory-follows-itself.tif", tiff(4, 4, 3, loops=True))
    write("directories-in-a-circle.tif", chained(3, 0))
    write("directories-back-to-the-second.tif", chained(5, 1))
    write("directories-400.tif", chained(400, None))
    whole = tiff(16, 70, 3, DEFLATE, 0x7FFFFFFF)
    write("cut-directory.tif", whole[:-20])
    write("cut-strip.tif", tiff(5, 70, 3, DEFLATE, 0x7FFFFFFF, extra=[(279, LONG, [10])]))


# --- OpenEXR ---------------------------------------------------------------------------------------------------------


def attribute(name, kind, data):
    return name.encode() + b"\0" + kind.encode() + b"\0" + struct.pack("<i", len(data)) + data


def exr(width, height, channels, environment=None, order=0, display=None, extra=b""):
    """Uncompressed rows of half floats. `environment`: 0 latitude and longitude, 1 cube; `order` 1: last row first."""
    names = sorted(channels)
    listed = b"".join(name.encode() + b"\0" + struct.pack("<iBBBBii", 1, 0, 0, 0, 0, 1, 1) for name in names) + b"\0"
    window = struct.pack("<iiii", 0, 0, width - 1, height - 1)
    display_width, display_height = display or (width, height)
    out = struct.pack("<II", 20000630, 2)
    out += attribute("channels", "chlist", listed) + attribute("compression", "compression", b"\0")
    out += attribute("dataWindow", "box2i", window)
    out += attribute("displayWindow", "box2i", struct.pack("<iiii", 0, 0, display_width - 1, display_height - 1))
    if environment is not None:
        out += attribute("envmap", "envmap", bytes([environment]))
    out += attribute("lineOrder", "lineOrder", bytes([order]))
    out += attribute("pixelAspectRatio", "float", struct.pack("<f", 1))
    out += attribute("screenWindowCenter", "v2f", struct.pack("<ff", 0, 0))
    out += attribute("screenWindowWidth", "float", struct.pack("<f", 1)) + extra + b"\0"
    rows = range(height) if order == 0 else range(height - 1, -1, -1)
    row_bytes = width * len(names) * 2
    start = len(out) + 8 * height
    offsets = [0] * height
    data = b""
    for y in rows:
        offsets[y] = start + len(data)
        halves = [(x + y * width) / 64 for _ in names for x in range(width)]
        data += struct.pack("<ii", y, row_bytes) + struct.pack(f"<{len(halves)}e", *halves)
    return out + b"".join(struct.pack("<Q", offset) for offset in offsets) + data


def text(name, value):
    return attribute(name, "string", value.encode())


def number(name, value):
    return attribute(name, "int", struct.pack("<i", value))


def make_exr():
    # Six faces on one another: the display window is one face, or all of them (as most programs write it).
    write("cube.exr", exr(4, 24, "RGBA", environment=1))
    write("cube-decreasing.exr", exr(4, 24, "RGBA", environment=1, order=1))
    write("cube-faces.exr", exr(4, 24, "RGB", environment=1, display=(4, 4)))
    write("cube-square.exr", exr(8, 8, "RGB", environment=1, order=1))
    write("latitude-longitude.exr", exr(8, 4, "RGB", environment=0))
    write("cube-by-name.exr", exr(8, 8, "RGB", order=1, extra=text("textureformat", "CubeFace Environment")))
    write("volume-by-name.exr", exr(8, 8, "RGB", extra=text("textureformat", "Volume Texture")))
    write("grey-by-name.exr", exr(8, 8, "RGB", extra=text("tiff:PhotometricInterpretation", "1")))
    write("grey-by-number.exr", exr(8, 8, "RGB", extra=number("tiff:PhotometricInterpretation", 1)))
    for rows in (0, -1, 0x7FFFFFFF, 0x7FFFFFC0):
        write(f"rows-per-strip-{rows & 0xFFFFFFFF:x}.exr", exr(8, 70, "RGB", extra=number("tiff:RowsPerStrip", rows)))
    whole = exr(16, 16, "RGBA", environment=1)
    write("cut-table.exr", whole[: len(whole) - 16 * (8 + 128) - 40])
    write("cut-rows.exr", whole[:-500])


folder.mkdir(exist_ok=True)
make_png()
make_tiff()
make_exr()
