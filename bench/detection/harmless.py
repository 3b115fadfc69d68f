"""Edits that change nothing at the effect and must cause no finding."""

from __future__ import annotations

import re
from random import Random
from typing import Callable, Optional

from changes import Changed, Edit, TargetChange
from source import Attribute, Element, Source, Span


def whole(change: Callable[[Random, str], str]) -> TargetChange:
    """Changes the whole text."""
    return lambda rng, source, element: Changed(
        (Edit(Span(0, len(source.text)), change(rng, source.text)),))


def indentation(rng: Random, text: str) -> str:
    unit = rng.choice(["\t", " ", "  ", "        "])
    return re.sub(r"^( {4})+", lambda match: unit * (len(match[0]) // 4), text, flags=re.MULTILINE)


def trailing_blanks(rng: Random, text: str) -> str:
    return re.sub(r">\n", lambda match: ">" + " " * rng.randint(0, 3) + "\n", text)


def blank_lines(rng: Random, text: str) -> str:
    return re.sub(r">\n", lambda match: ">" + "\n" * rng.randint(1, 3), text)


def carriage_returns(rng: Random, text: str) -> str:
    """Changes line ends in the whole document or from some place on."""
    begin = rng.choice([0, rng.randrange(len(text))])
    return text[:begin] + text[begin:].replace("\n", "\r\n")


def comment_at_end(rng: Random, text: str) -> str:
    return text + rng.choice(["<!-- end -->\n", "\n<!-- history:\n     none\n-->", "<?end?>\n"])


def declaration(rng: Random, text: str) -> str:
    return rng.choice(["", "<?xml version='1.0'?>", '<?xml version="1.0" encoding="utf-8"?>',
                       '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>',
                       '<?xml version="1.0"?>\n\n']) + text[text.index("?>") + 2:].lstrip()


def instruction(rng: Random, text: str) -> str:
    at = text.index("?>") + 2
    return text[:at] + f'\n<?xml-stylesheet href="view{rng.randint(1, 9)}.xsl"?>' + text[at:]


def bare_root(rng: Random, text: str) -> str:
    return re.sub(r"<device_tuning_data[^>]*>",
                  rng.choice(["<device_tuning_data>", "<device_tuning_data >",
                              "<device_tuning_data\n>"]), text)


def byte_order_mark(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    changed = whole(declaration)(rng, source, element)
    return changed and Changed(changed.edits, begin=b"\xef\xbb\xbf")


def root_renamed(rng: Random, source: Source, root: Element) -> Optional[Changed]:
    name = rng.choice(["tuning_data", "device_data", "device-tuning-data", "spatializer"])
    return whole(lambda _, text: text.replace(root.name, name))(rng, source, root)


def _inserted_after(element: Element, text: str) -> Changed:
    return Changed((Edit(Span(element.span.end, element.span.end), text),))


def comment_after(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    return _inserted_after(element, rng.choice(["\n<!-- tuned -->", " <!-- x -->", "<!---->",
                                                 "\n<!-- <old value='1'/> -->\n"]))


def cdata_after(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    return _inserted_after(element, rng.choice(["<![CDATA[ ]]>", "\n<![CDATA[\n]]>"]))


def attributes_reversed(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    attributes = list(element.attributes.values())
    if len(attributes) < 2:
        return None
    return Changed(tuple(Edit(attribute.span, source.of(other.span))
                         for attribute, other in zip(attributes, reversed(attributes))
                         if attribute is not other))


def single_quotes(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    return Changed((Edit(attribute.span, f"{attribute.name}='{attribute.value}'"),))


def character_reference(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    at = rng.randrange(len(attribute.value))
    code = ord(attribute.value[at])
    begin = attribute.value_span.begin + at
    return Changed((Edit(Span(begin, begin + 1), rng.choice([f"&#{code};", f"&#x{code:x};"])),))


def blanks_in_tag(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    quoted = f'"{attribute.value}"'
    return Changed((Edit(attribute.span, attribute.name + rng.choice(
        [f" = {quoted}", f"={quoted} ", f" ={quoted}\n", f"\n= {quoted}"])),))


def end_tag_written(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    if element.end_tag:
        return None
    end = element.start_tag.end
    return Changed((Edit(Span(end - 2, end), f"></{element.name}>"),))


def section_moved_to_end(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Moves the element to the end. Its type and id are unique, so none hides another."""
    lines = source.lines_of(element.span)
    end = source.lines_of(source.root.children[-1].span).end
    if lines.end == end:
        return None
    return Changed((Edit(lines, ""), Edit(Span(end, end), source.of(lines))))


def order_of_parameters(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    """Swaps the element with the next one, if the position of neither matters."""
    at = element.number_among_siblings
    after = element.siblings[at + 1:at + 2]
    if not after or {element.name, after[0].name} & {"include", "endpoint_type"}:
        return None
    return Changed((Edit(element.span, source.of(after[0].span)),
                    Edit(after[0].span, source.of(element.span))))


def number_form(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    number = attribute.value
    if number.startswith("-"):
        return Changed((Edit(attribute.value_span, "-0" + number[1:]),))
    return Changed((Edit(attribute.value_span, rng.choice(["0", "00", "+"]) + number),))


def switch_number(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    return Changed((Edit(attribute.value_span, "1" if attribute.value == "true" else "0"),))


def include_type(rng: Random, source: Source, element: Element) -> Optional[Changed]:
    end = element.start_tag.end - 2
    return Changed((Edit(Span(end, end), ' type="ieq"'),))


def entity(rng: Random, source: Source, attribute: Attribute) -> Optional[Changed]:
    """Replaces a value by an entity declared in the document."""
    doctype = f'<!DOCTYPE device_tuning_data [<!ENTITY usual "{attribute.value}">]>\n'
    begin = source.root.span.begin
    return Changed((Edit(Span(begin, begin), doctype), Edit(attribute.value_span, "&usual;")))


def settings_joined(rng: Random, source: Source, root: Element) -> Optional[Changed]:
    """Puts all settings into one element, in random order."""
    settings = source.all("global_setting")
    attributes = [source.of(each.span) for one in settings for each in one.attributes.values()]
    rng.shuffle(attributes)
    return Changed((Edit(Span(settings[0].span.begin, settings[-1].span.end),
                         f"<global_setting {' '.join(attributes)}/>"),))
