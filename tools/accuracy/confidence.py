"""What the report tells of confidence: how sure the tool said to be of each field, and whether it was right."""

import collections
import pathlib
import typing

import reading

# Least stated confidence of a row -> the row.
ROWS = {0.0: "below 0.5", 0.5: "0.5 to 0.8", 0.8: "0.8 to 0.9", 0.9: "0.9 to 0.99", 0.99: "0.99 and more"}
# Fields that are stated so surely are to be right in so many of a hundred cases.
SURE, GOAL = 0.9, 99.5
MOST_LISTED = 40
WRONG_PASSING, UNMARKED = "wrong, no check fails", "wrong, unmarked"


class Field(typing.NamedTuple):
    """One field that was read."""

    path: str
    name: str
    read: str
    told: str
    confidence: float

    @property
    def is_right(self):
        return reading.is_right(self.name, self.read, self.told)


def row(confidence):
    """The row of the table in which a confidence counts."""
    return ROWS[max(least for least in ROWS if least <= confidence)]


def fields(path, truth, answer):
    """The fields of a record that the reports count and of which something was read, also if nothing is told there."""
    if "result" not in answer or answer["kind"] != truth["kind"]:
        return []
    stated = {name: field for name, field in answer.get("fields", {}).items()
              if name in reading.FIELDS[truth["kind"]] and field["text"]}
    return [Field(path, name, field["text"], reading.text(truth["result"][name]), field["confidence"])
            for name, field in stated.items()]


def cell(marks):
    """How many there are, and the share that holds in percent."""
    return f"{len(marks):>8} {100 * sum(marks) / len(marks):6.1f}" if marks else f"{0:>8}      -"


class Stated:
    """The fields and records of all pictures read, by kind."""

    def __init__(self):
        self.fields = collections.defaultdict(list)
        self.records = collections.defaultdict(lambda: collections.defaultdict(list))  # kind -> row -> whether it holds

    def add(self, kind, path, truth, answer):
        """Counts one answer under a kind; answers that state no confidence are left out."""
        if "fields" not in answer:
            return
        self.fields[kind] += fields(path, truth, answer)
        self.records[kind][WRONG_PASSING].append(reading.is_wrong_and_passes(truth, answer))
        self.records[kind][UNMARKED].append(reading.is_wrong_and_unmarked(truth, answer))

    def sure(self):
        """All fields that were stated surely."""
        return [field for every in self.fields.values() for field in every if field.confidence >= SURE]


def _print_row(name, columns):
    """A row; `columns` are lists of what holds, and all of them together stand last."""
    print(f"  {name:<22}" + "".join(map(cell, (*columns, sum(columns, [])))))


def print_stated(stated):
    """One table: a row a range of confidence, a column a kind; then what was stated surely though it is wrong."""
    if not stated.records:
        return
    print("\nstated confidence: how many fields | % of them right")
    print(" " * 24 + "".join(f"{kind:>15}" for kind in (*stated.records, "all")))
    columns = [stated.fields[kind] for kind in stated.records]
    for name in ROWS.values():
        _print_row(name, [[field.is_right for field in every if row(field.confidence) == name] for every in columns])
    _print_row(f"{SURE} and more", [[field.is_right for field in every if field.confidence >= SURE]
                                    for every in columns])
    print("  how many records | % of them")
    for name in (WRONG_PASSING, UNMARKED):
        _print_row(name, [records[name] for records in stated.records.values()])
    sure = stated.sure()
    wrong = [field for field in sure if not field.is_right]
    share = f"{100 * (1 - len(wrong) / len(sure)):.2f}" if sure else "-"
    print(f"  at {SURE} and more: {len(sure)} fields, {share} % right; the goal is {GOAL} %")
    for field in wrong[:MOST_LISTED]:
        file = pathlib.Path(field.path).name
        print(f"    {file}: {field.name} {field.confidence:.3f} {field.read} is {field.told or '-'}")
    if len(wrong) > MOST_LISTED:
        print(f"    and {len(wrong) - MOST_LISTED} more")
