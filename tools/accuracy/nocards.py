"""What the report counts over pictures that show no bank card's number: what is read off them is made up."""

import collections

import reading

# What the pictures are read as; only a bank card's record has a number that Luhn can give away.
READ_AS = ("bank-card", "id-front", "id-back")
# Every stage has its say, however busy the machine is.
TIME_LIMIT = ("--time-limit", "120")
NOTHING, MARKED, PASSING, RECORD = "nothing", "fails Luhn", "passes Luhn", "a record"


def outcome(answer, kind):
    """What was read off a picture on which there is nothing to read."""
    if "result" not in answer:
        return NOTHING
    if kind != "bank-card":
        return RECORD
    return PASSING if answer["checks"]["luhn"] else MARKED


def measure(truths, level, options, failures):
    """Scene -> how often each outcome came, by kind; appends every picture off which something was read."""
    scenes = collections.defaultdict(collections.Counter)
    for kind in options.read_as:
        answers = reading.read(options.pravik, kind, [truth["path"] for truth in truths], options.jobs, TIME_LIMIT)
        for truth, answer in zip(truths, answers):
            came = outcome(answer, kind)
            scenes[truth["scene"]][kind, came] += 1
            if came != NOTHING:
                failures.append({"file": truth["path"], "kind": "no-card", "level": level, "scene": truth["scene"],
                                 "readAs": kind, "wrong": [came], "truth": None, "answer": answer})
    return scenes


def print_scenes(level, scenes, kinds):
    """One table: a row a scene, a column an outcome of each kind."""
    columns = [(kind, came) for kind in kinds
               for came in ((NOTHING, MARKED, PASSING) if kind == "bank-card" else (NOTHING, RECORD))]
    print(f"\nno-card {level}: pictures off which was read")
    print(" " * 18 + "".join(f"{kind:>13}" for kind, _ in columns))
    print(" " * 18 + "".join(f"{came:>13}" for _, came in columns))
    for scene, counts in {**scenes, "all": sum(scenes.values(), collections.Counter())}.items():
        print(f"  {scene:<16}" + "".join(f"{counts[column]:>13}" for column in columns))
