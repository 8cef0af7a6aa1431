"""What the report counts over photos with one severe fault each: whether the tool warns of it, and only then."""

import pathlib
import sys

import reading
import sets

CODES = ("blurred", "glare", "dark", "overexposed", "too_small", "cut_off", "grey_copy", "screen")
KINDS = ("id-front", "id-back", "bank-card")
# Fault -> what may be warned of with it: where too much light has taken the print, there is glare.
IMPLIED = {"overexposed": ("glare",)}


def _set(fault, number, options):
    """The truths and answers of one fault's photos, or of photos without any, the kinds mixed."""
    for index, kind in enumerate(KINDS):
        count = len(range(index, number, len(KINDS)))
        spoilt = ("--spoil", fault) if fault else ()
        folder = sets.drawn(options.out, "-".join((kind, "photo", *spoilt[1:], "warned")),
                            ("--kind", kind, "--level", "photo", *spoilt), count, options.seed)
        truths = reading.load_truth(folder / "truth.jsonl")
        yield from zip(truths, reading.read(options.pravik, kind, [truth["path"] for truth in truths], options.jobs))


def cells(pictures, code):
    """What is told of a warning over pictures, each its fault, its path and what was warned of, in percent: the share
    of the pictures with that fault, then the false alarms on those without any and on those with another."""
    def share(belongs):
        hits = [code in told for fault, _, told in pictures if belongs(fault)]
        return f"{100 * sum(hits) / len(hits):.1f}" if hits else "-"
    return (share(lambda fault: fault == code), share(lambda fault: fault is None),
            share(lambda fault: fault not in (None, code) and code not in IMPLIED.get(fault, ())))


def report(options):
    """Reads the photos of every fault and of none, prints a table, and names what was warned of wrongly."""
    pictures = []
    for fault in (None, *CODES):
        pictures += [(fault, truth["path"], answer.get("warnings", []))
                     for truth, answer in _set(fault, options.count, options)]
        print(f"read {options.count} photos: {fault or 'no fault'}", file=sys.stderr)
    print(f"\nwarnings: % of {options.count} photos a row, and of those that should not be warned of")
    print(f"{'':16}{'right':>8}{'false alarm':>26}")
    print(f"{'':24}{'no fault':>13}{'another fault':>16}")
    for code in CODES:
        right, sound, other = cells(pictures, code)
        print(f"  {code:<14}{right:>8}{sound:>13}{other:>16}")
    for fault, path, told in pictures:
        missed = fault is not None and fault not in told
        false = [code for code in told if code in CODES and code != fault and code not in IMPLIED.get(fault, ())]
        if missed or false:
            print(f"  {pathlib.Path(path).name}: {'not warned of' if missed else 'also'} {' '.join(false)}".rstrip())
