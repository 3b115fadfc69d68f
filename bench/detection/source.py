"""The text of a tuning document, and the position of each element and attribute."""

from __future__ import annotations

import re
from bisect import bisect_right
from dataclasses import dataclass, field
from typing import Iterator, Optional

_TOKEN = re.compile(r"<!--.*?-->|<\?.*?\?>|<(?P<close>/?)(?P<name>[\w-]+)(?P<attributes>"
                    r"(?:\s+[\w:-]+\s*=\s*(?:\"[^\"]*\"|'[^']*'))*)\s*(?P<empty>/?)>", re.DOTALL)
_ATTRIBUTE = re.compile(r"([\w:-]+)\s*=\s*([\"'])(.*?)\2", re.DOTALL)


@dataclass(frozen=True)
class Span:
    """A half-open range of offsets into the text."""
    begin: int
    end: int


@dataclass(eq=False)
class Attribute:
    element: Element
    name: str
    value: str
    span: Span
    """The name, the equals sign and the quoted value."""
    name_span: Span
    value_span: Span
    """The text between the quotes."""


@dataclass(eq=False)
class Element:
    name: str
    parent: Optional[Element]
    start_tag: Span
    end_tag: Optional[Span] = None
    """None if the start tag closes the element."""
    attributes: dict[str, Attribute] = field(default_factory=dict)
    children: list[Element] = field(default_factory=list)

    @property
    def span(self) -> Span:
        return Span(self.start_tag.begin, (self.end_tag or self.start_tag).end)

    @property
    def siblings(self) -> list[Element]:
        return self.parent.children if self.parent else [self]

    @property
    def number_among_siblings(self) -> int:
        return self.siblings.index(self)

    def around(self, name: str) -> Optional[Element]:
        """This element or the closest one around it with this name."""
        element: Optional[Element] = self
        while element is not None and element.name != name:
            element = element.parent
        return element

    def attribute(self, name: str) -> str:
        """The value of an attribute; empty if it is missing."""
        return self.attributes[name].value if name in self.attributes else ""

    def all(self, *names: str) -> Iterator[Element]:
        """The descendants, or those with one of the names if any are given."""
        for child in self.children:
            if not names or child.name in names:
                yield child
            yield from child.all(*names)


class Source:
    """A well-formed document without DOCTYPE and CDATA sections."""

    def __init__(self, name: str, text: str) -> None:
        self.name = name
        self.text = text
        self._line_begins = [0] + [match.end() for match in re.finditer("\n", text)]
        self.root = self._parse()

    def line(self, offset: int) -> int:
        return bisect_right(self._line_begins, offset)

    def lines_of(self, span: Span) -> Span:
        """The span with the indentation before it and the line break after it."""
        begin = self.text.rfind("\n", 0, span.begin) + 1
        end = self.text.find("\n", span.end) + 1
        alone = not (self.text[begin:span.begin] + self.text[span.end:end]).strip()
        return Span(begin, end) if alone and end else span

    def all(self, *names: str) -> list[Element]:
        return list(self.root.all(*names))

    def of(self, span: Span) -> str:
        return self.text[span.begin:span.end]

    @property
    def version(self) -> str:
        format_version = next(self.root.all("format_version"))
        return ".".join(each.value for each in format_version.attributes.values())

    @property
    def names_presets(self) -> bool:
        """Whether presets have names instead of numbers."""
        return self.version.startswith(("3.2.", "3.3.0"))

    def _parse(self) -> Element:
        root: Optional[Element] = None
        parent: Optional[Element] = None
        for token in _TOKEN.finditer(self.text):
            if token["name"] is None:
                continue
            if token["close"]:
                assert parent is not None and parent.name == token["name"]
                parent.end_tag = Span(token.start(), token.end())
                parent = parent.parent
                continue
            element = Element(token["name"], parent, Span(token.start(), token.end()))
            for found in _ATTRIBUTE.finditer(self.text, *token.span("attributes")):
                element.attributes[found[1]] = Attribute(
                    element, found[1], found[3], Span(*found.span()), Span(*found.span(1)),
                    Span(*found.span(3)))
            if parent is not None:
                parent.children.append(element)
            root = root or element
            if not token["empty"]:
                parent = element
        assert root is not None and parent is None
        return root
