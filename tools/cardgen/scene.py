"""From a flat card to a photo: chooses a desk, a light and a camera by level, and takes the picture.

A subject is anything flat with `width`, `height`, `corner` and `finest` (its smallest detail that must survive)
in millimetres, `gloss` in 0..1, `foil` (whether metal on it mirrors lamps) and `draw(pixels_per_mm)`; nothing
here knows what is printed on it. One whose `corner` is None has its own outline and shadow: it draws an RGBA picture of
any size around its middle, and its `width` and `height` are those of what the camera looks at. The steps
(`choose_pose`, `choose_light`, `shoot`) are separate so that a clip can move the camera over one desk.
"""

import dataclasses
import math

import numpy as np
from PIL import Image, ImageDraw, ImageFilter

import camera
import desk
import messenger

# Width of the flat picture at level `clean`, in pixels: a card at 300 dots an inch.
CLEAN_PIXELS_PER_MM = 300 / 25.4
CLEAN_SUPERSAMPLING = 1.5
# Picture size -> weight.
SIZES = {
    (1600, 1200): 50, (1280, 960): 15, (1920, 1080): 6, (2048, 1536): 10, (2592, 1944): 7, (3264, 2448): 6,
    (4000, 3000): 6,
}
# The card is drawn this much larger than it will appear, then warped.
OVERSAMPLING = 1.25
# Smallest resolution a card is drawn at, so that small text is reduced and not hinted.
MIN_DRAW_PIXELS_PER_MM = 15.0
BORDER_MM = 1.0
LID = (244, 244, 242)
LIGHT_GRID = (36, 48)
SHADOW = (12, 11, 12)
PHOTO_QUALITY = (75, 93)
# How much of the picture a lamp's mirror image hides at its middle, in levels; above 250 all of it.
FULL_GLARE, MILD_GLARE = (180, 320), (40, 130)
# Share of the photos of foil in which a lamp mirrors mildly.
FOIL_GLARE_SHARE = 0.4


@dataclasses.dataclass(frozen=True)
class Limits:
    """How far a level goes."""

    tilt: float  # degrees about either axis
    roll: float  # degrees in the picture
    fill: tuple  # least, most likely and greatest share of the picture's width
    finest: float  # pixels that the smallest detail gets: people come close enough to see it


LIMITS = {
    "photo": Limits(15, 8, (0.35, 0.66, 0.85), 2.2),
    "hard": Limits(28, 20, (0.35, 0.62, 0.85), 1.6),
}


def clean(subject):
    """The flat subject filling the picture."""
    flat = subject.draw(CLEAN_PIXELS_PER_MM * CLEAN_SUPERSAMPLING)
    if subject.corner is None:
        flat = _seen_by_scanner(flat, subject)
    size = (round(subject.width * CLEAN_PIXELS_PER_MM), round(subject.height * CLEAN_PIXELS_PER_MM))
    return camera.jpeg(flat.resize(size, Image.Resampling.LANCZOS), 92)


def _seen_by_scanner(flat, subject):
    """The middle of an RGBA picture, as large as what is looked at, under the lid of a scanner."""
    scale = CLEAN_PIXELS_PER_MM * CLEAN_SUPERSAMPLING
    width, height = round(subject.width * scale), round(subject.height * scale)
    left, top = (flat.width - width) // 2, (flat.height - height) // 2
    seen = flat.crop((left, top, left + width, top + height))
    return Image.alpha_composite(Image.new("RGBA", seen.size, LID), seen).convert("RGB")


def choose_size(rng):
    weights = np.array(list(SIZES.values()), float)
    return list(SIZES)[rng.choice(len(SIZES), p=weights / weights.sum())]


def choose_pose(subject, level, size, rng):
    """A camera that sees the whole subject, within the limits of the level."""
    limits = LIMITS[level]
    width, height = size
    needed = limits.finest * subject.width / (subject.finest * width)
    fill = max(rng.triangular(*limits.fill), min(needed, limits.fill[2]))
    reach, direction = limits.tilt * math.sqrt(rng.random()), rng.uniform(0, 2 * math.pi)
    focal = width * rng.uniform(0.8, 1.25)
    roll = float(np.clip(rng.normal(0, limits.roll / 2.2), -limits.roll, limits.roll))
    pose = camera.Pose(size, focal, focal * subject.width / (fill * width), roll,
                       reach * math.sin(direction), reach * math.cos(direction))
    margin = 0.02 * width
    for _ in range(20):
        corners = camera.project(pose.homography(), camera.rectangle(subject.width, subject.height))
        room = (corners.min(axis=0) - margin, np.array(size) - margin - corners.max(axis=0))
        if np.ptp(corners, axis=0)[0] <= limits.fill[2] * width and min((room[0] + room[1])) >= 0:
            break
        pose = dataclasses.replace(pose, distance=pose.distance * 1.04)
    drift = np.array([_drift(rng, room[0][axis], room[1][axis]) for axis in range(2)])
    return dataclasses.replace(pose, shift=tuple(drift))


def _drift(rng, before, after):
    """A shift that keeps `before` and `after` pixels of room, mostly near the middle."""
    middle = (after - before) / 2
    return float(middle + rng.triangular(-1, 0, 1) * (before + after) / 2)


def choose_light(level, rng):
    """A small field of light (rows x columns x 3): a gradient, patches, sometimes the soft shadow of a hand."""
    rows, columns = LIGHT_GRID
    y, x = np.mgrid[0:rows, 0:columns].astype(np.float32)
    x, y = x / (columns - 1) - 0.5, y / (rows - 1) - 0.5
    angle, strength = rng.uniform(0, 2 * math.pi), rng.uniform(0.04, 0.34 if level == "photo" else 0.6)
    field = 1 + strength * (x * math.cos(angle) + y * math.sin(angle))
    field *= 1 - rng.uniform(0.02, 0.25) * (x * x + y * y) * 2
    if rng.random() < 0.4:
        field *= _soft_shadow(x, y, rng, 0.38 if level == "photo" else 0.6)
    field *= rng.uniform(0.86, 1.04)
    return np.repeat(field[..., None], 3, axis=2)


def _soft_shadow(x, y, rng, deepest):
    """A half-plane of shade with a soft border that passes somewhere over the picture."""
    angle, place, softness = rng.uniform(0, 2 * math.pi), rng.uniform(-0.3, 0.35), rng.uniform(0.03, 0.2)
    side = (x * math.cos(angle) + y * math.sin(angle) - place) / softness
    return 1 - rng.uniform(0.1, deepest) / (1 + np.exp(-side))


def choose_sensor(level, size, rng):
    """Lens and exposure, and the strength of glare or None; `hard` brings one or two serious faults."""
    zoom = size[0] / 1600
    white = tuple(rng.uniform(0.94, 1.05, 3))
    blur, noise = zoom * rng.uniform(0.25, 0.85), rng.uniform(0.8, 4.0)
    quality = int(rng.integers(*PHOTO_QUALITY))
    sensor = camera.Sensor(blur=blur, noise=noise, white=white, quality=quality)
    if level == "photo":
        return sensor, None
    faults = rng.choice(("dark", "bright", "motion", "noise", "defocus", "glare"), rng.integers(1, 3), replace=False)
    if "dark" in faults:
        sensor = dataclasses.replace(sensor, gain=rng.uniform(0.22, 0.5), noise=rng.uniform(3, 8))
    elif "bright" in faults:
        sensor = dataclasses.replace(sensor, gain=rng.uniform(1.2, 1.55))
    if "motion" in faults:
        angle, length = rng.uniform(0, math.pi), zoom * rng.uniform(3, 8)
        sensor = dataclasses.replace(sensor, motion=(length * math.cos(angle), length * math.sin(angle)))
    if "noise" in faults:
        sensor = dataclasses.replace(sensor, noise=rng.uniform(8, 20))
    if "defocus" in faults:
        sensor = dataclasses.replace(sensor, blur=zoom * rng.uniform(1.2, 2.4))
    return sensor, FULL_GLARE if "glare" in faults else None


def _draw_subject(subject, matrix):
    """The flat subject with a border that repeats its edge, its corner mask, and the matrix of its pixels."""
    corners = camera.project(matrix, camera.rectangle(subject.width, subject.height))
    edges = [math.dist(corners[i], corners[(i + 1) % 4]) for i in range(4)]
    wanted = OVERSAMPLING * max(max(edges[0], edges[2]) / subject.width, max(edges[1], edges[3]) / subject.height)
    flat = subject.draw(max(wanted, MIN_DRAW_PIXELS_PER_MM))
    if subject.corner is None:
        shrink = min(1, wanted / MIN_DRAW_PIXELS_PER_MM)
        flat = flat.resize([round(side * shrink) for side in flat.size], Image.Resampling.LANCZOS)
        return flat.convert("RGB"), flat.getchannel("A"), matrix @ _to_mm(flat, wanted)
    if wanted < MIN_DRAW_PIXELS_PER_MM:
        size = (round(subject.width * wanted), round(subject.height * wanted))
        flat = flat.resize(size, Image.Resampling.LANCZOS)
    border = math.ceil(BORDER_MM * wanted)
    bordered = Image.fromarray(np.pad(np.asarray(flat), ((border, border), (border, border), (0, 0)), "edge"))
    mask = Image.new("L", bordered.size)
    ImageDraw.Draw(mask).rounded_rectangle([border, border, border + flat.width - 1, border + flat.height - 1],
                                           subject.corner * wanted, fill=255)
    to_mm = np.array([[subject.width / flat.width, 0, -subject.width / 2 - border * subject.width / flat.width],
                      [0, subject.height / flat.height, -subject.height / 2 - border * subject.height / flat.height],
                      [0, 0, 1]])
    return bordered, mask, matrix @ to_mm


def draw_desk(kind, matrix, size, rng, subject=None):
    """The desk as the camera sees it, with the shadow of a subject that lies on it."""
    frame = np.array([(0, 0), (size[0], 0), (size[0], size[1]), (0, size[1])])
    reach = np.abs(camera.project(np.linalg.inv(matrix), frame)).max(axis=0) + 4
    scale = min(desk.MAX_TEXTURE_PIXELS, 1.1 * max(size)) / (2 * reach.max())
    surface = desk.desk(rng, kind, 2 * reach[0], 2 * reach[1], scale)
    if subject and subject.corner is not None:
        _cast_shadow(surface, subject, scale, rng)
    return camera.warp(surface, matrix @ _to_mm(surface, scale), size, resample=Image.Resampling.BILINEAR)


def _to_mm(picture, scale):
    """The matrix that takes a picture's pixels to millimetres around its middle."""
    return np.array([[1 / scale, 0, -picture.width / 2 / scale], [0, 1 / scale, -picture.height / 2 / scale],
                     [0, 0, 1]])


def _cast_shadow(surface, subject, scale, rng):
    softness, depth = rng.uniform(0.3, 2.2), rng.uniform(0.15, 0.6)
    dx, dy = rng.uniform(-1.4, 1.4, 2)
    left = surface.width / 2 + (dx - subject.width / 2) * scale
    top = surface.height / 2 + (dy - subject.height / 2) * scale
    shade = Image.new("L", surface.size)
    ImageDraw.Draw(shade).rounded_rectangle([left, top, left + subject.width * scale, top + subject.height * scale],
                                            subject.corner * scale, fill=round(255 * depth))
    surface.paste(SHADOW, (0, 0), shade.filter(ImageFilter.GaussianBlur(softness * scale)))


def see_subject(subject, matrix, size, rng):
    """The part of a picture that the subject fills: the part, its mask, its upper left pixel, and the corners."""
    flat, mask, to_picture = _draw_subject(subject, matrix)
    corners = camera.project(to_picture, [(0, 0), (flat.width, 0), (flat.width, flat.height), (0, flat.height)])
    low = np.maximum(np.floor(corners.min(axis=0)).astype(int), 0)
    high = np.minimum(np.ceil(corners.max(axis=0)).astype(int), size)
    window = tuple(int(v) for v in high - low)
    placed = camera.warp(flat, to_picture, window, low)
    if subject.gloss:
        _sheen(placed, subject.gloss, rng)
    return placed, camera.warp(mask, to_picture, window, low), tuple(int(v) for v in low), corners


def shoot(subject, kind, pose, light, sensor, rng, glare=None):
    """The photo of the subject on a desk, before coding; `glare` is the strength of a lamp's mirror image or None."""
    matrix = pose.homography()
    picture = draw_desk(kind, matrix, pose.size, rng, subject)
    placed, mask, corner, corners = see_subject(subject, matrix, pose.size, rng)
    picture.paste(placed, corner, mask)
    if glare:
        mirror_lamp(picture, corners, rng, glare)
    return camera.expose(picture, light, sensor, rng)


def _sheen(picture, gloss, rng):
    """A faint reflection of the ceiling over part of the card."""
    x, y = np.meshgrid(np.linspace(-1, 1, 48), np.linspace(-1, 1, 32))
    angle, place = rng.uniform(0, math.pi), rng.uniform(-1.2, 1.2)
    band = np.exp(-(((x * math.cos(angle) + y * math.sin(angle) - place) / rng.uniform(0.3, 0.8)) ** 2))
    mask = Image.fromarray((band * rng.uniform(0, 44) * gloss).astype(np.uint8))
    picture.paste((255, 255, 255), (0, 0), mask.resize(picture.size, Image.Resampling.BICUBIC))


def mirror_lamp(picture, corners, rng, strength):
    """A bright patch where a lamp mirrors in the card."""
    middle = corners.mean(axis=0) + rng.uniform(-0.4, 0.4, 2) * np.ptp(corners, axis=0)
    radius = np.ptp(corners, axis=0)[0] * rng.uniform(0.08, 0.2)
    x, y = np.meshgrid(np.linspace(-2.4, 2.4, 96), np.linspace(-2.4, 2.4, 96))
    angle, flatness = rng.uniform(0, math.pi), rng.uniform(1.0, 2.0)
    along, across = x * math.cos(angle) + y * math.sin(angle), y * math.cos(angle) - x * math.sin(angle)
    spot = np.clip(rng.uniform(*strength) * np.exp(-(along ** 2 + flatness * across ** 2)), 0, 250)
    side = max(2, int(radius * 4.8))
    mask = Image.fromarray(spot.astype(np.uint8)).resize((side, side), Image.Resampling.BICUBIC)
    picture.paste((255, 255, 255), tuple(int(v) for v in middle - side / 2), mask)


def photograph(subject, level, rng, size=None, forwarded=False, turn=0):
    """The JPEG bytes of the subject at a level; `rng` is a numpy generator, `size` fixes the picture size.

    A photo may be turned by `turn` degrees clockwise, and is then as much larger as holds all of it. A forwarded photo
    is made small and coded again on its way, as messengers do it.
    """
    if level == "clean":
        return clean(subject)
    size = size or choose_size(rng)
    kind = desk.pick_kind(rng)
    pose = choose_pose(subject, level, size, rng).turned(turn)
    light = choose_light(level, rng)
    sensor, glare = choose_sensor(level, size, rng)
    if subject.foil and not glare and rng.random() < FOIL_GLARE_SHARE:
        glare = MILD_GLARE
    picture = shoot(subject, kind, pose, light, sensor, rng, glare)
    if not forwarded:
        return camera.jpeg(picture, sensor.quality)
    corners = camera.project(pose.homography(), camera.rectangle(subject.width, subject.height))
    return messenger.forward(picture, sensor.quality, math.dist(corners[0], corners[1]), rng)
