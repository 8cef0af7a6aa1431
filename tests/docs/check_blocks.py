#!/usr/bin/python3
"""Holds the code blocks of a Markdown page against the programs: check_blocks.py BUILD PAGE.

Code (cpp, c, python, cmake) must stand verbatim in the file that a comment above the block names, <!-- file: NAME -->,
relative to the page; the build compiles these files. A table may be marked alike, so that figures stand the same on two
pages. Every sh block is run at the top of a scratch checkout, unless the comment says <!-- not run: REASON -->. A block
marked <!-- output --> must be what the commands above it printed, where a "…" stands for any text within a line and a
line of "…" for any lines. Links to files must lead somewhere.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

ROOT = pathlib.Path(__file__).resolve().parents[2]
CODE = ("cpp", "c", "python", "cmake")
SECONDS = 120
# What the pages call the reader's own pictures.
STAND_INS = {
    "card.jpg": "id-front-photo-0019.jpg",
    "sideways.jpg": "id-front-photo-0036.jpg",
    "back.jpg": "id-back-photo-0006.jpg",
    "desk.jpg": "id-back-photo-0006.jpg",
    "a.jpg": "bank-card-worn-photo-0001.jpg",
    "b.jpg": "bank-card-flat-photo-0011.jpg",
    "label.jpg": "code-photo-0003.jpg",
}

FENCE = re.compile(r"(?:^<!-- (?P<marker>[^\n]*?) -->\n)?^```(?P<language>\w*)\n(?P<text>.*?)^```$", re.M | re.S)
TABLE = re.compile(r"^<!-- file: (?P<file>\S+) -->\n(?P<text>(?:^\|.*\n)+)", re.M)
LINK = re.compile(r"\]\((?!https?:)([^)#\s]+)")


def scratch_checkout(folder, build):
    """A folder that looks like the top of a checkout after a build, with pictures of the reader's own."""
    shutil.copytree(ROOT / "samples", folder / "samples")
    for name in ("c", "docs", "tools"):
        (folder / name).symlink_to(ROOT / name)
    (folder / "build").mkdir()
    (folder / "build" / "release").symlink_to(build)
    for name, sample in STAND_INS.items():
        (folder / name).symlink_to(ROOT / "samples" / sample)


def output_of(commands, folder, build):
    """What the commands print; a command that fails ends the run."""
    path = f"{build / 'apps' / 'pravik'}:{os.environ['PATH']}"
    run = subprocess.run(["bash", "-euo", "pipefail", "-c", commands], cwd=folder, timeout=SECONDS, check=False,
                         env=os.environ | {"PATH": path, "LC_ALL": "C.UTF-8"}, stdin=subprocess.DEVNULL,
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
    if run.returncode:
        raise ValueError(f"ends with status {run.returncode}:\n{run.stdout}{run.stderr}")
    return run.stdout


def check_output(expected, printed):
    lines = ["(?:.*\n)*?" if line.strip() == "…" else re.escape(line.rstrip()).replace("…", ".*") + " *\n"
             for line in expected.splitlines()]
    if not re.fullmatch("".join(lines), printed):
        raise ValueError(f"differs from what was printed:\n{printed}")


def check_excerpt(text, path):
    """The block is part of the file, or all of it, perhaps indented less."""
    content = path.read_text(encoding="utf-8").splitlines()
    wanted = text.splitlines()
    for start in range(len(content) - len(wanted) + 1):
        if textwrap.dedent("\n".join(content[start:start + len(wanted)])) == "\n".join(wanted):
            return
    raise ValueError(f"does not stand in {path}")


class Page:
    def __init__(self, path, folder, build):
        self.path, self.folder, self.build = path, folder, build
        self.printed = None

    def check_block(self, language, marker, text):
        word, _, rest = (marker or "").partition(": ")
        if word == "file":
            check_excerpt(text, self.path.parent / rest)
        elif word == "not run":
            if not rest:
                raise ValueError("does not say why it is not run")
            self.printed = None
        elif word == "output":
            if self.printed is None:
                raise ValueError("follows no commands that were run")
            check_output(text, self.printed)
        elif language == "sh":
            self.printed = None
            self.printed = output_of(text, self.folder, self.build)
        else:
            raise ValueError(f"a block of {language or 'plain text'} without a comment that tells what it is")
        if language in CODE and word != "file":
            raise ValueError("code that no file holds")

    def problems(self):
        content = self.path.read_text(encoding="utf-8")
        for link in LINK.findall(content):
            if not (self.path.parent / link).exists():
                yield f"the link {link} leads nowhere"
        if content.count("\n```") != 2 * len(FENCE.findall(content)):
            yield "a code block that is not closed, or indented"
        for table in TABLE.finditer(content):
            yield from self.problem(content, table, check_excerpt, table["text"], self.path.parent / table["file"])
        for fence in FENCE.finditer(content):
            yield from self.problem(content, fence, self.check_block, fence["language"], fence["marker"], fence["text"])

    @staticmethod
    def problem(content, match, check, *arguments):
        try:
            check(*arguments)
        except (ValueError, OSError, subprocess.TimeoutExpired) as error:
            line = content.count("\n", 0, match.start("text")) + 1
            yield f"line {line}: the block {error}"


def main():
    build, path = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    with tempfile.TemporaryDirectory() as folder:
        scratch_checkout(pathlib.Path(folder), build)
        problems = list(Page(path, pathlib.Path(folder), build).problems())
    for problem in problems:
        print(f"{path.name}: {problem}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
