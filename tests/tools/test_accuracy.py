"""The comparison behind the accuracy report and the demo."""

import contextlib
import io
import json
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "accuracy"))

import bankcards  # noqa: E402
import confidence  # noqa: E402
import file_types  # noqa: E402
import nocards  # noqa: E402
import reading  # noqa: E402
import scanning  # noqa: E402
import warnings_told  # noqa: E402
from PIL import Image  # noqa: E402

BACK = {"issuingAuthority": "太康县公安局", "validityPeriod": "20150301-长期", "startDate": "20150301", "endDate": None,
        "isLongTerm": True}
CARD = {"cardNumber": "6222 0212 3456 7890 128", "rawCardNumber": "6222021234567890128", "bankName": "交通银行",
        "cardType": "借记卡", "cardholderName": None}


def card_answer(luhn=True, stage="first", **changes):
    return {"result": CARD | changes, "checks": {"luhn": luhn}, "stage": stage}


class ReadingTest(unittest.TestCase):
    def test_edit_distance(self):
        for first, second, distance in (("", "", 0), ("住址", "", 2), ("佳址", "住址", 1), ("kitten", "sitting", 3)):
            self.assertEqual(reading.edit_distance(first, second), distance)

    def test_wrong_fields(self):
        back, card = {"kind": "id-back", "result": BACK}, {"kind": "bank-card", "result": CARD}
        cases = (
            (back, {"result": BACK}, []),
            (back, {"result": BACK | {"endDate": ""}}, ["endDate"]),
            (back, {"error": {"code": "insufficient_text"}}, list(reading.FIELDS["id-back"])),
            # Card numbers are compared by their digits.
            (card, card_answer(cardNumber=CARD["rawCardNumber"], rawCardNumber="1"), []),
            (card, card_answer(cardNumber="6222 0212 3456 7890 127"), ["cardNumber"]),
            (card, card_answer(bankName=None, cardholderName="LI SI"), ["bankName", "cardholderName"]),
        )
        for truth, answer, wrong in cases:
            with self.subTest(answer=answer):
                self.assertEqual(reading.wrong_fields(truth, answer), wrong)

    def test_a_wrong_record_is_marked_by_a_failed_check_or_by_doubt_of_all_that_is_wrong(self):
        back, card = {"kind": "id-back", "result": BACK}, {"kind": "bank-card", "result": CARD}
        no_end = {"result": BACK | {"validityPeriod": "20150301-", "isLongTerm": False}}
        for truth, answer, passes, unmarked in (
                (card, card_answer(), False, False),
                (card, {"error": {"code": "insufficient_text"}}, False, False),
                (card, card_answer(luhn=False, bankName=None), False, False),
                (card, card_answer(bankName=None), True, True),
                (card, card_answer(bankName=None) | {"doubtful": ["bankName"]}, True, False),
                (card, card_answer(bankName=None, cardType=None) | {"doubtful": ["bankName"]}, True, True),
                (card, card_answer(bankName=None) | {"doubtful": ["cardholderName"]}, True, True),
                # What is told by another field is doubtful with it.
                (back, no_end | {"doubtful": ["validityPeriod"]}, True, False),
                (back, no_end | {"checks": {"startBeforeEnd": None}}, True, True)):
            with self.subTest(answer=answer):
                self.assertEqual(reading.is_wrong_and_passes(truth, answer), passes)
                self.assertEqual(reading.is_wrong_and_unmarked(truth, answer), unmarked)


def stated_answer(luhn=True, **fields):
    """A bank card's answer whose fields are given as (text, confidence)."""
    told = {name: {"text": text, "confidence": confidence} for name, (text, confidence) in fields.items()}
    result = {name: text for name, (text, _) in fields.items()}
    return {"kind": "bank-card", "fields": told} | card_answer(luhn, **result)


class ConfidenceReportTest(unittest.TestCase):
    def test_a_confidence_counts_in_the_row_that_it_reaches(self):
        for stated, row in ((0, "below 0.5"), (0.499, "below 0.5"), (0.5, "0.5 to 0.8"), (0.899, "0.8 to 0.9"),
                            (0.9, "0.9 to 0.99"), (0.99, "0.99 and more"), (1.0, "0.99 and more")):
            with self.subTest(stated=stated):
                self.assertEqual(confidence.row(stated), row)

    def test_the_fields_of_a_record_are_held_against_the_truth(self):
        truth, stated = {"kind": "bank-card", "result": CARD}, confidence.Stated()
        number = CARD["rawCardNumber"]
        for path, answer in (
                ("a", stated_answer(cardNumber=(number, 1.0), rawCardNumber=(number, 1.0), bankName=("交通银行", 0.5))),
                ("b", stated_answer(cardholderName=("HOT LINE", 0.95), bankName=("", 0.0))),
                ("c", stated_answer(luhn=False, cardNumber=("6222", 0.3))),
                # The fields of another kind's record and of no record are left out.
                ("d", stated_answer(cardNumber=(number, 1.0)) | {"kind": "id-front"}),
                ("e", {"kind": "bank-card", "error": {"code": "no_card_number_found"}})):
            stated.add("bank-card", path, truth, answer)
        self.assertEqual([(f.path, f.name, f.confidence, f.is_right) for f in stated.fields["bank-card"]],
                         [("a", "cardNumber", 1.0, True), ("a", "bankName", 0.5, True),
                          ("b", "cardholderName", 0.95, False), ("c", "cardNumber", 0.3, False)])
        with contextlib.redirect_stdout(io.StringIO()) as report:
            confidence.print_stated(stated)
        lines = [line.split() for line in report.getvalue().splitlines()]
        for row in ("0.9 and more 2 50.0 2 50.0", "0.99 and more 1 100.0 1 100.0", "below 0.5 1 0.0 1 0.0",
                    "wrong, no check fails 4 25.0 4 25.0", "b: cardholderName 0.950 HOT LINE is -"):
            self.assertIn(row.split(), lines)


class FileTypesTest(unittest.TestCase):
    def test_a_set_is_put_into_files_of_another_type(self):
        colours = ((200, 30, 30), (30, 200, 30), (30, 30, 200))
        with tempfile.TemporaryDirectory() as scratch:
            folder = pathlib.Path(scratch, "set")
            folder.mkdir()
            for index, colour in enumerate(colours):
                Image.new("RGB", (320, 240), colour).save(folder / f"{index}.jpg")
            (folder / "truth.jsonl").write_text("".join(json.dumps({"file": f"{index}.jpg", "kind": "code"}) + "\n"
                                                        for index in range(len(colours))), "utf-8")
            for file_type, names in (("tiff", ["0.tiff", "0.tiff", "2.tiff"]), ("pdf", ["0.pdf", "0.pdf", "2.pdf"]),
                                     ("heic", ["0.heic", "1.heic", "2.heic"])):
                if file_types.missing(file_type):
                    continue
                with self.subTest(file_type=file_type):
                    truths = reading.load_truth(file_types.wrapped(folder, file_type) / "truth.jsonl")
                    self.assertEqual([truth["file"] for truth in truths], names)
                    self.assertTrue(all(pathlib.Path(truth["path"]).stat().st_size > 0 for truth in truths))
            with Image.open(folder.with_name("set-tiff") / "0.tiff") as pages:
                pages.seek(1)
                self.assertEqual((pages.n_frames, pages.size), (2, (320, 240)))
                self.assertGreater(pages.getpixel((9, 9))[1], 150)



class BankCardReportTest(unittest.TestCase):
    def test_shares(self):
        truth = {"kind": "bank-card", "result": CARD}
        wrong = "6222 0212 3456 7890 110"
        tally = bankcards.Tally()
        for answer in (card_answer(), card_answer(stage="retry", cardholderName="HOT LINE"),
                       card_answer(cardNumber=wrong), card_answer(luhn=False, cardNumber=wrong, stage="band"),
                       {"error": {"code": "no_card_number_found"}}):
            tally.add(truth, answer)
        shares = {"number exact": 40, bankcards.WRONG_PASSING: 20, bankcards.WRONG_MARKED: 20, "no number": 20,
                  "bank": 80, "type": 80, "holder invented": 20, "whole record": 20, "read by first": 40,
                  "read by retry": 20, "read by band": 20, "read by fusion": 0, "read by none": 20,
                  "wrong, no check fails": 40, "wrong, unmarked": 40}
        for row in bankcards.ROWS:
            with self.subTest(row=row):
                self.assertEqual(tally.cell(row).split(), [f"{shares[row]:.1f}", "5"] if row in shares else ["-", "0"])
        self.assertEqual((tally + tally).errors["no_card_number_found"], 2)
        with contextlib.redirect_stdout(io.StringIO()) as report:
            bankcards.print_doubtless_wrong({("lifelike", "hard"): {"worn": tally, "bare": tally}})
        self.assertEqual(report.getvalue().split()[-5:], ["lifelike", "hard", "2", "of", "10"])


class NoCardReportTest(unittest.TestCase):
    def test_what_is_read_off_a_picture_without_a_number_is_told_by_what_gives_it_away(self):
        error = {"error": {"code": "no_card_number_found"}}
        unknown, empty = {"kind": None, "text": "通知"}, {"kind": "id-back"} | error
        for kind, answer, came in (
                ("bank-card", error, {nocards.NOTHING: 1}), ("id-front", error, {nocards.NOTHING: 1}),
                ("bank-card", card_answer(), {nocards.PASSING: 1}),
                ("bank-card", card_answer(luhn=False), {nocards.MARKED: 1}),
                ("id-back", {"result": BACK, "checks": {}}, {nocards.RECORD: 1}),
                ("cards", error, {nocards.NOTHING: 1}), ("cards", {"cards": [unknown]}, {nocards.NOTHING: 1}),
                ("cards", {"cards": [unknown, empty, empty]}, {nocards.CARD: 2, nocards.RECORD: 0}),
                ("cards", {"cards": [card_answer() | {"kind": "bank-card"}, empty]},
                 {nocards.CARD: 2, nocards.RECORD: 1})):
            with self.subTest(kind=kind, answer=answer):
                self.assertEqual(dict(nocards.outcomes(answer, kind)), came)


class WarningsReportTest(unittest.TestCase):
    def test_a_warning_is_right_or_a_false_alarm(self):
        pictures = [(None, "", []), (None, "", ["glare"]), ("glare", "", ["glare", "dark"]), ("dark", "", []),
                    ("overexposed", "", ["overexposed", "glare"])]
        for code, cells in (("glare", ("100.0", "50.0", "0.0")), ("dark", ("0.0", "0.0", "50.0")),
                            ("overexposed", ("100.0", "0.0", "0.0")), ("screen", ("-", "0.0", "0.0"))):
            with self.subTest(code=code):
                self.assertEqual(warnings_told.cells(pictures, code), cells)


class ScanReportTest(unittest.TestCase):
    def test_counts_and_waits(self):
        tally = scanning.Tally()
        hidden = {"kind": "bank-card", "heldStill": 1.0, "clear": 2.5, "result": CARD}
        truths = [{"kind": "bank-card", "heldStill": 1.5, "result": CARD}] * 4 + [hidden]
        wrong = {"cardNumber": "6222 0212 3456 7890 110"}
        answers = (card_answer() | {"time": 2.5}, card_answer(bankName=None) | {"time": 1.0},
                   card_answer(**wrong) | {"time": 3.5}, {"time": 4.0, "error": {"code": "no_record"}},
                   card_answer(luhn=False, **wrong) | {"time": 5.5})
        for truth, answer in zip(truths, answers):
            tally.add(truth, answer)
        # Waits are 1, -0.5, 2 and 3 seconds.
        self.assertEqual(tally.cells(), ("5", "20.0", "2", "1", "1", "1.50", "3.00"))
        self.assertEqual((tally + tally).cells(), ("10", "20.0", "4", "2", "2", "1.50", "3.00"))


if __name__ == "__main__":
    unittest.main()
