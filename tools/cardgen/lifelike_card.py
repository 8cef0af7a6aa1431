"""Draws the number side of a bank card as hard as real ones: busy prints behind cut characters and small words.

Places follow ISO/IEC 7811-1 loosely, as real cards do. See bankcard.py for the plain style.
"""

import dataclasses
import random

import numpy as np

import bankcard
import banks
import embossed_glyphs
import embossed_relief
import lifelike_grounds
import lifelike_words as words
import pasted_groups
from bankcard import HEIGHT, LEFT, RIGHT, WIDTH
from canvas import Canvas

LOOKS = ("flat", "silver", "gold", "worn", "bare")

# Characters in millimetres: pitch, box of the middle lines, and how far a worn punch lets them dance.
DIGIT_PITCH, DIGIT_BOX, LETTER_PITCH, LETTER_BOX, DANCE = 3.63, (2.18, 3.78), 2.54, (1.45, 2.3), 0.05
# Letters are raised by finer punches than digits.
FINER = 0.68
# Numbers printed flat, by style and weight; sizes in millimetres of em.
PRINTED = {"song-bold": 30, "sans-bold": 20, "hei-bold": 26, "ocr-b": 8, "sans": 8, "hei": 8}
GAPS = {1: 0, 2: 1.0, 4: 1.0, 5: 0.5}  # in pitches, by the number of groups
NAMES = {"hei-bold": 40, "hei": 20, "song-bold": 25, "zenhei": 15}
SMALL_PRINT_PLACES = ((RIGHT - 2, 51.6), (RIGHT - 8, 41.8), (34, 20.5), (46, 24.0))
BRIGHT = 132  # mean level of a ground above which dark ink is read better


def account(look, rng):
    """Invents what a card of that look says."""
    name = bankcard.pick(rng, {name: weight for name, (_, _, weight) in words.CARDS.items()})
    kind, length, _ = words.CARDS[name]
    bank = _issuer(rng) if kind != "prepaid" else None
    shown = bankcard.SHOWS_HOLDER["flat" if look == "flat" else "embossed"][kind]
    says_type = rng.random() < bankcard.SAYS_ITS_TYPE[kind]
    dated = rng.random() < bankcard.SHOWS_DATE[kind]
    return bankcard.Account(
        digits=bankcard.number(rng, words.PREFIXES.get(name, words.PREFIXES[kind]), length), bank=bank, type=kind,
        type_words=rng.choice(banks.TYPE_WORDS[kind]) if says_type else "",
        holder=bankcard.holder(rng) if rng.random() < shown else None,
        valid=f"{rng.randint(1, 12):02d}/{rng.randint(24, 36)}" if dated else None)


def _issuer(rng):
    """The name of a bank as in records; that of a credit cooperative is the one that its card prints."""
    if rng.random() >= 0.93:
        return rng.choice(words.COOPERATIVES).format(rng.choice(words.PLACES))
    return words.RURAL_BANK if rng.random() < 0.07 else rng.choice(list(banks.BANKS))


class LifelikeCard:
    """The number side of one card; `rng` settles its design."""

    width, height, corner = WIDTH, HEIGHT, bankcard.CORNER
    finest, gloss = bankcard.FINEST, 1.0

    def __init__(self, said, look, rng):
        self._said, self._look = said, look
        self.foil = look not in ("flat", "bare")
        self._design = rng.getrandbits(32)
        self._groups = bankcard.split(said.digits, bankcard.pick(rng, words.LAYOUTS[len(said.digits)]))
        self._row, self._shift = rng.uniform(29.5, 34.0), rng.uniform(-1.0, 1.0)
        self._face = rng.choices(embossed_glyphs.FACES, (80, 20))[0]
        self._stretch = (rng.uniform(0.92, 1.06), rng.uniform(0.94, 1.05))
        self._pasted = None
        self._relief = None if look == "flat" else embossed_relief.choose(look, rng)
        self._prefix_below = rng.random() < 0.45

    @classmethod
    def with_number_of(cls, groups, rng):
        """What a card says whose number is a row of pictures of real digits, and the card."""
        row = pasted_groups.choose(groups, rng)
        said = dataclasses.replace(account("bare", rng), digits="".join(group.digits for group in row))
        card = cls(said, "bare", rng)
        card._pasted = row
        return said, card

    def draw(self, pixels_per_mm):
        """The flat card as an RGB picture, corners not cut."""
        rng = random.Random(self._design)
        ground_scale = min(pixels_per_mm, 14)
        ground = lifelike_grounds.ground((round(WIDTH * ground_scale), round(HEIGHT * ground_scale)), rng)
        canvas = Canvas(WIDTH, HEIGHT, pixels_per_mm, ground)
        if rng.random() < 0.65:
            bankcard.chip(canvas, rng)
        self._print_words(canvas, rng)
        if self._relief:
            self._emboss(canvas, rng)
        else:
            self._print_number(canvas, rng)
        return canvas.image

    def cells(self):
        """The number's characters with the middles of their cells in millimetres, blanks left out."""
        gap = GAPS[len(self._groups)]
        pitches = len(self._said.digits) + gap * (len(self._groups) - 1)
        x = (WIDTH - pitches * DIGIT_PITCH) / 2 + self._shift + DIGIT_PITCH / 2
        placed = []
        for group in self._groups:
            for character in group:
                placed.append((character, x, self._row))
                x += DIGIT_PITCH
            x += gap * DIGIT_PITCH
        return placed

    def _print_words(self, canvas, rng):
        used = self._print_issuer(canvas, rng)
        ink = ink_on(canvas, RIGHT - 20, 5, RIGHT, 24, rng)
        if self._said.type_words:
            fits = canvas.text_width(self._said.type_words, "hei-bold", 3.0) + used + 4 < RIGHT - LEFT
            canvas.text(RIGHT, 8.0 if fits else 19.5, self._said.type_words, "hei-bold", 3.0, ink, anchor="r")
        if rng.random() < 0.3:
            canvas.text(RIGHT, 24.5, rng.choice(banks.CLASS_WORDS), "hei", 2.6, ink, spacing=0.3, anchor="r")
        low = ink_on(canvas, LEFT, 44, RIGHT, 53, rng)
        if self._said.digits.startswith("6") and rng.random() < 0.85:
            canvas.text(RIGHT, 47.2, rng.choice(words.SCHEMES), "hei-bold", rng.uniform(2.8, 3.6), low, anchor="r")
        if rng.random() < 0.5:
            canvas.text(LEFT, 51.6, bankcard.hotline(rng), "hei", rng.uniform(1.7, 2.3), low)
        for x, y in rng.sample(SMALL_PRINT_PLACES, rng.randint(0, 2)):
            canvas.text(x, y, rng.choice(words.SMALL_PRINT), "hei", rng.uniform(1.4, 2.2), low,
                        anchor="m" if x < 50 else "r")

    def _print_issuer(self, canvas, rng):
        """Prints the issuer beside a neutral mark; returns how much of the width it takes."""
        lines = _issuer_lines(self._said, rng)
        style, ink = bankcard.pick(rng, NAMES), ink_on(canvas, LEFT, 4, 50, 15, rng)
        mark = 5.4 if rng.random() < 0.4 else 0.0
        if mark:
            canvas.ellipse(LEFT + 2.1, 8.0, 2.1, 2.1, ink)
            canvas.polygon([(LEFT + 2.1, 6.4), (LEFT + 3.6, 8.0), (LEFT + 2.1, 9.6), (LEFT + 0.6, 8.0)],
                           ink_on(canvas, LEFT + 0.5, 6.5, LEFT + 3.7, 9.5, rng))
        widest, y = 0.0, 8.0
        for text, size in lines:
            size *= rng.uniform(0.85, 1.1)
            face = style if any(ord(c) > 0x2e80 for c in text) else "sans-bold"
            size = min(size, 58 * size / canvas.text_width(text, face, size))
            canvas.text(LEFT + mark, y, text, face, size, ink)
            widest, y = max(widest, canvas.text_width(text, face, size)), y + 4.4
        return mark + widest

    def _emboss(self, canvas, rng):
        labels = ink_on(canvas, 5, self._row + 3, 50, 48, rng)
        lines = []
        if self._pasted:
            self._paste(canvas)
        else:
            for character, x, y in self.cells():
                lines += _cut(character, self._face, x, y, DIGIT_BOX, self._stretch, rng)
        if self._prefix_below:
            left = self.cells()[0][1] - 1.2
            style, size = rng.choice(("sans", "hei")), rng.uniform(2.0, 2.8)
            canvas.text(left, self._row + 4.1, self._said.digits[:4], style, size, labels, spacing=0.1)
        small = []
        if self._said.valid:
            x, y = rng.uniform(32, 42), rng.uniform(39.6, 41.5)
            _date_words(canvas, x, y, labels, rng)
            small += self._letters(self._said.valid, x, y, rng)
            if rng.random() < 0.25:
                _stacked(canvas, 13.0, y, rng.choice(words.MEMBER_LABELS), labels, "r")
                small += self._letters(f"{rng.randint(0, 24):02d}", 13.4, y, rng)
        if self._said.holder:
            small += self._letters(self._said.holder, LEFT + rng.uniform(-1, 1), rng.uniform(46.0, 47.6), rng)
        embossed_relief.emboss(canvas.image, lines, canvas.scale, self._relief)
        fine = dataclasses.replace(self._relief, top=FINER * self._relief.top, flank=FINER * self._relief.flank)
        embossed_relief.emboss(canvas.image, small, canvas.scale, fine)

    def _paste(self, canvas):
        """Puts pictures of real digits where the number stands."""
        xs = [x for _, x, _ in self.cells()]
        rows, columns = self._pasted[0].picture.shape[:2]
        half = len(self._groups[0]) * DIGIT_PITCH * rows / columns / 2
        box = (xs[0] - DIGIT_PITCH / 2, self._row - half, xs[-1] + DIGIT_PITCH / 2, self._row + half)
        pasted_groups.paste(canvas.image, self._pasted, [side * canvas.scale for side in box])

    def _letters(self, text, left, row, rng):
        cut = []
        for index, character in enumerate(text):
            cut += _cut(character, self._face, left + (index + 0.5) * LETTER_PITCH, row, LETTER_BOX, self._stretch, rng)
        return cut

    def _print_number(self, canvas, rng):
        style, size = bankcard.pick(rng, PRINTED), rng.uniform(4.6, 6.2)
        ink = ink_on(canvas, LEFT, self._row - 2, RIGHT, self._row + 2, rng)
        left, spacing = LEFT + rng.uniform(-1.5, 3.0), rng.uniform(0.05, 0.5)
        text = ("  " if rng.random() < 0.6 else " ").join(self._groups)
        size = min(size, size * (RIGHT - left) / canvas.text_width(text, style, size, spacing))
        canvas.text(left, self._row, text, style, size, ink, spacing)
        self._print_date_and_holder(canvas, ink, rng)

    def _print_date_and_holder(self, canvas, ink, rng):
        if self._said.valid:
            _date_words(canvas, 38, self._row + 6.5, ink, rng)
            canvas.text(39, self._row + 6.5, self._said.valid, rng.choice(("ocr-b", "mono", "sans")), 3.2, ink)
        if self._said.holder:
            canvas.text(LEFT, 46.6, self._said.holder, rng.choice(("ocr-b", "mono", "sans")), 3.3, ink)


def _issuer_lines(said, rng):
    """The lines (text, size) by which the issuer names itself."""
    if said.type == "prepaid":
        return ()
    place = rng.choice(words.PLACES)
    if said.bank not in banks.BANKS:
        lines = ((said.bank, 4.2), (words.COOPERATIVE_ENGLISH, 2.2))
        return lines[:rng.randint(1, 2)]
    english, abbreviation = banks.BANKS[said.bank]
    form = bankcard.pick(rng, words.FORMS)
    name = place + said.bank if said.bank == words.RURAL_BANK else said.bank
    if form == "traditional" and said.bank in words.WRITTEN_TRADITIONALLY:
        name = name.translate(words.TRADITIONAL)
    if form == "english" and english:
        return ((english, 3.6),)
    if form == "both" and english:
        return ((name, 4.6), (english, 2.3))
    if form == "abbreviation" and abbreviation:
        return ((f"{abbreviation} {name}", 4.6),)
    if form == "abbreviation above" and abbreviation:
        return ((abbreviation, 5.0), (name, 3.4))
    return ((name, 4.8),)


def ink_on(canvas, left, top, right, bottom, rng):
    """An ink that is read on what lies there already, as printers choose it."""
    box = tuple(round(side * canvas.scale) for side in (left, top, right, bottom))
    level = np.asarray(canvas.image.crop(box).convert("L")).mean()
    return rng.choice(banks.INKS["dark" if level > BRIGHT else "light"])


def _cut(character, face, x, y, box, stretch, rng):
    """The lines of a character around a middle, a little off its place as punches wear."""
    width, height = box[0] * stretch[0], box[1] * stretch[1]
    place = (x - width / 2 + rng.gauss(0, DANCE), y - height / 2 + rng.gauss(0, DANCE))
    return [line + place for line in embossed_glyphs.strokes(character, face, width, height)]


def _stacked(canvas, x, y, lines, ink, anchor):
    """Small words above each other around a middle height."""
    for index, text in enumerate(lines):
        canvas.text(x, y + 2.0 * (index - (len(lines) - 1) / 2), text, "hei", 1.6, ink, anchor=anchor)


def _date_words(canvas, x, y, ink, rng):
    """What explains a date that begins at `x`: in front of it, above it, or both."""
    if rng.random() < 0.85:
        _stacked(canvas, x - 0.8, y, rng.choice(words.DATE_LABELS), ink, "r")
    if rng.random() < 0.6:
        canvas.text(x + 0.5, y - 2.9, rng.choice(words.MONTH_YEAR), "hei", 1.5, ink)
