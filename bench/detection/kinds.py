"""The kinds of mistakes and of harmless edits: a row each. A new kind is a new row."""

from __future__ import annotations

from dataclasses import dataclass

import changes as c
import harmless as h
import targets as t
import texts as x

PLAUSIBLE = "another plausible value"
HARMLESS = "harmless"


@dataclass(frozen=True)
class Kind:
    group: str
    name: str
    targets: t.Targets
    change: c.TargetChange

    @property
    def is_harmless(self) -> bool:
        return self.group == HARMLESS

    @property
    def is_counted(self) -> bool:
        """Plausible values do not count for the bars: no tool can tell one from another."""
        return self.group not in (HARMLESS, PLAUSIBLE)


def _kinds(group: str, *rows: tuple[str, t.Targets, c.TargetChange]) -> tuple[Kind, ...]:
    return tuple(Kind(group, *row) for row in rows)


KINDS: tuple[Kind, ...] = (
    *_kinds(
        "spelling",
        ("parameter: a letter", t.parameters, c.name(x.letter)),
        ("parameter: hyphen", t.parameters, c.name(x.other_separator)),
        ("parameter: capital", t.parameters, c.name(x.capital)),
        ("section: a letter", t.structure, c.name(x.letter)),
        ("section: capital or separator", t.structure, c.name(x.other_separator)),
        ("attribute of a value: a letter", t.value_attributes, c.name(x.letter)),
        ("attribute of a value: capital", t.value_attributes, c.name(x.capital)),
        ("attribute of a section: a letter", t.structure_attributes, c.name(x.letter)),
        ("attribute of a section: capital", t.structure_attributes, c.name(x.capital)),
        ("endpoint: a letter", t.endpoint_ids, c.value(x.letter)),
        ("endpoint: capital or blank", t.endpoint_ids,
         c.value(x.one_of(x.capital, x.surrounded_by_blank))),
        ("port: a letter", t.ports, c.value(x.letter)),
        ("port: capital, blank or separator", t.ports,
         c.value(x.one_of(x.capital, x.surrounded_by_blank, x.other_separator))),
        ("preset type", t.attributes("preset", "type"),
         c.value(x.one_of(x.capital, x.letter, x.surrounded_by_blank))),
        ("preset name", t.preset_names, c.value(x.one_of(x.letter, x.capital))),
        ("default device: a letter", t.default_ids, c.value(x.letter)),
        ("default device: capital, blank or separator", t.default_ids,
         c.value(x.one_of(x.capital, x.surrounded_by_blank, x.other_separator))),
        ("version: form", t.attributes("format_version", "minor"),
         c.value(x.become(" 4", "04", "4 ", "", "four", "4.0", "4,"))),
    ),
    *_kinds(
        "number",
        ("unit", t.numbers, c.value(x.appended("dB", " dB", "Hz", " Hz", " ms", "%", "k"))),
        ("fraction", t.numbers, c.value(x.fraction)),
        ("blank behind, in a preset's band", t.any_of(
            t.attributes("band_ieq"), t.attributes("band_geq")), c.value(x.appended(" "))),
        ("letter for a digit", t.numbers, c.value(x.lookalike)),
        ("hexadecimal", t.numbers, c.value(x.hexadecimal)),
        ("empty", t.numbers, c.value(x.become(""))),
        ("sign", t.numbers, c.value(x.sign_apart)),
        ("thousands", t.numbers, c.value(x.thousands)),
        ("33 bits", t.numbers, c.value(x.too_large)),
        ("word", t.numbers, c.value(x.word_for_number)),
        ("id", t.any_of(t.preset_ids, t.profile_ids), c.value(x.id_form)),
        ("something behind", t.numbers, c.value(x.appended(";", ",", "a", "'", "-", " 0"))),
    ),
    *_kinds(
        "switch",
        ("capital", t.switches, c.value(x.capital)),
        ("word", t.switches, c.value(x.switch_word)),
        ("typo", t.switches, c.value(x.switch_typo)),
        ("blank", t.switches, c.value(x.surrounded_by_blank)),
        ("number", t.switches, c.value(x.become("2", "-1", "10"))),
        ("empty", t.switches, c.value(x.become(""))),
        ("isolated band", t.only(t.isolated, lambda each: each.value == "true"),
         c.value(x.become("True", "1", "yes", "ture", "true ", "t"))),
    ),
    *_kinds(
        "row",
        ("one separator", t.rows, c.value(x.at_separator("; ", ": ", ". ", " / ", "|"))),
        ("all separators", t.rows, c.value(x.all_separators(";", "; ", "/", " - ", ":"))),
        ("separator lost", t.rows, c.value(x.at_separator(""))),
        ("comma twice", t.rows, c.value(x.at_separator(",, ", ", , "))),
        ("blank ahead of a comma", t.rows, c.value(x.at_separator(" , ", " ,"))),
        ("letter for a digit", t.rows, c.value(x.one_number(x.lookalike))),
        ("fraction", t.rows, c.value(x.one_number(x.fraction))),
        ("unit", t.rows, c.value(x.one_number(x.appended("dB", "Hz", "ms")))),
        ("sign", t.rows, c.value(x.one_number(x.sign_apart))),
        ("end lost", t.rows, c.value(x.end_lost)),
        ("number lost", t.rows, c.value(x.number_lost)),
        ("number twice", t.rows, c.value(x.number_doubled)),
        ("numbers added", t.rows, c.value(x.numbers_added)),
        ("another attribute ahead", t.rows,
         c.attribute_before('unit="dB"', 'count="4"', 'comment="new"')),
        ("attribute without text", t.rows, c.value(x.become(""))),
    ),
    *_kinds(
        "XML form",
        ("end of an empty element", t.parameters, c.in_tags(("/>", ">"))),
        ("quote", t.parameters, c.in_tags(('"/>', "/>"), ('="', "="))),
        ("end tag lost", t.sections, c.no_end_tag),
        ("end tag of another name", t.sections, c.end_tag_renamed),
        ("attribute twice", t.value_attributes, c.attribute_twice),
        ("ampersand or angle", t.attributes("profile", "name"),
         c.value(x.appended(" & more", " <1>"))),
        ("comment", t.sections, c.before_first_child("<!-- was -- before -->", "<!- new -->")),
        ("something ahead of the declaration", t.document,
         c.before_declaration("\n", " ", "<!-- new -->\n")),
        ("cut short", t.document, c.cut_short),
        ("another encoding than declared", t.any_of(
            t.attributes("profile", "name"), t.attributes("preset", "name")),
         c.written_in("cp1252", " f\u00fcr alle")),
        ("first child joined", t.elements(
            "endpoint_type", "profile", "preset", "data", "ieq-bands", "geq-bands",
            "audio-optimizer-bands", "regulator-tuning", "mix-matrix", "tuning"),
         c.first_child_joined),
        ("comment ahead of the first child", t.elements(
            "endpoint_type", "preset", "data", "ieq-bands", "geq-bands", "output-mode",
            "mix-matrix"), c.before_first_child("<!-- to be tuned -->", "<!-- v2 -->")),
        ("a level more", t.elements(
            "ieq-bands", "geq-bands", "audio-optimizer-bands", "regulator-tuning", "mix-matrix"),
         c.levels_deeper("bands")),
        ("section closed too early", t.sections, c.self_closed),
    ),
    *_kinds(
        "reference",
        ("include: of no preset", t.preset_numbers, c.value(x.become("4", "7", "11", "-1"))),
        ("include: attribute of another format", t.includes, c.include_of_other_format),
        ("preset id: of no include", t.ieq_ids, c.value(x.become("5", "9", "10"))),
        ("preset id: repeated", t.preset_ids, c.sibling_value),
        ("geq preset: id of no profile", t.geq_ids, c.value(x.become("4", "5", "10", "-1"))),
        ("preset: type of the other bands", t.attributes("preset", "type"),
         c.value(x.become("ieq", "geq"))),
        ("profile id: outside 0 to 3", t.profile_ids, c.value(x.become("4", "5", "10", "-1"))),
        ("profile id: repeated", t.profile_ids, c.sibling_value),
        ("endpoint: repeated", t.attributes("endpoint_type", "id"), c.sibling_value),
        ("tuning: name repeated", t.attributes("tuning", "name"), c.sibling_value),
        ("device: id repeated", t.device_ids, c.sibling_value),
        ("device: on another port", t.default_ports,
         c.value(x.become("internal_speaker", "headphone", "bluetooth", "usb"))),
        ("device: port without an output", t.default_ports,
         c.value(x.become("hdmi", "miracast", "other"))),
        ("section twice", t.sections, c.doubled(x.switched_or_nearby)),
        ("version: of another format", t.attributes("format_version", "minor"),
         c.value(x.become("2", "3", "4", "10"))),
        ("output channels", t.attributes("tuning", "output_channels"),
         c.value(x.become("0", "1", "3", "6", "8"))),
    ),
    *_kinds(
        "absence",
        ("parameter of a profile", t.parameters_of("profile"), c.lost),
        ("parameter of an endpoint", t.parameters_of("endpoint_type"), c.lost),
        ("parameter of a tuning", t.parameters_of("data"), c.lost),
        ("parameter commented out", t.parameters, c.commented_out),
        ("value", t.value_attributes, c.no_attribute),
        ("band of an ieq preset", t.elements("band_ieq"), c.lost),
        ("band of a geq preset", t.elements("band_geq"), c.lost),
        ("band of a tuning", t.elements("band"), c.lost),
        ("attribute of a band", t.band_numbers, c.no_attribute),
        ("attribute of a section", t.structure_attributes, c.no_attribute),
        ("subgain", t.attributes("virtual-bass-subgains"), c.no_attribute),
        ("output channels", t.attributes("tuning", "output_channels"), c.no_attribute),
        ("include", t.includes, c.lost),
        ("ieq preset", t.ieq_presets, c.named_also(c.lost, c.includes_of_it)),
        ("geq preset", t.geq_presets, c.named_also(c.lost, c.profile_of_it)),
        ("endpoint", t.endpoints, c.lost),
        ("profile", t.elements("profile"), c.named_also(c.lost, c.preset_of_it)),
        ("tuning", t.elements("tuning"), c.lost),
        ("default device", t.default_devices, c.lost),
        ("data of a tuning", t.only(t.elements("data"), t.is_below("tuning")), c.lost),
        ("row of the matrix", t.matrix_rows, c.lost),
        ("version or setting", t.version_and_settings, c.lost),
        ("content of a section", t.sections, c.emptied),
        ("content of a value", t.elements(
            "ieq-bands", "geq-bands", "audio-optimizer-bands", "regulator-tuning", "mix-matrix"),
         c.emptied),
    ),
    *_kinds(
        "order",
        ("include: not where it is looked for", t.includes, c.moved(c.after_last())),
        ("include: out of its section", t.includes, c.moved(c.out_of_parent)),
        ("profile's value behind its endpoints", t.in_format(
            t.elements("ieq-enable", "ieq-amount"), t.is_3_2), c.after_an_endpoint),
        ("version behind the settings", t.elements("format_version", "authorized_technologies"),
         c.version_after_settings),
        ("device behind the data", t.elements("device_id"), c.moved(c.after_last("data"))),
        ("parameter in the section around", t.parameters_of("endpoint_type"),
         c.moved(c.out_of_parent)),
        ("parameter in another kind of section", t.any_of(
            t.parameters_of("endpoint_type"), t.parameters_of("profile")), c.moved(c.into("data"))),
        ("parameter of a tuning in an endpoint", t.parameters_of("data"),
         c.moved(c.into("endpoint_type"))),
        ("bands exchanged", t.bands, c.exchanged),
        ("band twice", t.bands, c.doubled()),
        ("parameter twice", t.parameters, c.doubled(x.switched_or_nearby)),
        ("frequency: not ascending", t.frequencies, c.frequency(ascending=False)),
        ("frequency: repeated", t.frequencies, c.repeated_frequency),
        ("frequency: unlike the others'", t.frequencies, c.frequency(ascending=True)),
        ("range: low above high", t.ranges,
         c.attributes_exchanged("frequency_low", "frequency_high")),
        ("thresholds: low above high", t.bands,
         c.attributes_exchanged("threshold_low", "threshold_high")),
        ("frequency and value exchanged", t.bands, c.frequency_exchanged),
        ("columns: thresholds exchanged", t.elements("regulator-tuning"),
         c.column_exchanged("threshold_low", "threshold_high")),
        ("subgains out of order", t.subgains, c.subgains_exchanged),
        ("matrix: counts", t.matrix_counts, c.value(x.count_changed)),
        ("matrix: row twice", t.matrix_rows, c.doubled()),
        ("matrix: count row out of place", t.matrix_count_rows, c.exchanged),
        ("stress amounts: number of them", t.stress_amounts,
         c.value(x.one_of(x.end_lost, x.numbers_added))),
    ),
    *_kinds(
        "plausibility",
        ("number: wrong sign", t.any_of(t.scalars, t.range_numbers), c.wrong_sign),
        ("number: out of proportion", t.any_of(t.scalars, t.range_numbers), c.out_of_proportion),
        ("band: wrong sign", t.columns, c.wrong_sign),
        ("band: out of proportion", t.columns, c.out_of_proportion),
        ("frequency: wrong sign", t.frequencies, c.wrong_sign),
        ("row: wrong sign", t.rows, c.row_sign),
        ("row: out of proportion", t.rows, c.row_proportion),
    ),
    *_kinds(
        PLAUSIBLE,
        ("number", t.scalars, c.value(x.nearby)),
        ("switch", t.switches, c.value(x.switched)),
        ("band", t.columns, c.value(x.nearby)),
        ("row", t.rows, c.value(x.one_number(x.nearby))),
        ("include of another preset", t.preset_numbers, c.value(x.become("0", "1", "2", "3"))),
        ("columns of two channels", t.elements("audio-optimizer-bands"),
         c.column_exchanged("gain_left", "gain_right")),
    ),
    *_kinds(
        HARMLESS,
        ("indentation", t.document, h.whole(h.indentation)),
        ("blanks at the ends of lines", t.document, h.whole(h.trailing_blanks)),
        ("blank lines", t.document, h.whole(h.blank_lines)),
        ("carriage returns", t.document, h.whole(h.carriage_returns)),
        ("byte order mark and declaration", t.document, h.byte_order_mark),
        ("comment behind the root", t.document, h.whole(h.comment_at_end)),
        ("XML declaration", t.document, h.whole(h.declaration)),
        ("processing instruction", t.document, h.whole(h.instruction)),
        ("root without attributes", t.document, h.whole(h.bare_root)),
        ("root of another name", t.document, h.root_renamed),
        ("comment between parameters", t.parameters, h.comment_after),
        ("comment between sections", t.elements("preset", "profile", "tuning"), h.comment_after),
        ("comment between bands", t.bands, h.comment_after),
        ("order of attributes", t.elements("preset", "profile", "tuning", "device_id", "band",
                                           "band_ieq", "band_geq"), h.attributes_reversed),
        ("quotes", t.value_attributes, h.single_quotes),
        ("character references", t.any_of(t.value_attributes, t.rows), h.character_reference),
        ("blanks inside a tag", t.value_attributes, h.blanks_in_tag),
        ("end tag written", t.parameters, h.end_tag_written),
        ("order of sections", t.elements("preset", "tuning"), h.section_moved_to_end),
        ("order of parameters", t.parameters, h.order_of_parameters),
        ("leading zeros or plus", t.numbers, h.number_form),
        ("row without blanks", t.rows, c.value(x.all_separators(",", " ", ",  ", ",\n      "))),
        ("row with a comma behind", t.rows, c.value(x.appended(",", ", "))),
        ("1 and 0 for a switch", t.switches, h.switch_number),
        ("0 for a flag", t.only(t.any_of(t.isolated, t.attributes("tuning", "mono_device")),
                                lambda each: each.value == "false"), c.value(x.become("0"))),
        ("type of an include written", t.includes, h.include_type),
        ("name of a preset or profile", t.any_of(
            t.attributes("profile", "name"), t.geq_names), c.value(x.appended(" 2", "-new"))),
        ("name of a tuning", t.attributes("tuning", "name"), c.value(x.appended("_2", " new"))),
        ("CDATA section between elements", t.elements("profile", "tuning"), h.cdata_after),
        ("entity in a value", t.scalars, h.entity),
        ("settings in one element", t.document, h.settings_joined),
    ),
)
