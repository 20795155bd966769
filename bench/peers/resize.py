"""Commands that make smaller pictures, ours and other programs', as processes:

  resize.py time ours|others FOLDER    times each once and adds a line for each to FOLDER/resize.txt
  resize.py report FOLDER              the best of the lines, as tables

Uses no more of Python than its smallest package has.
"""
import os
import sys
import time

CUBIC = "-filter Mitchell"
DEFLATED = "[compression=deflate,predictor=horizontal]"
FFMPEG = "ffmpeg -nostdin -loglevel error -y -i {} -vf scale={}:{}:flags=bicubic:param0=0.3333:param1=0.3333 -compression_algo deflate out.tif"
GDAL = "gdal_translate -q -r cubic -co COMPRESS=DEFLATE -co PREDICTOR=2 -outsize {} {} {} out.tif"

# Each writes a TIFF, deflated. The tiny picture tells how long a program takes to start and to end.
SIZES = {
    "TIFF of 8192 x 8192 to 2048 x 2048": {
        "kavra resize": "{kavra} resize large.tif out.tif --size 2048x2048",
        "kavra convert": "{kavra} convert large.tif out.tif --size 2048x2048",
        "libvips": f"vips resize large.tif out.tif{DEFLATED} 0.25 --kernel mitchell",
        "GraphicsMagick": f"gm convert large.tif {CUBIC} -resize 2048x2048! -compress Zip out.tif",
        "ImageMagick": f"magick large.tif {CUBIC} -resize 2048x2048! -compress Zip out.tif",
        "ffmpeg": FFMPEG.format("large.tif", 2048, 2048),
        "GDAL": GDAL.format(2048, 2048, "large.tif"),
    },
    "JPEG of 4096 x 4096 to 512 x 512": {
        "kavra convert": "{kavra} convert photo.jpg out.tif --size 512x512",
        "libvips": f"vips resize photo.jpg out.tif{DEFLATED} 0.125 --kernel mitchell",
        "GraphicsMagick": f"gm convert photo.jpg {CUBIC} -resize 512x512! -compress Zip out.tif",
        "ImageMagick": f"magick photo.jpg {CUBIC} -resize 512x512! -compress Zip out.tif",
        "ffmpeg": FFMPEG.format("photo.jpg", 512, 512),
    },
    "the same, decoded in part": {
        "kavra convert": "{kavra} convert photo.jpg out.tif --size 512x512 --fast",
        "libvips": f"vipsthumbnail photo.jpg --size 512x512 -o out.tif{DEFLATED}",
        "GraphicsMagick": f"gm convert -size 512x512 photo.jpg {CUBIC} -resize 512x512! -compress Zip out.tif",
        "ImageMagick": f"magick -define jpeg:size=1024x1024 photo.jpg {CUBIC} -resize 512x512! -compress Zip out.tif",
        "GDAL": GDAL.format(512, 512, "photo.jpg"),
    },
    "JPEG of 16 x 16 to 8 x 8": {
        "kavra convert": "{kavra} convert tiny.jpg out.tif --size 8x8",
        "libvips": f"vips resize tiny.jpg out.tif{DEFLATED} 0.5 --kernel mitchell",
        "GraphicsMagick": f"gm convert tiny.jpg {CUBIC} -resize 8x8! -compress Zip out.tif",
        "ImageMagick": f"magick tiny.jpg {CUBIC} -resize 8x8! -compress Zip out.tif",
        "ffmpeg": FFMPEG.format("tiny.jpg", 8, 8),
        "GDAL": GDAL.format(8, 8, "tiny.jpg"),
    },
}


def run(command):
    """Seconds from start to end, seconds of all cores, and the highest memory in MB; nothing where it failed."""
    start = time.perf_counter()
    child = os.fork()
    if child == 0:
        quiet = os.open("/dev/null", os.O_WRONLY)
        os.dup2(quiet, 1)
        os.dup2(quiet, 2)
        try:
            os.execvp(command[0], command)
        finally:
            os._exit(127)
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    return (seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024) if status == 0 else None


def time_all(ours, folder):
    kavra = os.path.abspath("build/release/bin/kavra")
    os.chdir(folder)
    with open("resize.txt", "a", encoding="utf-8") as lines:
        for size, commands in SIZES.items():
            for program, command in commands.items():
                if program.startswith("kavra") == ours:
                    result = run(command.format(kavra=kavra).split())
                    print(size, program, *(result or ["failed"]), sep="\t", file=lines)


def report(folder):
    best = {}
    with open(os.path.join(folder, "resize.txt"), encoding="utf-8") as lines:
        for line in lines:
            size, program, *figures = line.rstrip("\n").split("\t")
            if figures != ["failed"]:
                of_all = best.setdefault((size, program), [float("inf")] * 3)
                best[size, program] = list(map(min, of_all, map(float, figures)))
    for size, commands in SIZES.items():
        print(f"\n{size:38}{'seconds':>9}{'of cores':>10}{'MB':>7}")
        for program in commands:
            figures = best.get((size, program))
            print(f"  {program:36}" + ("   failed" if figures is None else "{:9.3f}{:10.3f}{:7.0f}".format(*figures)))


if __name__ == "__main__":
    if sys.argv[1] == "report":
        report(sys.argv[2])
    else:
        time_all(sys.argv[2] == "ours", sys.argv[3])
