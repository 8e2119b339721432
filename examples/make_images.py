#!/usr/bin/env python3
"""Makes the images of the example scenes: python3 examples/make_images.py

The committed images are what counts. This tells where they come from, with nothing but the standard library.
"""

import math
import pathlib
import struct
import zlib

IMAGES = pathlib.Path(__file__).parent / "images"


# --- PNG ---------------------------------------------------------------------------------------------------

def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def encode_png(size, pixel):
    """pixel(x, y) gives 3 or 4 bytes: R, G, B and perhaps A."""
    channels = len(pixel(0, 0))
    rows = b"".join(b"\0" + bytes(value for x in range(size) for value in pixel(x, y)) for y in range(size))
    header = struct.pack(">IIBBBBB", size, size, 8, 2 if channels == 3 else 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", header) + png_chunk(b"IDAT", zlib.compress(rows, 9)) +
            png_chunk(b"IEND", b""))


# --- JPEG: baseline, three components without subsampling --------------------------------------------------

ZIGZAG = sorted(((y, x) for y in range(8) for x in range(8)),
                key=lambda p: (p[0] + p[1], p[0] if (p[0] + p[1]) % 2 else p[1]))
QUANTUM = 6  # the same for each coefficient
COSINES = [[math.cos((2 * x + 1) * u * math.pi / 16) * (math.sqrt(0.125) if u == 0 else 0.5) for x in range(8)]
           for u in range(8)]

# Huffman codes of one length each: simple rather than short. Symbols are (zeros before << 4) | bits.
DC_SYMBOLS = list(range(12))
AC_SYMBOLS = [0x00, 0xF0] + [run << 4 | bits for run in range(16) for bits in range(1, 11)]


def jpeg_segment(marker, data):
    return struct.pack(">BBH", 0xFF, marker, len(data) + 2) + data


def huffman_table(place, length, symbols):
    counts = [len(symbols) if number == length else 0 for number in range(1, 17)]
    return jpeg_segment(0xC4, bytes([place]) + bytes(counts) + bytes(symbols))


class BitWriter:
    def __init__(self):
        self.data, self.bits, self.count = bytearray(), 0, 0

    def put(self, value, count):
        self.bits, self.count = self.bits << count | value, self.count + count
        while self.count >= 8:
            self.count -= 8
            byte = self.bits >> self.count & 0xFF
            self.data += b"\xff\0" if byte == 0xFF else bytes([byte])
        self.bits &= (1 << self.count) - 1

    def put_coefficient(self, symbols, length, run, value):
        bits = abs(value).bit_length()
        self.put(symbols.index(run << 4 | bits), length)
        if bits:
            self.put(value if value > 0 else value + (1 << bits) - 1, bits)


def transform_block(samples):
    rows = [[sum(COSINES[u][x] * row[x] for x in range(8)) for u in range(8)] for row in samples]
    return [round(sum(COSINES[v][y] * rows[y][u] for y in range(8)) / QUANTUM) for v, u in ZIGZAG]


def write_block(writer, coefficients, previous_dc):
    writer.put_coefficient(DC_SYMBOLS, 4, 0, coefficients[0] - previous_dc)
    last = max((place for place in range(64) if coefficients[place]), default=0)
    run = 0
    for place in range(1, last + 1):
        if coefficients[place] == 0:
            run += 1
            continue
        for _ in range(run // 16):
            writer.put(AC_SYMBOLS.index(0xF0), 8)
        writer.put_coefficient(AC_SYMBOLS, 8, run % 16, coefficients[place])
        run = 0
    if last < 63:
        writer.put(AC_SYMBOLS.index(0x00), 8)


def to_ycc(rgb):
    r, g, b = rgb
    y = 0.299 * r + 0.587 * g + 0.114 * b
    return y - 128, (b - y) * 0.564, (r - y) * 0.713


def encode_jpeg(size, pixel):
    """size is a multiple of 8."""
    writer, previous = BitWriter(), [0, 0, 0]
    for top in range(0, size, 8):
        for left in range(0, size, 8):
            block = [[to_ycc(pixel(left + x, top + y)) for x in range(8)] for y in range(8)]
            for part in range(3):
                coefficients = transform_block([[sample[part] for sample in row] for row in block])
                write_block(writer, coefficients, previous[part])
                previous[part] = coefficients[0]
    writer.put(0x7F, 7)
    parts = [(number, 0x11, 0) for number in (1, 2, 3)]
    return (b"\xff\xd8" + jpeg_segment(0xE0, b"JFIF\0\1\1\0\0\1\0\1\0\0") +
            jpeg_segment(0xDB, b"\0" + bytes([QUANTUM] * 64)) +
            jpeg_segment(0xC0, struct.pack(">BHHB", 8, size, size, 3) + b"".join(bytes(part) for part in parts)) +
            huffman_table(0x00, 4, DC_SYMBOLS) + huffman_table(0x10, 8, AC_SYMBOLS) +
            jpeg_segment(0xDA, b"\3\1\0\2\0\3\0\0\x3f\0") + bytes(writer.data) + b"\xff\xd9")


# --- the images --------------------------------------------------------------------------------------------

def byte(value):
    return max(0, min(255, round(value)))


def four_colors(x, y):
    """Red and green above, blue and yellow below, so that each turn and mirroring shows."""
    return [[(220, 40, 40), (40, 180, 60)], [(40, 80, 220), (240, 210, 40)]][y >= 32][x >= 32]


def wood(x, y):
    ring = 0.5 + 0.5 * math.sin((x + 5 * math.sin(y / 11)) * 0.45)
    return byte(120 + 70 * ring), byte(75 + 50 * ring), byte(40 + 25 * ring)


def packed_surface(x, y):
    """Red: occlusion in the seams of a grid; green: roughness rising to the right; blue: metal in plates."""
    seam = min(x % 16, y % 16) < 2
    return (90 if seam else 255, byte(40 + x * 3), 0 if seam or (x // 16 + y // 16) % 2 else 255)


def domes(x, y):
    """Normals of one dome per cell of a grid."""
    u, v = (x % 16 - 7.5) / 8, (y % 16 - 7.5) / 8
    length = math.sqrt(u * u + v * v)
    if length >= 0.95:
        return 128, 128, 255
    return byte(127.5 + 127.5 * u), byte(127.5 - 127.5 * v), byte(127.5 + 127.5 * math.sqrt(1 - length * length))


def lamps(x, y):
    glow = max(0.0, 1 - math.hypot(x % 16 - 7.5, y % 16 - 7.5) / 6)
    return byte(255 * glow), byte(200 * glow), byte(90 * glow)


def leaf(x, y):
    """A green disc on nothing: the alpha is 0 around it."""
    distance = math.hypot(x - 31.5, y - 31.5)
    return 60, byte(120 + x), 50, byte((26 - distance) * 64)


if __name__ == "__main__":
    IMAGES.mkdir(exist_ok=True)
    for name, encode, pixel in [("four-colors.png", encode_png, four_colors), ("wood.jpg", encode_jpeg, wood),
                                ("surface.png", encode_png, packed_surface), ("domes.png", encode_png, domes),
                                ("lamps.jpg", encode_jpeg, lamps), ("leaf.png", encode_png, leaf)]:
        (IMAGES / name).write_bytes(encode(64, pixel))
