"""Number rows of real embossed digits: pictures of groups of four out of a folder, put on a drawn card.

A file is named after its digits ("6222a_0.png"); one with a blank ("_") is left out. A row is made of groups that look
alike, as those of one card do.
"""

import dataclasses
import functools
import pathlib
import random

import numpy as np
from PIL import Image

import bankcard

DIGITS = 4
# How many groups of similar colour the others of a row are drawn from.
ALIKE = 60
BEGINNINGS = ("4", "51", "52", "53", "54", "55", "62")
# A strip fades into the card over this share of its height.
FADE = 0.12


@dataclasses.dataclass(frozen=True)
class Group:
    """One picture (rows x columns x 3, 0..255) of four digits."""

    digits: str
    picture: np.ndarray

    def colour(self):
        return np.append(self.picture.mean(axis=(0, 1)), self.picture.std())


@functools.cache
def load(folder):
    """The groups of a folder in the order of their names; SystemExit when there are not enough."""
    paths = sorted(pathlib.Path(folder).glob("*.png"))
    groups = [Group(path.name[:DIGITS], np.asarray(Image.open(path).convert("RGB"), np.float32))
              for path in paths if path.name[:DIGITS].isdigit()]
    if not any(group.digits.startswith(BEGINNINGS) for group in groups) or len(groups) < DIGITS:
        raise SystemExit(f"cardgen: {folder}: expected pictures of groups named after their digits")
    return groups


def choose(groups, rng: random.Random):
    """Four groups that look alike and make a card number with a right check digit."""
    while True:
        first = rng.choice([group for group in groups
                            if group.digits.startswith(BEGINNINGS) and not group.digits.startswith(bankcard.HOTLINE_PREFIX)])
        alike = sorted(groups, key=lambda group: np.abs(group.colour() - first.colour()).sum())[:ALIKE]
        for _ in range(100):
            row = [first, *rng.sample(alike, 3)]
            digits = "".join(group.digits for group in row)
            if bankcard.check_digit(digits[:-1]) == digits[-1]:
                return row


def _strip(row, gap):
    """The groups beside each other; between them lies what joins their edges."""
    parts = [row[0].picture]
    for group in row[1:]:
        before, after = parts[-1][:, -3:].mean(axis=1), group.picture[:, :3].mean(axis=1)
        share = np.linspace(0, 1, gap)[None, :, None]
        parts += [before[:, None] * (1 - share) + after[:, None] * share, group.picture]
    return np.concatenate(parts, axis=1)


def paste(image, row, box):
    """Puts groups on a picture; `box` (left, top, right, bottom) in pixels holds the row, one pitch between groups."""
    strip = _strip(row, row[0].picture.shape[1] // DIGITS)
    left, top, right, bottom = (round(side) for side in box)
    size = (right - left, bottom - top)
    fade = max(1, round(FADE * size[1]))
    across, down = (np.minimum(np.arange(side), np.arange(side)[::-1]) for side in size)
    mask = np.clip(np.minimum.outer(down, across) / fade, 0, 1) * 255
    image.paste(Image.fromarray(strip.astype(np.uint8)).resize(size, Image.Resampling.BICUBIC), (left, top),
                Image.fromarray(mask.astype(np.uint8)))
