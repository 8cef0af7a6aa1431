"""The clips must show what their truth says, and be files that a video reader understands."""

import json
import pathlib
import random
import struct
import tempfile
import unittest

import drawing  # first: it tells where the modules of the generator lie

import avi
import camera
import clips
import idcard
import numpy as np
import people
import story

STABLE_SECONDS = 0.8  # a card that lies still for so long is photographed
GLARE, DARK = 246, 15  # luma levels that the scanner calls glare and dark
FRAME = camera.rectangle(1, 9 / 16)


def card(seed):
    return idcard.BackCard(people.emblem_side(random.Random(seed)), random.Random(seed))


def may_be_photographed(picture):
    """Whether the scanner takes a photo, by glare, dark and glare in the worst row of the middle of the picture."""
    width, height = picture.size
    middle = picture.crop((width // 5, height // 5, 4 * width // 5, 4 * height // 5))
    luma = np.asarray(middle, np.float32) @ np.array([0.299, 0.587, 0.114], np.float32)
    glare = luma >= GLARE
    return glare.mean() < 0.07 and (luma < DARK).mean() < 0.65 and glare.mean(axis=1).max() < 0.25


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

    def test_a_card_that_is_taken_away_is_not_still_for_long_enough(self):
        for variant in ("removed", "second"):
            for seed in range(30):
                with self.subTest(variant=variant, seed=seed):
                    shown, _ = story.tell(variant, np.random.default_rng(seed)).showings
                    moments = np.arange(shown.start, shown.gone, 0.01)
                    places = np.array([shown.place(time) for time in moments])
                    slow = moments[10:][np.hypot(*(places[10:] - places[:-10]).T) < 0.1]
                    self.assertLess(np.ptp(slow), STABLE_SECONDS)


class FilmTest(unittest.TestCase):
    def test_the_light_is_bad_until_it_clears_and_good_from_then_on(self):
        for variant in ("easy", "glare", "dark"):
            for seed in range(3):
                rng = np.random.default_rng(seed)
                told = story.tell(variant, rng)
                film = clips.Film([card(seed + number) for number in range(told.cards)], told, (640, 360), rng)
                with self.subTest(variant=variant, seed=seed):
                    for moment in (told.still, told.clear - story.FADE) if told.clear else ():
                        self.assertFalse(may_be_photographed(film.picture(moment)))
                    self.assertTrue(may_be_photographed(film.picture(told.clear or told.still)))

    def test_the_index_of_a_file_leads_to_its_frames(self):
        frames = [b"a" * length for length in (7, 10, 1)]
        with tempfile.TemporaryDirectory() as scratch:
            path = pathlib.Path(scratch, "clip.avi")
            avi.write(path, (64, 48), 25, frames)
            content = path.read_bytes()
        movie, index = content.index(b"movi"), content.index(b"idx1") + 8
        for position, frame in enumerate(frames):
            name, _, offset, length = struct.unpack_from("<4sIII", content, index + 16 * position)
            start = movie + offset + 8
            self.assertEqual((name, content[start - 8:start - 4]), (b"00dc", b"00dc"))
            self.assertEqual(content[start:start + length], frame)


class CommandTest(unittest.TestCase):
    def test_a_seed_decides_the_clip_and_its_truth_is_told(self):
        with tempfile.TemporaryDirectory() as scratch:
            film = drawing.drawn_by_seed(self, scratch, "bank-card-flat-dark-0000.avi", "--kind", "bank-card",
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
                self.assertEqual(drawing.draw(scratch, "--kind", "code", *arguments), 2)


if __name__ == "__main__":
    unittest.main()
