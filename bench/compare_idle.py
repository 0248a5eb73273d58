"""The idle pass: what a run costs that follows on another and finds next to nothing to delete."""

from dataclasses import dataclass

from compare_data import bytes_of, copy_fresh
from compare_measure import Usage, median_usage

ALWAYS = ()
NEVER = ("--compact-when-free", "100")


@dataclass(frozen=True)
class IdlePass:
    size_mb: int
    compacted: bool
    bytes_left: int
    usage: Usage


def modes_of(programs, meter):
    """With compaction always, and left out where little is free if the host can do that."""
    return (ALWAYS, NEVER) if programs.knows(meter, NEVER[0]) else (ALWAYS,)


def measure_idle(programs, meter, master, size_mb, rounds, work):
    copy = work / "copy"
    copy_fresh(master, copy)
    meter.run(programs.run(copy))
    usages = {mode: [] for mode in modes_of(programs, meter)}
    for _ in range(rounds):
        for mode, own in usages.items():
            own.append(meter.run(programs.run(copy, *mode))[0])
    return [IdlePass(size_mb, mode == ALWAYS, bytes_of(copy), median_usage(own)) for mode, own in usages.items()]
