"""Invents people: consistent identity records of both sides, by a seeded random generator."""

import calendar
import datetime

import tables

# GB 11643-1999: weights of the first 17 digits and the check character by remainder (ISO 7064 MOD 11-2).
CHECK_WEIGHTS = (7, 9, 10, 5, 8, 4, 2, 1, 6, 3, 7, 9, 10, 5, 8, 4, 2)
CHECK_CHARACTERS = "10X98765432"

MAX_NAME_LENGTH = 8
MAX_ADDRESS_LENGTH = 30
VALIDITY_YEARS = (5, 10, 20)
# In every run of this many people, each minority appears once and the rest are Han.
GROUP_CYCLE = 100


def check_character(first17):
    """The check character that GB 11643 demands after the 17 digits."""
    total = sum(int(digit) * weight for digit, weight in zip(first17, CHECK_WEIGHTS))
    return CHECK_CHARACTERS[total % 11]


def _weighted(rng, weights):
    return rng.choices(list(weights), weights=list(weights.values()))[0]


def ethnic_group(index, rng_of_set):
    """The group of person `index`: all 56 appear within GROUP_CYCLE people, in an order of the set's own."""
    groups = list(tables.MINORITIES) + [tables.HAN] * (GROUP_CYCLE - len(tables.MINORITIES))
    rng_of_set.shuffle(groups)
    return groups[index % GROUP_CYCLE]


def name(rng, gender, group):
    """A name of two to eight characters; groups that write a middle dot mostly get one."""
    given = tables.GIVEN_MALE if gender == "男" else tables.GIVEN_FEMALE
    if group in tables.DOTTED_GROUPS and rng.random() < 0.9:
        return _dotted_name(rng, gender)
    if group in tables.TIBETAN_GROUPS and rng.random() < 0.8:
        return rng.choice(tables.TIBETAN_FIRST) + rng.choice(tables.TIBETAN_SECOND)
    if group in tables.MONGOL_GROUPS and rng.random() < 0.5:
        return rng.choice(tables.MONGOL_NAMES)
    length = rng.choices((1, 2), weights=(25, 75))[0]
    return _weighted(rng, tables.SURNAMES) + "".join(rng.choice(given) for _ in range(length))


def _dotted_name(rng, gender):
    own = tables.DOTTED_MALE if gender == "男" else tables.DOTTED_FEMALE
    while True:
        full = rng.choice(own) + "·" + rng.choice(tables.DOTTED_MALE)
        if len(full) <= MAX_NAME_LENGTH:
            return full


def _place(rng, province):
    """The administrative part of an address: province, prefecture, district or county."""
    _, prefectures = tables.PROVINCES[province]
    area = rng.choice(tables.DISTRICTS if rng.random() < 0.6 or not prefectures else tables.COUNTIES)
    prefecture = rng.choice(prefectures) if prefectures else ""
    return prefecture, area


def address(rng, province):
    """An invented address of one to three printed lines, at most MAX_ADDRESS_LENGTH characters."""
    while True:
        prefecture, area = _place(rng, province)
        if area.endswith("县"):
            tail = rng.choice(tables.TOWNS) + rng.choice(tables.VILLAGES)
            tail += rng.choice(("", f"{rng.randint(1, 12)}组", f"第{rng.randint(1, 9)}村民小组"))
            tail += f"{rng.randint(1, 399)}号"
        else:
            tail = rng.choice((_street_tail, _estate_tail, _lane_tail))(rng)
        head = rng.choices((province + prefecture + area, prefecture + area, area), weights=(75, 15, 10))[0]
        if len(head + tail) <= MAX_ADDRESS_LENGTH:
            return head + tail


def _street_tail(rng):
    tail = f"{rng.choice(tables.STREETS)}{rng.randint(1, 2999)}号"
    if rng.random() < 0.6:
        tail += f"{rng.randint(1, 60)}{rng.choice(('号楼', '栋', '幢'))}"
        if rng.random() < 0.7:
            tail += f"{rng.randint(1, 8)}单元"
        tail += f"{rng.randint(1, 33)}{rng.randint(1, 4):02d}{rng.choice(('室', '号'))}"
    return tail


def _estate_tail(rng):
    tail = f"{rng.choice(tables.STREETS)}{rng.choice(tables.ESTATES)}"
    block = rng.choice((f"{rng.randint(1, 40)}栋", f"{rng.choice('ABC')}座", f"{rng.randint(1, 30)}号楼"))
    return tail + block + f"{rng.randint(1, 33)}{rng.randint(1, 4):02d}室"


def _lane_tail(rng):
    return f"{rng.choice(tables.LANES)}{rng.randint(1, 199)}号" + rng.choice(("", f"-{rng.randint(1, 20)}", "院"))


def id_number(rng, region_prefix, birth, gender, ends_in_x):
    """A number with a correct check character whose sex digit agrees; `ends_in_x` decides its last one."""
    while True:
        region = f"{region_prefix}{rng.randint(1, 29):02d}{rng.randint(1, 29):02d}"
        sequence = rng.randint(1, 499) * 2 - (1 if gender == "男" else 0)
        first17 = f"{region}{birth:%Y%m%d}{sequence:03d}"
        check = check_character(first17)
        if (check == "X") == ends_in_x:
            return first17 + check


def _birth_date(rng):
    year, month = rng.randint(1940, 2015), rng.randint(1, 12)
    return datetime.date(year, month, rng.randint(1, calendar.monthrange(year, month)[1]))


def portrait_side(rng, group, ends_in_x):
    """The record of a portrait side, fields named and formatted as the recogniser gives them."""
    gender = rng.choice("男女")
    province = rng.choice(list(tables.PROVINCES))
    birth = _birth_date(rng)
    return {
        "name": name(rng, gender, group),
        "gender": gender,
        "ethnicity": group,
        "birthDate": f"{birth:%Y年%m月%d日}",
        "birthYear": f"{birth:%Y}",
        "birthMonth": f"{birth:%m}",
        "birthDay": f"{birth:%d}",
        "address": address(rng, province),
        "idNumber": id_number(rng, tables.PROVINCES[province][0], birth, gender, ends_in_x),
    }


def emblem_side(rng):
    """The record of an emblem side; dates as eight digits, no end date on a long-term card."""
    province = rng.choice(list(tables.PROVINCES))
    prefecture, area = _place(rng, province)
    if area.endswith("县"):
        authority = area + "公安局"
    elif rng.random() < 0.25 and prefecture:
        authority = prefecture + "公安局"
    else:
        authority = f"{prefecture or province}公安局{area[:-1]}分局"
    start = datetime.date(rng.randint(2004, 2025), rng.randint(1, 12), rng.randint(1, 28))
    long_term = rng.random() < 0.2
    end = "长期" if long_term else f"{start.replace(year=start.year + rng.choice(VALIDITY_YEARS)):%Y%m%d}"
    return {
        "issuingAuthority": authority,
        "validityPeriod": f"{start:%Y%m%d}-{end}",
        "startDate": f"{start:%Y%m%d}",
        "endDate": None if long_term else end,
        "isLongTerm": long_term,
    }
