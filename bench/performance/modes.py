"""The modes by their fields, and the families of them that the page speaks of."""

import collections

Fields = collections.namedtuple("Fields", "direction level filter conversion envelope walk")


def decode(code):
    return Fields(code >> 10, code >> 8 & 3, code >> 7 & 1, code >> 5 & 3, code >> 1 & 15, code & 1)


def encode(direction, level=0, filter=0, conversion=0, envelope=0, walk=0):
    return direction << 10 | level << 8 | filter << 7 | conversion << 5 | envelope << 1 | walk


def valid_codes():
    return [c for c in range(1752) if (f := decode(c)).level < 3 and f.conversion < 3 and f.envelope < 12]


def is_twin(code):
    return code & 1 and decode(code).level != 1


# Name, the fields of its modes, the speeds at which they are measured, and the goal forwards.
FAMILIES = [
    ("plain", [{}], [1], 1.08),
    ("fixed levels", [{"envelope": 1}, {"level": 2}, {"envelope": 1, "level": 2}], [1], 1.08),
    ("simple ramp", [{"envelope": 2}, {"envelope": 3}], [1], 1.12),
    ("dynamic level", [{"level": 1, "walk": 0}, {"level": 1, "walk": 1}], [1], 1.18),
    ("ramp-hold, hold-ramp", [{"envelope": 6}, {"envelope": 7}], [1], 1.25),
    ("ramp-hold-ramp", [{"envelope": 8}], [1], 1.33),
    ("equaliser", [{"filter": 1}], [1], 1.04),
    ("everything but conversion", [{"filter": 1, "envelope": 11, "level": 2}, {"filter": 1, "envelope": 11, "level": 1}],
     [1], 1.15),
    ("linear, speed 0.5", [{"conversion": 1}], [0.5], 1.35),
    ("linear, speed 1", [{"conversion": 1}], [1], 1.18),
    ("linear, speed 2", [{"conversion": 1}], [2], 1.12),
    ("filtering, speed 0.25", [{"conversion": 2}], [0.25], 1.02),
    ("filtering, speed 1", [{"conversion": 2}], [1], 1.04),
    ("filtering, speed 2", [{"conversion": 2}], [2], 1.05),
]

# Backwards the floor has two calls less, so that all the rest weighs more. Families without a goal are only reported.
REVERSE_GOALS = {"plain": 1.10, "simple ramp": 1.25, "dynamic level": 1.30, "linear, speed 1": 1.30}


def family_rows(rows, family, direction):
    name, fields, speeds, _ = family
    codes = {encode(direction, **f) for f in fields}
    return [r for r in rows if r["code"] in codes and r["speed"] in speeds]
