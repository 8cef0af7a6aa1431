"""Runs the command-line tool over pictures and holds what it reads against the truth."""

import json
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRAVIK = ROOT / "build" / "release" / "apps" / "pravik" / "pravik"

# Kind -> its fields in the order in which reports show them.
FIELDS = {
    "id-front": ("name", "gender", "ethnicity", "birthDate", "birthYear", "birthMonth", "birthDay", "address",
                 "idNumber"),
    "id-back": ("issuingAuthority", "validityPeriod", "startDate", "endDate", "isLongTerm"),
    "bank-card": ("cardNumber", "bankName", "cardType", "cardholderName"),
    "code": ("payload", "symbology"),
}
# Fields that are told by another one, which alone has a confidence and can be doubtful.
TOLD_BY = {"birthYear": "birthDate", "birthMonth": "birthDate", "birthDay": "birthDate",
           "startDate": "validityPeriod", "endDate": "validityPeriod", "isLongTerm": "validityPeriod"}
# Has the answers tell how sure each field is; codes have no such report, and pictures of several cards always do.
REPORT = {"id-front": ("--report",), "id-back": ("--report",), "bank-card": ("--report", "--stages")}
# Exit statuses of the tool that come with one answer a picture: all recognised, some not.
ANSWERED = (0, 1)


def load_truth(path, key="file"):
    """The lines of a file of truth, each with the path of what it tells about under "path"; `key` holds its name."""
    try:
        lines = [json.loads(line) for line in path.read_text("utf-8").splitlines()]
    except (OSError, json.JSONDecodeError) as error:
        raise SystemExit(f"{path}: {error}") from error
    return [line | {"path": str(path.parent / line[key])} for line in lines]


def read(pravik, kind, paths, jobs, options=()):
    """The tool's answers for the pictures of one kind, in their order; a file of several pages stands once a page."""
    command = [str(pravik), kind, "--format", "jsonl", "--jobs", str(jobs), *options, *dict.fromkeys(paths)]
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, text=True, encoding="utf-8", check=False)
    except OSError as error:
        raise SystemExit(f"{pravik} cannot be run ({error.strerror}); build it with: make build") from error
    answers = [json.loads(line) for line in done.stdout.splitlines()]
    if done.returncode not in ANSWERED or len(answers) != len(paths):
        raise SystemExit(f"{pravik} {kind} ended with status {done.returncode} "
                         f"after {len(answers)} of {len(paths)} answers")
    return answers


def text(value):
    """A field as a person reads it; an absent one is empty."""
    if isinstance(value, bool):
        return "yes" if value else "no"
    return "" if value is None else str(value)


def _comparable(field, value):
    """Card numbers are compared by their digits, however they are grouped."""
    return value.replace(" ", "") if field == "cardNumber" and value else value


def is_right(field, read, told):
    """Whether a field was read as it is told."""
    return _comparable(field, read) == _comparable(field, told)


def wrong_fields(truth, answer):
    """The fields whose reading differs from the truth; all of them if the tool gave no record."""
    result = answer.get("result")
    return [field for field in FIELDS[truth["kind"]]
            if result is None or not is_right(field, result.get(field), truth["result"][field])]


def is_wrong_and_passes(truth, answer):
    """Whether the tool gave a wrong record and no check of it failed."""
    checks = answer.get("checks") or {}
    return "result" in answer and bool(wrong_fields(truth, answer)) and False not in checks.values()


def is_wrong_and_unmarked(truth, answer):
    """Whether the tool gave a wrong record, no check of it failed, and not all that is wrong was called doubtful."""
    wrong = {TOLD_BY.get(field, field) for field in wrong_fields(truth, answer)}
    return is_wrong_and_passes(truth, answer) and not wrong <= set(answer.get("doubtful", ()))


def edit_distance(first, second):
    """Least number of characters to insert, delete or replace (Levenshtein, 1966)."""
    row = list(range(len(second) + 1))
    for i, a in enumerate(first, 1):
        diagonal, row[0] = row[0], i
        for j, b in enumerate(second, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (a != b))
    return row[-1]
