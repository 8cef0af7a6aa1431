"""Raised characters as a camera sees them: a height field, lit by lamps from any side, mirrored in foil or bare.

Slopes turn the plastic to or from the light, and foil mirrors the room (Blinn and Newell's environment map, 1976).
"""

import dataclasses
import math

import numpy as np
from PIL import Image

import desk

# The dark, middle and bright tone of what foil mirrors.
FOILS = {"silver": ((30, 31, 35), (158, 160, 165), (253, 253, 254)),
         "gold": ((66, 46, 22), (196, 158, 84), (255, 244, 204))}
# Reach of a character beyond its middle lines, in millimetres.
MARGIN_MM = 1.0


@dataclasses.dataclass(frozen=True)
class Lamp:
    """A bright spot of the room, seen in a mirror that leans this far to the right and down."""

    right: float
    down: float
    width: float
    strength: float


@dataclasses.dataclass(frozen=True)
class Relief:
    """How one card's raised characters look."""

    foil: str | None  # of FOILS, or None for bare plastic
    tint: tuple  # factors of the foil's channels
    bottom: float  # foil lies above this share of the height: near 1 it is left on the tips only
    wear: float  # share of the foil that is rubbed off, 0..1
    bald: float  # how much of the foil is rubbed off the very tips, 0..1
    top: float  # half the width of a stroke's flat top, in millimetres
    flank: float  # width of the slope beside it
    rise: float  # height in millimetres
    gloss: float  # of the plastic, 0..1
    ambient: float  # share of the light that comes from everywhere
    lamps: tuple
    haze: tuple  # brightness of the room between the lamps, and how much it grows to the right and down
    lean: tuple  # how far the flat card leans to the right and down in the mirror's measure
    bend: tuple  # how much more it leans from end to end
    seed: int


def _room(rng):
    """One to three lamps; the first is the strongest."""
    angle = rng.uniform(0, 2 * math.pi)
    lamps = []
    for strength in (rng.uniform(0.7, 1.5), rng.uniform(0, 0.9), rng.uniform(0, 0.7)):
        reach = rng.uniform(0.3, 1.0)
        lamps.append(Lamp(reach * math.cos(angle), reach * math.sin(angle), rng.uniform(0.12, 0.45), strength))
        angle += rng.uniform(1.2, 4.5)
    return tuple(lamps)


def choose(look, rng):
    """The relief of a card of that look; `rng` is a random.Random."""
    worn = look == "worn"
    return Relief(
        foil={"bare": None, "worn": rng.choice(list(FOILS))}.get(look, look),
        tint=tuple(rng.uniform(0.86, 1.06) for _ in range(3)),
        bottom=rng.uniform(0.4, 0.85) if worn else rng.uniform(0.1, 0.7),
        wear=rng.uniform(0.25, 0.75) if worn else rng.choice((0, 0, rng.uniform(0, 0.25))),
        bald=rng.uniform(0, 0.9) if worn else rng.choice((0, 0, rng.uniform(0, 0.5))),
        top=rng.uniform(0.07, 0.19), flank=rng.uniform(0.2, 0.34), rise=rng.uniform(0.14, 0.42),
        gloss=rng.uniform(0.45 if look == "bare" else 0.25, 0.95), ambient=rng.uniform(0.1, 0.6), lamps=_room(rng),
        haze=(rng.uniform(0.05, 0.45), rng.uniform(-0.25, 0.25), rng.uniform(-0.25, 0.25)),
        lean=(rng.uniform(-0.25, 0.25), rng.uniform(-0.25, 0.25)),
        bend=(rng.uniform(-0.35, 0.35), rng.uniform(-0.35, 0.35)), seed=rng.getrandbits(32))


def _distance(x, y, line):
    """Of every pixel from a line, the nearest of its parts."""
    nearest = np.full(np.broadcast(x, y).shape, np.inf, np.float32)
    for (x0, y0), (x1, y1) in zip(line, line[1:]):
        dx, dy = x1 - x0, y1 - y0
        along = np.clip(((x - x0) * dx + (y - y0) * dy) / max(dx * dx + dy * dy, 1e-9), 0, 1)
        np.minimum(nearest, np.hypot(x - x0 - along * dx, y - y0 - along * dy), out=nearest)
    return nearest


def heights(lines, size, scale, relief):
    """The height field 0..1 (rows x columns) of lines in millimetres."""
    columns, rows = size
    field = np.zeros((rows, columns), np.float32)
    for line in lines:
        low = np.maximum(((line.min(axis=0) - MARGIN_MM) * scale).astype(int), 0)
        high = np.minimum(((line.max(axis=0) + MARGIN_MM) * scale).astype(int) + 1, (columns, rows))
        if (high <= low).any():
            continue
        x = (np.arange(low[0], high[0], dtype=np.float32)[None, :] + 0.5) / scale
        y = (np.arange(low[1], high[1], dtype=np.float32)[:, None] + 0.5) / scale
        part = np.clip((relief.top + relief.flank - _distance(x, y, line)) / relief.flank, 0, 1)
        window = field[low[1]:high[1], low[0]:high[0]]
        np.maximum(window, part * part * (3 - 2 * part), out=window)
    return field


def _mirrored(relief, right, down):
    """How bright the room is that a mirror leaning so far shows."""
    bright = relief.haze[0] + relief.haze[1] * right + relief.haze[2] * down
    for lamp in relief.lamps:
        away = (right - lamp.right) ** 2 + (down - lamp.down) ** 2
        bright = bright + lamp.strength * np.exp(-away / (2 * lamp.width ** 2))
    return bright


def _foil_left(height, scale, relief, rng):
    """The share of foil at every pixel: the upper part of the relief, less what is rubbed off in patches."""
    cover = np.clip((height - relief.bottom) / 0.12 + 0.5, 0, 1) * (height > 0.02)
    cover = cover * (1 - relief.bald * np.clip((height - 0.93) / 0.06, 0, 1))
    if relief.wear:
        rows, columns = height.shape
        patches = desk.smooth_noise(rng, rows, columns, rows / scale / 1.1, columns / scale / 1.8)
        grain = desk.smooth_noise(rng, rows, columns, rows / scale / 0.2, columns / scale / 0.2)
        field = 0.6 * patches + 0.4 * grain
        cover = cover * np.clip(0.5 + 5 * (field - np.quantile(field, relief.wear)), 0.02, 1)
    return cover


def emboss(picture, lines, scale, relief):
    """Raises the lines (a list of n x 2, millimetres) out of the RGB picture, in place."""
    if not lines:
        return
    points = np.vstack(lines)
    low = np.maximum(((points.min(axis=0) - MARGIN_MM) * scale).astype(int), 0)
    high = np.minimum(((points.max(axis=0) + MARGIN_MM) * scale).astype(int), picture.size)
    height = heights([line - low / scale for line in lines], high - low, scale, relief)
    pixels = np.asarray(picture.crop((*low, *high)), np.float32)
    slope_y, slope_x = (relief.rise * scale * slope for slope in np.gradient(height))
    up = 1 / np.sqrt(1 + slope_x ** 2 + slope_y ** 2)
    across = np.linspace(-0.5, 0.5, height.shape[1], dtype=np.float32)[None, :]
    flat = tuple(lean + bend * across for lean, bend in zip(relief.lean, relief.bend))
    shown = _mirrored(relief, flat[0] - 2 * up * up * slope_x, flat[1] - 2 * up * up * slope_y)
    result = _plastic(pixels, (slope_x, slope_y, up), shown - _mirrored(relief, *flat), relief)
    if relief.foil:
        stops = np.array(FOILS[relief.foil]) * relief.tint
        tone = np.clip(shown, 0, 1)
        foil = np.stack([np.interp(tone, (0, 0.5, 1), stops[:, c]) for c in range(3)], axis=-1)
        left = _foil_left(height, scale, relief, np.random.default_rng(relief.seed))
        result += left[..., None] * (foil - result)
    picture.paste(Image.fromarray(np.clip(result, 0, 255).astype(np.uint8)), tuple(low))


def _plastic(pixels, slopes, glint, relief):
    """The bare plastic: its own colour by the light that meets each slope, and the glint of the lamps on it."""
    slope_x, slope_y, up = slopes
    lamp = relief.lamps[0]
    turned = up * (1 - lamp.right * slope_x - lamp.down * slope_y)
    lit = relief.ambient + (1 - relief.ambient) * np.clip(turned, 0, 2.2)
    shaded = pixels * lit[..., None]
    return shaded + (relief.gloss * np.clip(glint, 0, 1))[..., None] * (255 - np.minimum(shaded, 255))
