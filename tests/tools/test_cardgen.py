"""The synthetic pictures and clips must be consistent, repeatable, and told truly."""

import dataclasses
import datetime
import io
import json
import pathlib
import random
import subprocess
import sys
import tempfile
import unittest
import unittest.mock

sys.dont_write_bytecode = True
CARDGEN = pathlib.Path(__file__).resolve().parents[2] / "tools" / "cardgen"
sys.path.insert(0, str(CARDGEN))

import bankcard  # noqa: E402
import banks  # noqa: E402
import camera  # noqa: E402
import codes  # noqa: E402
import embossed_relief  # noqa: E402
import idcard  # noqa: E402
import lifelike_card  # noqa: E402
import messenger  # noqa: E402
import nocard  # noqa: E402
import numpy as np  # noqa: E402
import pasted_groups  # noqa: E402
import people  # noqa: E402
import scene  # noqa: E402
import spoil  # noqa: E402
import story  # noqa: E402
import tables  # noqa: E402
from canvas import Canvas  # noqa: E402
from PIL import Image, JpegImagePlugin  # noqa: E402

STABLE_SECONDS = 0.8  # a card that lies still for so long is photographed
FRAME = camera.rectangle(1, 9 / 16)
SAMPLES = CARDGEN.parents[1] / "samples"


def draw(folder, *arguments):
    """Runs the generator and gives its exit status."""
    command = [CARDGEN / "cardgen", "--out", folder, "--jobs", "1", *arguments]
    return subprocess.run(command, capture_output=True, check=False).returncode


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


class SpoilTest(unittest.TestCase):
    def test_each_fault_shows_on_the_picture(self):
        def taken(fault):
            card = idcard.FrontCard(next(portrait_sides(1)), random.Random(1))
            jpeg = spoil.photograph(card, fault, np.random.default_rng(4), (640, 480))
            return np.asarray(Image.open(io.BytesIO(jpeg)), float)

        def white(picture):
            return (picture > 250).all(axis=2).mean()

        def edges(picture):
            return np.abs(np.diff(picture.mean(axis=2), axis=1)).mean()

        with unittest.mock.patch.dict(spoil.FAULTS, {"none": (None, None)}):
            sound = taken("none")
        for fault, shows in (("blurred", lambda p: edges(p) < 0.8 * edges(sound)),
                             ("glare", lambda p: white(p) > 0.01 + white(sound)),
                             ("dark", lambda p: p.mean() < 0.3 * sound.mean()),
                             ("overexposed", lambda p: white(p) > 0.1 + white(sound)),
                             ("too_small", lambda p: p.shape[1] < 640),
                             ("cut_off", lambda p: p.shape == sound.shape and np.abs(p - sound).mean() > 5),
                             ("grey_copy", lambda p: np.ptp(p, axis=2).mean() < 0.8 * np.ptp(sound, axis=2).mean()),
                             ("screen", lambda p: edges(p) > 1.5 * edges(sound))):
            with self.subTest(fault=fault):
                self.assertTrue(shows(taken(fault)))


class LifelikeTest(unittest.TestCase):
    def test_numbers_are_right_and_stand_on_the_card(self):
        groupings = set()
        for seed in range(200):
            rng, look = random.Random(seed), lifelike_card.LOOKS[seed % len(lifelike_card.LOOKS)]
            said = lifelike_card.account(look, rng)
            cells = lifelike_card.LifelikeCard(said, look, rng).cells()
            middles = [x for _, x, _ in cells]
            gaps = np.diff(middles) > 1.2 * lifelike_card.DIGIT_PITCH
            groupings.add(tuple(int(n) for n in np.diff([-1, *np.flatnonzero(gaps), len(gaps)])))
            with self.subTest(said=said, look=look):
                self.assertEqual("".join(character for character, _, _ in cells), said.digits)
                self.assertEqual(bankcard.check_digit(said.digits[:-1]), said.digits[-1])
                self.assertTrue(2 < min(middles) and max(middles) < lifelike_card.WIDTH - 2)
        self.assertEqual(groupings, {(4, 4, 4, 4), (4, 4, 4, 4, 3), (6, 13), (5, 4, 5, 5), (19,)})

    def test_a_card_prints_the_credit_cooperative_that_its_record_names(self):
        cooperatives = set()
        for seed in range(400):
            rng = random.Random(seed)
            said = lifelike_card.account("flat", rng)
            self.assertEqual(said.record()["bankName"] is None, said.type == "prepaid")
            lines = lifelike_card._issuer_lines(said, rng)
            if said.bank and said.bank not in banks.BANKS:
                cooperatives.add(said.bank)
                self.assertEqual(lines[0][0], said.record()["bankName"])
                self.assertRegex(said.bank, "信用(合作)?(联社|社(联合社)?)$")
        self.assertGreater(len(cooperatives), 10)

    def test_pictures_of_real_groups_make_a_number_on_the_card(self):
        groups = [pasted_groups.Group(f"{number:04d}", np.full((46, 120, 3), 255.0)) for number in range(6000, 6300, 7)]
        said, card = lifelike_card.LifelikeCard.with_number_of(groups, random.Random(3))
        self.assertEqual(bankcard.check_digit(said.digits[:-1]), said.digits[-1])
        self.assertIn(said.digits[:4], {group.digits for group in groups})
        flat = np.asarray(card.draw(10).convert("L"))
        for _, x, y in card.cells():
            self.assertGreater(flat[round(10 * y), round(10 * x)], 250)

    def test_light_falls_on_the_relief_from_its_own_side(self):
        stroke = np.array([(4.0, 1.0), (4.0, 5.0)])
        chosen = dataclasses.replace(embossed_relief.choose("bare", random.Random(1)), gloss=0)
        for right in (-0.6, 0.6):
            lamp = embossed_relief.Lamp(right, 0, 0.3, 1)
            picture = Image.new("RGB", (160, 120), (120, 120, 120))
            embossed_relief.emboss(picture, [stroke], 20, dataclasses.replace(chosen, lamps=(lamp,)))
            level = np.asarray(picture.convert("L"), float)
            brighter = level[60, 80:95].mean() - level[60, 65:80].mean()
            self.assertGreater(brighter * right, 1)

    def test_a_forwarded_photo_is_small_and_poor_in_colour(self):
        photo = Image.new("RGB", (1600, 1200), (90, 90, 90))
        for seed in range(20):
            data = messenger.forward(photo, 90, 1000, np.random.default_rng(seed))
            sent = Image.open(io.BytesIO(data))
            self.assertTrue(720 <= sent.width <= 1120 and abs(sent.height - 0.75 * sent.width) <= 1)
            self.assertEqual(JpegImagePlugin.get_sampling(sent), 2)  # 4:2:0


class NoCardTest(unittest.TestCase):
    def test_numbers_of_bank_cards_are_found_in_rows(self):
        for row, holds in (
                ("4111111111111111", True), ("卡号 4111 1111-1111 1111 12/30", True), ("No. 4111 x 1111 11111111", True),
                ("6222021234567890128 元", True), ("4111111111111112", False), ("94111111111111111", False),
                ("41111111111111110000", False), ("6222 0212 3456", False), ("", False)):
            with self.subTest(row=row):
                self.assertEqual(nocard.holds_card_number(row), holds)

    def test_no_sheet_shows_the_number_of_a_bank_card(self):
        for name, form in nocard.SHEETS.items():
            for seed in range(8):
                sheet = nocard.Printed(form, random.Random(seed)).sheet(10)
                with self.subTest(scene=name, seed=seed):
                    self.assertFalse([row for row in sheet.rows() if nocard.holds_card_number(row)])
                    self.assertGreater(np.ptp(np.asarray(sheet.image)), 50)

    def test_a_sheet_is_drawn_anew_until_it_shows_no_number(self):
        tries = iter(("4111111111111111", "4111 1111 1111 1111", "9111111111111111"))
        form = nocard.Form(lambda sheet, _: sheet.text(1, 1, next(tries), "hei", 1, (0, 0, 0)), ((50, 50),), 0, 1, 0)
        nocard.Printed(form, random.Random(1))
        self.assertEqual(list(tries), [])

    def test_a_card_without_its_number_does_not_show_it(self):
        pictures = []
        for last in "27":
            card = nocard.FlatCard(False, random.Random(4))
            card._said = dataclasses.replace(card._said, digits=card._said.digits[:-1] + last)
            pictures.append(np.asarray(card.draw(8)))
        self.assertTrue((pictures[0] == pictures[1]).all())

    def test_hidden_digits_are_out_of_sight(self):
        magenta = (255, 0, 255)
        for scene_name in ("finger", "covered card"):
            for seed in range(12):
                subject = nocard.SCENES[scene_name](random.Random(seed))
                cells = [(x + nocard.BEYOND, y + nocard.BEYOND) for _, x, y in subject.card.cells()]
                number = "".join(character for character, _, _ in subject.card.cells())
                subject.card.draw = lambda scale: Image.new("RGB", [round(s * scale) for s in (85.6, 54)], magenta)
                drawn = np.asarray(subject.draw(8).convert("RGB"))
                hidden = [i for i, (x, y) in enumerate(cells) if not
                          (drawn[round(8 * (y - 1.8)):round(8 * (y + 1.8)), round(8 * (x - 1)):round(8 * (x + 1))]
                           == magenta).all(axis=2).any()]
                with self.subTest(scene=scene_name, seed=seed):
                    self.assertTrue(set(subject.hidden) <= set(hidden))
                    self.assertTrue(2 <= len(subject.hidden) <= len(number) - 4)
                    self.assertEqual(bankcard.check_digit(number[:-1]), number[-1])
                    for rest in (number[:subject.hidden[0]], number[subject.hidden[-1] + 1:]):
                        self.assertFalse(nocard.is_card_number(rest))


class StoryTest(unittest.TestCase):
    def test_the_last_card_of_every_plot_is_held_still_to_the_end(self):
        for variant in story.PLOTS:
            for seed in range(30):
                with self.subTest(variant=variant, seed=seed):
                    told = story.tell(variant, np.random.default_rng(seed))
                    self.assertEqual(told.clear is not None, variant in ("glare", "dark"))
                    self.assertGreater(told.seconds, max(told.still, told.clear or 0) + 2 * STABLE_SECONDS)
                    moments = np.arange(told.still, told.seconds, 0.1)
                    seen = [camera.project(told.hand.movement(time), FRAME) for time in moments]
                    self.assertLess(np.abs(np.diff(seen, axis=0)).max(), 0.006)
                    self.assertEqual({told.card(time) for time in moments}, {(told.cards - 1, (0, 0))})


class CommandTest(unittest.TestCase):
    def drawn_by_seed(self, folder, file, *arguments):
        """The same file as it is drawn with a seed: alike each time, and otherwise with another seed."""
        files = []
        for name, seed in (("a", "3"), ("b", "3"), ("c", "4")):
            self.assertEqual(draw(pathlib.Path(folder, name), "--count", "1", "--seed", seed, *arguments), 0)
            files.append(pathlib.Path(folder, name, file).read_bytes())
        self.assertEqual(files[0], files[1])
        self.assertNotEqual(files[0], files[2])
        return files[0]

    def test_a_seed_decides_the_picture(self):
        with tempfile.TemporaryDirectory() as scratch:
            self.drawn_by_seed(scratch, "id-front-photo-0000.jpg", "--kind", "id-front", "--level", "photo",
                               "--size", "640x480")

    def test_lifelike_cards_are_repeatable_and_told(self):
        with tempfile.TemporaryDirectory() as scratch:
            self.drawn_by_seed(scratch, "bank-card-lifelike-bare-photo-0000.jpg", "--kind", "bank-card", "--style",
                               "lifelike", "--look", "bare", "--level", "photo")
            line = json.loads(pathlib.Path(scratch, "a", "truth.jsonl").read_text("utf-8"))
        self.assertEqual((line["style"], line["look"]), ("lifelike", "bare"))
        for arguments in (("bank-card", "--look", "bare"), ("code", "--style", "lifelike")):
            with tempfile.TemporaryDirectory() as scratch, self.subTest(arguments=arguments):
                self.assertEqual(draw(scratch, "--level", "clean", "--kind", *arguments), 2)

    def test_a_spoilt_photo_tells_its_warning(self):
        with tempfile.TemporaryDirectory() as scratch:
            self.assertEqual(draw(scratch, "--kind", "id-back", "--level", "photo", "--spoil", "cut_off", "--count", "1",
                                  "--size", "640x480"), 0)
            line = json.loads(pathlib.Path(scratch, "truth.jsonl").read_text("utf-8"))
            self.assertEqual((line["file"], line["warnings"]), ("id-back-photo-cut_off-0000.jpg", ["cut_off"]))
            for arguments in (("--kind", "id-back", "--level", "clean"), ("--kind", "code", "--level", "photo")):
                self.assertEqual(draw(scratch, "--spoil", "dark", *arguments), 2)

    def test_plain_cards_stay_as_they_are(self):
        name = "bank-card-worn-photo-0001.jpg"
        with tempfile.TemporaryDirectory() as scratch:
            self.assertEqual(draw(scratch, "--kind", "bank-card", "--level", "photo", "--look", "worn", "--first", "1",
                                  "--count", "1", "--seed", "7", "--size", "1280x960"), 0)
            pictures = [np.asarray(Image.open(path), float) for path in (SAMPLES / name, pathlib.Path(scratch, name))]
        self.assertLess(np.abs(pictures[0] - pictures[1]).max(), 16)  # coders of JPEG differ a little

    def test_several_runs_share_one_truth_file(self):
        runs = (("id-back", "--count", "1"), ("code", "--count", "1"), ("code", "--count", "1"),
                ("bank-card", "--count", "4"), ("bank-card", "--count", "1", "--look", "gold"))
        files = ["id-back-clean-0000.jpg", "code-clean-0000.jpg",
                 *(f"bank-card-{look}-clean-{index:04d}.jpg" for look, index in
                   (("flat", 0), ("silver", 1), ("gold", 2), ("worn", 3), ("gold", 0)))]
        with tempfile.TemporaryDirectory() as scratch:
            for kind, *arguments in runs:
                self.assertEqual(draw(scratch, "--level", "clean", "--kind", kind, *arguments), 0)
            lines = [json.loads(line) for line in pathlib.Path(scratch, "truth.jsonl").read_text("utf-8").splitlines()]
            self.assertEqual([line["file"] for line in lines], files)
            self.assertTrue(all(pathlib.Path(scratch, file).exists() for file in files))
            self.assertEqual(draw(scratch, "--kind", "code", "--level", "clean", "--look", "flat"), 2)

    def test_scenes_without_a_number_follow_each_other_and_say_so(self):
        count = len(nocard.SCENES)
        with tempfile.TemporaryDirectory() as scratch:
            self.assertEqual(draw(scratch, "--kind", "no-card", "--level", "photo", "--size", "320x240", "--count",
                                  str(count), "--first", "1"), 0)
            lines = [json.loads(line) for line in pathlib.Path(scratch, "truth.jsonl").read_text("utf-8").splitlines()]
            self.assertTrue(all(pathlib.Path(scratch, line["file"]).stat().st_size > 2000 for line in lines))
        self.assertEqual({line["scene"] for line in lines}, set(nocard.SCENES))
        self.assertEqual(lines[0], {"file": "no-card-text-page-photo-0001.jpg", "kind": "no-card", "level": "photo",
                                    "scene": "text page", "result": None})

    def test_a_seed_decides_the_clip_and_its_truth_is_told(self):
        with tempfile.TemporaryDirectory() as scratch:
            film = self.drawn_by_seed(scratch, "bank-card-flat-dark-0000.avi", "--kind", "bank-card",
                                      "--video", "dark", "--size", "320x240", "--fps", "4")
            line = json.loads(pathlib.Path(scratch, "a", "clips.jsonl").read_text("utf-8"))
        self.assertEqual((line["video"], line["kind"], line["variant"], line["look"]),
                         ("bank-card-flat-dark-0000.avi", "bank-card", "dark", "flat"))
        self.assertLess(line["heldStill"], line["clear"])
        self.assertLess(line["clear"] * 4, film.count(b"00dc") // 2)
        self.assertEqual(set(line["result"]), {"cardNumber", "rawCardNumber", "bankName", "cardType", "cardholderName"})

    def test_pictures_and_clips_are_drawn_in_different_runs(self):
        for arguments in ((), ("--video", "easy", "--level", "photo"), ("--video", "slow"),
                          ("--video", "easy", "--fps", "0")):
            with tempfile.TemporaryDirectory() as scratch, self.subTest(arguments=arguments):
                self.assertEqual(draw(scratch, "--kind", "code", *arguments), 2)


if __name__ == "__main__":
    unittest.main()
