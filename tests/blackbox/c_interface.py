"""The example in C, the one in Python and the command line say the same, and the C library shows its functions only.

The environment names the programs: PRAVIK, EXAMPLE and LIBRARY.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).parents[2]
SAMPLES = ROOT / "samples"
TOOL, EXAMPLE, LIBRARY = (os.environ[name] for name in ("PRAVIK", "EXAMPLE", "LIBRARY"))
SCRIPT = ROOT / "docs" / "examples" / "read_a_card.py"
BLOCKS = [{"text": text, "confidence": 0.9, "boundingBox": {"x": 0.1, "y": y, "width": 0.5, "height": 0.1}}
          for text, y in (("签发机关 凤台县公安局", 0.4), ("有效期限 2015.03.01-2035.03.01", 0.2))]

sys.path.insert(0, str(SCRIPT.parent))
from read_a_card import Pravik, PravikError  # noqa: E402


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=120, **options)


def one_line(answer):
    return json.dumps(answer, ensure_ascii=False, separators=(",", ":"))


def without_file(line):
    return one_line({key: value for key, value in json.loads(line).items() if key != "file"})


class CInterface(unittest.TestCase):
    def test_reads_the_samples_like_the_command_line(self):
        pictures = {}
        for line in (SAMPLES / "truth.jsonl").read_text().splitlines():
            truth = json.loads(line)
            pictures.setdefault(truth["kind"], []).append(SAMPLES / truth["file"])
        pictures["text"] = pictures["id-back"][:1]
        pictures["cards"] = pictures["id-front"][:1] + pictures["bank-card"][:1]
        for kind, files in pictures.items():
            expected = [without_file(line)
                        for line in run(TOOL, kind, "--format", "jsonl", *files).stdout.splitlines()]
            for program in ([EXAMPLE], [sys.executable, SCRIPT, LIBRARY]):
                with self.subTest(kind=kind, program=program[0]):
                    ended = run(*program, kind, *files)
                    self.assertEqual((ended.stdout.splitlines(), ended.stderr, ended.returncode), (expected, "", 0))

    def test_tells_why_a_picture_was_not_read_and_goes_on(self):
        whole = SAMPLES / "code-photo-0003.jpg"
        with tempfile.TemporaryDirectory() as folder:
            broken = pathlib.Path(folder) / "broken.jpg"
            broken.write_bytes(whole.read_bytes()[:2000])
            for program in ([EXAMPLE], [sys.executable, SCRIPT, LIBRARY]):
                ended = run(*program, "code", broken, folder, whole)
                self.assertEqual((ended.returncode, len(ended.stdout.splitlines())), (1, 1), ended.stderr)
                self.assertEqual(ended.stderr.count("invalid_image"), 2, ended.stderr)
                self.assertEqual(run(*program, "passport", whole).returncode, 2)

    def test_tells_the_report_by_the_day_that_is_set(self):
        picture = SAMPLES / "id-back-clean-0000.jpg"
        for date, warnings in (("2010-01-01", None), ("2016-01-01", ["expired"])):
            line = run(TOOL, "id-back", "--report", "--date", date, "--format", "jsonl", picture).stdout
            with Pravik(LIBRARY, report=True, date=date) as pravik:
                answer = pravik.read_file("id-back", picture)
            self.assertEqual(one_line(answer), without_file(line))
            self.assertEqual(answer.get("warnings"), warnings)
            self.assertIn("fields", answer)

    def test_tells_an_error_in_the_language_that_is_set(self):
        picture = SAMPLES / "id-front-clean-0000.jpg"
        for language, code, message in (("en", "insufficient_text", "no QR code or bar code was found"),
                                        ("zh", "insufficient_text", "没有找到二维码或条形码")):
            with Pravik(LIBRARY, language=language) as pravik, self.assertRaises(PravikError) as caught:
                pravik.read_file("code", picture)
            self.assertEqual((caught.exception.code, str(caught.exception)), (code, message))
            self.assertEqual(caught.exception.answer["error"]["message"], "未能从图像中提取到足够的文字信息")
        for wrong in ({"date": "2026-02-30"}, {"date": "-026-01-01"}, {"language": "fr"}, {"report": 2}):
            with self.assertRaises(ValueError, msg=wrong):
                Pravik(LIBRARY, **wrong)

    def test_the_binding_parses_reads_memory_and_logs(self):
        picture = SAMPLES / "id-back-clean-0000.jpg"
        observations = json.dumps({"observations": BLOCKS})
        parsed = run(TOOL, "parse", "id-back", "--format", "jsonl", input=observations).stdout
        lines = []
        with Pravik(LIBRARY) as pravik:
            self.assertEqual(one_line(pravik.parse("id-back", BLOCKS)), parsed.strip())
            self.assertEqual(pravik.read_bytes("id-back", picture.read_bytes()), pravik.read_file("id-back", picture))
            pravik.log("warning", lambda level, line: lines.append((level, line)))
            with self.assertRaises(PravikError) as caught:
                pravik.read_file("id-front", picture)
        self.assertEqual(caught.exception.code, "scene_mismatch")
        self.assertEqual([level for level, _ in lines], ["warning"])
        self.assertIn("场景不匹配", lines[0][1])

    def test_shows_the_functions_of_the_header_and_nothing_else(self):
        header = (ROOT / "c" / "pravik_c.h").read_text()
        symbols = run("nm", "--dynamic", "--defined-only", "--format=just-symbols", LIBRARY).stdout
        shown = {symbol.split("@")[0] for symbol in symbols.split()} - {"PRAVIK_1"}
        self.assertEqual(shown, set(re.findall(r"^\w.*?(pravik_\w+)\(", header, re.M)))


if __name__ == "__main__":
    unittest.main()
