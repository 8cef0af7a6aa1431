"""Prints what stands on every card of every picture: read_cards.py PICTURE..."""

import sys

import pravik

for path in sys.argv[1:]:
    try:
        for card in pravik.read(path):
            match card.record:
                case pravik.IdFront(name=name, id_number=number, checks=checks):
                    print(name, number, "right" if checks.check_digit else "doubtful")
                case pravik.IdBack(issuing_authority=office, validity_period=period):
                    print(office, period)
                case pravik.BankCard(card_number=number, bank_name=bank):
                    print(bank or "an unknown bank", number)
                case None:
                    print("a card that was not read:", card.error)
    except pravik.ReadingError as error:
        print(f"{path}: {error.code}: {error.message}", file=sys.stderr)
