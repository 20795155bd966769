"""A drawing of E size at 600 dpi, as one Group 4 strip in TIFF and in CALS:  make_drawing.py TIFF CALS"""
import random
import sys

from PIL import Image, ImageDraw

WIDTH, HEIGHT = 20000, 14000


def draw():
    rng = random.Random(7)
    image = Image.new("1", (WIDTH, HEIGHT), 255)
    pen = ImageDraw.Draw(image)
    for _ in range(600):
        pen.line([rng.randrange(WIDTH), rng.randrange(HEIGHT), rng.randrange(WIDTH), rng.randrange(HEIGHT)], 0, 9)
    for _ in range(20000):  # lettering
        x, y = rng.randrange(WIDTH), rng.randrange(HEIGHT)
        pen.rectangle([x, y, x + rng.randrange(2, 30), y + rng.randrange(2, 30)], fill=0)
    return image


def cals_header():
    records = ["srcdocid: NONE", "dstdocid: NONE", "txtfilid: NONE", "figid: NONE", "srcgph: NONE", "doccls: NONE", "rtype: 1",
               "rorient: 000,270", f"rpelcnt: {WIDTH:06},{HEIGHT:06}", "rdensty: 0600", "notes: NONE"]
    return "".join(record.ljust(128) for record in records).ljust(2048).encode()


def main(tiff, cals):
    Image.MAX_IMAGE_PIXELS = None
    draw().save(tiff, compression="group4", tiffinfo={278: HEIGHT})
    with Image.open(tiff) as image:
        offsets, counts = image.tag_v2[273], image.tag_v2[279]
    assert len(offsets) == 1
    with open(tiff, "rb") as file, open(cals, "wb") as out:
        file.seek(offsets[0])
        out.write(cals_header() + file.read(counts[0]))


if __name__ == "__main__":
    main(*sys.argv[1:])
