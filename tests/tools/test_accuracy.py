"""The comparison behind the accuracy report and the demo."""

import contextlib
import io
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "accuracy"))

import bankcards  # noqa: E402
import nocards  # noqa: E402
import reading  # noqa: E402
import scanning  # noqa: E402
import warnings_told  # noqa: E402

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
                  "wrong, unmarked": 40}
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
        for kind, answer, came in (("bank-card", error, nocards.NOTHING), ("id-front", error, nocards.NOTHING),
                                   ("bank-card", card_answer(), nocards.PASSING),
                                   ("bank-card", card_answer(luhn=False), nocards.MARKED),
                                   ("id-back", {"result": BACK, "checks": {}}, nocards.RECORD)):
            with self.subTest(kind=kind, answer=answer):
                self.assertEqual(nocards.outcome(answer, kind), came)


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
