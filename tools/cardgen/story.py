"""What happens in a clip, and when: which card lies where, how the hand shakes, how the light changes.

Times are seconds, places are shares of the picture's width. A story is drawn at random once, and everything in it is
then a function of time, so that any moment between two frames can be asked for.
"""

import dataclasses
import math

import numpy as np

VARIANTS = ("easy", "wobbling", "glare", "dark", "removed", "second")

# The hand's own tremor and its slow drift, always there: hertz and reach.
TREMOR, TREMOR_REACH = (6, 10), 0.0005
DRIFT, DRIFT_REACH = (0.2, 0.5), 0.004
# Searching movements before the hand is still, by variant, and how long they take to die away.
WOBBLE, SETTLING = (0.6, 1.4), 0.35
WOBBLE_REACH = {"wobbling": 0.03}
USUAL_WOBBLE_REACH = 0.006
# A card that is taken away was not still for long enough to be photographed.
GLANCE = (0.1, 0.25)
# Time after the last obstacle: two attempts at a photo, or until a user presses the button.
REST = {"easy": 2.7, "wobbling": 2.4, "glare": 3.3, "dark": 2.7, "removed": 2.4, "second": 2.4}
DARKNESS = (0.03, 0.045)
FADE = 0.3


def smooth(share):
    """From 0 to 1 without a jolt at either end."""
    share = min(max(share, 0.0), 1.0)
    return share * share * (3 - 2 * share)


@dataclasses.dataclass(frozen=True)
class Showing:
    """One card's time on the desk: it slides in from a direction, lies still, and may be taken away."""

    card: int
    start: float
    travel: float
    direction: float  # radians
    leave: float = math.inf

    @property
    def rest(self):
        return self.start + self.travel

    @property
    def gone(self):
        return self.leave + self.travel

    def place(self, time):
        """How far the card is from where it is to lie, or None while it is not there."""
        if not self.start <= time < self.gone:
            return None
        left = 1 - min((time - self.start) / self.travel, 1.0)
        away = left ** 3 + max(0.0, (time - self.leave) / self.travel) ** 2
        return 1.25 * away * math.cos(self.direction), 1.25 * away * math.sin(self.direction)


class Shake:
    """A sum of sines of random frequency and phase."""

    def __init__(self, rng, frequencies, reach):
        self._parts = [(rng.uniform(*frequencies), rng.uniform(0, 2 * math.pi), reach * rng.uniform(0.5, 1) / 2)
                       for _ in range(2)]

    def __call__(self, time):
        return sum(reach * math.sin(2 * math.pi * frequency * time + phase) for frequency, phase, reach in self._parts)


class Hand:
    """How the camera moves over the desk."""

    def __init__(self, rng, wobble_reach, still):
        self._still = still
        # Sideways, up and down, turn, distance and the two tilts; a turn by one radian moves the rim by half a width.
        self._axes = [(Shake(rng, TREMOR, weight * TREMOR_REACH), Shake(rng, DRIFT, weight * DRIFT_REACH),
                       Shake(rng, WOBBLE, weight * wobble_reach)) for weight in (1, 0.7, 0.8, 1, 1, 1)]

    def movement(self, time):
        """The 3 x 3 matrix of the moment about the middle of the picture, in shares of the picture's width."""
        wobble = smooth((self._still - time) / SETTLING)
        right, down, turn, nearer, yaw, pitch = (tremor(time) + drift(time) + wobble * shake(time)
                                                 for tremor, drift, shake in self._axes)
        zoom = 1 + nearer
        return np.array([[zoom, -turn, right], [turn, zoom, down], [yaw, pitch, 1.0]])


@dataclasses.dataclass(frozen=True)
class Story:
    variant: str
    showings: tuple
    hand: Hand
    still: float  # from here on the last card is held still
    clear: float | None  # from here on nothing hides it
    seconds: float
    darkness: float  # exposure until the light comes

    @property
    def cards(self):
        """How many different cards are shown."""
        return len({showing.card for showing in self.showings})

    def card(self, time):
        """The card that is seen and its place, or None."""
        for showing in self.showings:
            place = showing.place(time)
            if place is not None:
                return showing.card, place
        return None

    def exposure(self, time):
        if self.variant != "dark":
            return 1.0
        return self.darkness + (1 - self.darkness) * smooth((time - self.clear + FADE) / FADE)

    def glare(self, time):
        """Strength of the lamp's mirror image: it comes with the card, hides it, and goes when the card is tilted."""
        if self.variant != "glare":
            return 0.0
        return smooth((time - self.showings[-1].rest + FADE) / FADE) * (1 - smooth((time - self.clear + FADE) / FADE))


def _slide(rng, card, start, leave_after=math.inf):
    travel, direction = rng.uniform(0.45, 0.65), rng.uniform(0, 2 * math.pi)
    return Showing(card, start, travel, direction, start + travel + leave_after)


def tell(variant, rng):
    """A story of that variant; `rng` is a numpy generator."""
    showings = [_slide(rng, 0, rng.uniform(0.2, 0.4))]
    if variant in ("removed", "second"):
        showings = [_slide(rng, 0, rng.uniform(0.1, 0.2), rng.uniform(*GLANCE))]
        showings.append(_slide(rng, int(variant == "second"), showings[0].gone + rng.uniform(0.2, 0.5)))
    still = showings[-1].rest + (rng.uniform(0.8, 1.3) if variant == "wobbling" else 0.1)
    clear = still + rng.uniform(0.7, 1.5) if variant in ("glare", "dark") else None
    hand = Hand(rng, WOBBLE_REACH.get(variant, USUAL_WOBBLE_REACH), still)
    return Story(variant, tuple(showings), hand, still, clear, (clear or still) + REST[variant],
                 rng.uniform(*DARKNESS))
