"""What the report counts over pictures that show no bank card's number: what is read off them is made up."""

import collections

import reading

# What the pictures are read as; only a bank card's record has a number that Luhn can give away.
READ_AS = ("bank-card", "id-front", "id-back", "cards")
# Scenes that show a bank card all the same, if not all of its number.
SHOWING_A_CARD = ("card back", "numberless card", "finger", "covered card")
# Every stage has its say, however busy the machine is.
TIME_LIMIT = ("--time-limit", "120")
NOTHING, MARKED, PASSING, RECORD, CARD = "nothing", "fails Luhn", "passes Luhn", "a record", "a card"
# Columns of the table by what was read; those but the first count cards where cards were looked for.
OUTCOMES = {"bank-card": (NOTHING, MARKED, PASSING), "id-front": (NOTHING, RECORD), "id-back": (NOTHING, RECORD),
            "cards": (NOTHING, CARD, RECORD)}


def outcomes(answer, kind):
    """What was read off a picture on which there is nothing to read, and how often; a card's record counts as both."""
    if kind == "cards":
        found = [card for card in answer.get("cards", ()) if card["kind"] is not None]
        records = sum("result" in card for card in found)
        return collections.Counter({CARD: len(found), RECORD: records} if found else {NOTHING: 1})
    if "result" not in answer:
        return collections.Counter((NOTHING,))
    if kind != "bank-card":
        return collections.Counter((RECORD,))
    return collections.Counter((PASSING if answer["checks"]["luhn"] else MARKED,))


def measure(truths, level, options, failures):
    """Scene -> how often each outcome came, by kind; appends every picture off which something was read."""
    scenes = collections.defaultdict(collections.Counter)
    for kind in options.read_as:
        answers = reading.read(options.pravik, kind, [truth["path"] for truth in truths], options.jobs, TIME_LIMIT)
        for truth, answer in zip(truths, answers):
            came = outcomes(answer, kind)
            scenes[truth["scene"]].update({(kind, what): count for what, count in came.items()})
            if NOTHING not in came:
                failures.append({"file": truth["path"], "kind": "no-card", "level": level, "scene": truth["scene"],
                                 "readAs": kind, "wrong": list(came), "truth": None, "answer": answer})
    return scenes


def print_scenes(level, scenes, kinds):
    """One table: a row a scene, a column an outcome of each kind."""
    columns = [(kind, came) for kind in kinds for came in OUTCOMES[kind]]
    print(f"\nno-card {level}: pictures off which was read" + (", and cards" if "cards" in kinds else ""))
    print(" " * 18 + "".join(f"{kind:>13}" for kind, _ in columns))
    print(" " * 18 + "".join(f"{came:>13}" for _, came in columns))
    bare = [counts for scene, counts in scenes.items() if scene not in SHOWING_A_CARD]
    sums = {"without a card": sum(bare, collections.Counter()), "all": sum(scenes.values(), collections.Counter())}
    for scene, counts in {**scenes, **sums}.items():
        print(f"  {scene:<16}" + "".join(f"{counts[column]:>13}" for column in columns))
