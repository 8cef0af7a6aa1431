"""The comparison behind the accuracy report and the demo."""

import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools" / "accuracy"))

import reading  # noqa: E402

BACK = {"issuingAuthority": "太康县公安局", "validityPeriod": "20150301-长期", "startDate": "20150301", "endDate": None,
        "isLongTerm": True}


class ReadingTest(unittest.TestCase):
    def test_edit_distance(self):
        for first, second, distance in (("", "", 0), ("住址", "", 2), ("佳址", "住址", 1), ("kitten", "sitting", 3)):
            self.assertEqual(reading.edit_distance(first, second), distance)
            self.assertEqual(reading.edit_distance(second, first), distance)

    def test_wrong_fields(self):
        truth = {"kind": "id-back", "result": BACK}
        cases = (
            ({"result": BACK}, []),
            ({"result": BACK | {"endDate": "20350301"}}, ["endDate"]),
            ({"result": BACK | {"endDate": ""}}, ["endDate"]),
            ({"error": {"code": "insufficient_text"}}, list(reading.FIELDS["id-back"])),
        )
        for answer, wrong in cases:
            with self.subTest(answer=answer):
                self.assertEqual(reading.wrong_fields(truth, answer), wrong)


if __name__ == "__main__":
    unittest.main()
