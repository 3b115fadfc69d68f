"""Mistakes in an attribute or an element: edits of the document's text, and the offsets of the
places that a finding may name.
"""

from __future__ import annotations

import re
from dataclasses import dataclass
from os.path import commonprefix
from random import Random
from typing import Callable, Optional

from source import Attribute, Element, Source, Span
from targets import Target, column, is_number, neighbours, numbers_in, same_elsewhere
from texts import TextChange, digits_exchanged, letter, nearby


@dataclass(frozen=True)
class Edit:
    span: Span
    text: str


@dataclass(frozen=True)
class Changed:
    edits: tuple[Edit, ...]
    places: tuple[int, ...] = ()
    """Offsets into the original. Their lines count as the mistake's, like those of the edits."""
    encoding: str = "utf-8"
    begin: bytes = b""

    def apply(self, source: Source) -> tuple[bytes, set[int]]:
        """The changed document, and the lines on which the mistake may be reported."""
        edits = sorted(self.edits, key=lambda edit: (edit.span.begin, edit.span.end))
        text, end, moves = "", 0, []
        for edit in edits:
            text += source.text[end:edit.span.begin]
            moves.append((edit.span, len(text)))
            text += edit.text
            end = edit.span.end
            moves.append((Span(end, end), len(text)))
        text += source.text[end:]

        def moved(offset: int) -> int:
            base = [(span, at) for span, at in moves if span.begin <= offset]
            if not base:
                return offset
            span, at = base[-1]
            return at if offset < span.end else at + offset - span.end

        places = [at for _, at in moves[::2]] + [moved(place) for place in self.places]
        lines = {text.count("\n", 0, place) + 1 for place in places}
        return self.begin + text.encode(self.encoding), lines


TargetChange = Callable[[Random, Source, Target], Optional[Changed]]


# Changes to an attribute

def _with_value(attribute: Attribute, text: Optional[str]) -> Optional[Changed]:
    if text is None or text == attribute.value:
        return None
    # In a value of several lines, the mistake is on the line where the text starts to differ.
    same = len(commonprefix([text, attribute.value]))
    differing = Span(attribute.value_span.begin + same, attribute.value_span.end)
    return Changed((Edit(differing, text[same:]),),
                   (attribute.element.span.begin, attribute.span.begin))


def value(change: TextChange) -> TargetChange:
    return lambda rng, source, attribute: _with_value(attribute, change(rng, attribute.value))


def sibling_value(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    """Takes the value from another element of the same name and type; either may be reported."""
    element = attribute.element
    others = [each for each in source.all(element.name) if each is not element
              and each.attribute("type") == element.attribute("type")
              and each.parent is element.parent or element.name == "device_id"]
    others = [each for each in others if each.attribute(attribute.name) != attribute.value]
    if not others:
        return None
    other = rng.choice(others)
    changed = _with_value(attribute, other.attribute(attribute.name))
    return changed and Changed(changed.edits, changed.places + (other.span.begin,))


def include_of_other_format(rng: Random, source: Source, include: Element) -> Optional[Changed]:
    """An include by name where numbers are read, or by number where names are read."""
    names = ["off", "detailed", "balanced", "warm"]
    if source.names_presets:
        number = names.index(include.attribute("preset"))
        edit = Edit(include.attributes["preset"].span, f'ieq_preset="{number}"')
    else:
        named = names[int(include.attribute("ieq_preset"))]
        edit = Edit(include.attributes["ieq_preset"].span, f'preset="{named}"')
    return Changed((edit,), (include.span.begin,))


def no_attribute(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    begin = len(source.text[:attribute.span.begin].rstrip())
    return Changed((Edit(Span(begin, attribute.span.end), ""),), (attribute.element.span.begin,))


def attribute_before(*texts: str) -> TargetChange:
    """Another attribute before this one. The reader takes a row from the first attribute."""
    return lambda rng, source, attribute: Changed(
        (Edit(Span(attribute.span.begin, attribute.span.begin), rng.choice(texts) + " "),),
        (attribute.element.span.begin,))


def attribute_twice(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    end = attribute.span.end
    return Changed((Edit(Span(end, end), " " + source.of(attribute.span)),),
                   (attribute.element.span.begin,))


def frequency(ascending: bool) -> TargetChange:
    """A wrong digit in a frequency that keeps the bands in ascending order, or does not."""
    def change(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
        slips = [attribute.value[:-1], attribute.value + attribute.value[-1],
                 digits_exchanged(rng, attribute.value), nearby(rng, attribute.value)]
        at = attribute.element.number_among_siblings
        bands = [each.attribute("frequency") for each in attribute.element.siblings]

        def keeps_order(slip: str) -> bool:
            numbers = [int(each) for each in bands[:at] + [slip] + bands[at + 1:]]
            return all(low < high for low, high in zip(numbers, numbers[1:]))
        slips = [each for each in slips if each and each != "0" and keeps_order(each) == ascending]
        if not slips:
            return None
        changed = _with_value(attribute, rng.choice(slips))
        around = attribute.element.siblings[max(at - 1, 0):at + 2]
        return changed and Changed(changed.edits, changed.places + tuple(
            () if ascending else (each.span.begin for each in around)))
    return change


def repeated_frequency(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    at = attribute.element.number_among_siblings
    if at == 0:
        return None
    before = attribute.element.siblings[at - 1]
    changed = _with_value(attribute, before.attribute("frequency"))
    return changed and Changed(changed.edits, changed.places + (before.span.begin,))


def _standing(attribute: Attribute, source: Source) -> list[int]:
    """Numbers to compare a number with: its column, or the same number elsewhere."""
    if attribute.element.name.startswith("band"):
        return column(attribute)
    return [int(each.value) for each in same_elsewhere(attribute, source) if is_number(each.value)]


def wrong_sign(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    """Only if the numbers around it, or the same one elsewhere, show which sign is right."""
    number = int(attribute.value)
    if attribute.element.name.startswith("band"):
        shows = all(each * number > 0 and abs(each) >= 20 for each in neighbours(attribute))
    else:
        others = _standing(attribute, source)
        shows = len(others) > 1 and all(each * number > 0 for each in others)
    return _with_value(attribute, str(-number)) if shows and abs(number) >= 20 else None


def out_of_proportion(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    """One or two extra zeros, if no similar number is nearly as large."""
    others = [abs(each) for each in _standing(attribute, source)]
    number = int(attribute.value)
    for factor in (10, 100):
        if len(others) > 1 and abs(number * factor) > 3 * max(others + [1]):
            return _with_value(attribute, str(number * factor))
    return None


def in_row(change: Callable[[int], int], shows: Callable[[int, list[int]], bool]) -> TargetChange:
    """Changes a number if the rows of other sections show that it is wrong."""
    def change_row(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
        matches = list(re.finditer(r"-?\d+", attribute.value))
        rows = [numbers_in(each.value) for each in same_elsewhere(attribute, source)]
        if len(rows) < 2 or any(len(row) != len(matches) for row in rows):
            return None
        at = rng.randrange(len(matches))
        number = int(matches[at][0])
        if not shows(number, [row[at] for row in rows]):
            return None
        begin, end = matches[at].span()
        text = attribute.value
        return _with_value(attribute, text[:begin] + str(change(number)) + text[end:])
    return change_row


row_sign = in_row(lambda number: -number, lambda number, others: abs(number) >= 5 and all(
    each * number > 0 for each in others))
row_proportion = in_row(lambda number: number * 10, lambda number, others: (
    abs(number) * 10 > 3 * max(1, *map(abs, others))))


# Changes to an element

def _renamed(element: Element, name: str) -> Changed:
    begin = element.start_tag.begin + 1
    edits = [Edit(Span(begin, begin + len(element.name)), name)]
    if element.end_tag:
        begin = element.end_tag.begin + 2
        edits.append(Edit(Span(begin, begin + len(element.name)), name))
    return Changed(tuple(edits), (element.span.begin,))


def name(change: TextChange) -> TargetChange:
    """Renames an element or an attribute."""
    def rename(rng: Random, source: Source, target: Target) -> Optional[Changed]:
        renamed = change(rng, target.name)
        if not renamed or renamed == target.name:
            return None
        if isinstance(target, Element):
            return _renamed(target, renamed)
        return Changed((Edit(target.name_span, renamed),), (target.element.span.begin,))
    return rename


def named_also(change: TargetChange, *elements: Callable[[Source, Element], list[Element]],
               ) -> TargetChange:
    """Adds elements that a finding may name instead, if the mistake's own element is gone."""
    def with_others(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        changed = change(rng, source, element)
        others = [each.span.begin for find in elements for each in find(source, element)]
        return changed and Changed(changed.edits, changed.places + tuple(others))
    return with_others


def includes_of_it(source: Source, preset: Element) -> list[Element]:
    return [each for each in source.all("include")
            if preset.attribute("id") in (each.attribute("ieq_preset"), each.attribute("preset"))]


def profile_of_it(source: Source, preset: Element) -> list[Element]:
    return [each for each in source.all("profile")
            if each.attribute("id") == preset.attribute("id")]


def preset_of_it(source: Source, profile: Element) -> list[Element]:
    return [each for each in source.all("preset") if each.attribute("type") == "geq"
            and each.attribute("id") == profile.attribute("id")]


def lost(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    parent = element.parent
    return Changed((Edit(source.lines_of(element.span), ""),),
                   (parent.span.begin,) if parent else ())


def commented_out(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    parent = element.parent
    if "<!--" in source.of(element.span):
        return None
    return Changed((Edit(element.span, f"<!-- {source.of(element.span)} -->"),),
                   (element.span.begin,) + ((parent.span.begin,) if parent else ()))


def doubled(change: TextChange = lambda rng, text: text) -> TargetChange:
    """Repeats the element, with a number changed in the copy."""
    def double(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        lines = source.lines_of(element.span)
        text = source.of(lines)
        numbers = list(re.finditer(r'(?<=")(-?\d+|true|false)(?=")', text))
        if numbers:
            match = rng.choice(numbers)
            copied = change(rng, match[0])
            text = text[:match.start()] + str(copied) + text[match.end():]
        parent = element.parent
        return Changed((Edit(Span(lines.end, lines.end), text),),
                       (element.span.begin,) + ((parent.span.begin,) if parent else ()))
    return double


def exchanged(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Swaps the element with the next one of its name."""
    at = element.number_among_siblings
    after = element.siblings[at + 1:at + 2]
    if not after or after[0].name != element.name:
        return None
    return Changed((Edit(element.span, source.of(after[0].span)),
                    Edit(after[0].span, source.of(element.span))))


def attributes_exchanged(first: str, second: str, whole: bool = False) -> TargetChange:
    """Swaps the values of two attributes, or the whole attributes."""
    def exchange(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        if first not in element.attributes or second not in element.attributes:
            return None
        one, other = element.attributes[first], element.attributes[second]
        if one.value == other.value:
            return None
        if whole:
            return Changed((Edit(one.span, source.of(other.span)),
                            Edit(other.span, source.of(one.span))), (element.span.begin,))
        return Changed((Edit(one.value_span, other.value), Edit(other.value_span, one.value)),
                       (element.span.begin,))
    return exchange


def frequency_exchanged(rng: Random, source: Source, band: Element) -> Optional[Changed]:
    """Swaps the frequency and the value next to it."""
    second = list(band.attributes)[1]
    return attributes_exchanged("frequency", second)(rng, source, band)


def subgains_exchanged(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Swaps two attributes, not their numbers: the reader goes by their order."""
    first, second = rng.sample(list(element.attributes), 2)
    return attributes_exchanged(first, second, whole=True)(rng, source, element)


def column_exchanged(first: str, second: str) -> TargetChange:
    """Swaps the values in all bands."""
    exchange = attributes_exchanged(first, second)

    def exchange_all(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        changes = [exchange(rng, source, each) for each in element.children]
        edits = tuple(edit for each in changes if each for edit in each.edits)
        return Changed(edits, (element.span.begin,)) if edits else None
    return exchange_all


def moved(to: Callable[[Source, Element], Optional[int]]) -> TargetChange:
    """Moves the element. The lines that it leaves cannot be reported: nothing is there."""
    def move(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        offset = to(source, element)
        lines = source.lines_of(element.span)
        if offset is None or lines.begin <= offset <= lines.end:
            return None
        return Changed((Edit(lines, ""), Edit(Span(offset, offset), source.of(lines))))
    return move


def after_last(*names: str) -> Callable[[Source, Element], Optional[int]]:
    """The end of the last sibling with one of the names; without names, of the last sibling."""
    def end(source: Source, element: Element) -> Optional[int]:
        found = [each for each in element.siblings if not names or each.name in names]
        return source.lines_of(found[-1].span).end if found else None
    return end


def after_an_endpoint(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    ends = [each for each in element.siblings if each.name == "endpoint_type"]
    end = source.lines_of(rng.choice(ends).span).end
    return moved(lambda *_: end)(rng, source, element)


def into(parent_name: str) -> Callable[[Source, Element], Optional[int]]:
    """The end of the last section with this name."""
    def end(source: Source, element: Element) -> Optional[int]:
        found = [each for each in source.all(parent_name) if each.children]
        return source.lines_of(found[-1].children[-1].span).end if found else None
    return end


def out_of_parent(source: Source, element: Element) -> Optional[int]:
    """The start of the section around the element."""
    return source.lines_of(element.parent.span).begin if element.parent else None


def version_after_settings(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Moves the version after the settings, or the settings before it; either may be reported."""
    version = next(source.root.all("format_version"))
    settings = next(source.root.all("authorized_technologies"))
    last = rng.choice([settings, source.root.children[-1]])
    ends = {version.name: source.lines_of(last.span).end,
            settings.name: source.lines_of(version.span).begin}
    changed = moved(lambda _, each: ends[each.name])(rng, source, element)
    return changed and Changed(changed.edits, (version.span.begin, settings.span.begin))


def emptied(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Removes the content."""
    if not element.end_tag:
        return None
    span = Span(element.start_tag.end - 1, element.end_tag.end)
    inner = rng.choice(["/>", "></" + element.name + ">", ">\n</" + element.name + ">"])
    return Changed((Edit(span, inner),), (element.span.begin,))


def self_closed(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Closes the element in its start tag, so that its content comes after it."""
    if not element.end_tag:
        return None
    end = element.start_tag.end - 1
    return Changed((Edit(Span(end, end), "/"), Edit(source.lines_of(element.end_tag), "")),
                   (element.span.begin,))


def levels_deeper(level: str) -> TargetChange:
    """Wraps the content in another element."""
    def wrap(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        if not element.end_tag or not element.children:
            return None
        begin = source.lines_of(element.children[0].span).begin
        end = source.lines_of(element.end_tag).begin
        return Changed((Edit(Span(begin, begin), f"<{level}>\n"),
                        Edit(Span(end, end), f"</{level}>\n")),
                       (element.span.begin, element.children[0].span.begin))
    return wrap


def before_first_child(*texts: str) -> TargetChange:
    def insert(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        if not element.children:
            return None
        first = element.children[0].span.begin
        indentation = source.text[element.start_tag.end:first]
        return Changed((Edit(Span(first, first), rng.choice(texts) + indentation),),
                       (element.span.begin, first))
    return insert


def first_child_joined(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Removes the whitespace between the start tag and the first child."""
    if not element.children:
        return None
    first = element.children[0].span.begin
    between = Span(element.start_tag.end, first)
    return None if source.of(between).strip() else Changed((Edit(between, ""),), (first,))


def in_tags(*pairs: tuple[str, str]) -> TargetChange:
    """Replaces the first text of a pair by the second in the start tag."""
    def slip(rng: Random, source: Source, element: Element) -> Optional[Changed]:
        tag = source.of(element.start_tag)
        old, new = rng.choice(pairs)
        if old not in tag:
            return None
        begin = element.start_tag.begin + tag.rindex(old)
        return Changed((Edit(Span(begin, begin + len(old)), new),), (element.span.begin,))
    return slip


def end_tag_renamed(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    renamed = letter(rng, element.name)
    if not element.end_tag or not renamed or renamed == element.name:
        return None
    return Changed((Edit(element.end_tag, f"</{renamed}>"),), (element.span.begin,))


def before_declaration(*texts: str) -> TargetChange:
    return lambda rng, source, element: Changed((Edit(Span(0, 0), rng.choice(texts)),), (0,))


def cut_short(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Truncates the document after a tag."""
    end = source.text.index(">\n", rng.randrange(len(source.text) // 2, len(source.text) - 100)) + 2
    return Changed((Edit(Span(end, len(source.text)), ""),), (end - 1,))


def no_end_tag(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    if not element.end_tag:
        return None
    return Changed((Edit(source.lines_of(element.end_tag), ""),),
                   (element.span.begin, element.end_tag.begin))


def written_in(encoding: str, text: str) -> TargetChange:
    """Adds a character in another encoding than the declared one."""
    def write(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
        changed = _with_value(attribute, attribute.value + text)
        return changed and Changed(changed.edits, changed.places, encoding)
    return write
