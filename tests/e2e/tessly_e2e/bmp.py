"""BMP files, as far as tests need them."""

import struct

_HEADERS = 14 + 40


def of_one_colour(width, height, rgb=(20, 120, 200)):
    """A picture that takes much room as it is and little once it is packed."""
    row = bytes(rgb[::-1]) * width
    row += b"\0" * (-len(row) % 4)
    size = _HEADERS + len(row) * height
    return (struct.pack("<2sIHHI", b"BM", size, 0, 0, _HEADERS)
            + struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(row) * height,
                          2835, 2835, 0, 0)
            + row * height)
