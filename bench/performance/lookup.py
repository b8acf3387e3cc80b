"""The page that looks up any mode code: lookup.html with the figures embedded."""

import json
import pathlib
import re

from inlined import measured_on
from modes import decode, is_twin

TEMPLATE = pathlib.Path(__file__).with_name("lookup.html")
# The fields of a code in the command's words, in the order of modes.Fields.
FIELDS = ["direction", "levelStage", "filterStage", "srcStage", "envelopeStage", "dynamicLevelDirection"]


def values_of(code):
    """The fields as numbers; none for the direction of a level that does not move."""
    fields = list(decode(code))
    return fields if decode(code).level == 1 else [*fields[:-1], None]


def shorten(chains):
    """The chains with numbers in place of names, and the names by number: a sixth of the size."""
    names = sorted({name for chain in chains for name in re.findall(r"[\w:]+(?:<\d>)?", chain)})
    return names, [re.sub(r"[\w:]+(?:<\d>)?", lambda m: str(names.index(m[0])), chain) for chain in chains]


def page_data(figures):
    outputs = list(figures["conversions"])
    codes = [mode["code"] for mode in figures["modes"]]
    # Keys are text where the figures come from a file.
    chains = {int(code): chain for code, chain in figures["chains"].items()}
    names, short = shorten([chains[code] for code in codes])
    modes = [[mode["code"], values_of(mode["code"]), mode["code"] - 1 if is_twin(mode["code"]) else None, chain,
              round(mode["floor"], 2), round(mode["inlined"], 2), [round(mode[output], 2) for output in outputs]]
             for mode, chain in zip(figures["modes"], short)]
    return {"outputs": outputs, "conversions": [block for _, block in figures["conversions"].values()],
            "fields": [figures["words"][field] for field in FIELDS], "names": names, "modes": modes}


def lookup_page(figures):
    # No "<" in the data, so that nothing in it ends the element that holds it.
    data = json.dumps(page_data(figures), separators=(",", ":")).replace("<", "\\u003c")
    return TEMPLATE.read_text().replace("@MEASURED@", measured_on(figures)).replace("@DATA@", data)
