"""The clips must show what their truth says, and be files that a video reader understands."""

import json
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
CARDGEN = pathlib.Path(__file__).resolve().parents[2] / "tools" / "cardgen"
sys.path.insert(0, str(CARDGEN))

import avi  # noqa: E402
import camera  # noqa: E402
import clips  # noqa: E402
import idcard  # noqa: E402
import numpy as np  # noqa: E402
import people  # noqa: E402
import story  # noqa: E402

STABLE_SECONDS = 0.8  # a card that lies still for so long is photographed
GLARE, DARK = 246, 15  # luma levels that the scanner calls glare and dark


def card(seed):
    return idcard.BackCard(people.emblem_side(random.Random(seed)), random.Random(seed))


def quality(picture):
    """Shares of glare, of dark and of glare in the worst row, over the middle three fifths of the picture."""
    width, height = picture.size
    middle = picture.crop((width // 5, height // 5, 4 * width // 5, 4 * height // 5))
    luma = np.asarray(middle, np.float32) @ np.array([0.299, 0.587, 0.114], np.float32)
    return (luma >= GLARE).mean(), (luma < DARK).mean(), (luma >= GLARE).mean(axis=1).max()


def may_be_photographed(picture):
    glare, dark, row = quality(picture)
    return glare < 0.07 and dark < 0.65 and row < 0.25


class StoryTest(unittest.TestCase):
    STORIES = [(variant, story.tell(variant, np.random.default_rng(seed)))
               for variant in story.PLOTS for seed in range(30)]
    FRAME = camera.rectangle(1, 9 / 16)

    def each_story(self, check):
        for variant, told in self.STORIES:
            with self.subTest(variant=variant, still=told.still):
                check(variant, told)

    def test_the_last_card_is_held_still_to_the_end(self):
        def check(_, told):
            self.assertGreater(told.seconds, max(told.still, told.clear or 0) + 2 * STABLE_SECONDS)
            self.assertLess(told.seconds, 6.9)
            moments = np.arange(told.still, told.seconds, 0.1)
            seen = [camera.project(told.hand.movement(time), self.FRAME) for time in moments]
            self.assertLess(np.abs(np.diff(seen, axis=0)).max(), 0.006)
            self.assertEqual({told.card(time) for time in moments}, {(told.cards - 1, (0, 0))})
        self.each_story(check)

    def test_the_hand_never_looks_past_the_drawn_desk(self):
        def check(_, told):
            for time in np.arange(0, told.seconds, 0.05):
                seen = camera.project(np.linalg.inv(told.hand.movement(time)), self.FRAME)
                self.assertLess((np.abs(seen) - np.abs(self.FRAME)).max(), clips.MARGIN)
        self.each_story(check)

    def test_a_card_that_is_taken_away_is_not_still_for_long_enough(self):
        def check(variant, told):
            self.assertEqual(len(told.showings), 2 if variant in ("removed", "second") else 1)
            self.assertEqual(told.cards, 2 if variant == "second" else 1)
            for shown, after in zip(told.showings, told.showings[1:]):
                moments = np.arange(shown.start, shown.gone, 0.01)
                places = np.array([shown.place(time) for time in moments])
                slow = moments[10:][np.hypot(*(places[10:] - places[:-10]).T) < 0.1]
                self.assertLess(np.ptp(slow), STABLE_SECONDS)
                self.assertIsNone(told.card((shown.gone + after.start) / 2))
        self.each_story(check)

    def test_bad_light_clears(self):
        def check(variant, told):
            self.assertEqual(told.clear is not None, variant in ("glare", "dark"))
            if told.clear:
                before, after = told.clear - story.FADE, told.clear
                self.assertEqual((told.glare(before) > 0.99, told.glare(after)), (variant == "glare", 0))
                self.assertEqual((told.exposure(before) < 0.05, told.exposure(after)), (variant == "dark", 1))
        self.each_story(check)


class FilmTest(unittest.TestCase):
    def film(self, variant, seed, size=(640, 360)):
        rng = np.random.default_rng(seed)
        told = story.tell(variant, rng)
        return told, clips.Film([card(seed + number) for number in range(told.cards)], told, size, rng)

    def test_the_light_is_bad_until_it_clears_and_good_from_then_on(self):
        for variant in ("easy", "glare", "dark"):
            for seed in range(3):
                told, film = self.film(variant, seed)
                with self.subTest(variant=variant, seed=seed):
                    hidden = told.clear - story.FADE if told.clear else None
                    if hidden:
                        self.assertFalse(may_be_photographed(film.picture(told.still)))
                        self.assertFalse(may_be_photographed(film.picture(hidden)))
                    self.assertTrue(may_be_photographed(film.picture(told.clear or told.still)))

    def test_the_whole_card_is_in_the_picture(self):
        subject = card(1)
        for seed in range(100):
            for size in ((1280, 720), (640, 480)):
                pose = clips.choose_pose(subject, size, np.random.default_rng(seed))
                seen = camera.project(pose.homography(), camera.rectangle(subject.width, subject.height))
                with self.subTest(seed=seed, size=size):
                    self.assertTrue((seen > 0).all() and (seen < size).all())
                    self.assertTrue(0.5 < np.ptp(seen, axis=0)[0] / size[0] < 0.85)


class AviTest(unittest.TestCase):
    def test_the_index_leads_to_the_frames(self):
        frames = [b"a" * length for length in (7, 10, 1)]
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch, "clip.avi")
            avi.write(path, (64, 48), 25, frames)
            content = path.read_bytes()
        self.assertEqual((content[:4], content[8:12]), (b"RIFF", b"AVI "))
        self.assertEqual(struct.unpack("<I", content[4:8])[0] + 8, len(content))
        movie, index = content.index(b"movi"), content.index(b"idx1") + 8
        for position, frame in enumerate(frames):
            name, _, offset, length = struct.unpack_from("<4sIII", content, index + 16 * position)
            start = movie + offset + 8
            self.assertEqual((name, content[start - 8:start - 4]), (b"00dc", b"00dc"))
            self.assertEqual(content[start:start + length], frame)


class CommandTest(unittest.TestCase):
    def draw(self, folder, *arguments):
        command = [CARDGEN / "cardgen", "--out", folder, "--jobs", "1", "--count", "1", "--size", "320x240",
                   "--fps", "4", *arguments]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_the_same_seed_films_the_same_clip_and_tells_it(self):
        with tempfile.TemporaryDirectory() as scratch:
            films = []
            for folder, seed in (("a", "3"), ("b", "3"), ("c", "4")):
                done = self.draw(pathlib.Path(scratch, folder), "--kind", "bank-card", "--video", "dark",
                                 "--seed", seed)
                self.assertEqual(done.returncode, 0, done.stderr)
                films.append(pathlib.Path(scratch, folder, "bank-card-flat-dark-0000.avi").read_bytes())
            self.assertEqual(films[0], films[1])
            self.assertNotEqual(films[0], films[2])
            line = json.loads(pathlib.Path(scratch, "a", "clips.jsonl").read_text("utf-8"))
        self.assertEqual((line["video"], line["kind"], line["variant"], line["look"]),
                         ("bank-card-flat-dark-0000.avi", "bank-card", "dark", "flat"))
        self.assertLess(line["heldStill"], line["clear"])
        self.assertLess(line["clear"] * 4, films[0].count(b"00dc") // 2)
        self.assertEqual(set(line["result"]), {"cardNumber", "rawCardNumber", "bankName", "cardType", "cardholderName"})

    def test_pictures_and_clips_are_drawn_in_different_runs(self):
        for arguments in ((), ("--video", "easy", "--level", "photo"), ("--video", "slow"),
                          ("--video", "easy", "--fps", "0")):
            with tempfile.TemporaryDirectory() as scratch, self.subTest(arguments=arguments):
                self.assertEqual(self.draw(scratch, "--kind", "code", *arguments).returncode, 2)


if __name__ == "__main__":
    unittest.main()
