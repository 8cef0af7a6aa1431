"""The synthetic pictures must be consistent, repeatable, and told truly."""

import datetime
import json
import pathlib
import random
import tempfile
import unittest

import drawing  # first: it tells where the modules of the generator lie

import bankcard
import banks
import camera
import codes
import idcard
import numpy as np
import people
import scene
import tables
from canvas import Canvas


def portrait_sides(count):
    for index in range(count):
        group = people.ethnic_group(index, random.Random("groups"))
        yield people.portrait_side(random.Random(index), group, index % 10 == 9)


class RecordTest(unittest.TestCase):
    def test_check_characters_of_published_numbers(self):
        for check, numbers in ((people.check_character, ("11010519491231002X", "440524188001010014")),
                               (bankcard.check_digit, ("4111111111111111", "5555555555554444", "79927398713")),
                               (codes.gs1_check_digit, ("6291041500213", "96385074", "12345678901231"))):
            for number in numbers:
                self.assertEqual(check(number[:-1]), number[-1])

    def test_portrait_sides_are_consistent(self):
        records = list(portrait_sides(people.GROUP_CYCLE))
        for record in records:
            with self.subTest(record=record):
                number = record["idNumber"]
                self.assertRegex(number, r"^[1-9]\d{16}[\dX]$")
                self.assertEqual(people.check_character(number[:17]), number[17])
                self.assertEqual("男" if int(number[16]) % 2 else "女", record["gender"])
                born = datetime.datetime.strptime(number[6:14], "%Y%m%d")
                self.assertEqual(record["birthDate"], born.strftime("%Y年%m月%d日"))
                self.assertRegex(record["name"], "^[\u4e00-\u9fa5·]{2,8}$")
        self.assertEqual({record["ethnicity"] for record in records}, {*tables.MINORITIES, tables.HAN})
        self.assertEqual(sum(record["idNumber"].endswith("X") for record in records), 10)

    def test_bank_cards_are_consistent(self):
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
            seen.add((look, digits[0], len(digits), record["cardType"]))
        self.assertTrue({(look, "6", 19, "借记卡") for look in bankcard.LOOKS} <= seen)
        self.assertTrue({("gold", "4", 16, "信用卡"), ("silver", "5", 16, None), ("flat", "6", 16, "预付卡")} <= seen)


class DrawingTest(unittest.TestCase):
    def test_the_address_fits_three_lines_beside_the_portrait(self):
        canvas = Canvas(idcard.WIDTH, idcard.HEIGHT, 10)
        counts = set()
        for index, record in enumerate(portrait_sides(300)):
            lines = idcard.FrontCard(record, random.Random(index)).address_lines(canvas)
            self.assertEqual("".join(lines), record["address"])
            counts.add(len(lines))
        self.assertEqual(counts, {1, 2, 3})

    def test_every_symbology_is_drawn_and_impossible_payloads_are_refused(self):
        for index in range(3 * len(codes.SYMBOLOGIES)):
            record = codes.record(index, random.Random(index))
            with self.subTest(record=record):
                # The encoder refuses a payload that the symbology cannot carry or whose check digit is wrong.
                self.assertGreater(codes.symbol(record["payload"], record["symbology"]).width, 10)
        for symbology, payload in (("EAN-13", "6901234567890"), ("UPC-E", "03628738"), ("Code 39", "价格")):
            with self.subTest(symbology=symbology), self.assertRaises(ValueError):
                codes.symbol(payload, symbology)

    def test_the_whole_card_is_in_the_picture(self):
        card = idcard.FrontCard(next(portrait_sides(1)), random.Random(1))
        corners = camera.rectangle(card.width, card.height)
        for level in scene.LIMITS:
            for seed in range(200):
                rng = np.random.default_rng(seed)
                size = scene.choose_size(rng)
                seen = camera.project(scene.choose_pose(card, level, size, rng).homography(), corners)
                with self.subTest(level=level, seed=seed):
                    self.assertTrue((seen > 0).all() and (seen < size).all())
                    self.assertTrue(0.25 < np.ptp(seen, axis=0)[0] / size[0] <= 0.851)


class CommandTest(unittest.TestCase):
    def test_a_seed_decides_the_picture(self):
        with tempfile.TemporaryDirectory() as scratch:
            drawing.drawn_by_seed(self, scratch, "id-front-photo-0000.jpg", "--kind", "id-front", "--level", "photo",
                                  "--size", "640x480")

    def test_several_runs_share_one_truth_file(self):
        runs = (("id-back", "--count", "1"), ("code", "--count", "1"), ("code", "--count", "1"),
                ("bank-card", "--count", "4"), ("bank-card", "--count", "1", "--look", "gold"))
        files = ["id-back-clean-0000.jpg", "code-clean-0000.jpg",
                 *(f"bank-card-{look}-clean-{index:04d}.jpg" for look, index in
                   (("flat", 0), ("silver", 1), ("gold", 2), ("worn", 3), ("gold", 0)))]
        with tempfile.TemporaryDirectory() as scratch:
            for kind, *arguments in runs:
                self.assertEqual(drawing.draw(scratch, "--level", "clean", "--kind", kind, *arguments), 0)
            lines = [json.loads(line) for line in pathlib.Path(scratch, "truth.jsonl").read_text("utf-8").splitlines()]
            self.assertEqual([line["file"] for line in lines], files)
            self.assertTrue(all(pathlib.Path(scratch, file).exists() for file in files))
            self.assertEqual(drawing.draw(scratch, "--kind", "code", "--level", "clean", "--look", "flat"), 2)


if __name__ == "__main__":
    unittest.main()
