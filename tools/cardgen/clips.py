"""Films a flat subject on a desk: draws desk and card once, then moves them frame by frame as a story tells.

The camera hangs nearly straight over the desk; its small movements are applied to one picture of the desk that is
larger than a frame, which is far cheaper than to draw the scene anew and looks the same.
"""

import dataclasses
import io
import math

import numpy as np
from PIL import Image, ImageChops, ImageFilter

import avi
import camera
import desk
import scene

SIZE, RATE = (1280, 720), 30
# Beyond each side of the frame, as a share of its width, the desk is drawn as well.
MARGIN = 0.11
# People hold a card about parallel to the picture, near its middle.
TILT, ROLL, FILL = 7, 3, (0.60, 0.76)
# Share of the picture's height that the subject takes at most.
MOST_HEIGHT = 0.86
EXPOSURE = (1 / 90, 1 / 45)  # seconds
# A moving picture is summed up from moments that lie at most so many pixels apart, and from no more than so many.
BLUR_STEP, BLUR_MOMENTS = 3.0, 8
NOISE = (0.8, 2.2)
QUALITY = 80
# A lamp's mirror image: its radius in shares of the frame's width, how much flatter it is, how far beyond white.
SPOT, SPOT_FLATNESS, SPOT_STRENGTH = (0.085, 0.115), (1.4, 2.0), 900


@dataclasses.dataclass(frozen=True)
class Layer:
    """A card as the resting camera sees it, cut out, with its shadow; placed in the picture of the desk."""

    card: Image.Image
    mask: Image.Image
    shadow: Image.Image
    corner: tuple
    shadow_corner: tuple

    def put(self, ground, place):
        picture = ground.copy()
        for colour, mask, corner in ((scene.SHADOW, self.shadow, self.shadow_corner),
                                     (self.card, self.mask, self.corner)):
            picture.paste(colour, (corner[0] + place[0], corner[1] + place[1]), mask)
        return picture


def choose_pose(subject, size, rng):
    """A camera over the subject as a person holds it."""
    width, height = size
    fill = min(rng.uniform(*FILL), MOST_HEIGHT * height * subject.width / (subject.height * width))
    focal = 1.1 * width
    pitch, yaw = rng.uniform(-TILT, TILT, 2)
    shift = rng.uniform(-0.02, 0.02, 2) * width
    return camera.Pose(size, focal, focal * subject.width / (fill * width), rng.uniform(-ROLL, ROLL), pitch, yaw,
                       tuple(shift))


def _layer(subject, matrix, size, rng):
    card, mask, corner, _ = scene.see_subject(subject, matrix, size, rng)
    reach = max(2, round(rng.uniform(0.004, 0.02) * size[0]))
    soft = Image.new("L", (mask.width + 4 * reach, mask.height + 4 * reach))
    depth = rng.uniform(0.25, 0.6)
    soft.paste(mask.point(lambda value: value * depth), (2 * reach, 2 * reach))
    aside = [int(v) for v in rng.integers(-reach // 2, reach // 2 + 1, 2)]
    return Layer(card, mask, soft.filter(ImageFilter.GaussianBlur(reach * 0.7)), corner,
                 tuple(corner[axis] - 2 * reach + aside[axis] for axis in range(2)))


class Light:
    """What reaches the sensor of each picture: the lamps of the room, a lamp's mirror image, and grain."""

    def __init__(self, story, size, middle, rng):
        self._story, self._size, self._rng = story, size, rng
        field = scene.choose_light("photo", rng) * rng.uniform(0.94, 1.0, 3)
        field *= rng.uniform(0.9, 1.0) / field.max()
        self._field = Image.fromarray((255 * field).astype(np.uint8)).resize(size, Image.Resampling.BICUBIC)
        grain = 128 + rng.uniform(*NOISE) * rng.standard_normal((size[1] + 128, size[0] + 128, 3), dtype=np.float32)
        self._grain = Image.fromarray(np.clip(grain, 0, 255).astype(np.uint8))
        self._spot = _spot(size[0], rng)
        self._spot_middle = middle + rng.uniform(-0.03, 0.03, 2) * size[0]
        angle = rng.uniform(0, 2 * math.pi)
        self._spot_way = 0.3 * size[0] * np.array([math.cos(angle), math.sin(angle)])

    def fall_on(self, picture, time):
        picture = ImageChops.multiply(picture, self._field)
        exposure = self._story.exposure(time)
        if exposure < 1:
            picture = picture.point(lambda value: value * exposure)
        glare = self._story.glare(time)
        if glare > 0:
            middle = self._spot_middle + (1 - glare) * self._spot_way
            corner = tuple(int(middle[axis] - self._spot.size[axis] / 2) for axis in range(2))
            picture.paste((255, 255, 255), corner, self._spot.point(lambda value: value * glare))
        left, top = (int(v) for v in self._rng.integers(0, 128, 2))
        grain = self._grain.crop((left, top, left + self._size[0], top + self._size[1]))
        return ImageChops.add(picture, grain, offset=-128)


def _spot(width, rng):
    """The mask of a lamp's mirror image, wide and flat."""
    x, y = np.meshgrid(np.linspace(-2.6, 2.6, 96), np.linspace(-2.6, 2.6, 96))
    mask = np.clip(SPOT_STRENGTH * np.exp(-(x ** 2 + y ** 2)), 0, 255).astype(np.uint8)
    reach = 2.6 * rng.uniform(*SPOT) * width
    size = (round(2 * reach), round(2 * reach / rng.uniform(*SPOT_FLATNESS)))
    return Image.fromarray(mask).resize(size, Image.Resampling.BICUBIC)


class Film:
    """One clip: cards on a desk under a moving camera."""

    def __init__(self, subjects, story, size, rng):
        width, height = size
        self._story, self._size = story, size
        self._margin = round(MARGIN * width)
        pose = choose_pose(subjects[-1], size, rng)
        outer = (width + 2 * self._margin, height + 2 * self._margin)
        aside = np.array([[1, 0, self._margin], [0, 1, self._margin], [0, 0, 1]])
        matrix = aside @ pose.homography()
        self._desk = scene.draw_desk(desk.pick_kind(rng), matrix, outer, rng)
        self._layers = [_layer(subject, matrix, outer, rng) for subject in subjects]
        middle = np.array([width / 2, height / 2])
        self._light = Light(story, size, middle + pose.shift, rng)
        self._exposure = rng.uniform(*EXPOSURE)
        self._to_shares = np.array([[1, 0, -middle[0] - self._margin], [0, 1, -middle[1] - self._margin],
                                    [0, 0, width]]) / width
        self._to_pixels = np.array([[width, 0, middle[0]], [0, width, middle[1]], [0, 0, 1]])
        self._resting = {}

    def frames(self, rate, quality):
        """The film's pictures as JPEG files."""
        for index in range(round(self._story.seconds * rate)):
            stream = io.BytesIO()
            self.picture(index / rate).save(stream, "JPEG", quality=quality)
            yield stream.getvalue()

    def picture(self, time):
        """The picture whose exposure has its middle at that time."""
        first, last = time - self._exposure / 2, time + self._exposure / 2
        seen = [self._story.card(moment) for moment in (first, last)]
        card_path = self._size[0] * math.dist(seen[0][1], seen[1][1]) if all(seen) else 0
        rim = camera.rectangle(*self._size) + np.array(self._size) / 2 + self._margin
        path = np.abs(camera.project(self._matrix(last), rim) - camera.project(self._matrix(first), rim)).max()
        # The two movements never are fast at once: cards come and go under a hand that aims.
        scene = self._mean(self._scene, card_path, time)
        picture = self._mean(lambda moment: camera.warp(scene, self._matrix(moment), self._size,
                                                        resample=Image.Resampling.BILINEAR), path, time)
        return self._light.fall_on(picture, time)

    def _mean(self, picture_at, path, time):
        """The mean of pictures over the exposure, the more the longer the path in pixels that things move."""
        count = min(max(1, round(path / BLUR_STEP)), BLUR_MOMENTS)
        moments = [time + ((index + 0.5) / count - 0.5) * self._exposure for index in range(count)]
        total = picture_at(moments[0])
        for index, moment in enumerate(moments[1:], 2):
            total = Image.blend(total, picture_at(moment), 1 / index)
        return total

    def _matrix(self, time):
        """From the picture of the desk to the frame."""
        return self._to_pixels @ self._story.hand.movement(time) @ self._to_shares

    def _scene(self, time):
        seen = self._story.card(time)
        if not seen:
            return self._desk
        card, place = seen
        pixels = tuple(round(share * self._size[0]) for share in place)
        if pixels != (0, 0):
            return self._layers[card].put(self._desk, pixels)
        if card not in self._resting:
            self._resting[card] = self._layers[card].put(self._desk, pixels)
        return self._resting[card]


def film(path, subjects, story, rng, options):
    """Writes the clip of a story whose cards are the `subjects`, in the size, rate and quality of the options."""
    size = options.size or SIZE
    avi.write(path, size, options.fps, Film(subjects, story, size, rng).frames(options.fps, options.quality))
