"""What lies behind the number of real cards: maps, skylines, landscapes, figures, rays, big letters, textures.

Each drawer gets a Backdrop and changes its picture. Lengths are shares of the picture's width unless told otherwise.
"""

import colorsys
import math
import random
import typing

import numpy as np
from PIL import Image, ImageChops, ImageDraw, ImageEnhance, ImageFilter

import canvas
import desk

# Hues that banks like, of 0..1; white, grey and black cards come of their weak colours.
HUES = (0.0, 0.01, 0.04, 0.09, 0.11, 0.13, 0.3, 0.36, 0.45, 0.53, 0.56, 0.58, 0.6, 0.62, 0.66, 0.85)
BIG_WORDS = ("VIP", "GOLD", "CARD", "福", "龙", "BANK", "CITY", "云", "2008", "LOVE", "山", "S", "W", "R", "&", "e")


class Backdrop(typing.NamedTuple):
    """A picture being drawn, and what chooses its colours and shapes."""

    picture: Image.Image
    hue: float
    rng: random.Random
    noise: np.random.Generator

    def colour(self, dark=0.1, light=1.0):
        """A colour near the card's own hue or, now and then, quite another one."""
        hue = self.hue + self.rng.gauss(0, 0.05) if self.rng.random() < 0.8 else self.rng.choice(HUES)
        strength = self.rng.uniform(0, 0.25) if self.rng.random() < 0.35 else self.rng.uniform(0.3, 0.92)
        tone = colorsys.hsv_to_rgb(hue % 1, strength, self.rng.uniform(dark, light - 0.25 * strength))
        return tuple(round(255 * part) for part in tone)

    def field(self, cells, octaves=4):
        """Cloudy noise of about -1..1: `cells` across the card in its coarsest octave."""
        width, height = self.picture.size
        total = np.zeros((height, width), np.float32)
        for octave in range(octaves):
            finer = 2 ** octave
            total += desk.smooth_noise(self.noise, height, width, cells * 0.63 * finer, cells * finer) / finer
        return total / 1.5

    def cover(self, mask, colour, softness=0.0):
        """Lays a colour over the picture where the mask (grey picture or array of 0..1) is."""
        if isinstance(mask, np.ndarray):
            mask = Image.fromarray((255 * np.clip(mask, 0, 1)).astype(np.uint8))
        if softness:
            mask = mask.filter(ImageFilter.GaussianBlur(softness * self.picture.width))
        self.picture.paste(colour, (0, 0), mask)

    def shape(self):
        """An empty mask and a pen for it."""
        mask = Image.new("L", self.picture.size)
        return mask, ImageDraw.Draw(mask)


def world_map(drop):
    """Land and sea, with coasts and a grid of degrees."""
    land = drop.field(drop.rng.uniform(3, 6), 5)
    level, sharp = drop.rng.uniform(-0.2, 0.2), drop.rng.uniform(12, 60)
    drop.cover(0.5 + sharp * (land - level), drop.colour())
    if drop.rng.random() < 0.6:
        drop.cover(drop.rng.uniform(0.4, 1) * np.clip(1.4 - 40 * np.abs(land - level), 0, 1), drop.colour(0, 0.6))
    if drop.rng.random() < 0.6:
        mask, pen = drop.shape()
        width, height = mask.size
        pitch, bend, thick = width * drop.rng.uniform(0.05, 0.12), drop.rng.uniform(-0.2, 0.2), max(1, width // 600)
        for step in range(-10, 30):
            pen.line([(step * pitch + bend * (y - height / 2) ** 2 / height, y) for y in range(0, height + 9, 8)],
                     fill=110, width=thick)
            pen.line([(0, step * pitch), (width, step * pitch)], fill=110, width=thick)
        drop.cover(mask, drop.colour(0.6))


def skyline(drop):
    """Houses with lit windows before a sky, their tops near the number."""
    width, height = drop.picture.size
    for row in range(drop.rng.randint(1, 3)):
        mask, pen = drop.shape()
        windows, dots = drop.shape()
        x = -0.02 * width
        while x < width:
            wide, top = width * drop.rng.uniform(0.02, 0.09), height * drop.rng.triangular(0.3, 0.9, 0.55 + 0.08 * row)
            pen.rectangle([x, top, x + wide, height], fill=255)
            if drop.rng.random() < 0.3:
                peak = top - drop.rng.uniform(0.3, 2.5) * wide
                pen.polygon([(x, top), (x + wide / 2, peak), (x + wide, top)], fill=255)
            pitch = width * drop.rng.uniform(0.006, 0.012)
            for column in range(1, int(wide / pitch)):
                for floor in range(1, int((height - top) / pitch / 1.3)):
                    if drop.rng.random() < 0.6:
                        left, up = x + column * pitch, top + 1.3 * floor * pitch
                        dots.rectangle([left, up, left + 0.5 * pitch, up + 0.7 * pitch], fill=200)
            x += wide + width * drop.rng.uniform(0, 0.015)
        drop.cover(mask, drop.colour(0.1, 0.8))
        drop.cover(windows, drop.colour(0.5))


def landscape(drop):
    """Clouds over ridges of hills, the farther the paler; sometimes a sun or water."""
    width, height = drop.picture.size
    drop.cover(0.7 * np.clip(1.6 * drop.field(4, 5), 0, 1), drop.colour(0.8))
    if drop.rng.random() < 0.5:
        mask, pen = drop.shape()
        x, y, r = width * drop.rng.random(), height * drop.rng.uniform(0.2, 0.7), width * drop.rng.uniform(0.04, 0.2)
        pen.ellipse([x - r, y - r, x + r, y + r], fill=255)
        drop.cover(mask, drop.colour(0.7), drop.rng.choice((0.001, 0.02)))
    top = drop.rng.uniform(0.35, 0.6)
    for _ in range(drop.rng.randint(2, 5)):
        ridge = desk.smooth_noise(drop.noise, 1, width, 1, drop.rng.uniform(4, 9))[0]
        ridge = ridge + 0.3 * desk.smooth_noise(drop.noise, 1, width, 1, 40)[0]
        line = height * (top + drop.rng.uniform(0.03, 0.12) * ridge)
        mask = np.clip(np.arange(height)[:, None] - line[None, :], 0, 1)
        drop.cover(mask * (0.85 + 0.3 * drop.field(20, 3)), drop.colour())
        top += drop.rng.uniform(0.06, 0.16)


def figure(drop):
    """A large face or figure with dark outlines, as on cards with portraits and cartoons."""
    width, height = drop.picture.size
    middle, size = width * drop.rng.uniform(0.15, 0.85), height * drop.rng.uniform(0.5, 1.1)
    line, dark = max(2, round(width * drop.rng.uniform(0.003, 0.009))), drop.colour(0, 0.35)
    outline = drop.rng.random() < 0.7
    parts = ((0, 1.0, 0.62, 0.5), (0, 0.42, 0.3, 0.38), (-0.1, 0.4, 0.04, 0.05), (0.1, 0.4, 0.04, 0.05),
             (0, 0.55, 0.1, 0.03), (0, 0.22, 0.28, 0.2))
    for right, down, across, tall in parts:
        x, y = middle + size * right * drop.rng.uniform(0.8, 1.2), height * 0.1 + size * down
        across, tall = size * across * drop.rng.uniform(0.8, 1.2), size * tall * drop.rng.uniform(0.8, 1.2)
        box = [x - across, y - tall, x + across, y + tall]
        mask, pen = drop.shape()
        pen.ellipse(box, fill=255)
        drop.cover(mask, drop.colour(0.2), 0 if outline else 0.006)
        if outline:
            mask, pen = drop.shape()
            pen.ellipse(box, outline=255, width=line)
            drop.cover(mask, dark)


def rays(drop):
    """Wedges of light from one point."""
    width, height = drop.picture.size
    x, y = width * drop.rng.uniform(-0.2, 1.2), height * drop.rng.uniform(-0.3, 1.3)
    mask, pen = drop.shape()
    angle = drop.rng.uniform(0, 1)
    while angle < 7.3:
        wide = drop.rng.uniform(0.02, 0.3)
        pen.polygon([(x, y), *((x + 2 * width * math.cos(a), y + 2 * width * math.sin(a))
                               for a in (angle, angle + wide))], fill=drop.rng.randint(60, 255))
        angle += wide + drop.rng.uniform(0.03, 0.4)
    drop.cover(mask, drop.colour(), drop.rng.choice((0.001, 0.006)))


def letters(drop):
    """A word so large that its strokes cross the number."""
    width, height = drop.picture.size
    for _ in range(drop.rng.randint(1, 2)):
        word = drop.rng.choice(BIG_WORDS)
        face = canvas.font(drop.rng.choice(("hei-bold", "song-bold")), int(height * drop.rng.uniform(0.3, 1.0)))
        mask, pen = drop.shape()
        place = (width * drop.rng.uniform(0.1, 0.9), height * drop.rng.uniform(0.5, 0.7))
        pen.text(place, word, font=face, fill=drop.rng.randint(110, 255), anchor="mm")
        if drop.rng.random() < 0.3:
            mask = ImageChops.subtract(mask, mask.filter(ImageFilter.MinFilter(2 * (width // 300) + 3)))
        drop.cover(mask, drop.colour())


def bands(drop):
    """Slanting bands or bent swathes in strong colours."""
    width, height = drop.picture.size
    for _ in range(drop.rng.randint(1, 5)):
        mask, pen = drop.shape()
        if drop.rng.random() < 0.5:
            x, wide = width * drop.rng.random(), width * drop.rng.uniform(0.02, 0.3)
            slant = width * drop.rng.gauss(0, 0.4)
            pen.polygon([(x, 0), (x + wide, 0), (x + wide + slant, height), (x + slant, height)], fill=255)
        else:
            x, y = width * drop.rng.random(), height * drop.rng.uniform(-0.3, 1.3)
            r = width * drop.rng.uniform(0.1, 0.7)
            pen.ellipse([x - r, y - r, x + r, y + r], outline=255, width=max(2, int(r * drop.rng.uniform(0.05, 0.9))))
        drop.cover(mask, drop.colour(), drop.rng.choice((0, 0.001, 0.004)))


def foliage(drop):
    """Leaves, stone or fabric: blotches of two or three colours, coarse and fine."""
    for _ in range(drop.rng.randint(1, 3)):
        field = drop.field(drop.rng.uniform(4, 40), 4)
        drop.cover(0.5 + drop.rng.uniform(0.8, 6) * field, drop.colour())


def veins(drop):
    """Thin dark lines that wander, as in ink drawings, marble and old engravings."""
    field = drop.field(drop.rng.uniform(3, 9), 4)
    width = drop.rng.uniform(0.015, 0.05)
    for level in np.linspace(-0.5, 0.5, drop.rng.randint(1, 5)):
        drop.cover(np.clip(1.5 - np.abs(field - level) / width, 0, 1), drop.colour(0, 0.5))


def lines(drop):
    """Fine parallel lines, straight or waved."""
    width, height = drop.picture.size
    x, y = np.meshgrid(np.arange(width) / width, np.arange(height) / width)
    angle, pitch = drop.rng.uniform(0, math.pi), drop.rng.uniform(0.006, 0.05)
    wave = drop.rng.choice((0, 0.02)) * np.sin(drop.rng.uniform(6, 30) * x)
    position = ((x * math.cos(angle) + y * math.sin(angle) + wave) / pitch) % 1
    drop.cover(drop.rng.uniform(0.2, 0.9) * (np.abs(position - 0.5) < drop.rng.uniform(0.08, 0.25)), drop.colour())


SCENES = {
    "plain": (), "map": (world_map,), "skyline": (skyline,), "landscape": (landscape,),
    "city in hills": (landscape, skyline), "figure": (landscape, figure), "cartoon": (bands, figure),
    "rays": (rays,), "big letters": (letters,), "letters on rays": (rays, letters), "bands": (bands,),
    "foliage": (foliage,), "veins": (veins,), "lines": (lines, letters), "map and bands": (bands, world_map),
}
# Photographs have light and shade everywhere: how deep, and how many patches lie across the card.
TEXTURE, PATCHES = (0.1, 0.6), (8, 60)


def ground(size, rng):
    """An RGB picture of `size` (width, height) pixels; `rng` (random.Random) chooses all of it."""
    drop = Backdrop(Image.new("RGB", size), rng.choice(HUES), rng, np.random.default_rng(rng.getrandbits(32)))
    first, second = drop.colour(), drop.colour()
    drop.picture.paste(first, (0, 0, *size))
    angle = rng.uniform(0, 2 * math.pi)
    x, y = np.meshgrid(np.linspace(-0.5, 0.5, size[0]), np.linspace(-0.5, 0.5, size[1]))
    drop.cover(0.5 + 0.7 * (x * math.cos(angle) + y * math.sin(angle)), second)
    for draw in rng.choice(list(SCENES.values())):
        draw(drop)
    picture = _textured(drop) if rng.random() < 0.55 else drop.picture
    if rng.random() < 0.3:
        picture = ImageEnhance.Color(picture).enhance(rng.uniform(0, 0.6))
    # Prints differ in contrast: some are as strong as a photo, some are pale, most lie between.
    flat = Image.new("RGB", size, tuple(int(v) for v in np.asarray(picture).mean(axis=(0, 1))))
    picture = Image.blend(flat, picture, rng.uniform(0.55, 1.0))
    return _speckled(picture, drop.noise, rng)


def _textured(drop):
    """The picture with the light and shade of a photograph."""
    shade = 1 + drop.rng.uniform(*TEXTURE) * drop.field(drop.rng.uniform(*PATCHES), 3)
    return Image.fromarray(np.clip(np.asarray(drop.picture) * shade[..., None], 0, 255).astype(np.uint8))


def _speckled(picture, noise, rng):
    """The grain of print, or the glitter of metallic lacquer."""
    depth = rng.choice((1.5, 3, rng.uniform(5, 16)))
    grain = noise.normal(0, depth, (picture.height, picture.width, 1))
    return Image.fromarray(np.clip(np.asarray(picture) + grain, 0, 255).astype(np.uint8))
