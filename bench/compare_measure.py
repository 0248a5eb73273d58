"""Processes that are measured: time, memory and bytes of one or several commands."""

import math
import statistics
import subprocess
from dataclasses import dataclass, fields
from pathlib import Path


class MeasuringFailed(Exception):
    """What a person is told when the measurement cannot go on."""


@dataclass(frozen=True)
class Usage:
    """What processes used; of several, one after the other, the sum, and the most memory of one."""

    wall_s: float = 0.0
    cpu_s: float = 0.0
    memory_kib: int = 0
    asked_read: int = 0
    asked_written: int = 0
    disk_read: int = 0
    disk_written: int = 0

    def __add__(self, other):
        sums = {each.name: getattr(self, each.name) + getattr(other, each.name) for each in fields(Usage)}
        return Usage(**{**sums, "memory_kib": max(self.memory_kib, other.memory_kib)})


@dataclass(frozen=True)
class Command:
    words: list
    stdin: Path = Path("/dev/null")
    may_fail: bool = False


def usage_of(figures):
    names = dict(line.split(": ") for line in figures.splitlines())
    return Usage(
        float(names["wall_s"]),
        float(names["cpu_s"]),
        int(names["memory_kib"]),
        int(names["rchar"]),
        int(names["wchar"]),
        int(names["read_bytes"]),
        int(names["write_bytes"]),
    )


class Meter:
    """Runs commands under the program that measures."""

    def __init__(self, program, folder):
        self._program = program
        self._figures = folder / "figures"

    def run(self, command):
        """What the command used, and what it printed."""
        words = [str(word) for word in command.words]
        with open(command.stdin, "rb") as stdin:
            done = subprocess.run(
                [self._program, self._figures, *words], stdin=stdin, capture_output=True, text=True, check=False
            )
        if done.returncode != 0 and not command.may_fail:
            program = Path(words[0]).name
            raise MeasuringFailed(f"{program} failed with exit code {done.returncode}: {done.stderr.strip()}")
        return usage_of(self._figures.read_text()), done.stdout

    def run_all(self, commands):
        usage = Usage()
        for command in commands:
            usage += self.run(command)[0]
        return usage


def median_usage(usages):
    names = [each.name for each in fields(Usage)]
    return Usage(**{name: statistics.median(getattr(usage, name) for usage in usages) for name in names})


def median_ratio(values, bases):
    """Each against the one of the same round, so that a slow moment of the machine meets both."""
    return statistics.median(value / base for value, base in zip(values, bases))


def percentile(values, percent):
    ordered = sorted(values)
    return ordered[max(0, math.ceil(len(ordered) * percent / 100) - 1)]
