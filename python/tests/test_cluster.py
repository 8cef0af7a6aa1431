"""The example for Ray: every picture has one row, whatever ends on the way."""
import collections
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time
import uuid

import pytest

from conftest import FRONT, ROOT, SAMPLES

pytestmark = pytest.mark.cluster
PICTURES = 300
BAD = {"empty.jpg": b"", "no.png": b"GIF89a", "half.jpg": FRONT.read_bytes()[:5000], "deep/no.pdf": b"%PDF-1.4"}
EXAMPLE = ROOT / "python/examples/ray_cards.py"


def processes_of(run: str) -> dict[int, str]:
    """Titles of the processes that inherited this word in their environment."""
    found = {}
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if f"RUN_OF_TEST={run}".encode() in (folder / "environ").read_bytes():
                found[int(folder.name)] = (folder / "cmdline").read_bytes().decode(errors="replace")
        except OSError:
            continue
    return found


def wait_for(condition: collections.abc.Callable[[], object], seconds: float = 1200) -> None:
    end = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.1)


@pytest.fixture
def source(tmp_path: pathlib.Path) -> pathlib.Path:
    folder = tmp_path / "photos"
    (folder / "deep").mkdir(parents=True)
    samples = sorted(SAMPLES.glob("*.jpg"))
    for number in range(PICTURES - len(BAD)):
        shutil.copy(samples[number % len(samples)], folder / f"{number:04}-名字.jpg")
    for name, content in BAD.items():
        (folder / name).write_bytes(content)
    (folder / "notes.txt").write_text("no picture")
    return folder


def test_every_picture_has_one_row_when_a_worker_and_then_the_run_are_killed(source: pathlib.Path,
                                                                             tmp_path: pathlib.Path) -> None:
    parquet = pytest.importorskip("pyarrow.parquet")
    rows, run = tmp_path / "rows", uuid.uuid4().hex
    command = [sys.executable, EXAMPLE, source, rows, "--workers", "2", "--batch", "8"]

    def start() -> subprocess.Popen[bytes]:
        return subprocess.Popen(command, env=os.environ | {"RUN_OF_TEST": run, "RAY_worker_niceness": "0"})

    def files() -> int:
        return len(list(rows.glob("*.parquet")))

    first = start()
    wait_for(lambda: files() >= 4)
    workers = [number for number, title in processes_of(run).items()
               if title.startswith("ray::") and "ReadCards" in title]
    os.kill(workers[0], signal.SIGKILL)
    wait_for(lambda: files() >= 16)
    first.kill()
    first.wait()
    wait_for(lambda: not processes_of(run), 120)
    assert files() < PICTURES // 8
    assert start().wait(1800) == 0
    table = [row for path in rows.glob("*.parquet") for row in parquet.read_table(path).to_pylist()]
    assert collections.Counter(row["file"] for row in table) == collections.Counter(
        path.relative_to(source).as_posix() for path in source.rglob("*") if path.suffix not in ("", ".txt"))
    by_name = {row["file"]: row for row in table}
    assert {by_name[name]["status"] for name in BAD} == {"invalid_image"}
    read = [row for row in table if row["status"] == "read"]
    assert len(read) > PICTURES / 2 and all(json.loads(row["answer"])["cards"] and row["error"] is None for row in read)
    assert start().wait(300) == 0 and sorted(rows.glob(".*")) == []


@pytest.mark.parametrize("arguments", [["no/such/folder", "rows"], ["no-such-store://a/b", "rows"], [".", __file__],
                                       [".", "rows", "--batch", "0"], [".", "rows", "--time-limit", "-1"]])
def test_a_wrong_use_is_told(arguments: list[str], tmp_path: pathlib.Path) -> None:
    ended = subprocess.run([sys.executable, EXAMPLE, *arguments], cwd=tmp_path, capture_output=True, text=True,
                           timeout=60)
    assert ended.returncode == 2 and "error: " in ended.stderr and "Traceback" not in ended.stderr
