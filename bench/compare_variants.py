"""The ways to do the work of a pass, run in turn on copies of one directory, and what each of them used."""

import sys
from dataclasses import dataclass, replace
from pathlib import Path

from compare_data import Statements, bytes_of, copy_fresh, rows_left
from compare_measure import Command, MeasuringFailed, Usage, median_ratio, median_usage

RUN = "corvo-telemetry-host run"
PASS = "the pass alone"
PASS_UNCHECKED = "the pass alone, without its check"
BARE = "bare C, equal settings"
BARE_DEFAULTS = "bare C, SQLite's defaults"
SHELL = "the sqlite3 shell"
BATCHED = "batched purge"
VARIANTS = (RUN, PASS, PASS_UNCHECKED, BARE, BARE_DEFAULTS, SHELL, BATCHED)


class Programs:
    """The commands that do the work, each in its way."""

    def __init__(self, folder):
        self._folder = folder
        self.host = folder / "corvo-telemetry-host"
        self.meter = folder / "measure"
        self.writer = folder / "writer"

    def run(self, directory, *options):
        words = [self.host, "run", "--quiet", "--trust-directory", *options, "--data-dir", directory]
        return Command(words)

    def one_pass(self, directory, *options):
        return Command([self._folder / "one_pass", *options, "--data-dir", directory])

    def bare(self, settings, directory, statements):
        return Command([self._folder / "bare_statements", settings, directory, statements.file])

    def shells(self, directory, statements):
        # A table that is missing is an error to the shell, which goes on to the next statement.
        scripts = statements.scripts(statements.file.parent)
        return [Command(["sqlite3", directory / name], script, may_fail=True) for name, script in scripts.items()]

    def batched(self, directory, statements):
        purge = Path(__file__).with_name("batched_purge.py")
        return Command([sys.executable, purge, directory, statements.file])

    def knows(self, meter, option):
        return option in meter.run(Command([self.host, "run", "--help"]))[1]


@dataclass(frozen=True)
class Figures:
    """Of one way at one size: medians of the rounds, and the ratios to the bare program in the same rounds."""

    usage: Usage
    wall_ratio: float
    cpu_ratio: float


@dataclass(frozen=True)
class Comparison:
    """Of all ways at one size. Bytes and rows are those of the databases."""

    size_mb: int
    bytes_before: int
    bytes_after: int
    rows_before: int
    rows_after: int
    figures: dict


def commands_of(variant, programs, directory, statements):
    return {
        RUN: lambda: [programs.run(directory)],
        BARE: lambda: [programs.bare("equal", directory, statements)],
        BARE_DEFAULTS: lambda: [programs.bare("defaults", directory, statements)],
        SHELL: lambda: programs.shells(directory, statements),
        BATCHED: lambda: [programs.batched(directory, statements)],
    }[variant]()


def run_variant(variant, programs, meter, directory, statements):
    """What it used. Of the pass alone the time is the one that it measures itself, after its module is loaded."""
    if variant not in (PASS, PASS_UNCHECKED):
        return meter.run_all(commands_of(variant, programs, directory, statements))
    options = ["--no-check"] if variant == PASS_UNCHECKED else []
    usage, printed = meter.run(programs.one_pass(directory, *options))
    return replace(usage, wall_s=float(printed))


def total_rows(rows):
    return sum(count for count, _, _ in rows.values())


def check_rows(variant, rows, expected):
    differing = [" ".join(table) for table in expected if rows.get(table) != expected[table]]
    if differing:
        raise MeasuringFailed(f"{variant} left other rows than the recorded pass in {', '.join(differing)}")


def figures_of(usages):
    bases = usages[BARE]
    return {
        variant: Figures(
            median_usage(own),
            median_ratio([each.wall_s for each in own], [each.wall_s for each in bases]),
            median_ratio([each.cpu_s for each in own], [each.cpu_s for each in bases]),
        )
        for variant, own in usages.items()
    }


def turns(number):
    """Every round begins with another way: what goes before can make the next one slower."""
    first = number % len(VARIANTS)
    return VARIANTS[first:] + VARIANTS[:first]


def compare(programs, meter, master, size_mb, rounds, work, say):
    """Runs every way once a round, each on a fresh copy, and makes sure that each leaves the same rows."""
    copy = work / "copy"
    copy_fresh(master, copy)
    file = work / "statements"
    meter.run(programs.one_pass(copy, "--record", file))
    statements, expected, bytes_after = Statements(file), rows_left(copy), bytes_of(copy)
    usages = {variant: [] for variant in VARIANTS}
    for number in range(rounds):
        for variant in turns(number):
            copy_fresh(master, copy)
            usages[variant].append(run_variant(variant, programs, meter, copy, statements))
            check_rows(variant, rows_left(copy), expected)
            say(f"{size_mb} MB, round {number + 1} of {rounds}: {usages[variant][-1].wall_s:.3f} s, {variant}")
    rows_before = total_rows(rows_left(master))
    return Comparison(size_mb, bytes_of(master), bytes_after, rows_before, total_rows(expected), figures_of(usages))
