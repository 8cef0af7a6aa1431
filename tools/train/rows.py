"""What the reader of digit rows learns from: rows of real groups, drawn rows, and rows without a digit.

Every sample is a row of grey pixels 32 high and the digits on it. A real group is a picture of four characters named
after them ("6222a_0.png", "_" a blank). Drawn rows come from the card generator.
"""

import dataclasses
import multiprocessing
import pathlib
import random
import sys

import cv2
import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "cardgen"))

import lifelike_card  # noqa: E402

CHARACTERS, HEIGHT = 4, 32
PIXELS_PER_MM = 8.5
# How many kinds of look the groups are sorted into by colour: cards of one look must not be on both sides of a fold.
LOOKS = 40
# Widths of the rows that are learned from: one group, and a whole number with what lies beside it.
NARROW, WIDE = 128, 512


@dataclasses.dataclass(frozen=True)
class Strip:
    """A picture (BGR) of a row of digits; `digits` may be empty."""

    picture: np.ndarray
    digits: str


def load_groups(folder):
    paths = sorted(pathlib.Path(folder).glob("*.png"))
    return [Strip(cv2.imread(str(path)), path.name[:CHARACTERS].replace("_", "")) for path in paths]


def _colours(groups):
    lab = [cv2.cvtColor(group.picture, cv2.COLOR_BGR2LAB).reshape(-1, 3).astype(np.float32) for group in groups]
    return np.array([np.concatenate([c.mean(axis=0), c.std(axis=0)]) for c in lab], np.float32)


def folds(groups, count, seed):
    """The numbers of the groups in `count` parts, those of one look in the same part."""
    cv2.setRNGSeed(seed)
    criteria = (cv2.TERM_CRITERIA_MAX_ITER, 100, 0)
    _, looks, _ = cv2.kmeans(_colours(groups), LOOKS, None, criteria, 10, cv2.KMEANS_PP_CENTERS)
    parts = [[] for _ in range(count)]
    members = [np.flatnonzero(looks.ravel() == look) for look in range(LOOKS)]
    for numbers in sorted(members, key=len, reverse=True):
        min(parts, key=len).extend(int(number) for number in numbers)
    return parts


class _Recorder(lifelike_card.LifelikeCard):
    """A drawn card that tells where its number stands."""

    def extent(self):
        xs = [x for _, x, _ in self.cells()]
        return xs[0] - 1.8, xs[-1] + 1.8, self._row


def _draw(seed):
    """A drawn row with something of the card around it, and windows of the same card that show no digit."""
    rng = random.Random(seed)
    look = rng.choice(("silver", "gold", "worn", "worn", "bare", "bare"))
    said = lifelike_card.account(look, rng)
    card = _Recorder(said, look, rng)
    flat = cv2.cvtColor(np.asarray(card.draw(PIXELS_PER_MM)), cv2.COLOR_RGB2BGR)
    left, right, row = card.extent()

    def window(left, right, middle, height):
        x0, x1, y0, y1 = (max(0, round(v * PIXELS_PER_MM)) for v in
                          (left, right, middle - height / 2, middle + height / 2))
        return flat[y0:y1, x0:x1].copy()

    strips = [Strip(window(max(0, left - rng.choice((0.3, 2, 8))), right + rng.choice((0.3, 2, 8)), row, 7.0),
                    said.digits)]
    for middle in (rng.uniform(5, 12), rng.uniform(13, 24), rng.uniform(46, 47)):
        start = rng.uniform(0, 30)
        strips.append(Strip(window(start, rng.uniform(start + 20, 85.6), middle, rng.uniform(4.2, 7)), ""))
    return strips


def drawn(count, seed):
    """Rows of `count` drawn cards and, apart, windows without a digit."""
    with multiprocessing.Pool() as pool:
        cards = pool.map(_draw, [f"{seed} {index}" for index in range(count)], chunksize=4)
    return [strips[0] for strips in cards], [strip for strips in cards for strip in strips[1:]]


def _joined(groups, rng):
    """Groups beside each other, as on a card; between them lies what joins their edges."""
    gap = int(rng.uniform(0.5, 1.2) * groups[0].picture.shape[1] / CHARACTERS)
    parts = [groups[0].picture]
    for group in groups[1:]:
        before, after = parts[-1][:, -3:].mean(axis=1), group.picture[:, :3].mean(axis=1)
        share = np.linspace(0, 1, gap)[None, :, None]
        parts += [(before[:, None] * (1 - share) + after[:, None] * share).astype(np.uint8), group.picture]
    return Strip(np.hstack(parts), "".join(group.digits for group in groups))


def _on_ground(strip, ground, rng):
    """A strip in front of a longer window without digits, its ends faded."""
    height, width = strip.picture.shape[:2]
    room = int(rng.uniform(0.2, 3.0) * height)
    background = cv2.resize(ground.picture, (width + 2 * room, height))
    start = int(rng.integers(0, 2 * room + 1))
    fade = np.clip(np.minimum(np.arange(width), np.arange(width)[::-1]) / 4, 0, 1)[None, :, None]
    part = background[:, start:start + width]
    part[:] = (strip.picture * fade + part * (1 - fade)).astype(np.uint8)
    return Strip(background, strip.digits)


def _grey(picture, rng):
    weights = rng.dirichlet((3, 5, 2)) if rng.random() < 0.5 else np.array((0.114, 0.587, 0.299))
    return (picture.astype(np.float32) * weights).sum(axis=2)


def _cut(strip, width, tightness, rng):
    """The strip cut, bent and soiled as cameras and finders do, 32 high and `width` wide."""
    grey = _grey(strip.picture, rng)
    rows, columns = grey.shape
    high = rows * rng.uniform(*tightness)
    scale_y = HEIGHT / high
    wide = min(width, columns * scale_y * rng.uniform(0.85, 1.2))
    scale_x, turn, lean = wide / columns, np.deg2rad(rng.normal(0, 0.7)), rng.normal(0, 0.06)
    turn *= min(1.0, 4 * rows / columns)
    shift_y = rng.normal(0, 0.05) * HEIGHT
    shift_x = rng.uniform(0, width - wide)
    place = np.array([[scale_x, scale_y * lean, 0], [scale_x * np.tan(turn), scale_y, 0]], np.float32)
    middle = place[:, :2] @ (columns / 2, rows / 2)
    place[:, 2] = (shift_x + wide / 2 - middle[0], HEIGHT / 2 + shift_y - middle[1])
    if scale_y < 0.8:
        grey = cv2.GaussianBlur(grey, (0, 0), 0.4 / scale_y)
    row = cv2.warpAffine(grey, place, (width, HEIGHT), flags=cv2.INTER_LINEAR,
                         borderMode=cv2.BORDER_REFLECT_101 if not strip.digits else cv2.BORDER_REPLICATE)
    if rng.random() < 0.5:
        row = cv2.GaussianBlur(row, (0, 0), rng.uniform(0.3, 1.1))
    if rng.random() < 0.2:
        small = cv2.resize(row, None, fx=rng.uniform(0.5, 0.9), fy=rng.uniform(0.5, 0.9), interpolation=cv2.INTER_AREA)
        row = cv2.resize(small, (width, HEIGHT))
    if rng.random() < 0.5:
        light = cv2.resize(rng.normal(1, 0.25, (2, 6)).astype(np.float32), (width, HEIGHT), interpolation=cv2.INTER_CUBIC)
        row = row * light
    row = row + rng.normal(0, rng.uniform(0, 8), row.shape)
    if rng.random() < 0.3:
        row = 255 - row
    return normalised(row)


def normalised(row):
    """Mean 0, deviation 1."""
    row = row.astype(np.float32)
    return (row - row.mean()) / (row.std() + 4)


# How much of a strip's height a cut shows. Real groups are tight already, drawn rows have room around them.
REAL_TIGHTNESS, DRAWN_TIGHTNESS, EMPTY_TIGHTNESS = (0.72, 1.12), (0.62, 0.95), (0.6, 1.0)


def narrow(groups, rng):
    return _cut(group := groups[rng.integers(len(groups))], NARROW, REAL_TIGHTNESS, rng), group.digits


def wide(groups, rows, empty, rng):
    draw = rng.random()
    if draw < 0.15:
        return _cut(empty[rng.integers(len(empty))], WIDE, EMPTY_TIGHTNESS, rng), ""
    if draw < 0.55:
        strip = rows[rng.integers(len(rows))]
        return _cut(strip, WIDE, DRAWN_TIGHTNESS, rng), strip.digits
    strip = _joined([groups[rng.integers(len(groups))] for _ in range(rng.choice((3, 4, 4, 4, 5)))], rng)
    if rng.random() < 0.6:
        strip = _on_ground(strip, empty[rng.integers(len(empty))], rng)
    return _cut(strip, WIDE, REAL_TIGHTNESS, rng), strip.digits


def batch(samples):
    """Rows (n x 32 x width x 1), labels (digit + 1, padded with 0) and their lengths."""
    rows, texts = zip(*samples)
    labels = np.zeros((len(texts), max(1, max(map(len, texts)))), np.int32)
    for row, text in enumerate(texts):
        labels[row, :len(text)] = [int(character) + 1 for character in text]
    return np.stack(rows).astype(np.float32)[..., None], labels, np.array([len(text) for text in texts], np.int32)
