"""What is on a test's screen, as pixels."""

from Xlib import X

from . import png


class Picture:
    """A part of the screen, three bytes a pixel."""

    def __init__(self, width, height, rgb):
        self.width = width
        self.height = height
        self.rgb = rgb

    def __eq__(self, other):
        return isinstance(other, Picture) and (self.width, self.rgb) == (other.width, other.rgb)

    def __hash__(self):
        return hash((self.width, self.rgb))

    def share(self, matches):
        """The share of pixels, 0 to 1, for which matches(red, green, blue) holds."""
        counted = {}
        rgb = self.rgb
        for start in range(0, len(rgb), 3):
            colour = rgb[start:start + 3]
            counted[colour] = counted.get(colour, 0) + 1
        return sum(count for colour, count in counted.items() if matches(*colour)) / (
            self.width * self.height)

    def save(self, path):
        with open(path, "wb") as file:
            file.write(png.encode(self.width, self.height, self.rgb))


class Screen:
    def __init__(self, display):
        self._display = display

    @property
    def size(self):
        screen = self._display.screen()
        return screen.width_in_pixels, screen.height_in_pixels

    def picture(self, x=0, y=0, width=None, height=None):
        """The given rectangle as it is on the screen now, cut off at the screen's edges."""
        full_width, full_height = self.size
        x, y = max(x, 0), max(y, 0)
        width = min(width or full_width, full_width - x)
        height = min(height or full_height, full_height - y)
        image = self._display.screen().root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF)
        data = image.data  # blue, green, red and an unused byte a pixel
        rgb = bytearray(width * height * 3)
        rgb[0::3], rgb[1::3], rgb[2::3] = data[2::4], data[1::4], data[0::4]
        return Picture(width, height, bytes(rgb))
