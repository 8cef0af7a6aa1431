"""Has the scanner watch clips, and counts what it made of them and how long that took.

Times are those of the clip: what the machine needs for recognition is not in them, the closing of the screen is.
"""

import concurrent.futures
import json
import math
import statistics
import subprocess

import reading

# Kind of clip -> the scanner's mode.
MODES = {"id-front": "idCardFront", "id-back": "idCardBack", "bank-card": "bankCard", "code": "qrCode"}
# What nobody may be given wrong, and the tool's check of it.
NUMBERS = {"id-front": ("idNumber", "checkDigit"), "id-back": ("validityPeriod", "startBeforeEnd"),
           "bank-card": ("cardNumber", "luhn"), "code": ("payload", None)}


def scan(pravik, kind, path):
    """The scanner's last word on one clip, its record or error, and under "time" at which second."""
    command = [str(pravik), "scan", path, "--mode", MODES[kind], "--format", "jsonl"]
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, text=True, encoding="utf-8", check=False)
    except OSError as error:
        raise SystemExit(f"{pravik} cannot be run ({error.strerror}); build it with: make build") from error
    lines = [json.loads(line) for line in done.stdout.splitlines()]
    if done.returncode not in reading.ANSWERED or not lines:
        raise SystemExit(f"{pravik} scan ended with status {done.returncode}: {path}")
    return lines[-1]


def scan_all(pravik, truths, jobs):
    """The answers for some clips, in their order."""
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        return list(pool.map(lambda truth: scan(pravik, truth["kind"], truth["path"]), truths))


class Tally:
    """What became of the clips of one variant."""

    def __init__(self):
        self.clips = self.right = self.wrong_numbers = self.passing = self.none = 0
        self.waits = []  # seconds from the moment when nothing hinders the scanner any more to its record

    def add(self, truth, answer):
        wrong = reading.wrong_fields(truth, answer)
        self.clips += 1
        self.right += not wrong
        if not answer.get("result"):
            self.none += 1
            return
        number, check = NUMBERS[truth["kind"]]
        if number in wrong:
            self.wrong_numbers += 1
            self.passing += answer.get("checks", {}).get(check) is not False
        self.waits.append(answer["time"] - max(truth["heldStill"], truth.get("clear", 0)))

    def __add__(self, other):
        total = Tally()
        for name, value in vars(self).items():
            setattr(total, name, value + getattr(other, name))
        return total

    def cells(self):
        """The columns of the table."""
        waits = sorted(self.waits)
        times = (statistics.median(waits), waits[math.ceil(0.9 * len(waits)) - 1]) if waits else ()
        return (str(self.clips), f"{100 * self.right / self.clips:.1f}", str(self.wrong_numbers), str(self.passing),
                str(self.none), *(f"{wait:.2f}" for wait in times))


COLUMNS = ("clips", "right %", "wrong number", "passes check", "no record", "median s", "90 % s")


def print_tallies(kind, tallies):
    """One table: a row a variant."""
    print(f"\n{kind}: seconds are from the moment when the card is still and the light good")
    print(" " * 16 + "".join(f"{column:>14}" for column in COLUMNS))
    for variant, tally in tallies.items():
        print(f"  {variant:<14}" + "".join(f"{cell:>14}" for cell in tally.cells()))
