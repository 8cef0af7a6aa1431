"""Security-print look: fine wavy lines over soft colour washes."""

import numpy as np
from PIL import Image


def _wash(u, v, stops):
    """Colours blended along u in 0..1 between equally spaced stops, bent a little by v."""
    position = np.clip(u + 0.08 * np.sin(2 * np.pi * v), 0, 1) * (len(stops) - 1)
    channels = [np.interp(position, range(len(stops)), [stop[c] for stop in stops]) for c in range(3)]
    return np.stack(channels, axis=-1)


def _waves(x, y, pitch, amplitude, wavelength, phase, slant):
    """Line coverage 0..1 of a family of parallel waves; lengths in millimetres."""
    position = (y + slant * x + amplitude * np.sin(2 * np.pi * x / wavelength + phase)) / pitch
    return np.clip(1.6 - 5.2 * np.abs(position % 1 - 0.5), 0, 1)


def _rosette(x, y, centre, radius, petals, pitch):
    """Line coverage of concentric petal lines that fade towards `radius`."""
    dx, dy = x - centre[0], y - centre[1]
    r, angle = np.hypot(dx, dy), np.arctan2(dy, dx)
    position = (r * (1 + 0.12 * np.cos(petals * angle))) / pitch
    lines = np.clip(1.6 - 5.2 * np.abs(position % 1 - 0.5), 0, 1)
    return lines * np.clip(1.4 - r / radius, 0, 1)


def background(width, height, pixels_per_mm, rng, stops, inks, rosettes):
    """An RGB picture: a wash of `stops`, wave families in `inks`, petal ornaments.

    `rosettes` holds (centre, radius, petals) in millimetres. `rng` (random.Random) varies the waves.
    """
    columns = (np.arange(round(width * pixels_per_mm), dtype=np.float32) + 0.5) / pixels_per_mm
    rows = (np.arange(round(height * pixels_per_mm), dtype=np.float32) + 0.5) / pixels_per_mm
    x, y = np.meshgrid(columns, rows)
    picture = _wash(x / width, y / height, stops)
    for ink in inks:
        lines = _waves(x, y, rng.uniform(0.8, 1.2), rng.uniform(1.0, 3.2), rng.uniform(14, 34),
                       rng.uniform(0, 6.28), rng.uniform(-0.12, 0.12))
        picture += (0.25 * lines)[..., None] * (np.array(ink) - picture)
    for centre, radius, petals in rosettes:
        lines = _rosette(x, y, centre, radius, petals, 0.9)
        picture += (0.28 * lines)[..., None] * (np.array(inks[0]) - picture)
    return Image.fromarray(np.clip(picture, 0, 255).astype(np.uint8))
