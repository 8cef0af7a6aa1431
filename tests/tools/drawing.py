"""What the tests of the drawn pictures and clips share."""

import pathlib
import subprocess
import sys

sys.dont_write_bytecode = True
CARDGEN = pathlib.Path(__file__).resolve().parents[2] / "tools" / "cardgen"
sys.path.insert(0, str(CARDGEN))


def draw(folder, *arguments):
    """Runs the generator and gives its exit status."""
    command = [CARDGEN / "cardgen", "--out", folder, "--jobs", "1", *arguments]
    return subprocess.run(command, capture_output=True, check=False).returncode


def drawn_by_seed(test, folder, file, *arguments):
    """The same file as it is drawn with a seed: alike each time, and otherwise with another seed."""
    files = []
    for name, seed in (("a", "3"), ("b", "3"), ("c", "4")):
        test.assertEqual(draw(pathlib.Path(folder, name), "--count", "1", "--seed", seed, *arguments), 0)
        files.append(pathlib.Path(folder, name, file).read_bytes())
    test.assertEqual(files[0], files[1])
    test.assertNotEqual(files[0], files[2])
    return files[0]
