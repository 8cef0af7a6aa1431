"""Draws what shows no bank card's number: desks, papers, screens, other cards, and bank cards that hide theirs.

Nowhere do whole words of a row make a number that a bank card may have, but on the cards that hide a part of theirs.
Everybody and everything told is invented.
"""

import dataclasses
import math
import random
import re
import typing

import numpy as np
from PIL import Image, ImageDraw

import bankcard
import codes
import desk
import idcard
import lifelike_card
import lifelike_grounds
import nocard_words as words
from bankcard import CORNER, FINEST, HEIGHT, LEFT, RIGHT, WIDTH
from canvas import Canvas

LENGTHS, BEGINNINGS = range(16, 20), "3456"
DARK, WHITE, GREY = (22, 22, 26), (250, 250, 250), (128, 130, 134)
PAGES = ((210, 148), (148, 210), (148, 105), (105, 148), (110, 80))
# Resolution at which a sheet's words are looked through.
CHECKED_PIXELS_PER_MM = 4
# Width of a Latin character in ems, at most.
NARROW = 0.62
# One picture in so many of a scene goes through a messenger.
FORWARDED_EVERY = 2


def is_card_number(digits):
    """Whether a bank card may have this number (ISO/IEC 7812-1)."""
    return len(digits) in LENGTHS and digits[0] in BEGINNINGS and bankcard.check_digit(digits[:-1]) == digits[-1]


def holds_card_number(row):
    """Whether words of a row, read in turn, make a number that a bank card may have."""
    runs = re.findall(r"\d+", row)
    return any(is_card_number("".join(runs[first:last])) for last in range(1, len(runs) + 1) for first in range(last))


class Sheet(Canvas):
    """A canvas that knows its size in millimetres and remembers what is written on it."""

    def __init__(self, width, height, pixels_per_mm):
        super().__init__(width, height, pixels_per_mm)
        self.width, self.height = width, height
        self._written = []

    def text(self, x, y, text, *how, **named):
        self._written.append((round(y), x, text))
        super().text(x, y, text, *how, **named)

    def fill(self, colour):
        self.rectangle(0, 0, self.width, self.height, colour)

    def rows(self):
        """The text of each row, from left to right."""
        texts = {}
        for row, _, text in sorted(self._written):
            texts.setdefault(row, []).append(text)
        return [" ".join(parts) for parts in texts.values()]


def text_page(sheet, rng):
    sheet.fill(rng.choice(codes.PAPERS))
    style, size, margin = rng.choice(("song", "hei", "zenhei")), rng.uniform(3.0, 5.0), 0.09 * sheet.width
    sheet.text(sheet.width / 2, margin, rng.choice(words.HEADINGS), style, 1.4 * size, DARK, anchor="m")
    y = margin + 2.4 * size
    while y < sheet.height - margin:
        paragraph = "　　" + "".join(words.told(rng.choice(words.SENTENCES), rng) for _ in range(rng.randint(2, 5)))
        y = _paragraph(sheet, margin, y, sheet.width - 2 * margin, paragraph, style, size, DARK)


def _lines(text, width, size):
    """A text in lines of that width; the same ones at every resolution, as fonts' own measures are not."""
    return idcard.wrap(text, width, lambda part: sum(size if ord(c) > 0x2e80 else NARROW * size for c in part))


def _paragraph(sheet, left, y, width, text, style, size, ink):
    """Writes a paragraph from the middle of its first line down as far as the sheet goes; returns the next line's."""
    for line in _lines(text, width, size):
        if y < sheet.height - size:
            sheet.text(left, y, line, style, size, ink)
        y += 1.6 * size
    return y


def invoice(sheet, rng):
    sheet.fill(rng.choice(codes.PAPERS))
    ink, size, margin = rng.choice(codes.INKS), sheet.width / rng.uniform(30, 44), 0.06 * sheet.width
    value_style = rng.choice(("hei", "sans", "mono", "ocr-b", "song"))
    sheet.text(sheet.width / 2, 2 * size, rng.choice(words.FORMS), "song-bold", 1.6 * size, ink, anchor="m")
    y = 5 * size
    for label, value in rng.sample(words.FIELDS, rng.randint(5, 8)):
        told = words.told(value, rng)
        style = value_style if told.isascii() else "hei"
        sheet.text(margin, y, f"{label}：", "hei", size, ink)
        sheet.text(margin + 8 * size, y, told, style, size * rng.uniform(1.0, 1.3), DARK)
        y += 1.7 * size
    while y < sheet.height - 5 * size:
        sheet.line([(margin, y - size), (sheet.width - margin, y - size)], ink, 0.15)
        for place, value in ((0.0, rng.choice(words.GOODS)), (0.3, "{few}"), (0.45, "{money}"), (0.7, "{money}")):
            x = margin + place * (sheet.width - 2 * margin)
            sheet.text(x, y, words.told(value, rng), "hei", size, DARK)
        y += 2 * size
    total = words.told("合计 ¥{money}", rng)
    sheet.text(sheet.width - margin, sheet.height - 3 * size, total, "hei-bold", 1.2 * size, DARK, anchor="r")


def phone_list(sheet, rng):
    sheet.fill(rng.choice(codes.PAPERS))
    size, style = sheet.width / rng.uniform(22, 34), rng.choice(("hei", "song", "mono"))
    sheet.text(sheet.width / 2, 2 * size, "通讯录", "hei-bold", 1.4 * size, DARK, anchor="m")
    for index in range(int(sheet.height / (1.8 * size)) - 3):
        y = (5 + 1.8 * index) * size
        for place, value in ((0.06, "{person}"), (0.3, "{phone}"), (0.7, "{landline}")):
            told = words.told(value, rng)
            sheet.text(place * sheet.width, y, told, style if told.isascii() else "hei", size, DARK)


def figures(sheet, rng):
    sheet.fill(rng.choice(codes.PAPERS))
    columns, size, style = rng.randint(4, 8), rng.uniform(2.6, 4.2), rng.choice(("sans", "mono", "hei", "ocr-b"))
    forms = [rng.choice(("{four}", "{four}", "{money}", "{few}", "{six}", "{three}")) for _ in range(columns)]
    pitch, step = sheet.width / (columns + 0.5), rng.uniform(1.5, 2.2) * size
    size = min(size, pitch / 6)
    ruled = rng.random() < 0.5
    for row in range(int(sheet.height / step) - 1):
        y = (1 + row) * step
        if ruled:
            sheet.line([(0.2 * pitch, y + step / 2), (sheet.width - 0.2 * pitch, y + step / 2)], GREY, 0.15)
        for column, form in enumerate(forms):
            sheet.text((column + 1) * pitch, y, words.told(form, rng), style, size, DARK, anchor="r")


def meters(sheet, rng):
    sheet.fill(rng.choice(((208, 210, 212), (176, 180, 178), (60, 66, 74), (232, 230, 222))))
    columns, rows = max(1, round(sheet.width / 70)), max(1, round(sheet.height / 40))
    for index in range(columns * rows):
        left, top = 70 * (index % columns) + 6, 40 * (index // columns) + 6
        sheet.rectangle(left, top, left + 58, top + 32, WHITE, 3)
        count, style = rng.randint(5, 8), rng.choice(("sans-bold", "hei-bold", "mono-bold", "sans"))
        box = 50 / count
        for place, digit in enumerate(words.digits(rng, count)):
            x = left + 4 + place * box
            sheet.rectangle(x, top + 6, x + 0.86 * box, top + 18, (150, 30, 30) if place == count - 1 else DARK, 0.6)
            sheet.text(x + 0.43 * box, top + 12, digit, style, min(8.0, 1.3 * box), WHITE, anchor="m")
        sheet.text(left + 29, top + 23, rng.choice(("kWh", "m³", "三相电能表", "冷水水表")), "hei", 3.2, DARK, anchor="m")
        sheet.text(left + 29, top + 28, words.told("No. {twelve}", rng), "sans", 2.6, DARK, anchor="m")


def wallpaper(sheet, rng):
    ground, stripe, other = rng.sample(desk.PLAIN_COLOURS + desk.CLOTH_COLOURS, 3)
    sheet.fill(ground)
    pitch, share, slant = rng.uniform(3, 14), rng.uniform(0.2, 0.7), rng.choice((0, 0, 0, 0.3, 1)) * sheet.height
    for index in range(int((sheet.width + slant) / pitch) + 1):
        x, wide = index * pitch - slant, share * pitch
        sheet.polygon([(x + slant, 0), (x + slant + wide, 0), (x + wide, sheet.height), (x, sheet.height)], stripe)
    if rng.random() < 0.5:
        for index in range(int(sheet.height / pitch) + 1):
            y = index * pitch
            sheet.polygon([(0, y), (sheet.width, y), (sheet.width, y + share * pitch), (0, y + share * pitch)], other)


def screen(sheet, rng):
    sheet.fill((16, 16, 18))
    dark = rng.random() < 0.4
    page, ink = ((34, 35, 38), WHITE) if dark else ((240, 240, 243), DARK)
    sheet.rectangle(3, 6, sheet.width - 3, sheet.height - 6, page, 2)
    sheet.text(6, 10, words.told("{time}", rng), "hei", 3.0, ink)
    size, y = rng.uniform(3.0, 4.4), 18.0
    as_list = rng.random() < 0.4
    while y < sheet.height - 16:
        message = words.told(rng.choice(words.MESSAGES), rng)
        if as_list:
            sheet.line([(5, y - 1.3 * size), (sheet.width - 5, y - 1.3 * size)], GREY, 0.15)
            y = _paragraph(sheet, 6, y, sheet.width - 12, message, "hei", size, ink) + size
            continue
        wide = 0.72 * sheet.width
        width = min(wide, sheet.text_width(message, "hei", size))
        lines = len(_lines(message, wide, size))
        mine = rng.random() < 0.5
        left = sheet.width - 8 - width if mine else 8
        sheet.rectangle(left - 2, y - size, left + width + 2, y + (1.6 * lines - 0.6) * size,
                        (120, 200, 110) if mine else ((70, 72, 78) if dark else WHITE), 1.5)
        y = _paragraph(sheet, left, y, wide, message, "hei", size, DARK if mine else ink) + 1.4 * size


def _lay_ground(sheet, rng):
    """Covers a sheet with what cards are printed on."""
    scale = min(sheet.scale, 14)
    ground = lifelike_grounds.ground((round(sheet.width * scale), round(sheet.height * scale)), rng)
    sheet.paste(ground, 0, 0, sheet.width, sheet.height)


def card_back(sheet, rng):
    _lay_ground(sheet, rng)
    top = rng.uniform(4, 7)
    sheet.rectangle(0, top, WIDTH, top + 12.7, rng.choice(((18, 17, 18), (42, 28, 24))))
    strip = top + rng.uniform(15, 18)
    right = rng.uniform(56, 64)
    sheet.rectangle(LEFT, strip, right, strip + 8, (238, 238, 232))
    for index in range(8):
        sheet.line([(LEFT, strip + index + 0.5), (right, strip + index + 0.5)], (214, 220, 226), 0.12)
    if rng.random() < 0.5:
        sheet.text(right - 8, strip + 4, words.told("{four}", rng), "sans", 3.2, DARK, anchor="r")
    sheet.text(right - 1, strip + 4, words.told("{three}", rng), "sans", 3.4, DARK, anchor="r")
    ink = lifelike_card.ink_on(sheet, LEFT, strip + 9, RIGHT, 53, rng)
    y = strip + 12
    for line in rng.sample(words.BACK_PRINT, rng.randint(3, 5)):
        y = _paragraph(sheet, LEFT, y, RIGHT - LEFT, words.told(line, rng), "hei", rng.uniform(1.7, 2.2), ink)


def member_card(sheet, rng):
    _lay_ground(sheet, rng)
    ink = lifelike_card.ink_on(sheet, LEFT, 4, RIGHT, 50, rng)
    sheet.text(LEFT, 9, rng.choice(words.MEMBER_NAMES), rng.choice(("hei-bold", "song-bold")), rng.uniform(4.5, 6), ink)
    if rng.random() < 0.4:
        bankcard.chip(sheet, rng)
    style, size = bankcard.pick(rng, lifelike_card.PRINTED), rng.uniform(3.0, 5.6)
    serial = f"{rng.choice(words.SERIAL_LABELS)} {words.told('{serial}', rng)}".strip()
    size = min(size, size * (RIGHT - LEFT) / sheet.text_width(serial, style, size))
    sheet.text(LEFT, rng.choice((33.0, 33.0, 42.0)), serial, style, size, ink)
    for y, line in ((47.0, "有效期 {day}"), (51.0, "服务热线 {hotline}")):
        if rng.random() < 0.6:
            sheet.text(LEFT, y, words.told(line, rng), "hei", 2.3, ink)


def ticket(sheet, rng):
    sheet.fill(rng.choice(((206, 226, 240), (246, 226, 226), (250, 246, 230))))
    size = sheet.width / 18
    sheet.text(4, 1.0 * size, rng.choice("ABEFKZ") + words.told("{six}", rng), "mono", size, (176, 40, 44))
    for place, anchor in ((0.08, "l"), (0.92, "r")):
        station = words.told("{city}站", rng)
        sheet.text(place * sheet.width, 2.7 * size, station, "hei-bold", 1.5 * size, DARK, anchor=anchor)
    train = rng.choice("GDKT") + words.told("{three}", rng)
    sheet.text(sheet.width / 2, 2.7 * size, train, "sans", 1.2 * size, DARK, anchor="m")
    for row, (left, right) in enumerate((("{date} {time}开", "{few}车{few}号"), ("¥{money}元", "二等座"),
                                         ("{six}********{three}X", "{person}"))):
        y = (4.6 + 1.3 * row) * size
        sheet.text(4, y, words.told(left, rng), "hei", 0.8 * size, DARK)
        sheet.text(sheet.width - 4, y, words.told(right, rng), "hei", 0.8 * size, DARK, anchor="r")
    symbol = codes.symbol(words.told("{twenty}{twelve}", rng), "QR Code").convert("RGB")
    sheet.paste(symbol, sheet.width - 4 * size, 7.9 * size, 3 * size, 3 * size, resample=Image.Resampling.NEAREST)
    sheet.text(4, sheet.height - 0.8 * size, words.told("{twenty}{few} 售票处", rng), "hei", 0.8 * size, DARK)


def portrait(sheet, rng):
    sheet.fill(rng.choice(((72, 132, 200), (200, 60, 60), WHITE, (150, 170, 160))))
    unit, middle = sheet.height / 100, sheet.width / 2
    skin = rng.choice(((226, 190, 166), (200, 150, 120), (240, 212, 190), (120, 82, 60)))
    hair = rng.choice(((34, 30, 32), (86, 60, 44), (150, 150, 152)))
    shade = tuple(int(0.8 * channel) for channel in skin)
    sheet.ellipse(middle, 40 * unit, 25 * unit, rng.uniform(28, 44) * unit, hair)
    sheet.ellipse(middle, 104 * unit, 44 * unit, 30 * unit, rng.choice(desk.CLOTH_COLOURS))
    sheet.rectangle(middle - 8 * unit, 60 * unit, middle + 8 * unit, 80 * unit, shade, 4 * unit)
    sheet.ellipse(middle, 44 * unit, 20 * unit, 26 * unit, skin)
    for side in (-1, 1):
        x = middle + 8 * side * unit
        sheet.ellipse(x, 40 * unit, 4 * unit, 2.2 * unit, WHITE)
        sheet.ellipse(x, 40 * unit, 1.9 * unit, 2 * unit, hair)
        sheet.line([(x - 5 * unit, 34 * unit), (x + 5 * unit, 33.4 * unit)], hair, 1.3 * unit)
    sheet.line([(middle, 42 * unit), (middle - 2.5 * unit, 51 * unit), (middle + 1.5 * unit, 51.6 * unit)], shade, unit)
    sheet.line([(middle - 6 * unit, 59 * unit), (middle, 61 * unit), (middle + 6 * unit, 59 * unit)], (170, 70, 70),
               1.6 * unit)


def parcel_label(sheet, rng):
    sheet.fill(WHITE)
    size = sheet.width / 20
    tracking = rng.choice(("", "", "YT", "SF")) + words.told(rng.choice(("{long}", "{serial}")), rng)
    route = words.told("{three}-{few} {three}", rng)
    sheet.text(sheet.width / 2, 1.2 * size, route, "sans-bold", 2 * size, DARK, anchor="m")
    symbol = codes.symbol(tracking.replace(" ", ""), "Code 128").convert("RGB")
    sheet.paste(symbol, 0.1 * sheet.width, 3 * size, 0.8 * sheet.width, 3.4 * size, resample=Image.Resampling.NEAREST)
    wide = min(1.1 * size, 0.9 * sheet.width * size / sheet.text_width(tracking, "sans", size))
    sheet.text(sheet.width / 2, 7.2 * size, tracking, rng.choice(("sans", "ocr-b", "hei-bold")), wide, DARK, anchor="m")
    y = 9.2 * size
    for line in ("收 {person} {phone}", "{city}{place}", "寄 {person} {phone}", "{city}{place}", "订单号 {long}",
                 "{day} {time}　重量 {few} kg"):
        sheet.text(0.05 * sheet.width, y, words.told(line, rng), "hei", 0.9 * size, DARK)
        y += 1.6 * size


class Form(typing.NamedTuple):
    """What a kind of sheet is like: sizes and lengths in millimetres, gloss in 0..1."""

    draw: typing.Callable  # (sheet, rng)
    sizes: tuple  # one is picked
    corner: float
    finest: float
    gloss: float


CARD_SIZE = ((WIDTH, HEIGHT),)
SHEETS = {
    "text page": Form(text_page, PAGES, 0.2, 0.4, 0.0),
    "invoice": Form(invoice, PAGES, 0.2, 0.4, 0.0),
    "phone list": Form(phone_list, PAGES, 0.2, 0.4, 0.0),
    "figures": Form(figures, PAGES, 0.2, 0.4, 0.0),
    "meters": Form(meters, ((70, 40), (140, 40), (140, 80), (70, 120)), 2.0, 0.5, 0.5),
    "wallpaper": Form(wallpaper, ((200, 150), (86, 54), (120, 90)), 0.2, 0.5, 0.0),
    "screen": Form(screen, ((70, 148), (150, 100), (75, 110)), 5.0, 0.4, 1.0),
    "card back": Form(card_back, CARD_SIZE, CORNER, FINEST, 1.0),
    "member card": Form(member_card, CARD_SIZE, CORNER, FINEST, 1.0),
    "ticket": Form(ticket, ((86, 54),), 1.0, FINEST, 0.2),
    "portrait": Form(portrait, ((35, 45), (60, 80), (120, 90)), 0.2, 0.5, 0.6),
    "parcel label": Form(parcel_label, ((76, 80), (100, 104)), 0.2, 0.4, 0.2),
}


class Printed:
    """A sheet of some form; `rng` settles its size and what stands on it."""

    foil = False

    def __init__(self, form, rng):
        self._draw = form.draw
        self.width, self.height = rng.choice(form.sizes)
        self.corner, self.finest, self.gloss = form.corner, form.finest, form.gloss
        while True:
            self._seed = rng.getrandbits(32)
            if not any(map(holds_card_number, self.sheet(CHECKED_PIXELS_PER_MM).rows())):
                return

    def sheet(self, pixels_per_mm):
        """The sheet with all that stands on it."""
        sheet = Sheet(self.width, self.height, pixels_per_mm)
        self._draw(sheet, random.Random(self._seed))
        return sheet

    def draw(self, pixels_per_mm):
        """The sheet as an RGB picture, corners not cut."""
        return self.sheet(pixels_per_mm).image


class FlatCard(lifelike_card.LifelikeCard):
    """A bank card that is printed flat, its number in the places of an embossed one or left out."""

    def __init__(self, numbered, rng):
        self._numbered = numbered
        said = lifelike_card.account("flat", rng)
        if not numbered:
            said = dataclasses.replace(said, holder=said.holder or bankcard.holder(rng), valid=said.valid or "09/31")
        super().__init__(said, "flat", rng)

    def _print_number(self, canvas, rng):
        style, size = bankcard.pick(rng, lifelike_card.PRINTED), rng.uniform(4.6, 5.6)
        ink = lifelike_card.ink_on(canvas, LEFT, self._row - 2, RIGHT, self._row + 2, rng)
        for character, x, y in self.cells() if self._numbered else ():
            canvas.text(x, y, character, style, size, ink, anchor="m")
        self._print_date_and_holder(canvas, ink, rng)


class Desk:
    """Nothing: the desk alone."""

    width, height, corner = WIDTH, HEIGHT, None
    finest, gloss, foil = 1.0, 0.0, False

    def draw(self, pixels_per_mm):
        """A picture without anything in it."""
        return Image.new("RGBA", (round(WIDTH * pixels_per_mm), round(HEIGHT * pixels_per_mm)))


# Half the diagonal of a digit, and how many digits must stay in sight and go out of it.
DIGIT_REACH, LEAST_SEEN, LEAST_HIDDEN = 2.3, 4, 2
# How far what lies on a card is drawn beyond it, in millimetres.
BEYOND = 45
FINGER_LENGTH, FINGER_WIDTH = 90, (13, 20)
SKINS = ((226, 186, 162), (206, 160, 132), (238, 206, 186), (140, 98, 76))


class Cover(typing.NamedTuple):
    """What lies on a card. Lengths in millimetres, from the card's middle; degrees against the clock."""

    width: float
    height: float
    corner: float
    middle: tuple
    angle: float
    draw: typing.Callable  # pixels_per_mm -> RGB picture

    def hides(self, x, y):
        """Whether nothing is seen of a digit whose middle is there."""
        turn = math.radians(self.angle)
        dx, dy = x - self.middle[0], y - self.middle[1]
        along, across = dx * math.cos(turn) - dy * math.sin(turn), dx * math.sin(turn) + dy * math.cos(turn)
        # The distance from the middle line of the rounded corners.
        beyond = math.hypot(max(0, abs(along) - self.width / 2 + self.corner),
                            max(0, abs(across) - self.height / 2 + self.corner))
        return beyond < self.corner - DIGIT_REACH


def finger(cells, rng):
    """A finger whose tip lies on the number."""
    x, y = rng.choice(cells)
    width, angle, skin = rng.uniform(*FINGER_WIDTH), rng.uniform(0, 360), rng.choice(SKINS)
    reach = FINGER_LENGTH / 2 - rng.uniform(0.5, 1.2) * width
    middle = (x + reach * math.cos(math.radians(angle)), y - reach * math.sin(math.radians(angle)))
    return Cover(FINGER_LENGTH, width, width / 2, middle, angle, lambda scale: _finger(width, skin, scale))


def _finger(width, skin, scale):
    """A finger that points to the left, rounded by its shade, with a nail and the creases of its joint."""
    canvas = Canvas(FINGER_LENGTH, width, scale, skin)
    nail = tuple(min(255, channel + 18) for channel in skin)
    canvas.rectangle(0.12 * width, 0.22 * width, 0.9 * width, 0.78 * width, nail, 0.25 * width)
    for x in (1.9, 1.97, 2.06):
        canvas.line([(x * width, 0.2 * width), (x * width, 0.8 * width)], tuple(int(0.8 * c) for c in skin), 0.3)
    across = np.linspace(-1, 1, canvas.image.height)[:, None, None]
    return Image.fromarray((np.asarray(canvas.image) * (0.6 + 0.4 * np.sqrt(1 - across ** 2))).astype(np.uint8))


def upper_card(_cells, rng):
    """A card without a number on its upper side that was thrown onto the other."""
    card = FlatCard(False, rng) if rng.random() < 0.6 else Printed(SHEETS["card back"], rng)
    return Cover(WIDTH, HEIGHT, CORNER, (rng.uniform(-70, 70), rng.uniform(-45, 45)), rng.gauss(0, 15), card.draw)


class HiddenNumber:
    """A bank card whose number is not all in sight; `choose_cover` tries what may lie on it."""

    width, height, corner = WIDTH, HEIGHT, None
    finest, gloss = FINEST, 0.0

    def __init__(self, choose_cover, rng):
        look = rng.choice(lifelike_card.LOOKS)
        self.card = FlatCard(True, rng) if look == "flat" else \
            lifelike_card.LifelikeCard(lifelike_card.account(look, rng), look, rng)
        self.foil = self.card.foil
        digits = "".join(character for character, _, _ in self.card.cells())
        cells = [(x - WIDTH / 2, y - HEIGHT / 2) for _, x, y in self.card.cells()]
        while True:
            self._cover = choose_cover(cells, rng)
            self.hidden = [index for index, cell in enumerate(cells) if self._cover.hides(*cell)]
            if LEAST_HIDDEN <= len(self.hidden) <= len(cells) - LEAST_SEEN and not _rest_counts(digits, self.hidden):
                return

    def draw(self, pixels_per_mm):
        """The card and what lies on it as an RGBA picture, BEYOND wider on each side."""
        picture = Image.new("RGBA", [round((side + 2 * BEYOND) * pixels_per_mm) for side in (WIDTH, HEIGHT)])
        for thing in (Cover(WIDTH, HEIGHT, CORNER, (0, 0), 0, self.card.draw), self._cover):
            flat = thing.draw(pixels_per_mm)
            mask = Image.new("L", flat.size)
            ImageDraw.Draw(mask).rounded_rectangle([0, 0, flat.width - 1, flat.height - 1],
                                                   thing.corner * pixels_per_mm, fill=255)
            desk.lay(picture, flat, mask, thing.middle, thing.angle, pixels_per_mm, 0.7)
        return picture


def _rest_counts(digits, hidden):
    """Whether what is left before or behind the hidden digits is a number that a bank card may have."""
    before, behind = digits[:hidden[0]], digits[hidden[-1] + 1:]
    return any(is_card_number(before[:end]) for end in LENGTHS) or \
        any(is_card_number(behind[-length:]) for length in LENGTHS)


# Scene -> what draws its subject, given a random.Random.
SCENES = {
    "desk": lambda rng: Desk(),
    **{name: lambda rng, form=form: Printed(form, rng) for name, form in SHEETS.items()},
    "numberless card": lambda rng: FlatCard(False, rng),
    "finger": lambda rng: HiddenNumber(finger, rng),
    "covered card": lambda rng: HiddenNumber(upper_card, rng),
}


class Scene(typing.NamedTuple):
    """The design of one picture."""

    name: str  # of SCENES
    is_forwarded: bool  # through a messenger

    def __str__(self):
        return self.name

    def told(self):
        """What its line of truth says of it."""
        return {"scene": self.name}


def scene(index):
    """The scene of picture `index`: all of them in turn, and every other time through a messenger."""
    turn, place = divmod(index, len(SCENES))
    return Scene(list(SCENES)[place], turn % FORWARDED_EVERY == 1)
