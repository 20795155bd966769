"""An FLC animation with changes in every line of every frame:  make_flc.py FILE

Its chunks are of even size, and no line is skipped, so that every program replays it alike.
https://www.compuphase.com/flic.htm
"""
import random
import struct
import sys

WIDTH, HEIGHT, FRAMES = 1600, 1200, 41


def chunk(kind, data):
    return struct.pack("<IH", 6 + len(data), kind) + data


def frame(*chunks):
    body = b"".join(chunks)
    return struct.pack("<IHHQ", 16 + len(body), 0xF1FA, len(chunks), 0) + body


def palette():
    return chunk(4, struct.pack("<HBB", 1, 0, 0) + bytes(v for i in range(256) for v in (i, 255 - i, i // 2)))


def byte_run(rng):
    rows = bytearray()
    for _ in range(HEIGHT):
        packets, x = bytearray(), 0
        while x < WIDTH:
            run = min(rng.randrange(20, 120), WIDTH - x)
            packets += bytes((run, rng.randrange(256)))
            x += run
        rows += bytes((len(packets) // 2 % 256,)) + packets
    return chunk(15, bytes(rows) + b"\0" * (len(rows) % 2))


def delta(rng):
    data = bytearray(struct.pack("<H", HEIGHT))
    for _ in range(HEIGHT):
        literal, repeat = rng.randrange(20, 60), rng.randrange(20, 100)
        data += struct.pack("<H", 2)
        data += bytes((rng.randrange(0, 200), literal)) + rng.randbytes(2 * literal)
        data += bytes((rng.randrange(0, 200), 256 - repeat)) + rng.randbytes(2)
    return chunk(7, bytes(data))


def main(path):
    rng = random.Random(5)
    frames = [frame(palette(), byte_run(rng))] + [frame(delta(rng)) for _ in range(FRAMES - 1)]
    body = b"".join(frames)
    header = struct.pack("<IHHHHHHI", 128 + len(body), 0xAF12, FRAMES, WIDTH, HEIGHT, 8, 3, 40)
    header += b"\0" * (80 - len(header)) + struct.pack("<II", 128, 128 + len(frames[0]))
    with open(path, "wb") as file:
        file.write(header + b"\0" * (128 - len(header)) + body)


if __name__ == "__main__":
    main(sys.argv[1])
