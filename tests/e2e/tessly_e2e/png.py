"""PNG files, as far as tests need them: three bytes a pixel."""

import struct
import zlib

SIGNATURE = b"\x89PNG\r\n\x1a\n"


def _chunk(name, data):
    return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))


def encode(width, height, rgb, level=6):
    stride = width * 3
    rows = b"".join(b"\0" + rgb[row * stride:(row + 1) * stride] for row in range(height))
    return (SIGNATURE
            + _chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + _chunk(b"IDAT", zlib.compress(rows, level))
            + _chunk(b"IEND", b""))


def gradient(width, height):
    """A picture that differs from pixel to pixel."""
    rgb = bytearray()
    for y in range(height):
        for x in range(width):
            rgb += bytes((x * 255 // width, y * 255 // height, (x * 7 + y * 13) % 256))
    return encode(width, height, bytes(rgb))


def of_size(size, seed=0):
    """A valid picture of exactly `size` bytes: noise does not compress, a comment fills up."""
    import random
    noise = random.Random(seed)
    side = max(1, int((max(size - 400, 12) / 3.02) ** 0.5))
    plain = encode(side, side, noise.randbytes(side * side * 3), level=0)
    missing = size - len(plain) - 12
    if missing < 2:
        raise ValueError(f"no picture of {size} bytes")
    comment = _chunk(b"tEXt", b"c\0" + b" " * (missing - 2))
    end = len(plain) - 12
    return plain[:end] + comment + plain[end:]
