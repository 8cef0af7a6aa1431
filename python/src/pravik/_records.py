"""What a picture gives. All of it is immutable, can be compared, hashed and pickled.

The fields are those of the JSON that the command line prints, with their names in snake case: `idNumber` is
`id_number`, and so in `report.fields` and `report.doubtful`. Points are pixels from the top left of the upright
picture. Each record has its `checks` (but codes and text), its `report`, and `json`: the whole answer as the command
line prints it with `--report`, without the name of the file. `repr()` of a record shows what is on the card; keep it out of logs.
"""

from __future__ import annotations

import json
import re
from collections.abc import Callable, Iterable, Mapping
from dataclasses import dataclass, field
from typing import Any, Literal, TypeAlias

Kind: TypeAlias = Literal["id-front", "id-back", "bank-card", "code", "text", "cards"]
Point: TypeAlias = tuple[float, float]
Corners: TypeAlias = tuple[Point, Point, Point, Point]
"""Upper left, upper right, lower right and lower left, as the card or the text is upright."""


@dataclass(frozen=True, slots=True)
class FieldReport:
    """How a field was read."""

    name: str
    text: str
    """Empty for an absent field."""
    confidence: float
    """How likely it is right, 0 to 1; 0 for an absent field."""
    corners: Corners | None
    """Where it stands; `None` when no block of text gave it by itself."""
    doubtful: bool = False
    """It cannot be as it is: a card of the kind always has it, or never so."""
    glare: bool = False
    """Light is reflected from it."""


@dataclass(frozen=True, slots=True)
class Report:
    """How a record was read."""

    fields: tuple[FieldReport, ...] = ()
    """In the order of the record, without those that only say what another does; empty for codes and text."""
    outline: Corners | None = None
    """The card; `None` when no outline was found."""
    dots_per_millimetre: float | None = None
    turned: int = 0
    """By how many degrees clockwise, 0 to 359, the picture was turned so that its text is upright."""
    warnings: tuple[str, ...] = ()
    """Stable codes, such as "blurred" or "cut_off": what makes the record less certain than it looks."""
    doubtful: tuple[str, ...] = ()
    """The names of the fields that cannot be as they are."""

    def field(self, name: str) -> FieldReport:
        """The field with this name; `KeyError` for one that is not told of."""
        for known in self.fields:
            if known.name == name:
                return known
        raise KeyError(name)


@dataclass(frozen=True, slots=True)
class IdFrontChecks:
    """`True` is good, `False` a reason to ask a person, `None` means that there was nothing to compare."""

    check_digit: bool | None = None
    """The last character of the identity number is right (GB 11643)."""
    birth_date_matches: bool | None = None
    """The date of birth is the one in the number."""
    gender_matches: bool | None = None
    """The gender is the one in the number."""


@dataclass(frozen=True, slots=True)
class IdBackChecks:
    """`True` is good, `False` a reason to ask a person, `None` means that there was nothing to compare."""

    start_before_end: bool | None = None
    """The validity starts before it ends."""


@dataclass(frozen=True, slots=True)
class BankCardChecks:
    """`True` is good, `False` a reason to ask a person, `None` means that there was nothing to compare."""

    luhn: bool | None = None
    """The last digit of the card number is right (Luhn, ISO/IEC 7812-1)."""


@dataclass(frozen=True, slots=True, kw_only=True)
class IdFront:
    """The portrait side of an identity card. A field that was not found is the empty text."""

    name: str
    gender: str
    """男 (male) or 女 (female)."""
    ethnicity: str
    """Without 族."""
    birth_date: str
    """As in 2012年07月22日."""
    birth_year: str
    birth_month: str
    """Two digits."""
    birth_day: str
    """Two digits."""
    address: str
    """On one line."""
    id_number: str
    """18 characters, digits and perhaps a final X."""
    checks: IdFrontChecks
    report: Report = field(default=Report(), repr=False)
    json: str = field(default="", repr=False, compare=False)


@dataclass(frozen=True, slots=True, kw_only=True)
class IdBack:
    """The emblem side of an identity card."""

    issuing_authority: str
    """The police office; empty when it was not found."""
    validity_period: str
    """20150301-20350301, 20150301-长期 or 长期 (for good); empty when it was not found."""
    start_date: str | None
    """Eight digits; `None` when unknown."""
    end_date: str | None
    """Eight digits; `None` when unknown or for good."""
    is_long_term: bool
    checks: IdBackChecks
    report: Report = field(default=Report(), repr=False)
    json: str = field(default="", repr=False, compare=False)


@dataclass(frozen=True, slots=True, kw_only=True)
class BankCard:
    """A bank card. Do not use a number whose `checks.luhn` is false without asking a person."""

    card_number: str
    """16 to 19 digits in groups of four."""
    raw_card_number: str
    """The digits as they were read, before a single misread digit was repaired."""
    bank_name: str | None
    """In Chinese; `None` when it was not recognised."""
    card_type: str | None
    """借记卡 (debit), 信用卡 (credit) or 预付卡 (prepaid); `None` when it was not recognised."""
    cardholder_name: str | None
    checks: BankCardChecks
    report: Report = field(default=Report(), repr=False)
    json: str = field(default="", repr=False, compare=False)


@dataclass(frozen=True, slots=True, kw_only=True)
class Code:
    """A QR or bar code."""

    payload: str
    """The decoded content."""
    symbology: str
    """Such as "QR Code", "EAN-13" or "Code 128"."""
    report: Report = field(default=Report(), repr=False)
    json: str = field(default="", repr=False, compare=False)


@dataclass(frozen=True, slots=True, kw_only=True)
class Text:
    """All text of a picture, a line each."""

    text: str
    report: Report = field(default=Report(), repr=False)
    json: str = field(default="", repr=False, compare=False)


CardRecord: TypeAlias = IdFront | IdBack | BankCard
Record: TypeAlias = IdFront | IdBack | BankCard | Code | Text


class ReadingError(Exception):
    """Why there is no record. It quotes nothing of the card."""

    def __init__(self, code: str, message: str, reason: str | None = None, json: str = "") -> None:
        super().__init__(code, message, reason, json)
        self.code = code
        """Stable, such as "insufficient_text", "scene_mismatch", "invalid_image", "recognition_failed", "cancelled"."""
        self.message = message
        """For people."""
        self.reason = reason
        """The stable code why nothing was read, such as "too_dark"; in words for a file that cannot be read, such as
        "no such file"; `None` when there is nothing to add."""
        self.json = json
        """The whole answer as the command line prints it, without the name of the file."""

    def __str__(self) -> str:
        return f"{self.code}: {self.message}"

    def __eq__(self, other: object) -> bool:
        return isinstance(other, ReadingError) and self.args == other.args

    def __hash__(self) -> int:
        return hash(self.args)


@dataclass(frozen=True, slots=True)
class Card:
    """One of the cards on a picture: what stands on it, or why that could not be read."""

    kind: str | None
    """"id-front", "id-back" or "bank-card"; `None` for a card of no kind that can be read."""
    corners: Corners
    turned: int
    """By how many degrees clockwise the card had to be turned."""
    record: CardRecord | None
    error: ReadingError | None
    """`None` when there is a record."""
    pair: bool = False
    """The one portrait and the one emblem side on the picture belong together."""
    text: str = ""
    """What stands on a card without a kind, line by line."""


@dataclass(frozen=True, slots=True)
class Block:
    """A block of text that something else has read, for the `parse` functions."""

    text: str
    confidence: float
    """0 to 1."""
    x: float
    """The left edge; all four within 0 to 1, with the origin at the lower left of the picture."""
    y: float
    """The lower edge."""
    width: float
    height: float


RECORDS: Mapping[str, Callable[..., Record]] = {
    "id-front": IdFront, "id-back": IdBack, "bank-card": BankCard, "code": Code, "text": Text}
CHECKS: Mapping[str, Callable[..., IdFrontChecks | IdBackChecks | BankCardChecks]] = {
    "id-front": IdFrontChecks, "id-back": IdBackChecks, "bank-card": BankCardChecks}


def snake_case(name: str) -> str:
    return re.sub("[A-Z]", lambda capital: "_" + capital[0].lower(), name)


def _corners(points: Iterable[tuple[float, float]] | None) -> Corners | None:
    if points is None:
        return None
    first, second, third, fourth = ((x, y) for x, y in points)
    return first, second, third, fourth


def _renamed(values: Mapping[str, Any]) -> dict[str, Any]:
    return {snake_case(name): value for name, value in values.items()}


def _report(answer: Mapping[str, Any]) -> Report:
    fields = (FieldReport(snake_case(name), told["text"], told["confidence"], _corners(told["corners"]),
                          told.get("doubtful", False), told.get("glare", False))
              for name, told in answer.get("fields", {}).items())
    return Report(tuple(fields), _corners(answer.get("outline")), answer.get("dotsPerMillimetre"),
                  answer.get("turned", 0), tuple(answer.get("warnings", ())),
                  tuple(snake_case(name) for name in answer.get("doubtful", ())))


def record_of(kind: str, answer: Mapping[str, Any], text: str) -> Any:
    """The record in an answer of this kind, whose JSON is `text`."""
    checks = {"checks": CHECKS[kind](**_renamed(answer["checks"]))} if kind in CHECKS else {}
    return RECORDS[kind](**_renamed(answer["result"]), **checks, report=_report(answer), json=text)


def error_of(answer: Mapping[str, Any], text: str, message: str = "") -> ReadingError:
    """The error in an answer."""
    error = answer["error"]
    context = error.get("context", {})
    reason = answer.get("report", {}).get("reason") or context.get("reason") or context.get("failure_reason")
    return ReadingError(error["code"], message or error["message"], reason, text)


def _as_json(answer: Mapping[str, Any]) -> str:
    return json.dumps(answer, ensure_ascii=False, separators=(",", ":"))


def card_of(answer: Mapping[str, Any]) -> Card:
    """A card of the answer to a picture with several."""
    corners = _corners(answer["corners"])
    assert corners is not None
    has_record = "result" in answer
    return Card(answer["kind"], corners, answer["turned"],
                record_of(answer["kind"], answer, _as_json(answer)) if has_record else None,
                None if has_record else error_of(answer, _as_json(answer)),
                answer.get("pair", False), answer.get("text", ""))


def blocks_json(blocks: Iterable[Block | Mapping[str, Any]]) -> str:
    """The JSON of blocks of text; mappings are those of the command line and stay as they are."""
    return json.dumps({"observations": [
        {"text": block.text, "confidence": block.confidence,
         "boundingBox": {"x": block.x, "y": block.y, "width": block.width, "height": block.height}}
        if isinstance(block, Block) else dict(block) for block in blocks]})
