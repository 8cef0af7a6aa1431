import json
import os
import pathlib
import subprocess

import pytest

import pravik

ROOT = pathlib.Path(__file__).parents[2]
SAMPLES = ROOT / "samples"
TOOL = os.environ.get("PRAVIK", str(ROOT / "build/release/apps/pravik/pravik"))
FRONT = SAMPLES / "id-front-photo-0019.jpg"
BACK = SAMPLES / "id-back-photo-0006.jpg"
CARDS = ("id-front", "id-back", "bank-card")
CODE = SAMPLES / "code-photo-0003.jpg"


def command_line(kind: str, *pictures: pathlib.Path) -> list[str]:
    """What the command line prints for each picture, without the name of the file."""
    command = [TOOL, kind, "--format", "jsonl", "--time-limit", "60", *(["--report"] if kind in CARDS else []), *map(str, pictures)]
    lines = subprocess.run(command, stdout=subprocess.PIPE, encoding="utf-8", timeout=300).stdout.splitlines()
    return [line.replace(f'"file":{json.dumps(str(picture))},', "", 1) for line, picture in zip(lines, pictures)]


@pytest.fixture(scope="session")
def reader() -> pravik.Reader:
    return pravik.Reader(threads=1, language="en", time_limit=60)
