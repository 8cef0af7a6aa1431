"""The synthetic pictures must be consistent, repeatable, and told truly."""

import datetime
import json
import pathlib
import random
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
CARDGEN = pathlib.Path(__file__).resolve().parents[2] / "tools" / "cardgen"
sys.path.insert(0, str(CARDGEN))

import bankcard  # noqa: E402
import banks  # noqa: E402
import camera  # noqa: E402
import codes  # noqa: E402
import emboss  # noqa: E402
import idcard  # noqa: E402
import numpy as np  # noqa: E402
import people  # noqa: E402
import scene  # noqa: E402
import tables  # noqa: E402
from canvas import Canvas  # noqa: E402


def portrait_sides(count):
    for index in range(count):
        group = people.ethnic_group(index, random.Random("groups"))
        yield people.portrait_side(random.Random(index), group, index % 10 == 9)


class PeopleTest(unittest.TestCase):
    def test_check_character_of_the_standards_examples(self):
        for number in ("11010519491231002X", "440524188001010014"):
            self.assertEqual(people.check_character(number[:17]), number[17])

    def test_portrait_sides_are_consistent(self):
        for record in portrait_sides(400):
            with self.subTest(record=record):
                number = record["idNumber"]
                self.assertRegex(number, r"^[1-9]\d{16}[\dX]$")
                self.assertEqual(people.check_character(number[:17]), number[17])
                self.assertEqual("男" if int(number[16]) % 2 else "女", record["gender"])
                born = datetime.datetime.strptime(number[6:14], "%Y%m%d")
                self.assertEqual(record["birthDate"], born.strftime("%Y年%m月%d日"))
                parts = (record["birthYear"], record["birthMonth"], record["birthDay"])
                self.assertEqual(parts, (number[6:10], number[10:12], number[12:14]))
                self.assertRegex(record["name"], "^[\u4e00-\u9fa5·]{2,8}$")

    def test_a_set_shows_every_group_and_one_number_in_ten_ends_in_x(self):
        records = list(portrait_sides(people.GROUP_CYCLE))
        self.assertEqual({record["ethnicity"] for record in records}, {*tables.MINORITIES, tables.HAN})
        self.assertEqual(len(tables.MINORITIES), 55)
        self.assertEqual(sum(record["idNumber"].endswith("X") for record in records), 10)
        self.assertTrue(any("·" in record["name"] for record in records))

    def test_emblem_sides_are_consistent(self):
        for seed in range(200):
            record = people.emblem_side(random.Random(seed))
            with self.subTest(record=record):
                self.assertRegex(record["issuingAuthority"], "公安局$|公安局.+分局$")
                self.assertEqual(record["isLongTerm"], record["endDate"] is None)
                end = record["endDate"] or "长期"
                self.assertEqual(record["validityPeriod"], f"{record['startDate']}-{end}")
                if record["endDate"]:
                    years = int(end[:4]) - int(record["startDate"][:4])
                    self.assertIn(years, people.VALIDITY_YEARS)


class CardTest(unittest.TestCase):
    def test_the_address_fits_three_lines_beside_the_portrait(self):
        canvas = Canvas(idcard.WIDTH, idcard.HEIGHT, 10)
        counts = set()
        for index, record in enumerate(portrait_sides(300)):
            lines = idcard.FrontCard(record, random.Random(index)).address_lines(canvas)
            self.assertEqual("".join(lines), record["address"])
            counts.add(len(lines))
        self.assertEqual(counts, {1, 2, 3})

    def test_printed_validity(self):
        dated = {"startDate": "20150301", "endDate": "20350301"}
        for record, printed in ((dated, "2015.03.01-2035.03.01"), (dated | {"endDate": None}, "2015.03.01-长期")):
            self.assertEqual(idcard.BackCard(record, random.Random(1)).printed_validity(), printed)


class BankCardTest(unittest.TestCase):
    def test_check_digit_of_known_numbers(self):
        for number in ("4111111111111111", "5555555555554444", "79927398713"):
            self.assertEqual(bankcard.check_digit(number[:-1]), number[-1])

    def test_records_are_consistent(self):
        seen = set()
        for index in range(800):
            look = bankcard.LOOKS[index % len(bankcard.LOOKS)]
            said = bankcard.account(look, random.Random(index))
            record = said.record()
            with self.subTest(record=record):
                digits = record["rawCardNumber"]
                self.assertRegex(digits, r"^(62\d{14}|62\d{17}|4(?!00)\d{15}|5[1-5]\d{14})$")
                self.assertEqual(bankcard.check_digit(digits[:-1]), digits[-1])
                self.assertRegex(record["cardNumber"], r"^\d{4}( \d{4}){3}( \d{3})?$")
                self.assertEqual(record["cardNumber"].replace(" ", ""), digits)
                self.assertIn(record["bankName"], {*banks.BANKS, None})
                self.assertEqual(record["cardType"] is None, said.type_words == "" and len(digits) == 16)
                self.assertRegex(record["cardholderName"] or "LI SI", "^[A-Z]{2,15} [A-Z]{2,15}( [A-Z]{2,15})?$")
            seen.add((look, digits[0], len(digits), record["cardType"]))
        self.assertTrue({(look, "6", 19, "借记卡") for look in bankcard.LOOKS} <= seen)
        self.assertTrue({("gold", "4", 16, "信用卡"), ("silver", "5", 16, None), ("flat", "6", 16, "预付卡")} <= seen)

    def test_relief_is_lit_from_the_upper_left(self):
        canvas = Canvas(10, 10, 20, (90, 90, 90))
        mask = Canvas(10, 10, 20, (0, 0, 0))
        mask.rectangle(4, 4, 6, 6, (255, 255, 255))
        worn_off = emboss.Relief(foil="silver", wear=1.0, depth=1.0, streak=0.0, seed=1)
        emboss.raise_characters(canvas.image, mask.image.convert("L"), 20, worn_off)
        lit, shaded, far = (canvas.image.getpixel(place)[0] for place in ((79, 100), (121, 100), (20, 20)))
        self.assertGreater(lit, far + 30)
        self.assertLess(shaded, far - 10)
        self.assertEqual(far, 90)


class CodeTest(unittest.TestCase):
    def test_check_digits(self):
        for digits, check in (("629104150021", "3"), ("9638507", "4"), ("1234567890123", "1")):
            self.assertEqual(codes.gs1_check_digit(digits), check)

    def test_short_upc_forms_stand_for_their_long_ones(self):
        cases = {"0123450": "01200000345", "0123453": "01230000045", "0123454": "01234000005",
                 "0123456": "01234500006"}
        for short, long in cases.items():
            self.assertEqual(codes.expand_upc_e(short), long)

    def test_every_symbology_is_drawn_and_has_its_length(self):
        lengths = {"EAN-13": 13, "EAN-8": 8, "UPC-E": 8, "ITF-14": 14}
        for index in range(3 * len(codes.SYMBOLOGIES)):
            record = codes.record(index, random.Random(index))
            with self.subTest(record=record):
                # The encoder refuses a payload that the symbology cannot carry or whose check digit is wrong.
                symbol = codes.symbol(record["payload"], record["symbology"])
                self.assertGreater(symbol.width, 10)
                self.assertEqual(len(record["payload"]), lengths.get(record["symbology"], len(record["payload"])))

    def test_an_impossible_payload_is_refused(self):
        for symbology, payload in (("EAN-13", "6901234567890"), ("UPC-E", "03628738"), ("Code 39", "价格")):
            with self.subTest(symbology=symbology), self.assertRaises(ValueError):
                codes.symbol(payload, symbology)


class SceneTest(unittest.TestCase):
    def test_the_whole_card_is_in_the_picture(self):
        card = idcard.FrontCard(next(portrait_sides(1)), random.Random(1))
        corners = camera.rectangle(card.width, card.height)
        for level in scene.LIMITS:
            for seed in range(200):
                rng = np.random.default_rng(seed)
                size = scene.choose_size(rng)
                pose = scene.choose_pose(card, level, size, rng)
                seen = camera.project(pose.homography(), corners)
                share = np.ptp(seen, axis=0)[0] / size[0]
                with self.subTest(level=level, seed=seed):
                    self.assertTrue((seen > 0).all() and (seen < size).all())
                    self.assertTrue(0.25 < share <= 0.851, share)


class CommandTest(unittest.TestCase):
    def draw(self, folder, *arguments):
        command = [CARDGEN / "cardgen", "--out", folder, "--jobs", "1", *arguments]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_the_same_seed_draws_the_same_pictures_and_another_does_not(self):
        arguments = ("--kind", "id-front", "--level", "photo", "--count", "1", "--size", "640x480", "--seed")
        with tempfile.TemporaryDirectory() as scratch:
            pictures = []
            for folder, seed in (("a", "3"), ("b", "3"), ("c", "4")):
                done = self.draw(pathlib.Path(scratch, folder), *arguments, seed)
                self.assertEqual(done.returncode, 0, done.stderr)
                pictures.append(pathlib.Path(scratch, folder, "id-front-photo-0000.jpg").read_bytes())
            self.assertEqual(pictures[0], pictures[1])
            self.assertNotEqual(pictures[0], pictures[2])

    def test_bank_cards_come_in_one_look_or_in_all_in_turn(self):
        with tempfile.TemporaryDirectory() as scratch:
            for look in (("--count", "4"), ("--count", "1", "--look", "gold")):
                done = self.draw(scratch, "--kind", "bank-card", "--level", "clean", *look)
                self.assertEqual(done.returncode, 0, done.stderr)
            lines = [json.loads(line) for line in pathlib.Path(scratch, "truth.jsonl").read_text("utf-8").splitlines()]
            self.assertEqual([(line["file"], line["look"]) for line in lines],
                             [(f"bank-card-{look}-clean-{index:04d}.jpg", look) for look, index in
                              (("flat", 0), ("silver", 1), ("gold", 2), ("worn", 3), ("gold", 0))])
            self.assertTrue(all(pathlib.Path(scratch, line["file"]).exists() for line in lines))
            self.assertEqual(self.draw(scratch, "--kind", "code", "--level", "clean", "--look", "flat").returncode, 2)

    def test_several_runs_share_one_truth_file(self):
        with tempfile.TemporaryDirectory() as scratch:
            for kind in ("id-back", "code", "code"):
                done = self.draw(scratch, "--kind", kind, "--level", "clean", "--count", "1")
                self.assertEqual(done.returncode, 0, done.stderr)
            lines = [json.loads(line) for line in pathlib.Path(scratch, "truth.jsonl").read_text("utf-8").splitlines()]
            self.assertEqual([line["file"] for line in lines], ["id-back-clean-0000.jpg", "code-clean-0000.jpg"])
            self.assertTrue(all(pathlib.Path(scratch, line["file"]).exists() for line in lines))


if __name__ == "__main__":
    unittest.main()
