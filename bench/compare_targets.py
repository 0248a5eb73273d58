"""What the program is to reach, and whether it did."""

import math
from dataclasses import dataclass

from compare_variants import BARE, BATCHED, PASS, RUN, SHELL

SMALL_MB = 10
LARGE_MB = 100
MEMORY_MB = 20
EXPONENT = 1.05
MEGABYTE_KIB = 1_000_000 / 1024


@dataclass(frozen=True)
class Target:
    text: str
    size: str
    wanted: str
    value: float
    unit: str
    met: bool


def at_most(text, size, limit, value, unit=""):
    return Target(text, size, f"≤ {limit:g}{unit}", value, unit, value <= limit)


def below(text, size, limit, value):
    return Target(text, size, f"< {limit:g} ×", value, " ×", value < limit)


def growth_exponent(comparisons):
    """The power of the size that the time of a run grows with, from the smallest directory to the largest."""
    first, last = comparisons[0], comparisons[-1]
    times = last.figures[RUN].usage.wall_s / first.figures[RUN].usage.wall_s
    return math.log(times) / math.log(last.bytes_before / first.bytes_before)


def targets_at(comparison):
    size = f"{comparison.size_mb} MB"
    figures = comparison.figures
    run = figures[RUN]
    targets = []
    if comparison.size_mb == SMALL_MB:
        targets.append(at_most("pass alone ÷ bare C", size, 1.15, figures[PASS].wall_ratio, " ×"))
        targets.append(at_most("run ÷ bare C", size, 1.3, run.wall_ratio, " ×"))
    if comparison.size_mb >= LARGE_MB:
        targets.append(at_most("run ÷ bare C", size, 1.03, run.wall_ratio, " ×"))
    targets.append(below("run ÷ shell", size, 1, run.wall_ratio / figures[SHELL].wall_ratio))
    targets.append(below("run ÷ batched purge", size, 0.5, run.wall_ratio / figures[BATCHED].wall_ratio))
    targets.append(at_most("memory of a run", size, MEMORY_MB, run.usage.memory_kib / MEGABYTE_KIB, " MB"))
    return targets


def targets_of(comparisons):
    targets = [target for comparison in comparisons for target in targets_at(comparison)]
    if len(comparisons) > 1:
        span = f"{comparisons[0].size_mb} to {comparisons[-1].size_mb} MB"
        targets.append(at_most("exponent of growth", span, EXPONENT, growth_exponent(comparisons)))
    return targets
