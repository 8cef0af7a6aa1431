"""Has sets of synthetic pictures and clips drawn, and keeps them for the next report."""

import argparse
import hashlib
import shutil
import subprocess
import sys

import reading

CARDGEN = reading.ROOT / "tools" / "cardgen"


def generator_version():
    """A short hash of the generator's sources: sets drawn by another version are not reused."""
    digest = hashlib.sha256()
    for path in sorted([*CARDGEN.glob("*.py"), CARDGEN / "cardgen"]):
        digest.update(path.read_bytes())
    return digest.hexdigest()[:8]


def drawn(parent, name, arguments, count, seed):
    """The folder of a set with its truth, drawn now unless it is there already; `arguments` say what to draw."""
    prefix = f"{name}-seed{seed}-n{count}-"
    folder = parent / (prefix + generator_version())
    if any(folder.glob("*.jsonl")):
        return folder
    for outdated in parent.glob(prefix + "*"):
        shutil.rmtree(outdated)
    print(f"drawing {count}: {name}", file=sys.stderr)
    done = subprocess.run([CARDGEN / "cardgen", *arguments, "--count", str(count), "--seed", str(seed),
                           "--out", folder], check=False)
    if done.returncode != 0:
        raise SystemExit(f"drawing {name} ended with status {done.returncode}")
    return folder


def choices(known):
    """A parser of comma-separated names out of `known`."""
    def parse(value):
        names = tuple(value.split(","))
        for name in names:
            if name not in known:
                raise argparse.ArgumentTypeError(f"{name}: expected some of {','.join(known)}")
        return names
    return parse
