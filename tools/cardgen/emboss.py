"""Raised characters: plastic pushed up from behind, lit from the upper left, with or without foil on the tips."""

import dataclasses

import numpy as np
from PIL import Image

import desk

# The dark, middle and bright tone that foil takes with the angle of the light.
FOILS = {
    "silver": ((88, 90, 96), (190, 192, 197), (252, 252, 254)),
    "gold": ((112, 78, 26), (212, 172, 84), (255, 242, 190)),
}
# The plastic swells this far around a stroke before it is flat again, in millimetres.
SWELL_MM = 0.17
SHADOW_MM = 0.22
# A slope this steep, in heights a millimetre, turns fully to the light.
FULL_SLOPE = 2.8
# Reach of the relief around a character.
MARGIN_MM = 1.5

# Digits as a card embosser cuts them, in a box of 1 x 1 from the top left: strokes of (curved, points).
DIGITS = {
    "0": ((True, ((0.5, 0), (0.9, 0.1), (1, 0.32), (1, 0.68), (0.9, 0.9), (0.5, 1), (0.1, 0.9), (0, 0.68), (0, 0.32),
                  (0.1, 0.1), (0.5, 0))),),
    "1": ((False, ((0.2, 0.16), (0.54, 0), (0.54, 1))), (False, ((0.16, 1), (0.92, 1)))),
    "2": ((True, ((0, 0.22), (0.14, 0.06), (0.5, 0), (0.88, 0.07), (1, 0.27), (0.86, 0.47), (0.44, 0.66), (0.1, 0.84),
                  (0, 1))), (False, ((0, 1), (1, 1)))),
    "3": ((True, ((0, 0.12), (0.2, 0.03), (0.5, 0), (0.84, 0.06), (0.95, 0.24), (0.8, 0.41), (0.4, 0.46))),
          (True, ((0.4, 0.46), (0.82, 0.52), (1, 0.72), (0.86, 0.93), (0.5, 1), (0.16, 0.96), (0, 0.84)))),
    "4": ((False, ((0.42, 0), (0, 0.64), (1, 0.64))), (False, ((0.74, 0.36), (0.74, 1)))),
    "5": ((False, ((0.92, 0), (0.1, 0), (0.06, 0.44))),
          (True, ((0.06, 0.44), (0.5, 0.38), (0.88, 0.47), (1, 0.69), (0.86, 0.92), (0.46, 1), (0.12, 0.95),
                  (0, 0.84)))),
    "6": ((True, ((0.86, 0.03), (0.5, 0.1), (0.14, 0.36), (0, 0.68), (0.14, 0.92), (0.5, 1), (0.87, 0.91), (1, 0.7),
                  (0.86, 0.49), (0.5, 0.42), (0.16, 0.5), (0.01, 0.68))),),
    "7": ((False, ((0, 0.16), (0, 0), (1, 0))), (True, ((1, 0), (0.78, 0.26), (0.5, 0.6), (0.4, 1)))),
    "8": ((True, ((0.5, 0), (0.83, 0.06), (0.93, 0.23), (0.8, 0.4), (0.5, 0.46), (0.2, 0.4), (0.07, 0.23), (0.17, 0.06),
                  (0.5, 0))),
          (True, ((0.5, 0.46), (0.87, 0.54), (1, 0.73), (0.86, 0.93), (0.5, 1), (0.14, 0.93), (0, 0.73), (0.13, 0.54),
                  (0.5, 0.46)))),
    "9": ((True, ((0.14, 0.97), (0.5, 0.9), (0.86, 0.64), (1, 0.32), (0.86, 0.08), (0.5, 0), (0.13, 0.09), (0, 0.3),
                  (0.14, 0.51), (0.5, 0.58), (0.84, 0.5), (0.99, 0.32))),),
}


@dataclasses.dataclass(frozen=True)
class Relief:
    """How raised characters look."""

    foil: str  # of FOILS
    wear: float  # share of the foil that is rubbed off, 0..1
    depth: float  # strength of highlight and shadow; 1 is a fresh card
    streak: float  # how much the foil's brightness varies along the card, 0..1
    seed: int


def curve(points, steps=8):
    """A smooth line through the points (Catmull and Rom, 1974)."""
    p = np.array(points, float)
    closed = np.allclose(p[0], p[-1])
    before, after = (p[-2], p[1]) if closed else (2 * p[0] - p[1], 2 * p[-1] - p[-2])
    p = np.vstack([before, p, after])
    t = np.linspace(0, 1, steps, endpoint=False)[:, None]
    parts = [0.5 * (2 * b + (c - a) * t + (2 * a - 5 * b + 4 * c - d) * t ** 2 + (3 * b - a - 3 * c + d) * t ** 3)
             for a, b, c, d in zip(p, p[1:], p[2:], p[3:])]
    return np.vstack([*parts, p[-2]])


def digit(canvas, character, left, top, width, height, stroke, colour):
    """Draws one of DIGITS; the box holds the middle lines of the strokes."""
    for curved, points in DIGITS[character]:
        path = curve(points) if curved else np.array(points, float)
        path = path * (width, height) + (left, top)
        canvas.line([tuple(point) for point in path], colour, stroke)
        for x, y in (path[0], path[-1]):
            canvas.ellipse(x, y, stroke / 2, stroke / 2, colour)


def _blur(field, sigma):
    """A Gaussian blur of a float picture, without the steps that eight bits would leave in slopes."""
    reach = max(1, round(3 * sigma))
    weights = np.exp(-0.5 * (np.arange(-reach, reach + 1) / sigma) ** 2)
    weights = (weights / weights.sum()).astype(np.float32)
    for axis in (0, 1):
        padded = np.pad(field, [(reach, reach) if axis == a else (0, 0) for a in (0, 1)], "edge")
        length = field.shape[axis]
        field = sum(w * padded.take(range(i, i + length), axis) for i, w in enumerate(weights))
    return field


def _tones(position, tones):
    channels = [np.interp(position, (0, 0.5, 1), [tone[c] for tone in tones]) for c in range(3)]
    return np.stack(channels, axis=-1)


def raise_characters(picture, mask, scale, relief):
    """Raises what is white in `mask` (grey, of the size of `picture`) out of the RGB picture, in place."""
    box = mask.getbbox()
    if not box:
        return
    margin = round(MARGIN_MM * scale)
    box = (max(0, box[0] - margin), max(0, box[1] - margin),
           min(picture.width, box[2] + margin), min(picture.height, box[3] + margin))
    strokes = np.asarray(mask.crop(box), np.float32) / 255
    pixels = np.asarray(picture.crop(box), np.float32)
    rng = np.random.default_rng(relief.seed)
    height = _blur(np.clip(2.1 * _blur(strokes, SWELL_MM * scale), 0, 1), 0.07 * scale)
    lit = _lit(height, scale)
    shaded = _shade_plastic(pixels, height, lit, relief.depth, scale)
    cover = np.clip(1.5 * _blur(strokes, 0.045 * scale) - 0.25, 0, 1) * _left_by_wear(strokes.shape, scale, relief, rng)
    rows, columns = strokes.shape
    streak = relief.streak * desk.smooth_noise(rng, rows, columns, rows / scale / 6, columns / scale / 16)
    foil = _tones(np.clip(0.56 + 0.42 * relief.depth * lit + 0.34 * streak, 0, 1), FOILS[relief.foil])
    result = shaded + cover[..., None] * (foil - shaded)
    picture.paste(Image.fromarray(np.clip(result, 0, 255).astype(np.uint8)), box[:2])


def _lit(height, scale):
    """How much the slope turns to the light at the upper left, about -1..1."""
    down, right = np.gradient(height)
    return np.clip((down + right) * scale / FULL_SLOPE, -1, 1)


def _shade_plastic(pixels, height, lit, depth, scale):
    """The plastic with its bright flanks, dark flanks and the shadow it casts to the lower right."""
    reach = max(1, round(SHADOW_MM * scale))
    shadow = np.zeros_like(height)
    shadow[reach:, reach:] = height[:-reach, :-reach]
    dark = 1 - depth * (0.55 * np.clip(-lit, 0, 1) + 0.22 * np.clip(shadow - height, 0, 1))
    bright = 0.5 * depth * np.clip(lit, 0, 1)
    return pixels * dark[..., None] + bright[..., None] * (255 - pixels * dark[..., None])


def _left_by_wear(shape, scale, relief, rng):
    """The share of foil that is left at every pixel: patches rubbed off, with grainy borders."""
    if relief.wear <= 0:
        return 1.0
    rows, columns = shape
    patches = desk.smooth_noise(rng, rows, columns, rows / scale / 1.3, columns / scale / 2.2)
    grain = desk.smooth_noise(rng, rows, columns, rows / scale / 0.22, columns / scale / 0.22)
    field = 0.6 * patches + 0.4 * grain
    threshold = np.quantile(field, relief.wear)
    return np.clip(0.5 + 5 * (field - threshold), 0.04, 1)
