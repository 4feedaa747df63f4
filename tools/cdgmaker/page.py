"""Text as tiles: rasterising, and the packets that draw it and sweep a colour over it.

Colours are laid out so that one XOR per tile is a sweep. Bits 0-1 of an index are the coverage of the pixel (four levels,
smooth edges), bit 2 is set where the words have been sung, bit 3 tells the second voice. Entries 0, 4, 8 and 12 are the
background."""
import functools

from PIL import Image, ImageDraw, ImageFont

from .packets import TILE_HEIGHT, TILE_WIDTH, tile

VISIBLE_WIDTH, VISIBLE_HEIGHT = 288, 192    # the plane without its border of one tile
SUNG, SECOND_VOICE = 4, 8
FONT_DIR = '/usr/share/fonts/truetype/dejavu/'
FONTS = ('DejaVuSans-Bold.ttf', 'DejaVuSansCondensed-Bold.ttf')
MARGIN = 6                                  # free pixels at each side of a line


@functools.lru_cache(maxsize=None)
def font(name, size):
    return ImageFont.truetype(FONT_DIR + name, size)


def fitting_font(text, size):
    """The first font in which the text fits into a line: the condensed one before a smaller one."""
    while True:
        for name in FONTS:
            if font(name, size).getlength(text) <= VISIBLE_WIDTH - 2 * MARGIN or size <= 8:
                return font(name, size)
        size -= 1


def palette(background, plain, sung, second=None):
    """The 16 colours of a page: four levels of each from the background to the full colour."""
    def ramp(color):
        return [tuple((b * (3 - n) + c * n + 1) // 3 for b, c in zip(background, color)) for n in range(4)]
    second = second or (plain, sung)
    return ramp(plain) + ramp(sung) + ramp(second[0]) + ramp(second[1])


class Picture:
    """Coverage levels of a part of the screen, cut into tiles. `row` and `column` are those of the plane; the visible part
    begins at 1, 1."""

    def __init__(self, image, row, levels=4):
        self.row = row
        thresholds = (43, 128, 213) if levels == 4 else (128, 128, 128)
        level = [sum(value >= limit for limit in thresholds) for value in range(256)]
        planes = []
        for bit in (1, 2):
            plane = image.point([255 if one & bit else 0 for one in level]).convert('1')
            planes.append(self._tiles(plane.tobytes(), plane.width, plane.height))
        self.low, self.high = planes
        both = set(self.low) | set(self.high)
        # Column by column: a line appears as it is read.
        self.places = sorted(both, key=lambda place: (place[1], place[0]))

    def _tiles(self, data, width, height):
        """{(row, column): twelve bytes of six pixels} of the tiles that are not empty."""
        stride, columns = (width + 7) // 8, width // TILE_WIDTH
        lines = [int.from_bytes(data[y * stride:(y + 1) * stride], 'big') for y in range(height)]
        found = {}
        for top in range(0, height, TILE_HEIGHT):
            group = lines[top:top + TILE_HEIGHT]
            if not any(group):
                continue
            for column in range(columns):
                shift = stride * 8 - (column + 1) * TILE_WIDTH
                pixels = bytes((line >> shift) & 63 for line in group)
                if any(pixels):
                    found[self.row + top // TILE_HEIGHT, column + 1] = pixels.ljust(TILE_HEIGHT, b'\0')
        return found

    def draw(self, base=0):
        """The packets that put it on a clear screen; `base` is added to the colours."""
        result = []
        for place in self.places:
            low, high = self.low.get(place), self.high.get(place)
            if low == high:
                result.append(tile(*place, (base, base | 3), low))
            elif high is None:
                result.append(tile(*place, (base, base | 1), low))
            else:
                result.append(tile(*place, (base, base | 2), high))
                if low is not None:
                    result.append(tile(*place, (0, 1), low, xor=True))
        return result

    def erase(self, base=0):
        """The packets that clear its tiles to the background."""
        return [tile(*place, (base, base), bytes(TILE_HEIGHT)) for place in self.places]

    def sweep(self, left, right):
        """The packets that turn the pixels left <= x < right (of the visible part) to the sung colour."""
        result = []
        for column in range(left // TILE_WIDTH, (right + TILE_WIDTH - 1) // TILE_WIDTH):
            first, last = max(left - column * TILE_WIDTH, 0), min(right - column * TILE_WIDTH, TILE_WIDTH)
            mask = (63 >> first) & ~(63 >> last)
            for row in range(self.row, self.row + 4):
                place = row, column + 1
                if place in self.low or place in self.high:
                    low, high = self.low.get(place, bytes(12)), self.high.get(place, bytes(12))
                    pixels = bytes((a | b) & mask for a, b in zip(low, high))
                    if any(pixels):
                        result.append(tile(*place, (0, SUNG), pixels, xor=True))
        return result


class TextLine(Picture):
    """One centred line of text, two tiles high (three for big letters), and the places of its syllables in pixels."""

    def __init__(self, text, row, size=20, levels=4, height=2):
        face = fitting_font(text, size)
        ascent, descent = face.getmetrics()
        image = Image.new('L', (VISIBLE_WIDTH, height * TILE_HEIGHT))
        width = face.getlength(text)
        self.left = round((VISIBLE_WIDTH - width) / 2)
        self.right = round(self.left + width)
        self.text, self.face = text, face
        top = (image.height - ascent - descent) // 2
        ImageDraw.Draw(image).text((self.left, top + ascent), text, fill=255, font=face, anchor='ls')
        super().__init__(image, row, levels)

    def x_of(self, letters):
        """Where the letter of this number begins."""
        if letters >= len(self.text):
            return min(self.right + 1, VISIBLE_WIDTH)
        return round(self.left + self.face.getlength(self.text[:letters]))


def dots(count, row, levels=4):
    """A row of dots in the middle of the screen, and their left and right ends: the countdown before a page is sung."""
    size, pitch = 8, 24
    scale = 4
    image = Image.new('L', (VISIBLE_WIDTH * scale, TILE_HEIGHT * scale))
    left = (VISIBLE_WIDTH - (count - 1) * pitch - size) // 2 // TILE_WIDTH * TILE_WIDTH
    draw = ImageDraw.Draw(image)
    spans = []
    for n in range(count):
        x = left + n * pitch + 1
        draw.ellipse((x * scale, scale, (x + size) * scale, (size + 1) * scale), fill=255)
        spans.append((x, x + size + 1))
    return Picture(image.resize((VISIBLE_WIDTH, TILE_HEIGHT), Image.BOX), row, levels), spans
