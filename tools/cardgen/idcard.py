"""Draws both sides of an identity card, flat, from a record.

The layout follows the printed document (85.6 x 54 mm); portrait and emblem are neutral ornaments.
"""

import math
import random

from PIL import Image, ImageDraw

import guilloche
from canvas import Canvas

WIDTH, HEIGHT, CORNER = 85.6, 54.0, 3.18
# Strokes of the small characters.
FINEST = 0.2

LABEL_COLOUR = (74, 128, 176)
INK = (28, 27, 31)
TITLE_INK = (34, 30, 33)

# Value styles and how often each is used.
VALUE_STYLES = {"hei": 50, "zenhei": 34, "hei-bold": 6, "song": 5, "song-bold": 5}
NUMBER_STYLES = {"ocr-b": 60, "mono-bold": 25, "hei-bold": 15}

# Portrait side, label text -> (left, middle of the line), em size; all millimetres.
LABEL_SIZE = 2.65
FRONT_LABELS = {
    "姓名": (5.7, 8.6), "性别": (5.7, 15.0), "民族": (22.6, 15.0), "出生": (5.7, 21.3),
    "住址": (5.7, 28.2), "公民身份号码": (5.7, 47.3),
}
FRONT_VALUES = {"name": (14.6, 8.5, 3.7), "gender": (14.6, 15.0, 3.1), "ethnicity": (31.2, 15.0, 3.1)}
BIRTH_ROW, BIRTH_SIZE = 21.3, 3.1
# The unit follows its value: (right end of the value, unit, left end of the unit).
BIRTH_PARTS = ((22.4, "年", 23.2), (30.6, "月", 31.6), (39.5, "日", 40.3))
ADDRESS_LEFT, ADDRESS_TOP, ADDRESS_PITCH, ADDRESS_SIZE, ADDRESS_WIDTH = 14.6, 28.2, 4.7, 3.15, 36.0
NUMBER_LEFT, NUMBER_ROW, NUMBER_PITCH = 27.6, 47.3, 2.62
NUMBER_SIZES = {"ocr-b": 4.0, "mono-bold": 3.8, "hei-bold": 3.9}
PORTRAIT_CENTRE, PORTRAIT_SIZE = (68.6, 23.6), (23.0, 30.0)

# Emblem side.
ORNAMENT_CENTRE, ORNAMENT_RADIUS = (13.0, 12.6), 7.4
BACK_TITLES = (("中华人民共和国", 10.0, 4.4, 1.5), ("居民身份证", 19.0, 6.4, 2.2))
BACK_TITLE_MIDDLE = 51.0
BACK_LABELS = {"签发机关": (20.6, 40.6), "有效期限": (20.6, 47.2)}
BACK_LABEL_SIZE = 2.8
BACK_VALUE_LEFT, BACK_VALUE_SIZE = 34.6, 3.2

FRONT_WASH = ((212, 230, 242), (230, 233, 242), (242, 230, 236), (226, 235, 242))
FRONT_INKS = ((150, 196, 224), (230, 182, 205), (172, 212, 216))
BACK_WASH = ((219, 233, 242), (235, 233, 240), (244, 231, 235), (228, 235, 240))
BACK_INKS = ((208, 172, 204), (152, 196, 220), (178, 210, 208))


def _pick(rng, weights):
    return rng.choices(list(weights), weights=list(weights.values()))[0]


def wrap(text, width, measure):
    """Breaks a text into lines no wider than `width` by the given measure."""
    lines = [""]
    for character in text:
        if measure(lines[-1] + character) > width:
            lines.append("")
        lines[-1] += character
    return lines


class FrontCard:
    """The portrait side of one record; `rng` settles its fonts and ornaments."""

    width, height, corner = WIDTH, HEIGHT, CORNER
    finest, gloss, foil = FINEST, 1.0, False

    def __init__(self, record, rng):
        self._record = record
        self._value_style = _pick(rng, VALUE_STYLES)
        self._number_style = _pick(rng, NUMBER_STYLES)
        self._background_seed = rng.random()
        self._ink = tuple(channel + rng.randint(-8, 14) for channel in INK)
        self._label = tuple(channel + rng.randint(-14, 14) for channel in LABEL_COLOUR)
        self._shift = (rng.uniform(-0.5, 0.5), rng.uniform(-0.35, 0.35))

    def draw(self, pixels_per_mm):
        """The flat card as an RGB picture, corners not cut."""
        rosettes = (((44, 30), 16, 12), ((68, 24), 20, 9))
        ground = guilloche.background(WIDTH, HEIGHT, min(pixels_per_mm, 14), _fork(self._background_seed),
                                      FRONT_WASH, FRONT_INKS, rosettes)
        canvas = Canvas(WIDTH, HEIGHT, pixels_per_mm, ground)
        _silhouette(canvas, _fork(self._background_seed), self._record["gender"])
        self._labels(canvas)
        self._values(canvas)
        return canvas.image

    def _labels(self, canvas):
        for text, (left, row) in FRONT_LABELS.items():
            canvas.text(left, row, text, "hei", LABEL_SIZE, self._label, spacing=0.25)
        for _, unit, left in BIRTH_PARTS:
            canvas.text(left, BIRTH_ROW, unit, "hei", LABEL_SIZE, self._label)

    def _values(self, canvas):
        dx, dy = self._shift
        record, style, ink = self._record, self._value_style, self._ink
        for field, (left, row, size) in FRONT_VALUES.items():
            canvas.text(left + dx, row + dy, record[field], style, size, ink, spacing=0.3)
        numbers = (record["birthYear"], record["birthMonth"].lstrip("0"), record["birthDay"].lstrip("0"))
        for value, (right, _, _) in zip(numbers, BIRTH_PARTS):
            canvas.text(right + dx, BIRTH_ROW + dy, value, style, BIRTH_SIZE, ink, spacing=0.1, anchor="r")
        for index, line in enumerate(self.address_lines(canvas)):
            row = ADDRESS_TOP + dy + index * ADDRESS_PITCH
            canvas.text(ADDRESS_LEFT + dx, row, line, style, ADDRESS_SIZE, ink, spacing=0.1)
        size = NUMBER_SIZES[self._number_style]
        for index, character in enumerate(record["idNumber"]):
            middle = NUMBER_LEFT + dx + (index + 0.5) * NUMBER_PITCH
            canvas.text(middle, NUMBER_ROW + dy, character, self._number_style, size, ink, anchor="m")

    def address_lines(self, canvas):
        """The address as printed, line by line."""
        def measure(text):
            return canvas.text_width(text, self._value_style, ADDRESS_SIZE, 0.1)
        return wrap(self._record["address"], ADDRESS_WIDTH, measure)


class BackCard:
    """The emblem side of one record; `rng` settles its fonts and ornaments."""

    width, height, corner = WIDTH, HEIGHT, CORNER
    finest, gloss, foil = FINEST, 1.0, False

    def __init__(self, record, rng):
        self._record = record
        self._value_style = _pick(rng, VALUE_STYLES)
        self._background_seed = rng.random()
        self._ink = tuple(channel + rng.randint(-8, 14) for channel in INK)
        self._shift = (rng.uniform(-0.4, 0.4), rng.uniform(-0.3, 0.3))

    def draw(self, pixels_per_mm):
        """The flat card as an RGB picture, corners not cut."""
        rosettes = (((45, 30), 22, 16), ((13, 13), 14, 8))
        ground = guilloche.background(WIDTH, HEIGHT, min(pixels_per_mm, 14), _fork(self._background_seed),
                                      BACK_WASH, BACK_INKS, rosettes)
        canvas = Canvas(WIDTH, HEIGHT, pixels_per_mm, ground)
        _hills(canvas, _fork(self._background_seed))
        _ornament(canvas)
        for text, row, size, spacing in BACK_TITLES:
            canvas.text(BACK_TITLE_MIDDLE, row, text, "song-bold", size, TITLE_INK, spacing, anchor="m")
        for text, (left, row) in BACK_LABELS.items():
            canvas.text(left, row, text, "hei-bold", BACK_LABEL_SIZE, TITLE_INK, spacing=0.25)
        dx, dy = self._shift
        for value, (_, row) in zip((self._record["issuingAuthority"], self.printed_validity()),
                                   BACK_LABELS.values()):
            canvas.text(BACK_VALUE_LEFT + dx, row + dy, value, self._value_style, BACK_VALUE_SIZE, self._ink,
                        spacing=0.15)
        return canvas.image

    def printed_validity(self):
        """The validity as printed: dots inside the dates, a hyphen or 长期 after it."""
        start, end = self._record["startDate"], self._record["endDate"]
        return f"{_dotted(start)}-{_dotted(end) if end else '长期'}"


def _dotted(date):
    return f"{date[:4]}.{date[4:6]}.{date[6:]}"


def _fork(seed):
    return random.Random(seed)


def _silhouette(canvas, rng, gender):
    """A plain head and shoulders, drawn at four times the size and reduced so that its edges are soft."""
    width, height = PORTRAIT_SIZE
    unit = 16
    picture = Image.new("RGB", (int(width * unit), int(height * unit)))
    mask = Image.new("L", picture.size)
    draw, cut = ImageDraw.Draw(picture), ImageDraw.Draw(mask)

    def ellipse(x, y, rx, ry, colour):
        box = [(x - rx) * unit, (y - ry) * unit, (x + rx) * unit, (y + ry) * unit]
        draw.ellipse(box, fill=colour)
        cut.ellipse(box, fill=255)

    cloth = rng.choice(((58, 66, 84), (44, 44, 48), (96, 52, 58), (70, 90, 80), (206, 208, 214)))
    hair = rng.choice(((34, 30, 32), (52, 42, 38), (86, 82, 84)))
    skin = rng.choice(((226, 190, 166), (214, 176, 150), (233, 203, 182)))
    shade = tuple(int(channel * 0.92) for channel in skin)
    if gender == "女":
        ellipse(11.5, 12.6, 7.0, 10.0, hair)
    else:
        ellipse(11.5, 9.6, 6.1, 7.4, hair)
    ellipse(11.5, 29.5, 10.9, 8.6, cloth)
    ellipse(11.5, 19.6, 2.7, 4.6, shade)
    ellipse(11.5, 12.4, 5.2, 7.0, skin)
    draw.pieslice([5.9 * unit, 3.2 * unit, 17.1 * unit, 13.4 * unit], 190, 350, fill=hair)
    canvas.paste(picture, PORTRAIT_CENTRE[0] - width / 2, PORTRAIT_CENTRE[1] - height / 2, width, height, mask)


def _ornament(canvas):
    """A rosette of petals and rings in the place of the emblem."""
    (x, y), radius = ORNAMENT_CENTRE, ORNAMENT_RADIUS
    unit = 40
    size = int(2 * radius * unit)
    picture, mask = Image.new("RGB", (size, size), (198, 70, 66)), Image.new("L", (size, size))
    cut, draw = ImageDraw.Draw(mask), ImageDraw.Draw(picture)
    middle = size / 2

    def petals(count, inner, outer, width, fill):
        for index in range(count):
            angle = 2 * math.pi * index / count
            along, across = (math.cos(angle), math.sin(angle)), (-math.sin(angle), math.cos(angle))
            points = [(middle + middle * (t * along[0] + s * across[0]),
                       middle + middle * (t * along[1] + s * across[1]))
                      for t, s in ((inner, 0), ((inner + outer) / 2, width), (outer, 0),
                                   ((inner + outer) / 2, -width))]
            cut.polygon(points, fill=fill)

    petals(24, 0.70, 1.0, 0.055, 225)
    petals(12, 0.30, 0.74, 0.10, 245)
    for outer, fill in ((0.34, 0), (0.30, 235), (0.17, 0), (0.13, 245)):
        cut.ellipse([middle * (1 - outer), middle * (1 - outer), middle * (1 + outer), middle * (1 + outer)],
                    fill=fill)
    draw.ellipse([middle * 0.7, middle * 0.7, middle * 1.3, middle * 1.3], fill=(208, 150, 60))
    canvas.paste(picture, x - radius, y - radius, 2 * radius, 2 * radius, mask)


def _hills(canvas, rng):
    """A faint range of hills behind the text."""
    overlay = Canvas(WIDTH, HEIGHT, canvas.scale)
    mask = Image.new("L", overlay.image.size)
    draw = ImageDraw.Draw(mask)
    for layer in range(4):
        base, phase = 31 + 5 * layer, rng.uniform(0, 6.28)
        ridge = [(x, base - 5 * math.sin(x / 11 + phase) - 2.2 * math.sin(x / 4.3 + 2 * phase))
                 for x in range(-1, 88)]
        points = [(x * canvas.scale, y * canvas.scale) for x, y in ridge + [(88, 55), (-1, 55)]]
        draw.polygon(points, fill=14 + 9 * layer)
    overlay.image.paste((150, 150, 190), (0, 0, *overlay.image.size))
    canvas.image.paste(overlay.image, (0, 0), mask)
