#!/usr/bin/env python3
"""Reads the cards on all pictures of a folder with Ray Data: ray_cards.py SOURCE DESTINATION [--workers N].

Both are folders, or stores that pyarrow knows, such as s3://bucket/photos. The destination gets Parquet files with one
row a picture: `file` (below the source), `status` ("read", or the code of an error or of a reason), `error` (for
people), and `answer` (the JSON of the command line). A picture that cannot be read is a row like any other. What the
destination holds is not read again: the same command takes up a run that was ended. One run at a time writes to a
destination. It needs ray[data] and pyarrow, and the package pravik on every machine. Ends with 0, 1 when pictures have
no row, or 2.
"""

import argparse
import hashlib
import json
import os
import sys
import time

# Nothing is told to Ray's makers.
os.environ.setdefault("RAY_USAGE_STATS_ENABLED", "0")

import pravik
import pyarrow.fs
import pyarrow.parquet
import ray

SUFFIXES = (".jpg", ".jpeg", ".png", ".bmp", ".webp", ".heic", ".heif", ".tif", ".tiff", ".pdf")
# As in the library, which refuses a file with one byte more.
MAXIMUM_BYTES = 64 << 20
# Small enough that an end of the run costs little, large enough that files are not many.
PICTURES_A_FILE = 64
# More are a burden for Ray's scheduler.
MOST_BLOCKS = 2000
# A picture that ends its worker is given up with its file after as many further trials, and the run goes on.
RETRIES = 3
SCHEMA = pyarrow.schema([(name, pyarrow.string()) for name in ("file", "status", "error", "answer")])


def store(place):
    """The file system of a folder or a store, and the path there."""
    return pyarrow.fs.FileSystem.from_uri(place if "://" in place else os.path.abspath(place))


def names_in(files, folder, suffixes):
    """Names of files below a folder, relative to it."""
    found = files.get_file_info(pyarrow.fs.FileSelector(folder, recursive=True))
    return sorted(os.path.relpath(info.path, folder) for info in found
                  if info.type == pyarrow.fs.FileType.File and info.path.lower().endswith(suffixes))


def names_done(files, folder):
    files.create_dir(folder, recursive=True)
    return {name for file in names_in(files, folder, (".parquet",)) for name in
            pyarrow.parquet.read_table(f"{folder}/{file}", columns=["file"], filesystem=files)["file"].to_pylist()}


def outcome(text):
    """Status and error of an answer."""
    answer = json.loads(text)
    cards = answer.get("cards", [])
    if any("result" in card for card in cards):
        return "read", None
    error = answer.get("error") or next((card["error"] for card in cards if "error" in card), None)
    return (error["code"], error["message"]) if error else (answer["report"]["reason"], answer["report"]["text"])


class ReadCards:
    """A worker: keeps its models, and writes the rows of some pictures before it takes more."""

    def __init__(self, source, destination, time_limit):
        self.source, self.destination = source, destination
        self.reader = pravik.Reader(threads=1, time_limit=time_limit)

    def __call__(self, part):
        names = [str(name) for name in part["names"]]
        rows = [self.row(name) for name in names]
        files, folder = self.destination
        # Whoever reads these pictures again after an end of the worker writes the same file, first under another name,
        # so that no half of it is ever found.
        file = hashlib.sha256("\0".join(names).encode()).hexdigest()[:32]
        with files.open_output_stream(f"{folder}/.{file}.unfinished") as stream:
            pyarrow.parquet.write_table(pyarrow.Table.from_pylist(rows, SCHEMA), stream)
        files.move(f"{folder}/.{file}.unfinished", f"{folder}/{file}.parquet")
        return {"rows": len(rows), "read": sum(row["status"] == "read" for row in rows)}

    def row(self, name):
        row = dict.fromkeys(SCHEMA.names) | {"file": name}
        files, folder = self.source
        try:
            with files.open_input_stream(f"{folder}/{name}", compression=None) as stream:
                picture = stream.read(MAXIMUM_BYTES + 1)
            row["answer"] = self.reader.answer("cards", picture)
            row["status"], row["error"] = outcome(row["answer"])
        except Exception as error:  # one picture, whatever is wrong with it
            row["status"] = "invalid_image" if isinstance(error, OSError) else "internal_error"
            row["error"] = str(error)
        return row


def read_all(names, source, destination, options):
    """How many rows there are now."""
    ray.init(logging_level="WARNING", log_to_driver=False)
    context = ray.data.DataContext.get_current()
    context.enable_progress_bars = False
    context.max_errored_blocks = -1
    parts = [{"names": names[start:start + options.batch]} for start in range(0, len(names), options.batch)]
    workers = options.workers or int(ray.cluster_resources()["CPU"])
    results = ray.data.from_items(parts, override_num_blocks=min(len(parts), MOST_BLOCKS)).map(
        ReadCards, fn_constructor_args=(source, destination, options.time_limit), num_cpus=1,
        compute=ray.data.ActorPoolStrategy(size=min(workers, len(parts))), max_restarts=-1, max_task_retries=RETRIES)
    started, rows, read = time.monotonic(), 0, 0
    for result in results.iter_rows():
        rows, read = rows + result["rows"], read + result["read"]
        print(f"{rows} of {len(names)} pictures, {read} read, {rows / (time.monotonic() - started):.1f} a second",
              file=sys.stderr, flush=True)
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("source")
    parser.add_argument("destination")
    parser.add_argument("--workers", type=int, default=0, help="each reads one picture at a time; one a core")
    parser.add_argument("--time-limit", type=float, default=30, metavar="SECONDS", help="of one picture (%(default)s)")
    parser.add_argument("--batch", type=int, default=PICTURES_A_FILE, help="pictures a file (%(default)s)")
    options = parser.parse_args()
    if options.workers < 0 or options.batch < 1:
        parser.error("--workers and --batch are at least 1")
    try:
        pravik.Reader(time_limit=options.time_limit)
        source, destination = store(options.source), store(options.destination)
        names, done = names_in(*source, SUFFIXES), names_done(*destination)
    except (OSError, ValueError) as error:
        parser.error(str(error))
    left = [name for name in names if name not in done]
    print(f"{len(names)} pictures, {len(names) - len(left)} of them done before", file=sys.stderr, flush=True)
    missing = len(left) - read_all(left, source, destination, options) if left else 0
    if missing:
        print(f"{missing} pictures have no row: their workers ended; run it again", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
