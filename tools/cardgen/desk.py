"""Desks: procedural surfaces and the things that lie on them, seen from straight above.

`desk(rng, kind, width, height, pixels_per_mm)` gives an RGB picture of a piece of desk whose middle is
where the card lies. `rng` is a numpy generator. Lengths are millimetres.
"""

import math

import numpy as np
from PIL import Image, ImageDraw, ImageFilter

import canvas

PLAIN_COLOURS = (
    (236, 236, 232), (200, 202, 204), (150, 152, 156), (96, 98, 102), (44, 45, 48), (222, 212, 194),
    (126, 92, 64), (52, 70, 98), (64, 96, 78), (128, 44, 44), (232, 220, 160), (24, 24, 26),
)
# Near the mean colour of the card, so that its outline is hard to see.
CARD_LIKE_COLOURS = ((216, 226, 234), (228, 228, 234), (206, 218, 228), (236, 230, 234), (222, 222, 220))
WOOD_COLOURS = ((164, 116, 70), (112, 72, 44), (198, 158, 110), (84, 54, 36), (216, 186, 146), (142, 92, 60))
CLOTH_COLOURS = ((188, 180, 166), (74, 88, 112), (152, 64, 62), (96, 112, 90), (222, 216, 206), (58, 56, 60))
# Base, key and letter.
KEYBOARD_DARK = ((38, 39, 42), (58, 59, 63), (205, 205, 205))
KEYBOARD_LIGHT = ((196, 198, 202), (236, 236, 238), (70, 70, 74))
MAX_TEXTURE_PIXELS = 2400


def smooth_noise(rng, rows, columns, cells_y, cells_x):
    """Smooth noise in about -1..1: random values on a coarse grid, interpolated."""
    grid = rng.uniform(-1, 1, (max(2, int(cells_y) + 1), max(2, int(cells_x) + 1))).astype(np.float32)
    return np.asarray(Image.fromarray(grid).resize((columns, rows), Image.Resampling.BICUBIC))


def _flat(rng, colour, width, height, scale, depth=6.0):
    rows, columns = round(height * scale), round(width * scale)
    shade = depth * smooth_noise(rng, rows, columns, height / 60, width / 60)
    shade += 0.5 * depth * smooth_noise(rng, rows, columns, height / 8, width / 8)
    shade += 0.4 * depth * rng.standard_normal((rows, columns), dtype=np.float32)
    return np.array(colour, np.float32) + shade[..., None]


def plain(rng, width, height, scale):
    return _flat(rng, PLAIN_COLOURS[rng.integers(len(PLAIN_COLOURS))], width, height, scale, rng.uniform(1.5, 7))


def card_like(rng, width, height, scale):
    colour = np.array(CARD_LIKE_COLOURS[rng.integers(len(CARD_LIKE_COLOURS))]) - rng.uniform(0, 14)
    return _flat(rng, colour, width, height, scale, rng.uniform(1, 4))


def wood(rng, width, height, scale):
    rows, columns = round(height * scale), round(width * scale)
    colour = np.array(WOOD_COLOURS[rng.integers(len(WOOD_COLOURS))], np.float32)
    x = np.linspace(0, width, columns, dtype=np.float32)[None, :]
    y = np.linspace(0, height, rows, dtype=np.float32)[:, None]
    bend = 9 * smooth_noise(rng, rows, columns, height / 50, width / 180)
    rings = np.sin((y + bend + 0.02 * x) * rng.uniform(0.7, 1.6))
    grain = smooth_noise(rng, rows, columns, height / 0.6, width / 30)
    shade = rng.uniform(8, 18) * rings + rng.uniform(6, 14) * grain
    plank = rng.uniform(70, 140)
    joints = np.abs((y + rng.uniform(0, plank)) % plank - plank / 2) < 0.5
    shade = shade + np.where(joints, -38, 0)
    return colour + shade[..., None] * np.array((1.0, 0.92, 0.8), np.float32)


def cloth(rng, width, height, scale):
    rows, columns = round(height * scale), round(width * scale)
    colour = np.array(CLOTH_COLOURS[rng.integers(len(CLOTH_COLOURS))], np.float32)
    x = np.linspace(0, width, columns, dtype=np.float32)[None, :]
    y = np.linspace(0, height, rows, dtype=np.float32)[:, None]
    thread = 2 * math.pi / max(rng.uniform(0.8, 1.8), 2.6 / scale)
    shade = 9 * np.sin(x * thread) * np.sin(y * thread)
    shade = shade + 12 * smooth_noise(rng, rows, columns, height / 45, width / 45)
    shade = shade + 5 * rng.standard_normal((rows, columns), dtype=np.float32)
    picture = colour + shade[..., None]
    if rng.random() < 0.5:
        pitch, share = rng.uniform(12, 36), rng.uniform(0.2, 0.5)
        other = np.array(CLOTH_COLOURS[rng.integers(len(CLOTH_COLOURS))], np.float32) - colour
        bands = 0.5 * ((x % pitch) < share * pitch) + 0.5 * ((y % pitch) < share * pitch)
        picture = picture + (0.6 * bands)[..., None] * other
    return picture


def speckled(rng, width, height, scale):
    """Stone or leather: blotches on several scales."""
    rows, columns = round(height * scale), round(width * scale)
    colour = np.array(PLAIN_COLOURS[rng.integers(len(PLAIN_COLOURS))], np.float32)
    shade = sum(weight * smooth_noise(rng, rows, columns, height / cell, width / cell)
                for weight, cell in ((16, 40), (12, 9), (14, 2.5), (10, 0.9)))
    return colour + shade[..., None]


SURFACES = {"plain": plain, "card-like": card_like, "wood": wood, "cloth": cloth, "speckled": speckled}
# Kind of desk -> (weight, surfaces, what lies on it).
KINDS = {
    "plain": (16, ("plain",), ()), "wood": (20, ("wood",), ()), "cloth": (14, ("cloth",), ()),
    "speckled": (8, ("speckled",), ()), "card-like": (12, ("card-like",), ()),
    "papers": (18, ("wood", "plain", "speckled"), ("sheets", "pen")),
    "keyboard": (8, ("plain", "wood"), ("keyboard",)),
    "things": (10, ("wood", "plain", "cloth"), ("pen", "mug", "coins", "phone")),
}


def lay(picture, thing, mask, middle, angle, scale, shadow):
    """Pastes a thing (RGB) turned by `angle` degrees, with a soft shadow below it; `middle` is from the picture's."""
    thing = thing.rotate(angle, Image.Resampling.BICUBIC, expand=True)
    mask = mask.rotate(angle, Image.Resampling.BICUBIC, expand=True)
    left = round(picture.width / 2 + middle[0] * scale - thing.width / 2)
    top = round(picture.height / 2 + middle[1] * scale - thing.height / 2)
    reach = max(2, round(shadow * scale))
    soft = Image.new("L", (mask.width + 4 * reach, mask.height + 4 * reach))
    soft.paste(mask.point(lambda v: v * 0.45), (2 * reach, 2 * reach))
    soft = soft.filter(ImageFilter.GaussianBlur(reach * 0.7))
    picture.paste((18, 16, 16), (left - 2 * reach + reach // 2, top - 2 * reach + reach // 2), soft)
    picture.paste(thing, (left, top), mask)


def _place(picture, thing, mask, middle, angle, scale, shadow):
    """Lays a thing that was drawn at 2 x scale."""
    half = (max(1, thing.width // 2), max(1, thing.height // 2))
    thing, mask = (drawn.resize(half, Image.Resampling.BOX) for drawn in (thing, mask))
    lay(picture, thing, mask, middle, angle, scale, shadow)


def _blank(width, height, scale, colour):
    size = (max(2, round(2 * width * scale)), max(2, round(2 * height * scale)))
    return Image.new("RGB", size, colour), Image.new("L", size, 255)


def _around(rng, nearest, farthest):
    """A place at a distance from the card's middle, in any direction."""
    angle, reach = rng.uniform(0, 2 * math.pi), rng.uniform(nearest, farthest)
    return (1.3 * reach * math.cos(angle), reach * math.sin(angle))


def _sheet(rng, scale):
    """A page with lines of unreadable strokes, as print looks from far away."""
    width, height = (210, 297) if rng.random() < 0.6 else (148, 210)
    tone = int(rng.integers(224, 250))
    page, mask = _blank(width, height, scale, (tone, tone, tone - int(rng.integers(0, 12))))
    draw = ImageDraw.Draw(page)
    unit, ink = 2 * scale, int(rng.integers(90, 190))
    y, pitch = 18.0, rng.uniform(4.2, 8)
    while y < height - 16:
        x, end = 18.0, (width - 18) * (1 if rng.random() < 0.8 else rng.uniform(0.3, 0.9))
        while x < end:
            word, stroke = rng.uniform(1.2, 7), rng.uniform(0.5, 1.3)
            tone = (ink + int(rng.integers(-20, 40)),) * 3
            draw.line([x * unit, y * unit, min(x + word, end) * unit, y * unit], fill=tone,
                      width=max(1, round(stroke * unit)))
            x += word + rng.uniform(0.6, 1.6)
        y += pitch
    return page, mask


def sheets(rng, picture, scale):
    for _ in range(int(rng.integers(1, 4))):
        page, mask = _sheet(rng, scale)
        _place(picture, page, mask, _around(rng, 10, 130), rng.uniform(-60, 60), scale, 0.8)


def pen(rng, picture, scale):
    colour = PLAIN_COLOURS[rng.integers(len(PLAIN_COLOURS))]
    barrel, mask = _blank(140, 9, scale, colour)
    draw, cut, unit = ImageDraw.Draw(barrel), ImageDraw.Draw(mask), 2 * scale
    draw.rectangle([0, 2.2 * unit, 140 * unit, 3.4 * unit], fill=tuple(min(255, c + 60) for c in colour))
    draw.rectangle([96 * unit, 0, 99 * unit, 9 * unit], fill=(180, 180, 184))
    cut.rectangle([0, 0, 140 * unit, 9 * unit], fill=0)
    cut.polygon([(0, 4.5 * unit), (14 * unit, 0), (137 * unit, 0), (140 * unit, 2 * unit), (140 * unit, 7 * unit),
                 (137 * unit, 9 * unit), (14 * unit, 9 * unit)], fill=255)
    _place(picture, barrel, mask, _around(rng, 52, 95), rng.uniform(0, 180), scale, 3)


def mug(rng, picture, scale):
    cup, mask = _blank(84, 84, scale, PLAIN_COLOURS[rng.integers(len(PLAIN_COLOURS))])
    draw, unit = ImageDraw.Draw(cup), 2 * scale
    mask.paste(0, (0, 0, *mask.size))
    ImageDraw.Draw(mask).ellipse([0, 0, 84 * unit, 84 * unit], fill=255)
    draw.ellipse([5 * unit, 5 * unit, 79 * unit, 79 * unit], fill=(226, 222, 216))
    draw.ellipse([8 * unit, 8 * unit, 76 * unit, 76 * unit], fill=(64, 40, 26))
    _place(picture, cup, mask, _around(rng, 95, 125), 0, scale, 7)


def coins(rng, picture, scale):
    for _ in range(int(rng.integers(1, 5))):
        size, tone = rng.uniform(19, 25), int(rng.integers(130, 200))
        coin, mask = _blank(size, size, scale, (tone, tone, tone - 10))
        mask.paste(0, (0, 0, *mask.size))
        ImageDraw.Draw(mask).ellipse([0, 0, mask.width - 1, mask.height - 1], fill=255)
        rim = 1.2 * 2 * scale
        ImageDraw.Draw(coin).ellipse([rim, rim, coin.width - rim, coin.height - rim], fill=(tone - 22,) * 3)
        _place(picture, coin, mask, _around(rng, 58, 100), 0, scale, 1)


def phone(rng, picture, scale):
    body, mask = _blank(72, 150, scale, (22, 23, 26))
    draw, unit = ImageDraw.Draw(body), 2 * scale
    mask.paste(0, (0, 0, *mask.size))
    ImageDraw.Draw(mask).rounded_rectangle([0, 0, 72 * unit, 150 * unit], 9 * unit, fill=255)
    tone = int(rng.integers(20, 70))
    draw.rounded_rectangle([2.5 * unit, 2.5 * unit, 69.5 * unit, 147.5 * unit], 7 * unit, fill=(tone, tone, tone + 8))
    _place(picture, body, mask, _around(rng, 105, 130), rng.uniform(-30, 30), scale, 4)


def keyboard(rng, picture, scale):
    dark = rng.random() < 0.6
    base, key, ink = KEYBOARD_DARK if dark else KEYBOARD_LIGHT
    board, mask = _blank(300, 110, scale, base)
    draw, unit = ImageDraw.Draw(board), 2 * scale
    face = canvas.font("sans", max(4, round(4.5 * unit)))
    for row, letters in enumerate(("1234567890-=", "QWERTYUIOP[]", "ASDFGHJKL;'", "ZXCVBNM,./")):
        for column in range(15):
            left, top = (6 + 19 * column + 5 * row) * unit, (8 + 19 * row) * unit
            draw.rounded_rectangle([left, top, left + 17 * unit, top + 17 * unit], 2 * unit, fill=key)
            if 1 <= column <= len(letters):
                draw.text((left + 3 * unit, top + 2 * unit), letters[column - 1], font=face, fill=ink)
    side = 1 if rng.random() < 0.5 else -1
    _place(picture, board, mask, (rng.uniform(-60, 60), side * rng.uniform(88, 105)), rng.uniform(-8, 8), scale, 4)


THINGS = {"sheets": sheets, "pen": pen, "mug": mug, "coins": coins, "phone": phone, "keyboard": keyboard}


def pick_kind(rng):
    """A kind of desk by weight."""
    weights = np.array([kind[0] for kind in KINDS.values()], float)
    return list(KINDS)[rng.choice(len(KINDS), p=weights / weights.sum())]


def desk(rng, kind, width, height, pixels_per_mm):
    """A piece of desk of that kind, `width` x `height` mm around the middle of the card."""
    _, surfaces, things = KINDS[kind]
    surface = SURFACES[surfaces[rng.integers(len(surfaces))]]
    texture = surface(rng, width, height, pixels_per_mm)
    picture = Image.fromarray(np.clip(texture, 0, 255).astype(np.uint8))
    for thing in things:
        if len(things) < 3 or rng.random() < 0.6:
            THINGS[thing](rng, picture, pixels_per_mm)
    return picture
