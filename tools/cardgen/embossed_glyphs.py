"""The characters of card embossers as strokes: the middle lines that the punch raises.

Every character stands in a box of 1 x 1 from the top left. A line that turns within itself turns in a round corner;
where two lines meet the corner is sharp.
"""

import numpy as np

import emboss

# The large digits of most cards (the embossers' face "7B"): open 4, flat-topped 3, 6 and 9 with a straight stem.
SQUARE_DIGITS = {
    "0": (((0.5, 0), (1, 0), (1, 1), (0, 1), (0, 0), (0.5, 0)),),
    "1": (((0.2, 0.05), (0.54, 0), (0.54, 1)), ((0.12, 1), (0.96, 1))),
    "2": (((0, 0.17), (0, 0), (1, 0), (1, 0.43), (0, 0.64), (0, 1)), ((0, 1), (1, 1))),
    "3": (((0, 0.03), (0.96, 0), (0.96, 0.34), (0.5, 0.46)), ((0.34, 0.46), (1, 0.46), (1, 1), (0, 1), (0, 0.86))),
    "4": (((0.34, 0), (0.02, 0.4), (0.02, 0.63), (1, 0.63)), ((0.68, 0.14), (0.68, 1))),
    "5": (((0.94, 0), (0.05, 0), (0.05, 0.41), (1, 0.41), (1, 1), (0, 1), (0, 0.88)),),
    "6": (((0.05, 0), (0, 0.2), (0, 1), (1, 1), (1, 0.45), (0, 0.45)),),
    "7": (((0, 0.17), (0, 0), (1, 0), (0.93, 0.4), (0.93, 1)),),
    "8": (((0.5, 0), (0.93, 0), (0.93, 0.3), (0.74, 0.46), (0.26, 0.46), (0.07, 0.3), (0.07, 0), (0.5, 0)),
          ((0.26, 0.46), (0, 0.64), (0, 1), (1, 1), (1, 0.64), (0.74, 0.46))),
    "9": (((1, 0.55), (0, 0.55), (0, 0), (1, 0), (1, 0.8), (0.95, 1)),),
}

# Capitals of the rows below the number.
LETTERS = {
    "A": (((0, 1), (0.5, 0)), ((0.5, 0), (1, 1)), ((0.18, 0.66), (0.82, 0.66))),
    "B": (((0, 0), (0.9, 0), (0.9, 0.46), (0, 0.46)), ((0.4, 0.46), (1, 0.46), (1, 1), (0, 1)), ((0, 0), (0, 1))),
    "C": (((1, 0.22), (1, 0), (0, 0), (0, 1), (1, 1), (1, 0.78)),),
    "D": (((0, 0), (1, 0), (1, 1), (0, 1)), ((0, 0), (0, 1))),
    "E": (((1, 0), (0, 0)), ((0, 0), (0, 1)), ((0, 1), (1, 1)), ((0, 0.47), (0.8, 0.47))),
    "F": (((1, 0), (0, 0)), ((0, 0), (0, 1)), ((0, 0.47), (0.8, 0.47))),
    "G": (((1, 0.22), (1, 0), (0, 0), (0, 1), (1, 1), (1, 0.56)), ((1, 0.56), (0.56, 0.56))),
    "H": (((0, 0), (0, 1)), ((1, 0), (1, 1)), ((0, 0.47), (1, 0.47))),
    "I": (((0.5, 0), (0.5, 1)), ((0.18, 0), (0.82, 0)), ((0.18, 1), (0.82, 1))),
    "J": (((0.86, 0), (0.86, 1), (0, 1), (0, 0.72)),),
    "K": (((0, 0), (0, 1)), ((1, 0), (0, 0.58)), ((0.34, 0.42), (1, 1))),
    "L": (((0, 0), (0, 1)), ((0, 1), (0.96, 1))),
    "M": (((0, 1), (0, 0)), ((0, 0), (0.5, 0.5)), ((0.5, 0.5), (1, 0)), ((1, 0), (1, 1))),
    "N": (((0, 1), (0, 0)), ((0, 0), (1, 1)), ((1, 1), (1, 0))),
    "O": (((0.5, 0), (1, 0), (1, 1), (0, 1), (0, 0), (0.5, 0)),),
    "P": (((0, 0), (1, 0), (1, 0.54), (0, 0.54)), ((0, 0), (0, 1))),
    "Q": (((0.5, 0), (1, 0), (1, 1), (0, 1), (0, 0), (0.5, 0)), ((0.62, 0.72), (1.04, 1.08))),
    "R": (((0, 0), (1, 0), (1, 0.52), (0, 0.52)), ((0, 0), (0, 1)), ((0.5, 0.52), (1, 1))),
    "S": (((1, 0.18), (1, 0), (0, 0), (0, 0.47), (1, 0.47), (1, 1), (0, 1), (0, 0.82)),),
    "T": (((0, 0), (1, 0)), ((0.5, 0), (0.5, 1))),
    "U": (((0, 0), (0, 1), (1, 1), (1, 0)),),
    "V": (((0, 0), (0.5, 1)), ((0.5, 1), (1, 0))),
    "W": (((0, 0), (0.2, 1)), ((0.2, 1), (0.5, 0.4)), ((0.5, 0.4), (0.8, 1)), ((0.8, 1), (1, 0))),
    "X": (((0, 0), (1, 1)), ((1, 0), (0, 1))),
    "Y": (((0, 0), (0.5, 0.5)), ((0.5, 0.5), (1, 0)), ((0.5, 0.5), (0.5, 1))),
    "Z": (((0, 0), (1, 0)), ((1, 0), (0, 1)), ((0, 1), (1, 1))),
    "/": (((0, 1), (1, 0)),),
    " ": (),
}
# A round corner begins so far from it, in boxes across, but no farther than this share of the shorter line.
CORNER, CORNER_SHARE = 0.28, 0.5
FACES = ("square", "round")


def _rounded(points, width, height, steps=5):
    """The line in its box's measures, its inner corners replaced by arcs (quadratic Bezier curves)."""
    p = np.array(points, float) * (width, height)
    path = [p[0]]
    t = np.linspace(0, 1, steps)[:, None]
    for before, corner, after in zip(p, p[1:], p[2:]):
        into, out = before - corner, after - corner
        reach = min(CORNER * width, *(CORNER_SHARE * np.hypot(*side) for side in (into, out)))
        start, end = corner + reach * into / np.hypot(*into), corner + reach * out / np.hypot(*out)
        path.extend((1 - t) ** 2 * start + 2 * t * (1 - t) * corner + t ** 2 * end)
    return np.array([*path, p[-1]])


def strokes(character, face, width, height):
    """The lines (n x 2) of a character from the top left of a box; `face` of FACES decides how digits look."""
    if character.isdigit() and face == "round":
        return [emboss.curve(points) * (width, height) if curved else np.array(points, float) * (width, height)
                for curved, points in emboss.DIGITS[character]]
    lines = SQUARE_DIGITS[character] if character.isdigit() else LETTERS[character]
    return [_rounded(points, width, height) for points in lines]
