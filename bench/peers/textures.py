"""Block compression, ours and other programs', of the pictures of make_texture_pictures.py:

  textures.py peers FOLDER     blocks and times of the others; those of a slow program are kept from run to run
  textures.py ours FOLDER      ours, and all blocks decoded by our decoders
  textures.py report FOLDER    tables of both

Times are those that one core spends, which other work on the machine changes least; the shortest of several.
"""
import array
import ctypes
import json
import os
import pathlib
import subprocess
import sys
import time

# Of each format: its number and what it decodes to (EFormat.h), bytes of a block, the pictures, the channels that it keeps.
FORMATS = {
    "bc1": (6, "B", 4, 8, "colours", 3),
    "bc2": (8, "B", 4, 16, "colours", 4),
    "bc3": (10, "B", 4, 16, "colours", 4),
    "bc4": (12, "B", 1, 8, "colours", 1),
    "bc5": (14, "B", 4, 16, "colours", 2),
    "bc6h": (73, "H", 4, 16, "light", 3),
    "bc7": (75, "B", 4, 16, "colours-small", 4),
}
WIDTHS = {"colours": 1024, "light": 1024, "colours-small": 256}
RGBA8, RGBA32F = 46, 66
LEVELS = ("fast", "good", "best")
SQUISH = {"range": 1 << 6, "cluster": 1 << 5, "iterative": 1 << 8}
SQUISH_KINDS = {"bc1": 1 << 0, "bc2": 1 << 1, "bc3": 1 << 2, "bc4": 1 << 3, "bc5": 1 << 4}
PICTURE_COUNT_ACROSS = 4
TOP_HALF = 31743.0
CEILING = 90.0  # dB; more is no more to see, and would outweigh the other pictures


def cpu_seconds(work, at_least=1.0):
    """The shortest of at least three runs."""
    times, begin = [], time.process_time()
    while len(times) < 3 or time.process_time() - begin < at_least:
        start = time.process_time()
        work()
        times.append(time.process_time() - start)
        if times[0] > at_least * 5:
            break
    return min(times)


def height_of(raw, group):
    return len(raw) // (16 if group == "light" else 4) // WIDTHS[group]


def keep(folder, name, blocks, seconds, pixels):
    (folder / f"{name}.blocks").write_bytes(blocks)
    (folder / f"{name}.json").write_text(json.dumps({"Mpixel/s": pixels / seconds / 1e6}))


# --- Others ----------------------------------------------------------------------------------------------------------


def run_squish(folder):
    compress = getattr(ctypes.CDLL("libsquish.so.0"), "_ZN6squish13CompressImageEPKhiiPviPf")
    compress.restype = None
    for kind, flag in SQUISH_KINDS.items():
        _, _, _, size, group, channels = FORMATS[kind]
        raw, width = bytearray((folder / f"{group}.raw").read_bytes()), WIDTHS[group]
        if channels < 4:
            raw[3::4] = b"\xff" * (len(raw) // 4)
        source, height = bytes(raw), height_of(raw, group)
        blocks = ctypes.create_string_buffer(width * height // 16 * size)
        for fit, fit_flag in SQUISH.items() if kind in ("bc1", "bc2", "bc3") else [("range", SQUISH["range"])]:
            seconds = cpu_seconds(lambda: compress(source, width, height, blocks, flag | fit_flag, None))
            keep(folder, f"{kind}-squish {fit}", blocks.raw, seconds, width * height)


def child_seconds(command):
    best = float("inf")
    for _ in range(3):
        before = os.times()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        after = os.times()
        best = min(best, after.children_user + after.children_system - before.children_user - before.children_system)
        if best > 5:
            break
    return best


def run_nvtt(folder):
    """Without what the program takes to read colours and to write them uncompressed; with light it cannot do that."""
    idle = {"light": 0.0}
    for kind, (_, _, _, size, group, channels) in FORMATS.items():
        picture = folder / f"{group}.{'hdr' if group == 'light' else 'png'}"
        options = ["-float"] if group == "light" else ["-alpha"] if channels == 4 else []
        for name, quality in (("fast", ["-fast"]), ("unasked", [])):
            out, full = folder / "nvtt.dds", f"{kind}-NVTT {name}"
            if (folder / f"{full}.json").exists() or (kind in ("bc6h", "bc7") and quality):  # it has one quality of these
                continue
            if group not in idle:
                idle[group] = child_seconds(["nvcompress", "-nomips", "-rgb", *options, picture, out])
            seconds = child_seconds(["nvcompress", "-nomips", "-" + kind.removesuffix("h"), *quality, *options, picture, out])
            raw = folder / f"{group}.raw"
            pixels = WIDTHS[group] * height_of(raw.read_bytes(), group)
            keep(folder, full, out.read_bytes()[-pixels // 16 * size:], max(seconds - idle[group], 0.001), pixels)


# --- Ours ------------------------------------------------------------------------------------------------------------


class CompressionOptions(ctypes.Structure):
    _fields_ = [("size", ctypes.c_uint32), ("effort", ctypes.c_int32), ("weights", ctypes.c_float * 4),
                ("withAlpha", ctypes.c_bool), ("cutoff", ctypes.c_float)]


def devices():
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0))})  # before it starts its threads
    return ctypes.CDLL(os.path.abspath("build/release/lib/libKavraDevices.so"))


def run_ours(folder):
    library = devices()
    compress = getattr(library, "_ZN5Kavra7Devices15CompressPictureENS0_7EFormatEPKvmiiS1_PvRKNS0_18CompressionOptionsE")
    compress.restype = ctypes.c_bool
    for kind, (number, _, _, size, group, channels) in FORMATS.items():
        source, width = (folder / f"{group}.raw").read_bytes(), WIDTHS[group]
        height = height_of(source, group)
        blocks = ctypes.create_string_buffer(width * height // 16 * size)
        for effort, level in enumerate(LEVELS):
            options = CompressionOptions(ctypes.sizeof(CompressionOptions), effort, (1, 1, 1, 1), channels == 4, 0.5)
            arguments = (RGBA32F if group == "light" else RGBA8, source, ctypes.c_size_t(len(source) // height), width,
                         height, number, blocks, ctypes.byref(options))
            assert compress(*arguments)
            keep(folder, f"{kind}-ours {level}", blocks.raw, cpu_seconds(lambda: compress(*arguments)), width * height)
    decode_all(folder, library)


def decode_all(folder, library):
    decompress = getattr(library, "_ZN5Kavra7Devices17DecompressPictureENS0_7EFormatEPKviiPvm")
    decompress.restype = ctypes.c_bool
    for path in folder.glob("*.blocks"):
        number, letter, channels, size, group, _ = FORMATS[path.name.split("-")[0]]
        blocks, width = path.read_bytes(), WIDTHS[group]
        height = len(blocks) // size * 16 // width
        row = width * channels * array.array(letter).itemsize
        pixels = ctypes.create_string_buffer(row * height)
        assert decompress(number, blocks, width, height, pixels, ctypes.c_size_t(row))
        path.with_suffix(".pixels").write_bytes(pixels.raw)


# --- Report ----------------------------------------------------------------------------------------------------------


def tiles(pixels, count):
    side = pixels.shape[1] // PICTURE_COUNT_ACROSS
    return [pixels[side * (i // PICTURE_COUNT_ACROSS):, side * (i % PICTURE_COUNT_ACROSS):][:side, :side] for i in range(count)]


def psnrs(folder, name):
    """Of each picture. Light as the numbers that the bits of halves are; colours that nobody sees count nothing."""
    import numpy
    kind = name.split("-")[0]
    _, letter, channels, _, group, kept = FORMATS[kind]
    width, names = WIDTHS[group], (folder / f"{group.removesuffix('-small')}.names").read_text().split()
    source = numpy.frombuffer((folder / f"{group}.raw").read_bytes(), "<f4" if group == "light" else "u1")
    source = source.reshape(-1, width, 4)
    shown = numpy.frombuffer((folder / f"{name}.pixels").read_bytes(), "u2" if letter == "H" else "u1")
    shown = shown.reshape(-1, width, channels)[..., :kept].astype(float)
    top = 255.0
    if group == "light":
        source, top = source.astype(numpy.float16).view(numpy.uint16), TOP_HALF
    off = source[..., :kept].astype(float) - shown
    if kept == 4:
        off[..., :3] *= (source[..., 3:] > 0)
    squares = [numpy.mean(tile ** 2) for tile in tiles(off, len(names))]
    return {n: min(CEILING, 10 * numpy.log10(top * top / max(square, 1e-9))) for n, square in zip(names, squares)}


def report(folder):
    found = {}
    for kind in FORMATS:
        encoders = [f"ours {level}" for level in LEVELS]
        encoders += sorted(path.stem.split("-", 1)[1] for path in folder.glob(f"{kind}-*.json") if "-ours" not in path.stem)
        print(f"\n{kind:20}{'mean dB':>9}{'Mpixel/s':>11}")
        for encoder in encoders:
            name = f"{kind}-{encoder}"
            each, speed = psnrs(folder, name), json.loads((folder / f"{name}.json").read_text())["Mpixel/s"]
            found[name] = sum(each.values()) / len(each), speed, each
            print(f"  {encoder:18}{found[name][0]:9.2f}{speed:11.4g}")
    print("\nours beside the others' best:  dB more, times as fast")
    for ours, theirs, asked in (("bc1-ours good", "bc1-squish range", "+0.2, 10"), ("bc1-ours best", "bc1-squish cluster", "-0.05, 10"),
                                ("bc1-ours best", "bc1-squish iterative", "-0.05, 10"), ("bc7-ours good", "bc7-NVTT unasked", "-0.3, 500")):
        print(f"  {ours:15} {theirs:22}{found[ours][0] - found[theirs][0]:+7.2f}{found[ours][1] / found[theirs][1]:9.1f}   wished: {asked}")
    with open(folder / "pictures.txt", "w", encoding="utf-8") as lines:
        for name, (_, _, each) in found.items():
            print(name, *(f"{picture} {value:.2f}" for picture, value in each.items()), sep="\t", file=lines)


if __name__ == "__main__":
    place = pathlib.Path(sys.argv[2])
    if sys.argv[1] == "peers":
        run_squish(place)
        run_nvtt(place)
    else:
        {"ours": run_ours, "report": report}[sys.argv[1]](place)
