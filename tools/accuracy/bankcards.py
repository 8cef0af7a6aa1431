"""What the report counts over bank cards: what became of the number, the other fields, and the stage that read it."""

import collections

import reading

# The generator's styles of bank cards and the looks that each has.
STYLES = {"plain": ("flat", "silver", "gold", "worn"), "lifelike": ("flat", "silver", "gold", "worn", "bare")}
LOOKS = STYLES["lifelike"]
# Stages of the pipeline in their order; "none" is a card that none of them read.
STAGES = ("first", "retry", "band", "fusion", "none")
WRONG_PASSING, WRONG_MARKED = "wrong, passes Luhn", "wrong, fails Luhn"


def facts(truth, answer):
    """Row of the table -> whether it holds of this card; a row that does not apply to the card is left out."""
    wrong = reading.wrong_fields(truth, answer)
    result, told = answer.get("result") or {}, truth["result"]
    read_wrong = bool(result) and "cardNumber" in wrong
    passes = bool(result) and answer["checks"]["luhn"]
    rows = {
        "number exact": "cardNumber" not in wrong,
        WRONG_PASSING: read_wrong and passes,
        WRONG_MARKED: read_wrong and not passes,
        "no number": not result,
    }
    for row, field in (("bank", "bankName"), ("type", "cardType"), ("holder", "cardholderName")):
        if told[field] is not None:
            rows[row] = field not in wrong
        else:
            rows[f"{row} invented"] = result.get(field) is not None
    rows["whole record"] = not wrong
    rows["wrong, no check fails"] = reading.is_wrong_and_passes(truth, answer)
    rows["wrong, unmarked"] = reading.is_wrong_and_unmarked(truth, answer)
    stage = answer.get("stage", "unknown") if result else "none"
    return rows | {f"read by {name}": name == stage for name in STAGES}


class Tally:
    """Shares over the cards of one look and level."""

    def __init__(self):
        self.hold = collections.Counter()
        self.all = collections.Counter()
        self.errors = collections.Counter()

    def add(self, truth, answer):
        for row, holds in facts(truth, answer).items():
            self.hold[row] += holds
            self.all[row] += 1
        if "error" in answer:
            self.errors[answer["error"]["code"]] += 1

    def __add__(self, other):
        total = Tally()
        for counter in ("hold", "all", "errors"):
            for part in (self, other):
                getattr(total, counter).update(getattr(part, counter))
        return total

    def cell(self, row):
        """The share in percent, and over how many cards."""
        return f"{100 * self.hold[row] / self.all[row]:6.1f} {self.all[row]:4}" if self.all[row] else "     -    0"


ROWS = ("number exact", WRONG_PASSING, WRONG_MARKED, "no number", "bank", "bank invented", "type", "type invented",
        "holder", "holder invented", "whole record", "wrong, no check fails", "wrong, unmarked",
        *(f"read by {stage}" for stage in STAGES))


def print_tallies(title, tallies):
    """One table: a row a question, a column a look."""
    columns = dict(tallies)
    if len(tallies) > 1:
        columns["all"] = sum(tallies.values(), Tally())
    print(f"\nbank-card {title}: % | of how many cards")
    print(" " * 24 + "".join(f"{look:>14}" for look in columns))
    for row in ROWS:
        print(f"  {row:<22}" + "".join(f"{tally.cell(row):>14}" for tally in columns.values()))
    for look, tally in tallies.items():
        for code, count in tally.errors.most_common():
            print(f"  {look}: {count} x {code}")


def print_doubtless_wrong(tables):
    """By style and level: wrong numbers that nothing gives away. `tables`: (style, level) -> look -> tally."""
    print("\nwrong numbers that pass Luhn")
    for (style, level), tallies in tables.items():
        total = sum(tallies.values(), Tally())
        print(f"  {style:<9} {level:<6} {total.hold[WRONG_PASSING]} of {total.all[WRONG_PASSING]}")
