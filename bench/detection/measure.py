"""Measures which single mistakes in a document `ormel-tuning check` finds."""

from __future__ import annotations

import argparse
import json
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import asdict, dataclass, field
from pathlib import Path
from random import Random
from typing import Iterator, Optional

from kinds import KINDS, PLAUSIBLE, Kind
from source import Source

WORKERS = 2


@dataclass(frozen=True)
class Sample:
    """A document with one change."""
    kind: Kind
    name: str
    document: bytes
    lines: set[int]
    """Lines on which the mistake may be reported."""


@dataclass
class Outcome:
    harmed: bool
    findings: list[tuple[int, str]]
    """Line and rule of each finding."""


@dataclass
class Tally:
    """Counts for the samples of one or more kinds."""
    documents: int = 0
    harmed: int = 0
    on_line: int = 0
    elsewhere: int = 0
    missed: int = 0
    several: int = 0
    """Samples that change the lists and have more than one finding."""
    unharmed_but_found: int = 0

    def add(self, sample: Sample, outcome: Outcome) -> None:
        lines = [line for line, _ in outcome.findings]
        self.documents += 1
        if not outcome.harmed:
            self.unharmed_but_found += bool(lines)
            return
        self.harmed += 1
        if not lines:
            self.missed += 1
        elif sample.lines.intersection(lines):
            self.on_line += 1
        else:
            self.elsewhere += 1
        self.several += len(lines) > 1

    def __iadd__(self, other: Tally) -> Tally:
        for name, count in asdict(other).items():
            setattr(self, name, getattr(self, name) + count)
        return self


@dataclass
class Bar:
    what: str
    share: float
    bound: float
    is_floor: bool

    @property
    def is_met(self) -> bool:
        return self.share >= self.bound if self.is_floor else self.share <= self.bound


def _unnamed(shown_list: str) -> str:
    """Removes a profile's name, which the effect does not get."""
    return re.sub(r"^(profile -?\d+) .*", r"\1", shown_list)


class Tool:
    """Runs ormel-tuning on documents."""

    def __init__(self, program: str, folder: Path) -> None:
        self._program = program
        self._folder = folder

    def lists(self, file: Path) -> object:
        """What the effect would get, or None if the document gives no lists."""
        shown = self._run("show", file)
        return shown and {_unnamed(each["list"]): [
            (entry["deviceId"], entry["code"], entry["values"]) for entry in each["entries"]]
            for each in shown["lists"]}

    def findings(self, file: Path) -> list[tuple[int, str]]:
        checked = self._run("check", file)
        if checked is None:
            print(f"check fails on {file.name}; --save keeps it", file=sys.stderr)
            return []
        return [(each["line"], each["id"]) for each in checked["files"][0]["findings"]]

    def outcome(self, sample: Sample, sound: object) -> Outcome:
        file = self._folder / f"{sample.name}.xml"
        file.write_bytes(sample.document)
        return Outcome(self.lists(file) != sound, self.findings(file))

    def _run(self, command: str, file: Path) -> Optional[dict]:
        result = subprocess.run([self._program, command, "--json", str(file)],
                                capture_output=True, check=False, timeout=60)
        if result.returncode not in (0, 1, 2):
            raise RuntimeError(f"{command} {file}: status {result.returncode}")
        return json.loads(result.stdout) if result.stdout else None


def samples(kind: Kind, sources: list[Source], seed: int, count: int,
            ) -> Iterator[tuple[Source, Sample]]:
    """Different documents, up to the requested number."""
    # Each kind has its own random numbers, so a new kind does not change the others' documents.
    rng = Random(f"{seed} {kind.group} {kind.name}")
    made: set[bytes] = set()
    for _ in range(count * 20):
        if len(made) == count:
            return
        source = rng.choice(sources)
        found = kind.targets(source)
        changed = kind.change(rng, source, rng.choice(found)) if found else None
        if changed is None:
            continue
        document, lines = changed.apply(source)
        if document == source.text.encode() or document in made:
            continue
        made.add(document)
        name = "".join(each if each.isalnum() else "-" for each in f"{kind.group} {kind.name}")
        yield source, Sample(kind, f"{name}-{len(made)}", document, lines)


def measure(tool: Tool, sources: list[Source], paths: dict[str, Path], kinds: list[Kind],
            seed: int, count: int) -> Iterator[tuple[Sample, Outcome]]:
    sound = {source.name: tool.lists(paths[source.name]) for source in sources}
    pairs = [pair for kind in kinds for pair in samples(kind, sources, seed, count)]
    with ThreadPoolExecutor(WORKERS) as pool:
        outcomes = pool.map(lambda pair: tool.outcome(pair[1], sound[pair[0].name]), pairs)
        for (_, sample), outcome in zip(pairs, outcomes):
            yield sample, outcome


@dataclass
class Report:
    tallies: dict[str, dict[str, Tally]] = field(default_factory=dict)
    counted: Tally = field(default_factory=Tally)
    harmless: Tally = field(default_factory=Tally)

    def add(self, sample: Sample, outcome: Outcome) -> None:
        kind = sample.kind
        group = self.tallies.setdefault(kind.group, {})
        group.setdefault(kind.name, Tally()).add(sample, outcome)
        if kind.is_counted:
            self.counted.add(sample, outcome)
        if kind.is_harmless:
            self.harmless.add(sample, outcome)

    def bars(self) -> list[Bar]:
        harmed = max(self.counted.harmed, 1)
        return [
            Bar("named on the line", self.counted.on_line / harmed, 0.88, True),
            Bar("missed", self.counted.missed / harmed, 0.07, False),
            Bar("two findings for one mistake", self.counted.several / harmed, 0.05, False),
            Bar("false alarms", self.harmless.unharmed_but_found, 0, False),
        ]

    def print(self) -> None:
        head = "documents harmed on line elsewhere missed several".split(" ")
        head[2:4] = ["on line"]
        print(f"{'':47}" + "".join(f"{each:>10}" for each in head))
        for group, tallies in self.tallies.items():
            if group == "harmless":
                continue
            total = Tally()
            print(f"\n{group}" + (" (not counted)" if group == PLAUSIBLE else ""))
            for name, tally in tallies.items():
                total += tally
                self._row("  " + name, tally)
            self._row("  = " + group, total)
        print(f"\n{'harmless edits':47}{'documents':>10}{'changed':>10}{'alarms':>10}")
        for name, tally in self.tallies.get("harmless", {}).items():
            print(f"  {name:45}{tally.documents:10}{tally.harmed:10}{tally.unharmed_but_found:10}")
        print()
        self._row("mistakes that count", self.counted)
        for bar in self.bars():
            bound = f"at {'least' if bar.is_floor else 'most'} {bar.bound}"
            share = f"{bar.share:.3f}" if isinstance(bar.share, float) else str(bar.share)
            print(f"{bar.what:47}{share:>10}   {bound}{'' if bar.is_met else '   MISSED'}")

    @staticmethod
    def _row(name: str, tally: Tally) -> None:
        counts = (tally.documents, tally.harmed, tally.on_line, tally.elsewhere, tally.missed,
                  tally.several)
        print(f"{name:47}" + "".join(f"{each:10}" for each in counts))


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="script/detection", description=__doc__)
    parser.add_argument("--seed", type=int, default=1, help="other documents; 1 by default")
    parser.add_argument("--per-kind", type=int, default=16, metavar="N",
                        help="documents of each kind, 16 by default")
    parser.add_argument("--kind", metavar="TEXT", default="",
                        help="only kinds with TEXT in 'GROUP: NAME'")
    parser.add_argument("--json", action="store_true", help="every document's outcome")
    parser.add_argument("--save", type=Path, metavar="FOLDER", help="keep the documents there")
    parser.add_argument("--tool", required=True, metavar="PROGRAM",
                        help="measure this ormel-tuning instead of the tree's own")
    parser.add_argument("examples", nargs="+", type=Path, help=argparse.SUPPRESS)
    return parser.parse_args()


def main() -> int:
    options = arguments()
    kinds = [kind for kind in KINDS if options.kind in f"{kind.group}: {kind.name}"]
    if not kinds:
        print(f"script/detection: no kind matches '{options.kind}'", file=sys.stderr)
        return 2
    paths = {path.stem: path for path in options.examples}
    sources = [Source(name, path.read_text("utf-8")) for name, path in paths.items()]
    report = Report()
    rows = []
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.save or Path(temporary)
        folder.mkdir(parents=True, exist_ok=True)
        tool = Tool(options.tool, folder)
        for sample, outcome in measure(tool, sources, paths, kinds, options.seed,
                                       options.per_kind):
            report.add(sample, outcome)
            rows.append({"group": sample.kind.group, "kind": sample.kind.name,
                         "document": sample.name, "lines": sorted(sample.lines),
                         "harmed": outcome.harmed, "findings": outcome.findings})
    if options.json:
        print(json.dumps({"documents": rows, "bars": [
            {**asdict(bar), "met": bar.is_met} for bar in report.bars()]}, indent=1))
    else:
        report.print()
    return 0 if all(bar.is_met for bar in report.bars()) else 1


if __name__ == "__main__":
    sys.exit(main())
