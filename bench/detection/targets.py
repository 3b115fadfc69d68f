"""Places for mistakes: each function lists the elements or attributes of one sort."""

from __future__ import annotations

import re
from typing import Callable, Union

from source import Attribute, Element, Source

Target = Union[Element, Attribute]
Targets = Callable[[Source], list]

_NUMBER = re.compile(r"-?\d+")
_NO_PARAMETERS = {"include", "endpoint_type", "device_id", "data"}


def is_number(text: str) -> bool:
    return _NUMBER.fullmatch(text) is not None


def numbers_in(text: str) -> list[int]:
    return [int(each) for each in _NUMBER.findall(text)]


def elements(*names: str) -> Targets:
    return lambda source: source.all(*names)


def attributes(element: str, *names: str) -> Targets:
    """Attributes of the elements with a name: those with one of the names, or all."""
    return lambda source: [each for one in source.all(element)
                           for each in one.attributes.values() if not names or each.name in names]


def any_of(*several: Targets) -> Targets:
    return lambda source: [each for targets in several for each in targets(source)]


def only(targets: Targets, condition: Callable[..., bool]) -> Targets:
    return lambda source: [each for each in targets(source) if condition(each)]


def in_format(targets: Targets, is_in: Callable[[Source], bool]) -> Targets:
    return lambda source: targets(source) if is_in(source) else []


def is_below(*names: str) -> Callable[[Element], bool]:
    return lambda element: element.parent is not None and element.parent.name in names


def is_of_type(kind: str) -> Callable[[Element], bool]:
    return lambda element: element.attribute("type") == kind


def is_3_2(source: Source) -> bool:
    return source.version.startswith("3.2.")


# The switch of a tuning that must be on for a parameter to be sent.
_SWITCHES = {
    "regulator-sibilance-suppress-amounts": "regulator-sibilance-suppress-enable",
    "complex-equalizer-tuning": "complex-equalizer-enable",
    "bass-mbdrc-tuning": "bass-mbdrc-enable",
}
_NEVER_SENT = {"bass-extraction-enable", "bass-extraction-cutoff-frequency"}
_OF_INTERNAL_SPEAKER = {"virtual-bass-mode", "output-mode", "mix-matrix", "row"}


def is_sent(element: Element) -> bool:
    """Whether the effect gets the element's value. If not, a mistake there changes nothing."""
    endpoint, tuning = element.around("endpoint_type"), element.around("tuning")
    if endpoint is not None:
        return endpoint.attribute("id") != "other"
    if tuning is None or element is tuning:
        return True
    if element.name in _NEVER_SENT:
        return False
    if element.name in _OF_INTERNAL_SPEAKER:
        return any(each.attribute("id") == "default_internal_speaker"
                   for each in tuning.all("device_id"))
    if element.name.endswith("-surround") and not _is_quad(tuning):
        return False
    return all(each.attribute("value") == "true"
               for start, switch in _SWITCHES.items() if element.name.startswith(start)
               for each in tuning.all(switch))


def _is_quad(tuning: Element) -> bool:
    return tuning.attribute("output_channels") == "4"


def _is_sent_gain(attribute: Attribute) -> bool:
    tuning = attribute.element.around("tuning")
    return tuning is None or _is_quad(tuning) or not attribute.name.endswith("_surround")


def document(source: Source) -> list[Element]:
    return [source.root]


def parameters(source: Source) -> list[Element]:
    return [each for section in source.all("profile", "endpoint_type", "data")
            if section.name != "data" or is_below("tuning")(section)
            for each in section.children if each.name not in _NO_PARAMETERS and is_sent(each)]


def parameters_of(section: str) -> Targets:
    return only(parameters, is_below(section))


def _values(condition: Callable[[str], bool]) -> Targets:
    return lambda source: [each.attributes["value"] for each in parameters(source)
                           if condition(each.attribute("value"))]


scalars = _values(is_number)
switches = _values(lambda text: text in ("true", "false"))
matrix_rows = only(elements("row"), is_sent)
matrix_count_rows = only(matrix_rows, lambda row: len(numbers_in(row.attribute("value"))) == 2)
rows = any_of(_values(lambda text: "," in text), only(
    attributes("row", "value"), lambda attribute: is_sent(attribute.element)))
matrix_counts = only(rows, lambda row: row.element.name == "row"
                     and len(numbers_in(row.value)) == 2)
isolated = attributes("band", "isolated_band")
stress_amounts = attributes("regulator-stress-amount", "value")

bands = elements("band_ieq", "band_geq", "band")
band_numbers = only(any_of(attributes("band_ieq"), attributes("band_geq"), attributes("band")),
                    lambda attribute: is_number(attribute.value) and _is_sent_gain(attribute))
frequencies = only(band_numbers, lambda attribute: attribute.name == "frequency")
columns = only(band_numbers, lambda attribute: attribute.name != "frequency")
ranges = elements("virtual-bass-src-freqs", "virtual-bass-mix-freqs")
range_numbers = any_of(attributes("virtual-bass-src-freqs"), attributes("virtual-bass-mix-freqs"))
subgains = elements("virtual-bass-subgains")
numbers = any_of(scalars, band_numbers, range_numbers, attributes("virtual-bass-subgains"),
                 attributes("tuning", "output_channels"),
                 attributes("global_setting", "virtual_bass_process"))

ieq_presets = only(elements("preset"), is_of_type("ieq"))
geq_presets = only(elements("preset"), is_of_type("geq"))
preset_ids = attributes("preset", "id")
geq_names = only(attributes("preset", "name"),
                 lambda attribute: is_of_type("geq")(attribute.element))
geq_ids = only(preset_ids, lambda attribute: is_of_type("geq")(attribute.element))
ieq_ids = only(preset_ids, lambda attribute: is_of_type("ieq")(attribute.element))
profile_ids = attributes("profile", "id")
endpoints = only(elements("endpoint_type"), is_sent)
endpoint_ids = only(
    any_of(attributes("endpoint_type", "id"), attributes("tuning", "endpoint_type")),
    lambda attribute: is_sent(attribute.element))
ports = attributes("device_id", "endpoint_port")
device_ids = attributes("device_id", "id")
default_devices = only(elements("device_id"),
                       lambda each: each.attribute("id").startswith("default_"))
default_ids = only(device_ids, lambda each: each.value.startswith("default_"))
default_ports = only(ports, lambda each: each.element.attribute("id").startswith("default_"))
includes = only(elements("include"), is_sent)
preset_names = any_of(only(attributes("include", "preset"),
                           lambda attribute: is_sent(attribute.element)),
                      in_format(ieq_ids, lambda source: source.names_presets))
preset_numbers = only(attributes("include", "ieq_preset"),
                      lambda attribute: is_sent(attribute.element))
sent_settings = only(elements("global_setting"),
                     lambda each: "virtual_bass_process" in each.attributes)
version_and_settings = any_of(elements("format_version", "authorized_technologies"), sent_settings)
sections = only(elements("preset", "profile", "endpoint_type", "tuning"), is_sent)
structure = any_of(sent_settings, only(elements(
    "authorized_technologies", "format_version", "preset", "data", "ieq-bands", "geq-bands",
    "band_ieq", "profile", "endpoint_type", "include", "tuning", "device_id"), is_sent))
structure_attributes = any_of(
    attributes("format_version"), attributes("global_setting", "virtual_bass_process"),
    attributes("preset", "id", "type"), attributes("profile", "id"),
    attributes("tuning", "name", "endpoint_type", "output_channels"), attributes("device_id"),
    only(any_of(attributes("endpoint_type"), attributes("include")),
         lambda attribute: is_sent(attribute.element)))
"""Those that the effect depends on."""
value_attributes = any_of(scalars, switches, band_numbers, isolated, range_numbers)
"""Without rows and subgains, whose attributes are read whatever their names."""


def same_elsewhere(attribute: Attribute, source: Source) -> list[Attribute]:
    """The same attribute in the other elements with the same name, in the same kind of section."""
    element = attribute.element
    return [other.attributes[attribute.name] for other in source.all(element.name)
            if other is not element and attribute.name in other.attributes
            and other.parent and element.parent and other.parent.name == element.parent.name]


def neighbours(attribute: Attribute) -> list[int]:
    """The numbers of the same column in the bands before and after."""
    at = attribute.element.number_among_siblings
    siblings = attribute.element.siblings
    return [int(each.attribute(attribute.name))
            for each in siblings[max(at - 1, 0):at] + siblings[at + 1:at + 2]]


def column(attribute: Attribute) -> list[int]:
    """The numbers of the same column in all other bands."""
    return [int(each.attribute(attribute.name)) for each in attribute.element.siblings
            if each is not attribute.element]
