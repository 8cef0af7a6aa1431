import ctypes
import json
import os
import pathlib
import subprocess
from collections.abc import Callable

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
    report = ["--report"] if kind in CARDS else []
    command = [TOOL, kind, "--format", "jsonl", "--time-limit", "60", *report, *map(str, pictures)]
    lines = subprocess.run(command, stdout=subprocess.PIPE, encoding="utf-8", timeout=300).stdout.splitlines()
    return [line.replace(f'"file":{json.dumps(str(picture))},', "", 1) for line, picture in zip(lines, pictures)]


def c_interface() -> Callable[[int, pathlib.Path], str]:
    """A function that reads a file through the package's own C interface, by the number of the kind."""
    folder = pathlib.Path(pravik.__file__).parent
    c = ctypes.CDLL(str(folder / "libpravik_c.so.1"))
    c.pravik_create.restype, c.pravik_create.argtypes = ctypes.c_void_p, (ctypes.c_char_p, ctypes.c_int)
    c.pravik_set_time_limit.argtypes = (ctypes.c_void_p, ctypes.c_double)
    c.pravik_set_report.argtypes = (ctypes.c_void_p, ctypes.c_int)
    c.pravik_recognize_file.restype = ctypes.c_void_p
    c.pravik_recognize_file.argtypes = (ctypes.c_void_p, ctypes.c_int, ctypes.c_char_p)
    c.pravik_result_json.restype, c.pravik_result_json.argtypes = ctypes.c_char_p, (ctypes.c_void_p,)
    c.pravik_result_free.argtypes = (ctypes.c_void_p,)
    handle = c.pravik_create(str(folder / "models").encode(), 1)
    c.pravik_set_time_limit(handle, 60)
    c.pravik_set_report(handle, 1)

    def read(kind: int, picture: pathlib.Path) -> str:
        result = c.pravik_recognize_file(handle, kind, str(picture).encode())
        text: str = c.pravik_result_json(result).decode()
        c.pravik_result_free(result)
        return text

    return read


@pytest.fixture(scope="session")
def reader() -> pravik.Reader:
    return pravik.Reader(threads=1, language="en", time_limit=60)
