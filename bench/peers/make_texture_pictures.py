"""Pictures that are hard to compress, the same on every run:  make_texture_pictures.py FOLDER

Sixteen colour pictures and four of light, each of 256 x 256 pixels, alone (NAME.png, NAME.hdr) and side by side in one
picture: colours.png and light.hdr, with their pixels as bytes and floats of red, green, blue and alpha in colours.raw and
light.raw. colours-small and light-small hold the middle of each, 64 x 64, for programs that take long. The light is
what .hdr files can hold.
"""
import pathlib
import sys

import numpy
from PIL import Image, ImageDraw, ImageFont

SIDE, SMALL, ACROSS = 256, 64, 4
PHOTO = pathlib.Path(__file__).resolve().parents[2] / "examples/photo.jpg"

ys, xs = numpy.mgrid[0:SIDE, 0:SIDE] / (SIDE - 1)


def chance(seed):
    return numpy.random.RandomState(seed)  # the old generator: its numbers never change


def smooth(grid):
    """A coarse grid of values, brought to the size of a picture without steps."""
    layers = [numpy.asarray(Image.fromarray(layer.astype(numpy.float32)).resize((SIDE, SIDE), Image.Resampling.BICUBIC))
              for layer in numpy.moveaxis(grid, -1, 0)]
    return numpy.stack(layers, -1)


def clouds(seed, channels=3):
    """Noise of every size, coarse most of all: about 0 to 1."""
    total = sum(smooth(chance(seed + n).uniform(-1, 1, (2 ** n + 1, 2 ** n + 1, channels))) / 1.6 ** n for n in range(1, 8))
    return 0.5 + total / 2.4


def mix(amount, a, b):
    return numpy.asarray(a) + amount[..., None] * (numpy.asarray(b, float) - numpy.asarray(a))


def rgba(colour, alpha=1.0):
    """0 to 1 as bytes."""
    alpha = numpy.broadcast_to(alpha, colour.shape[:2])[..., None]
    return (numpy.clip(numpy.concatenate([colour, alpha], -1), 0, 1) * 255 + 0.5).astype(numpy.uint8)


def photograph(box):
    """Part of the sample, in shares of its sides."""
    with Image.open(PHOTO) as photo:
        sides = (photo.width, photo.height) * 2
        cut = photo.convert("RGB").crop([round(share * side) for share, side in zip(box, sides)])
    return numpy.asarray(cut.resize((SIDE, SIDE), Image.Resampling.LANCZOS)) / 255.0


def drawn(draw, background):
    image = Image.new("RGBA", (SIDE, SIDE), background)
    draw(ImageDraw.Draw(image))
    return numpy.asarray(image)


def text(pen):
    colours = ["#fff", "#ffd000", "#102040", "#e03020"]
    font = ImageFont.load_default()
    for line in range(18):
        pen.text((3 + line % 5, 4 + 14 * line), "The quick brown fox, 0123456789 (jumps) & runs " * 2, colours[line % 4], font)


def signs(pen):
    rng = chance(11)
    for _ in range(60):
        x, y, size = rng.randint(0, SIDE, 3)
        box, colour = [x, y, x + 6 + size // 5, y + 6 + size // 6], tuple(rng.choice([0, 64, 160, 255], 3)) + (255,)
        [pen.ellipse, pen.rectangle][rng.randint(2)](box, fill=colour, outline=(0, 0, 0, 255))


def leaves():
    """A cut-out: alpha is all or nothing but for one step at the edge; what is not there is black."""
    shade, alpha = clouds(20), numpy.zeros((SIDE, SIDE))
    rng = chance(21)
    for _ in range(28):
        x, y, angle, size = rng.uniform(0, 1), rng.uniform(0, 1), rng.uniform(0, numpy.pi), rng.uniform(0.05, 0.16)
        u = ((xs - x) * numpy.cos(angle) + (ys - y) * numpy.sin(angle)) / size
        v = ((ys - y) * numpy.cos(angle) - (xs - x) * numpy.sin(angle)) / size
        alpha = numpy.maximum(alpha, numpy.clip((1 - u * u - 6 * v * v) * 12, 0, 1))
    return rgba(mix(shade[..., 0], (0.05, 0.2, 0.02), (0.5, 0.8, 0.2)) * (alpha > 0)[..., None], alpha)


def normals():
    height = clouds(30, 1)[..., 0] * 24
    down, right = numpy.gradient(height)
    vectors = numpy.stack([-right, -down, numpy.ones_like(height)], -1)
    return rgba(vectors / numpy.linalg.norm(vectors, axis=-1, keepdims=True) / 2 + 0.5)


def dither():
    """One-pixel details: an ordered dither, a chessboard, lines."""
    bayer = numpy.array([[0, 8, 2, 10], [12, 4, 14, 6], [3, 11, 1, 9], [15, 7, 13, 5]])
    picture = mix((xs * 16 > numpy.tile(bayer, (SIDE // 4, SIDE // 4))) * 1.0, (0.1, 0.1, 0.4), (1, 0.9, 0.6))
    board = (numpy.indices((SIDE, SIDE)).sum(0) % 2)[..., None]
    picture[170:200] = numpy.where(board, (1, 0, 0), (0, 0.6, 1))[170:200]
    picture[200:230:3], picture[230:, ::5] = (0, 1, 0), (1, 1, 1)
    return rgba(picture)


def skin():
    light = clouds(40, 1)[..., 0]
    tone = mix(light, (0.42, 0.24, 0.18), (0.98, 0.8, 0.7))
    tone += mix(clouds(41, 1)[..., 0], (-0.06, 0.02, 0.03), (0.08, -0.03, -0.02))
    return rgba(tone + chance(42).normal(0, 0.012, (SIDE, SIDE, 1)))


def colour_pictures():
    whole, part = photograph((0, 0, 1, 1)), photograph((0.3, 0.3, 0.7, 0.7))
    rng = chance(1)
    return {
        "two-colours": rgba(mix(0.7 * xs + 0.3 * ys, (0.1, 0.2, 0.6), (1, 0.7, 0.2))),
        "many-colours": rgba(smooth(rng.uniform(0, 1, (6, 6, 3)))),
        "noise": rgba(rng.uniform(0, 1, (SIDE, SIDE, 3))),
        "clouds": rgba(clouds(5)),
        "photo": rgba(whole),
        "photo-part": rgba(part),
        "text": drawn(text, (40, 120, 90, 255)),
        "signs": drawn(signs, (230, 230, 220, 255)),
        "cut-out": leaves(),
        "smooth-alpha": rgba(whole, numpy.clip(1.2 - 1.6 * numpy.hypot(xs - 0.5, ys - 0.5), 0, 1)),
        "other-alpha": rgba(part, clouds(50, 1)[..., 0]),
        "normals": normals(),
        "skin": skin(),
        "dark": rgba(whole[::-1] * 0.12 + 0.01 * clouds(60)),
        "dither": dither(),
        "grain": rgba(clouds(70, 1) * 0.6 + 0.2 + rng.normal(0, 0.05, (SIDE, SIDE, 3))),
    }


def light_pictures():
    sky = mix(ys, (0.15, 0.3, 0.9), (0.9, 0.95, 1.0)) * (0.6 + 0.5 * clouds(80, 1))
    sun = 40000 * numpy.exp(-(numpy.hypot(xs - 0.53, ys - 0.48) / 0.012) ** 2) + 3 * numpy.exp(-numpy.hypot(xs - 0.53, ys - 0.48) / 0.1)
    lamps = numpy.full((SIDE, SIDE, 3), 0.004)
    rng = chance(90)
    for _ in range(40):
        x, y, size = rng.uniform(0, 1, 3)
        spot = numpy.exp(-(numpy.hypot(xs - x, ys - y) / (0.01 + 0.06 * size)) ** 2)
        lamps = lamps + spot[..., None] * rng.uniform(0, 1, 3) ** 3 * 10 ** rng.uniform(-1, 2.5)
    return {
        "sun": sky + sun[..., None] * numpy.array((1, 0.9, 0.7)),
        "lamps": lamps,
        "studio": 2.0 ** (14 * smooth(rng.uniform(0, 1, (5, 5, 1))) - 8) * mix(xs, (1, 0.8, 0.6), (0.6, 0.8, 1)),
        "photo-light": 16 * photograph((0, 0, 1, 1)) ** 2.2,
    }


def as_rgbe(light):
    """Four bytes a pixel: three mantissas and the exponent that they share."""
    mantissa, exponent = numpy.frexp(numpy.maximum(light, 1e-9).max(-1))
    scaled = light * (mantissa * 256 / numpy.maximum(light, 1e-9).max(-1))[..., None]
    return numpy.concatenate([scaled.astype(numpy.uint8), (exponent + 128).astype(numpy.uint8)[..., None]], -1)


def light_of(rgbe):
    """What readers make of them: the middle of no step, and an alpha of 1."""
    light = rgbe[..., :3] * numpy.exp2(rgbe[..., 3:].astype(float) - 136)
    return numpy.concatenate([light, numpy.ones(light.shape[:2] + (1,))], -1).astype("<f4")


def as_hdr(rgbe):
    """In runs of single values, as some programs read no others."""
    height, width = rgbe.shape[:2]
    file = f"#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y {height} +X {width}\n".encode()
    for row in rgbe:
        file += bytes((2, 2, width >> 8, width & 255))
        for channel in row.T:
            for at in range(0, width, 64):
                file += bytes((min(64, width - at),)) + channel[at:at + 64].tobytes()
    return file


def side_by_side(pictures):
    rows = [numpy.concatenate(pictures[at:at + ACROSS], 1) for at in range(0, len(pictures), ACROSS)]
    return numpy.concatenate(rows, 0)


def write(folder, name, pixels, is_light):
    if is_light:
        (folder / f"{name}.hdr").write_bytes(as_hdr(pixels))
    else:
        Image.fromarray(pixels).save(folder / f"{name}.png")


def main(folder):
    folder.mkdir(parents=True, exist_ok=True)
    middle = slice((SIDE - SMALL) // 2, (SIDE + SMALL) // 2)
    light = {name: as_rgbe(values) for name, values in light_pictures().items()}
    for group, pictures, is_light in (("colours", colour_pictures(), False), ("light", light, True)):
        for name, pixels in pictures.items():
            write(folder, name, pixels, is_light)
        for suffix, part in (("", slice(None)), ("-small", middle)):
            joined = side_by_side([pixels[part, part] for pixels in pictures.values()])
            write(folder, group + suffix, joined, is_light)
            (folder / f"{group}{suffix}.raw").write_bytes((light_of(joined) if is_light else joined).tobytes())
        (folder / f"{group}.names").write_text("\n".join(pictures) + "\n")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
