"""Invents bank cards and draws their number side, flat printed or embossed.

Places follow ISO/IEC 7810 (85.6 x 54 mm), 7811-1 (embossed rows) and 7816-2 (chip).
"""

import dataclasses
import random

from PIL import Image, ImageDraw, ImageFilter

import banks
import emboss
import guilloche
from canvas import Canvas

WIDTH, HEIGHT, CORNER = 85.6, 54.0, 3.18
# Strokes of the card's own name and of the small printed digits.
FINEST = 0.26

LOOKS = ("flat", "silver", "gold", "worn")

# Card -> (first digits, length, type), and how often each is drawn flat and embossed.
RANGES = {
    "long debit": (("62",), 19, "debit"),
    "debit": (("62",), 16, "debit"),
    "credit": (("62",), 16, "credit"),
    "credit 4": (("4",), 16, "credit"),
    "credit 5": (("51", "52", "53", "54", "55"), 16, "credit"),
    "prepaid": (("62",), 16, "prepaid"),
}
FLAT_WEIGHTS = (45, 12, 18, 10, 10, 5)
EMBOSSED_WEIGHTS = (24, 8, 28, 18, 18, 4)
# A card number never begins like a hotline.
HOTLINE_PREFIX = "400"
SAYS_ITS_TYPE = {"debit": 0.6, "credit": 0.7, "prepaid": 1.0}
SHOWS_HOLDER = {"flat": {"debit": 0.12, "credit": 0.8, "prepaid": 0.0},
                "embossed": {"debit": 0.3, "credit": 0.93, "prepaid": 0.0}}
SHOWS_DATE = {"debit": 0.45, "credit": 1.0, "prepaid": 0.6}
# Longer names would meet the words in the lower right corner.
MAX_HOLDER_LENGTH = 18
BANK_FORMS = {"chinese": 42, "both": 36, "english": 12, "abbreviation": 10}

# Left and right end of what is printed; rows are middles of lines, all in millimetres.
LEFT, RIGHT = 6.5, 79.1
BANK_ROW, ENGLISH_ROW, TYPE_ROW, CLASS_ROW, SCHEME_ROW, HOTLINE_ROW = 8.0, 12.9, 20.0, 25.0, 47.2, 51.4
CHIP = (9.6, 16.6, 12.0, 9.4)  # left, top, width, height

# Embossed rows: digits of 1/7 inch pitch, letters of 1/10 inch.
NUMBER_ROW, NUMBER_PITCH, DATE_ROW, HOLDER_ROW, LETTER_PITCH = 32.4, 3.63, 40.4, 47.0, 2.5
DIGIT_BOX, DIGIT_STROKE = (2.15, 3.65), (0.5, 0.62)
LETTER_SIZE = {"mono": 3.6, "ocr-b": 3.5, "mono-bold": 3.6}
EMBOSSED_STYLES = {"cut": 62, "ocr-b": 22, "sans": 16}
EMBOSSED_SIZE = {"ocr-b": 5.5, "sans": 5.5}
PRINTED_STYLES = {"ocr-b": 34, "mono": 10, "mono-bold": 6, "sans": 20, "sans-bold": 10, "hei": 12, "hei-bold": 8}
NAME_STYLES = {"hei-bold": 40, "hei": 25, "song-bold": 20, "zenhei": 15}
FOIL_INKS = ((206, 208, 212), (226, 190, 110))


@dataclasses.dataclass(frozen=True)
class Account:
    """What a card says."""

    digits: str
    bank: str | None  # as in a record
    type: str  # of banks.TYPE_NAMES
    type_words: str  # "" if the card does not tell its type
    holder: str | None
    valid: str | None  # MM/YY

    def record(self):
        """The record that a reader of the card should give."""
        told = self.type_words or len(self.digits) == 19
        return {"cardNumber": " ".join(split(self.digits, (4, 4, 4, 4, 3))), "rawCardNumber": self.digits,
                "bankName": self.bank, "cardType": banks.TYPE_NAMES[self.type] if told else None,
                "cardholderName": self.holder}


def check_digit(digits):
    """The digit that ISO/IEC 7812-1 (Luhn) demands after `digits`."""
    doubled = [int(d) * (2 - i % 2) for i, d in enumerate(reversed(digits))]
    return str(-sum(d - 9 if d > 9 else d for d in doubled) % 10)


def split(digits, lengths):
    """The digits in groups of the given lengths, as far as they go."""
    groups, start = [], 0
    for length in lengths:
        groups.append(digits[start:start + length])
        start += length
    return [group for group in groups if group]


def pick(rng, weights):
    """One of the keys, each as often as its weight says."""
    return rng.choices(list(weights), weights=list(weights.values()))[0]


def number(rng, prefixes, length):
    """A random number that begins with one of the prefixes and ends in the right check digit."""
    while True:
        digits = rng.choice(prefixes)
        digits += "".join(rng.choice("0123456789") for _ in range(length - 1 - len(digits)))
        if not digits.startswith(HOTLINE_PREFIX):
            return digits + check_digit(digits)


def holder(rng):
    """An invented name of two or three words in capitals."""
    while True:
        given = rng.sample(banks.SYLLABLES, rng.choices((1, 2), weights=(30, 70))[0])
        name = " ".join((rng.choice(banks.SURNAMES), *(given if rng.random() < 0.6 else ("".join(given),))))
        if len(name) <= MAX_HOLDER_LENGTH:
            return name


def account(look, rng):
    """Invents what a card of that look says."""
    weights = FLAT_WEIGHTS if look == "flat" else EMBOSSED_WEIGHTS
    prefixes, length, kind = RANGES[rng.choices(list(RANGES), weights=weights)[0]]
    shows_holder = SHOWS_HOLDER["flat" if look == "flat" else "embossed"][kind]
    return Account(
        digits=number(rng, prefixes, length),
        bank=rng.choice(list(banks.BANKS)) if kind != "prepaid" else None,
        type=kind,
        type_words=rng.choice(banks.TYPE_WORDS[kind]) if rng.random() < SAYS_ITS_TYPE[kind] else "",
        holder=holder(rng) if rng.random() < shows_holder else None,
        valid=f"{rng.randint(1, 12):02d}/{rng.randint(24, 36)}" if rng.random() < SHOWS_DATE[kind] else None)


class BankCard:
    """The number side of one card; `rng` settles its design."""

    width, height, corner = WIDTH, HEIGHT, CORNER
    finest, gloss = FINEST, 1.0

    def __init__(self, said, look, rng):
        self._said, self._look = said, look
        self.foil = look != "flat"
        self._stops, tone = banks.GROUNDS[_ground(look, rng)]
        self._ink = rng.choice(banks.INKS[tone])
        self._tone = tone
        self._seed = rng.random()
        self._bank_form = pick(rng, BANK_FORMS)
        self._name_style, self._name_size = pick(rng, NAME_STYLES), rng.uniform(4.0, 5.4)
        self._bank_right = rng.random() < 0.25
        self._chip = rng.random() < 0.75
        self._scheme = rng.choice(("UnionPay 银联", "银联 UnionPay", "UnionPay", "银联")) \
            if said.digits.startswith("62") and rng.random() < 0.85 else ""
        self._class_words = rng.choice(banks.CLASS_WORDS) if rng.random() < 0.25 else ""
        self._hotline = hotline(rng) if rng.random() < 0.45 else ""
        self._groups = split(said.digits, (4, 4, 4, 4, 3) if len(said.digits) == 16 or rng.random() < 0.45 else (6, 13))
        self._letter_style = rng.choice(list(LETTER_SIZE))
        self._shift = (rng.uniform(-0.5, 0.5), rng.uniform(-0.5, 0.5))
        if self.foil:
            self._choose_relief(rng)
        else:
            self._choose_print(rng)

    def _choose_relief(self, rng):
        worn = self._look == "worn"
        self._relief = emboss.Relief(
            foil=rng.choice(list(emboss.FOILS)) if worn else self._look,
            wear=rng.uniform(0.25, 0.6) if worn else rng.choice((0.0, rng.uniform(0.0, 0.12))),
            depth=rng.uniform(0.6, 0.9) if worn else rng.uniform(0.75, 1.1),
            streak=rng.uniform(0.3, 1.0),
            seed=rng.getrandbits(32))
        self._number_style, self._stroke = pick(rng, EMBOSSED_STYLES), rng.uniform(*DIGIT_STROKE)
        self._bin_row = rng.choices((NUMBER_ROW + 4.6, NUMBER_ROW - 4.0, None), weights=(62, 14, 24))[0]

    def _choose_print(self, rng):
        self._number_style, self._number_size = pick(rng, PRINTED_STYLES), rng.uniform(4.2, 5.6)
        # Without a holder the number may stand lower.
        self._number_row = 40.5 if self._said.holder is None and rng.random() < 0.3 else rng.uniform(31.5, 34.0)
        shining = self._tone == "light" and rng.random() < 0.35
        self._number_ink = rng.choice(FOIL_INKS) if shining else self._ink

    def draw(self, pixels_per_mm):
        """The flat card as an RGB picture, corners not cut."""
        rng = random.Random(self._seed)
        canvas = Canvas(WIDTH, HEIGHT, pixels_per_mm, _ground_picture(min(pixels_per_mm, 14), self._stops, rng))
        if self._chip:
            chip(canvas, rng)
        self._print_words(canvas)
        if self.foil:
            self._emboss(canvas)
        else:
            self._print_number(canvas)
        return canvas.image

    def _print_words(self, canvas):
        used = self._print_bank(canvas)
        words = self._said.type_words
        if words:
            style, size = "hei-bold", 3.1
            fits = canvas.text_width(words, style, size) + used + 4 < RIGHT - LEFT
            at, anchor = (LEFT, "l") if self._bank_right and fits else (RIGHT, "r")
            canvas.text(at, BANK_ROW if fits else TYPE_ROW, words, style, size, self._ink, anchor=anchor)
        if self._class_words and self._class_words not in words:
            canvas.text(RIGHT, CLASS_ROW, self._class_words, "hei", 2.7, self._ink, spacing=0.3, anchor="r")
        if self._scheme:
            canvas.text(RIGHT, SCHEME_ROW, self._scheme, "hei-bold", 3.4, self._ink, anchor="r")
        if self._hotline:
            canvas.text(LEFT, HOTLINE_ROW, self._hotline, "hei", 2.3, self._ink)

    def _print_bank(self, canvas):
        """Prints the bank's name; returns how wide it is."""
        if self._said.bank is None:
            return 0
        chinese = self._said.bank
        english, abbreviation = banks.BANKS[chinese]
        at, anchor = (RIGHT, "r") if self._bank_right else (LEFT, "l")
        if self._bank_form == "english" and english:
            size = min(3.6, 3.6 * 62 / canvas.text_width(english, "sans-bold", 3.6))
            canvas.text(at, BANK_ROW, english, "sans-bold", size, self._ink, anchor=anchor)
            return canvas.text_width(english, "sans-bold", size)
        if self._bank_form == "abbreviation" and abbreviation:
            chinese = f"{abbreviation} {chinese}"
        style, size = self._name_style, self._name_size
        canvas.text(at, BANK_ROW, chinese, style, size, self._ink, anchor=anchor)
        if self._bank_form == "both" and english:
            small = min(2.5, 2.5 * 60 / canvas.text_width(english, "sans", 2.5))
            canvas.text(at, ENGLISH_ROW, english, "sans", small, self._ink, anchor=anchor)
        return canvas.text_width(chinese, style, size)

    def _print_number(self, canvas):
        dx, dy = self._shift
        said, row, ink = self._said, self._number_row + dy, self._number_ink
        text = "  ".join(self._groups) if self._number_style in ("sans", "sans-bold", "hei", "hei-bold") \
            else " ".join(self._groups)
        size = self._number_size
        size = min(size, size * (RIGHT - LEFT) / canvas.text_width(text, self._number_style, size))
        canvas.text(LEFT + 0.5 + dx, row, text, self._number_style, size, ink)
        if said.valid:
            below = row + 6.2
            canvas.text(36.0, below, "VALID THRU", "sans", 1.9, self._ink, anchor="r")
            canvas.text(37.5, below, said.valid, self._letter_style, 3.3, ink)
        if said.holder:
            canvas.text(LEFT + 0.5 + dx, HOLDER_ROW + dy, said.holder, self._letter_style, 3.5, ink)

    def _emboss(self, canvas):
        dx, dy = self._shift
        mask = Canvas(WIDTH, HEIGHT, canvas.scale, (0, 0, 0))
        left = self._raise_number(mask, dx, dy)
        if self._bin_row:
            canvas.text(left, self._bin_row + dy, self._said.digits[:4], "sans", 2.7, self._ink, spacing=0.1)
        if self._said.valid:
            canvas.text(35.4, DATE_ROW - 1.0 + dy, "VALID", "sans", 1.6, self._ink, anchor="r")
            canvas.text(35.4, DATE_ROW + 1.0 + dy, "THRU", "sans", 1.6, self._ink, anchor="r")
            canvas.text(37.5, DATE_ROW - 2.9 + dy, "MONTH/YEAR", "sans", 1.5, self._ink)
            self._raise_letters(mask, 37.0 + dx, DATE_ROW + dy, self._said.valid)
        if self._said.holder:
            self._raise_letters(mask, LEFT + 0.5 + dx, HOLDER_ROW + dy, self._said.holder)
        emboss.raise_characters(canvas.image, mask.image.convert("L"), canvas.scale, self._relief)

    def _raise_number(self, mask, dx, dy):
        """Draws the number's strokes; returns where it begins."""
        gap = 0.5 if len(self._groups) == 5 else 1.0
        cells = len(self._said.digits) + gap * (len(self._groups) - 1)
        left = x = (WIDTH - cells * NUMBER_PITCH) / 2 + dx
        width, height = DIGIT_BOX
        for group in self._groups:
            for character in group:
                if self._number_style == "cut":
                    emboss.digit(mask, character, x + (NUMBER_PITCH - width) / 2, NUMBER_ROW + dy - height / 2, width,
                                 height, self._stroke, (255, 255, 255))
                else:
                    mask.text(x + NUMBER_PITCH / 2, NUMBER_ROW + dy, character, self._number_style,
                              EMBOSSED_SIZE[self._number_style], (255, 255, 255), anchor="m")
                x += NUMBER_PITCH
            x += gap * NUMBER_PITCH
        return left

    def _raise_letters(self, mask, left, row, text):
        style = self._letter_style
        for index, character in enumerate(text):
            mask.text(left + (index + 0.5) * LETTER_PITCH, row, character, style, LETTER_SIZE[style], (255, 255, 255),
                      anchor="m")


def hotline(rng):
    """A line with an invented service number."""
    long = f"{banks.LONG_HOTLINE_PREFIX}{rng.randint(10, 99)}-{rng.randint(1000, 9999)}"
    return rng.choice(banks.HOTLINES).format(rng.choice((rng.choice(banks.SHORT_HOTLINES), long)))


def _ground(look, rng):
    """A ground on which that look can be read; foil of its own colour hardly can, and only wear brings it there."""
    poor = {"silver": ("white", "silver grey"), "gold": ("gold", "champagne")}.get(look, ())
    weights = {name: 1 if tone == "dark" and look != "flat" else 2
               for name, (_, tone) in banks.GROUNDS.items() if name not in poor}
    return pick(rng, weights)


def _mixed(colour, other, share):
    return tuple(round(a + share * (b - a)) for a, b in zip(colour, other))


def _ground_picture(pixels_per_mm, stops, rng):
    """A wash, with or without fine waves, petals, and large soft shapes."""
    bright, deep = _mixed(stops[1], (255, 255, 255), 0.5), _mixed(stops[0], (0, 0, 0), 0.4)
    pattern = rng.choice(("plain", "plain", "waves", "waves", "petals", "shapes", "shapes"))
    inks = (bright, deep) if pattern in ("waves", "petals") else ()
    rosettes = (((rng.uniform(10, 76), rng.uniform(8, 46)), rng.uniform(14, 30), rng.randint(6, 16)),) \
        if pattern == "petals" else ()
    picture = guilloche.background(WIDTH, HEIGHT, pixels_per_mm, rng, stops, inks, rosettes)
    if pattern == "shapes":
        for _ in range(rng.randint(1, 3)):
            _soft_shape(picture, rng, pixels_per_mm, rng.choice((bright, deep)))
    return picture


def _soft_shape(picture, rng, pixels_per_mm, colour):
    """A large translucent disc, partly off the card."""
    mask = Image.new("L", picture.size)
    radius = rng.uniform(15, 55) * pixels_per_mm
    x, y = rng.uniform(0, picture.width), rng.uniform(0, picture.height) + rng.choice((-0.6, 0.6)) * radius
    ImageDraw.Draw(mask).ellipse([x - radius, y - radius, x + radius, y + radius], fill=rng.randint(30, 90))
    softness = rng.choice((0.1, 3.0)) * pixels_per_mm
    picture.paste(colour, (0, 0), mask.filter(ImageFilter.GaussianBlur(softness)))


def chip(canvas, rng):
    """A neutral contact pad: a metal plate cut into eight fields around a middle one."""
    left, top, width, height = CHIP
    metal = rng.choice(((214, 180, 104), (200, 202, 206), (224, 196, 132)))
    groove = _mixed(metal, (0, 0, 0), 0.5)
    canvas.rectangle(left - 0.12, top - 0.12, left + width + 0.12, top + height + 0.12, groove, radius=1.6)
    canvas.rectangle(left, top, left + width, top + height, metal, radius=1.5)
    for share in (0.28, 0.5, 0.72):
        y = top + share * height
        canvas.line([(left, y), (left + 0.32 * width, y)], groove, 0.16)
        canvas.line([(left + 0.68 * width, y), (left + width, y)], groove, 0.16)
    middle_x, middle_y = left + width / 2, top + height / 2
    for inset, colour in ((0.0, groove), (0.16, _mixed(metal, (255, 255, 255), 0.2))):
        across, down = 0.18 * width - inset, 0.3 * height - inset
        canvas.rectangle(middle_x - across, middle_y - down, middle_x + across, middle_y + down, colour, radius=1.2)
