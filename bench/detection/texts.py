"""Mistakes in a text: each change returns another text, or None if it does not apply."""

from __future__ import annotations

import re
from random import Random
from typing import Callable, Optional

from targets import is_number, numbers_in

TextChange = Callable[[Random, str], Optional[str]]


def letter(rng: Random, text: str) -> Optional[str]:
    """Drops, doubles, swaps or replaces a letter."""
    places = [at for at, each in enumerate(text) if each.isalpha()]
    if len(places) < 3:
        return None
    at = rng.choice(places[1:])
    other = rng.choice("aeinorst")
    return rng.choice([
        text[:at] + text[at + 1:],
        text[:at] + text[at] + text[at:],
        text[:at - 1] + text[at] + text[at - 1] + text[at + 1:] if text[at - 1].isalpha() else None,
        text[:at] + other + text[at + 1:],
    ])


def other_separator(rng: Random, text: str) -> Optional[str]:
    found = [match.start() for match in re.finditer("[-_]", text)]
    if not found:
        return None
    at = rng.choice(found)
    return text[:at] + rng.choice(["", "_" if text[at] == "-" else "-"]) + text[at + 1:]


def capital(rng: Random, text: str) -> Optional[str]:
    return rng.choice([text.capitalize(), text.upper()])


def surrounded_by_blank(rng: Random, text: str) -> Optional[str]:
    return rng.choice([" " + text, text + " "])


def one_of(*changes: TextChange) -> TextChange:
    """One of the changes that apply."""
    def change(rng: Random, text: str) -> Optional[str]:
        changed = [each(rng, text) for each in changes]
        return rng.choice([each for each in changed if each is not None and each != text] or [None])
    return change


def become(*texts: str) -> TextChange:
    """One of the texts, but not the present one."""
    return lambda rng, text: rng.choice([each for each in texts if each != text])


def appended(*ends: str) -> TextChange:
    return lambda rng, text: text + rng.choice(ends)


def lookalike(rng: Random, text: str) -> Optional[str]:
    """Replaces a digit by a letter that looks like it."""
    places = [at for at, each in enumerate(text) if each in "0158"]
    if not places:
        return None
    at = rng.choice(places)
    return text[:at] + {"0": "O", "1": "l", "5": "S", "8": "B"}[text[at]] + text[at + 1:]


def hexadecimal(rng: Random, text: str) -> Optional[str]:
    return f"{'-' if text[0] == '-' else ''}0x{abs(int(text)):x}"


def sign_apart(rng: Random, text: str) -> Optional[str]:
    """Doubles or detaches the minus sign, or replaces it by a similar character."""
    return rng.choice(["--", "- ", "\u2212", "\u2013"]) + text[1:] if text[0] == "-" else None


def fraction(rng: Random, text: str) -> Optional[str]:
    """Adds a point or a comma in the number or before it."""
    digits = text.lstrip("-")
    at = len(text) - len(digits) + rng.randrange(len(digits))
    return (text[:at] or "0") + rng.choice(".,") + text[at:]


def thousands(rng: Random, text: str) -> Optional[str]:
    return text[:-3] + rng.choice(". ,'") + text[-3:] if len(text.strip("-")) > 3 else None


def too_large(rng: Random, text: str) -> Optional[str]:
    return text + "0" * (11 - len(text.lstrip("-")))


def word_for_number(rng: Random, text: str) -> Optional[str]:
    return rng.choice(["auto", "none", "max", "default", "n/a", "TBD", "x"])


def id_form(rng: Random, text: str) -> Optional[str]:
    """A text that is not entirely a number."""
    return rng.choice([text + " ", text + "a", "#" + text, "", "one", text + ".0"])


def switch_word(rng: Random, text: str) -> Optional[str]:
    return rng.choice(["on", "yes", "enabled", "enable"] if text == "true" else
                      ["off", "no", "disabled", "disable"])


def switch_typo(rng: Random, text: str) -> Optional[str]:
    return rng.choice(["ture", "treu", "tru", "t", "rue", "truee", "trrue"] if text == "true" else
                      ["flase", "fales", "fasle", "f", "fals", "fasle", "falsee"])


def at_separator(*separators: str) -> TextChange:
    """Replaces one separator in a row."""
    def change(rng: Random, text: str) -> Optional[str]:
        found = list(re.finditer(r",\s*", text))
        if not found:
            return None
        match = rng.choice(found)
        return text[:match.start()] + rng.choice(separators) + text[match.end():]
    return change


def all_separators(*separators: str) -> TextChange:
    return lambda rng, text: re.sub(r",\s*", rng.choice(separators), text)


def one_number(change: TextChange) -> TextChange:
    """Changes a number in a row."""
    def change_row(rng: Random, text: str) -> Optional[str]:
        match = rng.choice(list(re.finditer(r"-?\d+", text)))
        changed = change(rng, match[0])
        return None if changed is None else text[:match.start()] + changed + text[match.end():]
    return change_row


def _number_before_comma(rng: Random, text: str) -> Optional[re.Match[str]]:
    found = list(re.finditer(r"-?\d+,\s*", text))
    return rng.choice(found) if found else None


def end_lost(rng: Random, text: str) -> Optional[str]:
    return text[:text.rindex(",")] if "," in text else None


def number_lost(rng: Random, text: str) -> Optional[str]:
    match = _number_before_comma(rng, text)
    return match and text[:match.start()] + text[match.end():]


def number_doubled(rng: Random, text: str) -> Optional[str]:
    match = _number_before_comma(rng, text)
    return match and text[:match.end()] + match[0] + text[match.end():]


def numbers_added(rng: Random, text: str) -> Optional[str]:
    return text + ", 0" * rng.randint(1, 3)


def count_changed(rng: Random, text: str) -> Optional[str]:
    """Changes one of the two numbers that start a block of the matrix."""
    first, second = numbers_in(text)
    return rng.choice([f"{first}, {second + rng.choice([-4, -1, 1, 4])}",
                       f"{first + rng.choice([-1, 1, 2])}, {second}"])


def nearby(rng: Random, text: str) -> Optional[str]:
    """Another plausible value."""
    value = int(text)
    return str(value + rng.choice([-1, 1]) * max(1, abs(value) // 10))


def switched(rng: Random, text: str) -> Optional[str]:
    return "false" if text == "true" else "true"


def switched_or_nearby(rng: Random, text: str) -> Optional[str]:
    return nearby(rng, text) if is_number(text) else switched(rng, text)


def digits_exchanged(rng: Random, text: str) -> Optional[str]:
    places = [at for at in range(len(text) - 1) if text[at].isdigit() and text[at] != text[at + 1]]
    if not places:
        return None
    at = rng.choice(places)
    return text[:at] + text[at + 1] + text[at] + text[at + 2:]
