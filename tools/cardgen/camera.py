"""The camera: where it stands over the desk (a pinhole model) and what its lens and sensor do to a picture.

The desk is the plane z = 0 in millimetres, origin in the middle of the card, x to the right, y down.
"""

import dataclasses
import io
import math

import numpy as np
from PIL import Image, ImageFilter


@dataclasses.dataclass(frozen=True)
class Pose:
    """A camera position. Angles in degrees; distances in millimetres; shifts in pixels of the picture."""

    size: tuple  # width and height of the picture in pixels
    focal: float  # focal length in pixels
    distance: float  # from the camera to the middle of the card
    roll: float  # turn of the card in the picture
    pitch: float  # tilt about the horizontal axis
    yaw: float  # tilt about the vertical axis
    shift: tuple = (0.0, 0.0)
    turn: float = 0.0  # of the whole picture, clockwise

    def turned(self, turn):
        """The camera that takes the same picture turned, and as much more of the desk as fills its corners."""
        about = _about_axis(turn)[:2, :2]
        size = tuple(int(side) for side in np.round(np.abs(about) @ self.size))
        return dataclasses.replace(self, size=size, shift=tuple(about @ self.shift), turn=turn)

    def homography(self):
        """The 3 x 3 matrix that takes desk millimetres to picture pixels (Hartley and Zisserman, 2004, ch. 8)."""
        pitch, yaw = math.radians(self.pitch), math.radians(self.yaw)
        about_x = np.array([[1, 0, 0], [0, math.cos(pitch), -math.sin(pitch)], [0, math.sin(pitch), math.cos(pitch)]])
        about_y = np.array([[math.cos(yaw), 0, math.sin(yaw)], [0, 1, 0], [-math.sin(yaw), 0, math.cos(yaw)]])
        rotation = _about_axis(self.turn) @ about_x @ about_y @ _about_axis(self.roll)
        pose = np.column_stack([rotation[:, 0], rotation[:, 1], (0, 0, self.distance)])
        middle = (self.size[0] / 2 + self.shift[0], self.size[1] / 2 + self.shift[1])
        intrinsics = np.array([[self.focal, 0, middle[0]], [0, self.focal, middle[1]], [0, 0, 1]])
        return intrinsics @ pose


def _about_axis(degrees):
    """The 3 x 3 rotation about the camera's axis, clockwise in the picture."""
    cosine, sine = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    return np.array([[cosine, -sine, 0], [sine, cosine, 0], [0, 0, 1]])


def project(matrix, points):
    """Points (n x 2) through a homography."""
    homogeneous = np.column_stack([np.asarray(points, float), np.ones(len(points))]) @ matrix.T
    return homogeneous[:, :2] / homogeneous[:, 2:]


def rectangle(width, height):
    """Corners of a rectangle around the origin: top left, top right, bottom right, bottom left."""
    return np.array([[-1, -1], [1, -1], [1, 1], [-1, 1]]) * (width / 2, height / 2)


def warp(picture, matrix, size, offset=(0, 0), resample=Image.Resampling.BICUBIC):
    """`picture` through `matrix` (its pixels to output pixels) into a window of `size` at `offset`."""
    window = np.array([[1, 0, -offset[0]], [0, 1, -offset[1]], [0, 0, 1]]) @ matrix
    inverse = np.linalg.inv(window)
    inverse /= inverse[2, 2]
    return picture.transform(size, Image.Transform.PERSPECTIVE, inverse.ravel()[:8], resample)


@dataclasses.dataclass(frozen=True)
class Sensor:
    """What lens, exposure and coding do. Defaults leave a picture as it is."""

    blur: float = 0.0  # Gaussian sigma in pixels
    motion: tuple = (0.0, 0.0)  # path of the shake in pixels
    gain: float = 1.0  # exposure, applied to coded values
    white: tuple = (1.0, 1.0, 1.0)  # per channel
    noise: float = 0.0  # standard deviation in levels
    quality: int = 92  # of the JPEG


def expose(picture, light, sensor, rng):
    """The picture under `light` (rows x columns x 3, any small size, multiplied) as the sensor records it.

    `rng` is a numpy generator. Works strip by strip so that large pictures stay cheap.
    """
    if any(abs(step) >= 0.5 for step in sensor.motion):
        picture = _shake(picture, sensor.motion)
    if sensor.blur > 0.05:
        picture = picture.filter(ImageFilter.GaussianBlur(sensor.blur))
    width, height = picture.size
    gains = np.array(sensor.white, np.float32) * np.float32(sensor.gain)
    channels = [Image.fromarray(light[..., c].astype(np.float32) * gains[c]) for c in range(3)]
    field = [channel.resize((width, height), Image.Resampling.BICUBIC) for channel in channels]
    pixels = np.asarray(picture)
    grain = rng.standard_normal((512, 512 + width, 3), dtype=np.float32) * np.float32(sensor.noise)
    exposed = np.empty_like(pixels)
    for top in range(0, height, 512):
        rows = slice(top, min(top + 512, height))
        strip = pixels[rows].astype(np.float32)
        for c in range(3):
            strip[..., c] *= np.asarray(field[c].crop((0, rows.start, width, rows.stop)))
        start = int(rng.integers(0, 512))
        strip += grain[: rows.stop - rows.start, start : start + width]
        np.clip(strip, 0, 255, out=strip)
        exposed[rows] = strip.astype(np.uint8)
    return Image.fromarray(exposed)


def _shake(picture, path):
    """Averages copies along a straight path: a hand that moved during the exposure."""
    steps = max(3, int(math.hypot(*path)) + 1)
    reach = math.ceil(math.hypot(*path) / 2)
    padded = Image.fromarray(np.pad(np.asarray(picture), ((reach, reach), (reach, reach), (0, 0)), "edge"))
    total = np.zeros((picture.height, picture.width, 3), np.float32)
    for step in range(steps):
        part = step / (steps - 1) - 0.5
        total += np.asarray(padded.transform(picture.size, Image.Transform.AFFINE,
                                             (1, 0, reach + part * path[0], 0, 1, reach + part * path[1]),
                                             Image.Resampling.BILINEAR))
    return Image.fromarray((total / steps).astype(np.uint8))


def jpeg(picture, quality):
    """The JPEG file of a picture, as bytes."""
    stream = io.BytesIO()
    picture.save(stream, "JPEG", quality=quality)
    return stream.getvalue()
