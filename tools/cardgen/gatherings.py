"""Pictures of more than one card: several cards on a desk, and both sides of an identity card on a copied page.

Each function gives the JPEG bytes and, for every card in its order, the corners in pixels from the top left, clockwise
from the one that is the card's own upper left.
"""

import math

import numpy as np
from PIL import Image, ImageDraw, ImageFilter

import camera
import desk
import scene

# Cards lie in cells of so many millimetres: apart and turned at will, or touching and level.
ROOMY_CELL, TOUCHING_CELL = (102.0, 102.0), (86.0, 54.4)
TOUCHING_SHARE = 0.25
COLUMNS = {1: 1, 2: 2, 3: 3, 4: 2, 5: 3, 6: 3}
# How far a card that lies roomily is turned, in degrees.
LYING_TURN = 12
# A copied page, and where the middles of both sides lie on it.
PAGE, PAGE_MIDDLES = (210.0, 297.0), ((105.0, 95.0), (105.0, 180.0))
PAGE_SHIFT, PAGE_TURN = 14.0, 2.0
SUPERSAMPLING = 1.5
INCH = 25.4


class _Spread:
    """The rectangle that all cards lie in, as the camera's subject."""

    corner, gloss, foil = 0.0, 0.0, False

    def __init__(self, width, height, finest):
        self.width, self.height, self.finest = width, height, finest


def _placed(x, y, degrees):
    """From the millimetres of a card, its middle at the origin, to those of what it lies on."""
    cosine, sine = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    return np.array([[cosine, -sine, x], [sine, cosine, y], [0, 0, 1]])


def on_desk(subjects, level, rng):
    """A photo of cards beside each other, at level photo or hard."""
    touching = rng.random() < TOUCHING_SHARE
    across, down = TOUCHING_CELL if touching else ROOMY_CELL
    columns = COLUMNS[len(subjects)]
    rows = math.ceil(len(subjects) / columns)
    # Cards that lie level need no more room than they have.
    down = down if touching else 0.72 * down
    spread = _Spread(columns * across, rows * down, min(subject.finest for subject in subjects))
    size = scene.choose_size(rng)
    pose = scene.choose_pose(spread, level, size, rng)
    light, (sensor, _) = scene.choose_light(level, rng), scene.choose_sensor(level, size, rng)
    picture = scene.draw_desk(desk.pick_kind(rng), pose.homography(), size, rng)
    corners = []
    for number, subject in enumerate(subjects):
        column, row = number % columns, number // columns
        turn = 0 if touching else rng.uniform(-LYING_TURN, LYING_TURN)
        matrix = pose.homography() @ _placed((column + 0.5 - columns / 2) * across, (row + 0.5 - rows / 2) * down, turn)
        part, mask, corner, _ = scene.see_subject(subject, matrix, size, rng)
        picture.paste(part, corner, mask)
        corners.append(camera.project(matrix, camera.rectangle(subject.width, subject.height)).tolist())
    return camera.jpeg(camera.expose(picture, light, sensor, rng), sensor.quality), corners


def on_page(subjects, dots_per_inch, grey, rng):
    """A scan of a page with two copied cards, one above the other, in colour or grey."""
    scale = dots_per_inch / INCH
    page = Image.new("RGB", (round(PAGE[0] * scale), round(PAGE[1] * scale)), (252, 252, 251))
    corners = []
    for subject, (x, y) in zip(subjects, PAGE_MIDDLES):
        x, y = (value + rng.uniform(-PAGE_SHIFT, PAGE_SHIFT) for value in (x, y))
        matrix = np.diag([scale, scale, 1]) @ _placed(x, y, rng.uniform(-PAGE_TURN, PAGE_TURN))
        flat = subject.draw(SUPERSAMPLING * scale)
        mask = Image.new("L", flat.size)
        ImageDraw.Draw(mask).rounded_rectangle([0, 0, flat.width - 1, flat.height - 1],
                                               subject.corner * SUPERSAMPLING * scale, fill=255)
        to_mm = np.array([[subject.width / flat.width, 0, -subject.width / 2],
                          [0, subject.height / flat.height, -subject.height / 2], [0, 0, 1]])
        shade = camera.warp(mask, matrix @ to_mm, page.size).filter(ImageFilter.GaussianBlur(0.35 * scale))
        page.paste((150, 150, 152), (0, 0), shade.point(lambda level: int(0.5 * level)))
        page.paste(camera.warp(flat, matrix @ to_mm, page.size), (0, 0), camera.warp(mask, matrix @ to_mm, page.size))
        corners.append(camera.project(matrix, camera.rectangle(subject.width, subject.height)).tolist())
    noisy = np.asarray(page, np.float32) + rng.normal(0, rng.uniform(1, 3), (page.height, page.width, 1))
    page = Image.fromarray(np.clip(noisy, 0, 255).astype(np.uint8)).filter(ImageFilter.GaussianBlur(rng.uniform(0.2, 0.6)))
    return camera.jpeg(page.convert("L").convert("RGB") if grey else page, int(rng.integers(70, 92))), corners
