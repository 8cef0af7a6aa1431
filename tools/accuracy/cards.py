"""What the report counts over pictures of several cards: which were found, and what was read from them."""

import collections
import math

import reading


def _middle(corners):
    return [sum(corner[axis] for corner in corners) / len(corners) for axis in range(2)]


def matches(told, found):
    """Pairs of a card that is told and the one that was found there, each at most once, and the other ones found."""
    pairs, left = [], list(found)
    for card in told:
        reach = math.dist(card["corners"][0], card["corners"][2]) / 4
        near = [one for one in left if math.dist(_middle(one["corners"]), _middle(card["corners"])) < reach]
        if near:
            left.remove(near[0])
            pairs.append((card, near[0]))
    return pairs, left


class Tally:
    """Counts over the pictures of one kind and level."""

    def __init__(self):
        self.pictures = self.cards = self.false = 0
        self.hold = collections.Counter()

    def add(self, truth, answer):
        """Counts one picture; whether it was read as it is."""
        found = answer.get("cards", [])
        pairs, others = matches(truth["cards"], found)
        false = [card for card in others if card["kind"] is not None]
        self.pictures += 1
        self.cards += len(truth["cards"])
        self.false += len(false)
        right = not false and len(pairs) == len(truth["cards"])
        for told, card in pairs:
            wrong = reading.wrong_fields(told, card)
            self.hold["found"] += 1
            self.hold["kind right"] += card["kind"] == told["kind"]
            self.hold["record exact"] += not wrong
            self.hold["wrong, no check fails"] += reading.is_wrong_and_passes(told, card)
            self.hold["wrong, unmarked"] += reading.is_wrong_and_unmarked(told, card)
            self.hold["in a pair"] += card.get("pair", False)
            right = right and not wrong
        return right


ROWS = ("found", "kind right", "record exact", "wrong, no check fails", "wrong, unmarked", "in a pair")


def print_tallies(kind, tallies):
    """One table: a row a question, a column a level."""
    print(f"\n{kind}: % of the cards")
    print(" " * 24 + "".join(f"{level:>10}" for level in tallies))
    for row in ROWS:
        print(f"  {row:<22}" + "".join(f"{100 * tally.hold[row] / tally.cards:10.1f}" for tally in tallies.values()))
    for level, tally in tallies.items():
        print(f"  {level}: {tally.cards} cards on {tally.pictures} pictures, {tally.false} falsely found")
