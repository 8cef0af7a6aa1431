"""Puts the pictures of a set into files of another type."""

import json
import pathlib
import shutil
import subprocess

from PIL import Image

import reading

# File type -> how many pictures one file holds: each page gets an answer of its own.
PICTURES = {"heic": 1, "pdf": 2, "tiff": 2}
HEIC_ENCODER, HEIC_QUALITY = "heif-enc", "90"
# The tool draws the pages of a PDF at this resolution: so much keeps the pixels as they are.
DOTS_PER_INCH = 300
PDF_QUALITY = 95


def missing(file_type):
    """What the machine lacks to write that type; empty if nothing."""
    if file_type == "heic" and not shutil.which(HEIC_ENCODER):
        return f"heic cannot be written: {HEIC_ENCODER} is missing, of Debian's libheif-examples"
    return ""


def _write(path, pictures):
    """Writes the pictures, all in one file."""
    if path.suffix == ".heic":
        done = subprocess.run([HEIC_ENCODER, "-q", HEIC_QUALITY, "-o", path, *pictures], capture_output=True, text=True,
                              check=False)
        if done.returncode != 0 or not path.exists():
            raise SystemExit(f"{path} cannot be written: {(done.stderr or done.stdout).strip()}")
        return
    first, *others = [Image.open(picture).convert("RGB") for picture in pictures]
    how = {"quality": PDF_QUALITY} if path.suffix == ".pdf" else {"compression": "tiff_lzw"}
    first.save(path, save_all=True, append_images=others, resolution=DOTS_PER_INCH, **how)


def wrapped(folder, file_type):
    """The folder of the same set in files of another type, made now unless it is there already."""
    target = folder.with_name(f"{folder.name}-{file_type}")
    if (target / "truth.jsonl").exists():
        return target
    target.mkdir(exist_ok=True)
    truths = reading.load_truth(folder / "truth.jsonl")
    lines = []
    for start in range(0, len(truths), PICTURES[file_type]):
        together = truths[start:start + PICTURES[file_type]]
        path = target / f"{pathlib.Path(together[0]['file']).stem}.{file_type}"
        _write(path, [truth.pop("path") for truth in together])
        lines += [json.dumps(truth | {"file": path.name}, ensure_ascii=False) + "\n" for truth in together]
    (target / "truth.jsonl").write_text("".join(lines), "utf-8")
    return target
