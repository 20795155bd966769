"""What other programs need for the files that kavra_bench loaded, beside it:  report.py FOLDER

Programs are timed as processes, less the time they take for a tiny file of the same kind; libraries are called.
"""
import ctypes
import ctypes.util
import json
import os
import subprocess
import sys
import time

RUNS = 3


def best(action):
    seconds = []
    for _ in range(RUNS):
        start = time.perf_counter()
        action()
        seconds.append(time.perf_counter() - start)
    return min(seconds)


def process(*command):
    def run():
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    return best(run)


def ffmpeg(name, *demuxer):
    def command(file, *options):
        return process("ffmpeg", "-nostdin", "-loglevel", "error", "-threads", "1", *options, "-i", file, "-f", "null", "-")
    return command(name, *demuxer) - command("tiny-24.pcx")


def pcxtoppm(name):
    return process("pcxtoppm", name) - process("pcxtoppm", name.replace("large", "tiny"))


def library(name):
    return ctypes.CDLL(ctypes.util.find_library(name))


def libtiff(name):
    """Decodes all strips into one buffer of packed rows."""
    tiff = library("tiff")
    tiff.TIFFOpen.restype = ctypes.c_void_p
    handle = ctypes.c_void_p(tiff.TIFFOpen(name.encode(), b"r"))
    tiff.TIFFStripSize.restype = ctypes.c_ssize_t
    tiff.TIFFReadEncodedStrip.restype = ctypes.c_ssize_t
    size = tiff.TIFFStripSize(handle)
    strips = tiff.TIFFNumberOfStrips(handle)
    buffer = ctypes.create_string_buffer(size)

    def decode():
        for strip in range(strips):
            if tiff.TIFFReadEncodedStrip(handle, strip, buffer, ctypes.c_ssize_t(size)) < 0:
                raise RuntimeError(name)
    seconds = best(decode)
    tiff.TIFFClose(handle)
    return seconds


def gdal(name, bands, kind, item):
    """Opens the raster and reads all bands, pixel by pixel interleaved, into memory that has been touched."""
    lib = library("gdal")
    lib.GDALAllRegister()
    lib.GDALOpen.restype = ctypes.c_void_p
    side = 8192
    buffer = ctypes.create_string_buffer(side * side * bands * item)

    def read():
        data = ctypes.c_void_p(lib.GDALOpen(name.encode(), 0))
        failed = lib.GDALDatasetRasterIO(data, 0, 0, 0, side, side, buffer, side, side, kind, bands, None,
                                         bands * item, side * bands * item, item)
        lib.GDALClose(data)
        if failed:
            raise RuntimeError(name)
    return best(read)


PEERS = {
    "large-8.pcx": ("ffmpeg", ffmpeg),
    "large-24.pcx": ("netpbm", pcxtoppm),
    "large-32.pct": ("ffmpeg", lambda name: ffmpeg(name, "-f", "qdraw_pipe")),
    "large-8.pct": ("ffmpeg, indices", lambda name: ffmpeg(name, "-f", "qdraw_pipe")),
    "animation.flc": ("ffmpeg, indices", ffmpeg),
    "drawing.cal": ("libtiff, bits", lambda name: libtiff("drawing-g4.tif")),
    "rgb.bil": ("GDAL", lambda name: gdal(name, 3, 1, 1)),
    "grey.bil": ("GDAL", lambda name: gdal(name, 1, 1, 1)),
    "short.bil": ("GDAL", lambda name: gdal(name, 1, 2, 2)),
    "float.bil": ("GDAL", lambda name: gdal(name, 1, 6, 4)),
}


def main(folder):
    os.chdir(folder)
    with open("ours.json", encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    print(f"{'file':16}{'ours':>10}{'peer':>10}{'ours/peer':>11}{'ours/plain':>12}   peer; plain: read the file, write the result")
    for run in runs:
        name = run["name"].split("/")[1]
        peer, action = PEERS[name]
        try:
            rate = run["pixels"] / action(name) / 1e6
        except (subprocess.CalledProcessError, RuntimeError, OSError) as error:
            print(f"{name:16} {peer} failed: {error}")
            continue
        ours = run["Mpixel/s"]
        print(f"{name:16}{ours:10.0f}{rate:10.0f}{ours / rate:11.2f}{run['over_plain']:12.2f}   {peer}")


if __name__ == "__main__":
    main(sys.argv[1])
