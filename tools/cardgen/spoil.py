"""Photos with one fault so severe that a person would warn of it.

A fault changes what the camera looks at and how (`before`), or the picture that it has taken (`after`). Lengths are in
millimetres of the card, so that a fault is as severe at every resolution.
"""

import dataclasses
import math

import numpy as np
from PIL import Image

import camera
import desk
import scene

# Of a lens out of focus (Gaussian sigma) and of a hand that moved: strokes of small print are 0.2 mm wide.
DEFOCUS, SHAKE = (0.28, 0.5), (1.0, 2.0)
# Exposure, and the noise that comes with it.
DARK_GAIN, DARK_NOISE = (0.08, 0.2), (3.0, 8.0)
# Share of the card's levels that become white.
LOST_SHARE = (45, 75)
# A lamp's mirror image that hides everything at its middle.
BLINDING = (600, 1400)
# Width of the card in pixels.
SMALL_WIDTH = (150, 280)
# Share of the card beyond the picture's edge.
BEYOND = (0.1, 0.3)
# A display's dots: their pitch in pixels of the picture, how deep the gaps between them are, and by how much the gaps
# of red and blue lie beside those of green.
DOT_PITCH, GAP_DEPTH, PRIMARY_SHIFT = (1.2, 5.0), (0.1, 0.25), 1 / 3


@dataclasses.dataclass(frozen=True)
class Shot:
    """What the camera looks at and how."""

    subject: object
    pose: camera.Pose
    sensor: camera.Sensor

    @property
    def corners(self):
        return camera.project(self.pose.homography(), camera.rectangle(self.subject.width, self.subject.height))

    @property
    def dots_per_mm(self):
        return math.dist(*self.corners[:2]) / self.subject.width


class _Copy:
    """A subject without its colours."""

    def __init__(self, subject):
        self._subject = subject

    def __getattr__(self, name):
        return getattr(self._subject, name)

    def draw(self, pixels_per_mm):
        return self._subject.draw(pixels_per_mm).convert("L").convert("RGB")


def _with_sensor(shot, **changes):
    return dataclasses.replace(shot, sensor=dataclasses.replace(shot.sensor, **changes))


def _blurred(shot, rng):
    if rng.random() < 0.5:
        return _with_sensor(shot, blur=shot.dots_per_mm * rng.uniform(*DEFOCUS))
    angle, length = rng.uniform(0, math.pi), shot.dots_per_mm * rng.uniform(*SHAKE)
    return _with_sensor(shot, motion=(length * math.cos(angle), length * math.sin(angle)))


def _dark(shot, rng):
    return _with_sensor(shot, gain=rng.uniform(*DARK_GAIN), noise=rng.uniform(*DARK_NOISE))


def _cut_off(shot, rng):
    low, high = shot.corners.min(axis=0), shot.corners.max(axis=0)
    axis, beyond = int(rng.integers(2)), rng.uniform(*BEYOND)
    shift = np.array(shot.pose.shift)
    outside = beyond * (high - low)[axis]
    shift[axis] += -outside - low[axis] if rng.random() < 0.5 else shot.pose.size[axis] + outside - high[axis]
    return dataclasses.replace(shot, pose=dataclasses.replace(shot.pose, shift=tuple(shift)))


def _copied(shot, rng):
    return dataclasses.replace(shot, subject=_Copy(shot.subject)) if rng.random() < 0.5 else shot


def _grey_copy(picture, shot, _rng):
    return picture if isinstance(shot.subject, _Copy) else picture.convert("L").convert("RGB")


def _glare(picture, shot, rng):
    scene.mirror_lamp(picture, shot.corners, rng, BLINDING)
    return picture


def _overexposed(picture, shot, rng):
    low, high = shot.corners.min(axis=0), shot.corners.max(axis=0)
    colours = np.asarray(picture.crop([int(v) for v in (*low, *high)]))
    # Two channels lost, or strong colours remain what they are.
    levels = np.sort(colours, axis=2)[..., 1]
    gain = 275 / max(1, np.percentile(levels, 100 - rng.uniform(*LOST_SHARE)))
    return picture.point([min(255, round(gain * level)) for level in range(256)] * 3)


def _too_small(picture, shot, rng):
    scale = rng.uniform(*SMALL_WIDTH) / (shot.dots_per_mm * shot.subject.width)
    return picture.resize([round(side * scale) for side in picture.size], Image.Resampling.BICUBIC, reducing_gap=3)


def _screen(picture, shot, rng):
    """The gaps between a display's dots, as many as the pitch says, seen in the perspective of the card."""
    per_mm = shot.dots_per_mm / rng.uniform(*DOT_PITCH)
    y, x = np.mgrid[0:picture.height, 0:picture.width].astype(np.float32)
    matrix = np.linalg.inv(shot.pose.homography()).astype(np.float32)
    across, down, away = (row[0] * x + row[1] * y + row[2] for row in matrix)
    depth, pixels = rng.uniform(*GAP_DEPTH), np.asarray(picture, np.float32).copy()
    rows = 1 + depth * np.cos(2 * math.pi * per_mm * down / away)
    for channel in range(3):
        columns = 1 + depth * np.cos(2 * math.pi * (per_mm * across / away + (channel - 1) * PRIMARY_SHIFT))
        pixels[..., channel] *= rows * columns
    return Image.fromarray(np.clip(pixels, 0, 255).astype(np.uint8))


# Warning -> what is changed before the picture is taken, what afterwards.
FAULTS = {
    "blurred": (_blurred, None), "glare": (None, _glare), "dark": (_dark, None), "overexposed": (None, _overexposed),
    "too_small": (None, _too_small), "cut_off": (_cut_off, None), "grey_copy": (_copied, _grey_copy),
    "screen": (None, _screen),
}


def photograph(subject, warning, rng, size=None):
    """The JPEG bytes of the subject at level photo, but for the fault that asks for `warning`."""
    size = size or scene.choose_size(rng)
    kind = desk.pick_kind(rng)
    pose, light = scene.choose_pose(subject, "photo", size, rng), scene.choose_light("photo", rng)
    shot = Shot(subject, pose, scene.choose_sensor("photo", size, rng)[0])
    before, after = FAULTS[warning]
    shot = before(shot, rng) if before else shot
    picture = scene.shoot(shot.subject, kind, shot.pose, light, shot.sensor, rng)
    picture = after(picture, shot, rng) if after else picture
    return camera.jpeg(picture, shot.sensor.quality)
