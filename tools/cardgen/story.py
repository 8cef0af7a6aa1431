"""What happens in a clip, and when: which card lies where, how the hand shakes, how the light changes.

Times are seconds, places are shares of the picture's width. A story is drawn at random once, and everything in it is
then a function of time, so that any moment between two frames can be asked for.
"""

import dataclasses
import math

import numpy as np

# The hand's own tremor and its slow drift, always there: hertz and reach.
TREMOR, TREMOR_REACH = (6, 10), 0.0005
DRIFT, DRIFT_REACH = (0.2, 0.5), 0.004
WOBBLE, SETTLING = (0.6, 1.4), 0.35  # searching movements, and how long they take to die away
# A card that is taken away was not still for long enough to be photographed.
GLANCE = (0.1, 0.25)
# How long the light stays bad once the card is still, how dark it is, and how long it takes to change.
BAD_LIGHT, DARKNESS, FADE = (0.7, 1.5), (0.03, 0.045), 0.3


@dataclasses.dataclass(frozen=True)
class Plot:
    """What sets a variant apart."""

    rest: float  # from the moment when the card is still to the end: time for two attempts at a photo
    wobble: float = 0.006  # reach of the hand's searching movements
    search: tuple = (0.1, 0.1)  # how long they last once the card lies there
    fault: str | None = None  # of the light: "glare" or "dark"
    before: str | None = None  # the card that is shown and taken away at first: the "same" or an "other"


PLOTS = {
    "easy": Plot(rest=2.7),
    "wobbling": Plot(rest=2.5, wobble=0.045, search=(0.8, 1.3)),
    # Long enough for a scanner to offer a button for want of a good frame, and for a person to press it.
    "glare": Plot(rest=5.5, fault="glare"),
    "dark": Plot(rest=4.2, fault="dark"),
    "removed": Plot(rest=2.5, before="same"),
    "second": Plot(rest=2.5, before="other"),
}


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
    fault: str | None
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
        if self.fault != "dark":
            return 1.0
        return self.darkness + (1 - self.darkness) * smooth((time - self.clear + FADE) / FADE)

    def glare(self, time):
        """Strength of the lamp's mirror image: it comes with the card, hides it, and goes when the card is tilted."""
        if self.fault != "glare":
            return 0.0
        return smooth((time - self.showings[-1].rest + FADE) / FADE) * (1 - smooth((time - self.clear + FADE) / FADE))


def _slide(rng, card, start, leave_after=math.inf):
    travel, direction = rng.uniform(0.45, 0.65), rng.uniform(0, 2 * math.pi)
    return Showing(card, start, travel, direction, start + travel + leave_after)


def tell(variant, rng):
    """A story of that variant; `rng` is a numpy generator."""
    plot = PLOTS[variant]
    showings = [_slide(rng, 0, rng.uniform(0.2, 0.4))]
    if plot.before:
        showings = [_slide(rng, 0, rng.uniform(0.1, 0.2), rng.uniform(*GLANCE))]
        showings.append(_slide(rng, int(plot.before == "other"), showings[0].gone + rng.uniform(0.2, 0.5)))
    still = showings[-1].rest + rng.uniform(*plot.search)
    clear = still + rng.uniform(*BAD_LIGHT) if plot.fault else None
    return Story(plot.fault, tuple(showings), Hand(rng, plot.wobble, still), still, clear, still + plot.rest,
                 rng.uniform(*DARKNESS))
