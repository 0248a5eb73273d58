"""What collectors feel: how late rows come in that are inserted while a pass is at work on their database."""

import shutil
import sqlite3
import statistics
import subprocess
import time
from dataclasses import dataclass

from compare_data import MEGABYTE, copy_fresh
from compare_idle import ALWAYS, modes_of
from compare_measure import MeasuringFailed, percentile

FILE = "DeviceUsage.db"
SIZES_MB = (10, 50, 200, 1000)
JOURNAL_MODES = ("delete", "wal")
INTERVAL_MS = 5
BUSY_TIMEOUT_S = 30
QUIET_S = 2.0

# A table that a pass cleans, with as many rows as it leaves, one day of them expired; and one that no contract names,
# which fills the file and is only compacted.
ROWS = 36_000
RETENTION_DAYS = 90
ROW_BYTES, DETAIL_BYTES = 53, 242
MAKE = """
CREATE TABLE PowerEvents (time TEXT, event_kind TEXT, power_source TEXT, charge_percent INTEGER, uptime_s INTEGER,
  lid_open INTEGER, user_initiated INTEGER);
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < :rows)
INSERT INTO PowerEvents SELECT strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now', '-' || (:span * (:rows - i) / :rows) ||
  ' seconds'), 'standby', 'dc', i % 101, i, 0, 1 FROM n;
CREATE TABLE Details (time TEXT, detail TEXT);
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < :details)
INSERT INTO Details SELECT '2026-01-01T00:00:00+00:00', printf('%0200d', i) FROM n;
"""
INSERT = "INSERT INTO PowerEvents VALUES (strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now'), 'resumed', 'ac', 50, 1, 1, 0)"


@dataclass(frozen=True)
class Latency:
    """Milliseconds from the moment that a row is due to the one that it is in, of the rows that were due in the runs."""

    size_mb: int
    journal_mode: str
    compacted: bool
    quiet_p99_ms: float
    p50_ms: float
    p99_ms: float
    longest_ms: float
    rows: int
    run_s: float
    cleaned: bool


def make_database(directory, size_mb, journal_mode):
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    connection = sqlite3.connect(directory / FILE)
    connection.execute("PRAGMA synchronous = OFF")
    connection.execute(f"PRAGMA journal_mode = {journal_mode}")
    rows = min(ROWS, size_mb * MEGABYTE // 2 // ROW_BYTES)
    details = (size_mb * MEGABYTE - rows * ROW_BYTES) // DETAIL_BYTES
    values = {"rows": rows, "span": (RETENTION_DAYS + 1) * 86_400, "details": details}
    for statement in filter(str.strip, MAKE.split(";")):
        connection.execute(statement, values)
    connection.commit()
    connection.close()


class Writer:
    """A collector at work, for as long as the object is entered."""

    def __init__(self, program, file):
        self._words = [program, file, INSERT, str(INTERVAL_MS)]
        self.inserts = []

    def __enter__(self):
        self._process = subprocess.Popen(self._words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        return self

    def __exit__(self, kind, value, trace):
        self._process.terminate()
        printed, problem = self._process.communicate()
        if self._process.returncode != 0 and kind is None:
            raise MeasuringFailed(f"the writer failed: {problem.strip()}")
        self.inserts = [tuple(int(moment) for moment in line.split()) for line in printed.splitlines()]

    def latencies_ms(self, start, end):
        return [(done - due) / 1e6 for due, done in self.inserts if start <= due < end]


def clean(programs, meter, directory, mode):
    """Whether the run got through; one that never gets the lock gives up."""
    try:
        meter.run(programs.run(directory, "--busy-timeout", str(BUSY_TIMEOUT_S), *mode))
        return True
    except MeasuringFailed as failure:
        if "another program holds" not in str(failure):
            raise
        return False


@dataclass(frozen=True)
class WatchedRun:
    quiet_ms: list
    late_ms: list
    run_s: float
    cleaned: bool


def watch_run(programs, meter, master, directory, mode):
    copy_fresh(master, directory)
    writer = Writer(programs.writer, directory / FILE)
    with writer:
        time.sleep(QUIET_S)
        start = time.monotonic_ns()
        cleaned = clean(programs, meter, directory, mode)
        end = time.monotonic_ns()
    quiet_ms = writer.latencies_ms(start - int(QUIET_S / 2 * 1e9), start)
    return WatchedRun(quiet_ms, writer.latencies_ms(start, end), (end - start) / 1e9, cleaned)


def latency_of(size_mb, journal_mode, mode, runs):
    quiet_ms = [each for run in runs for each in run.quiet_ms]
    late_ms = [each for run in runs for each in run.late_ms]
    return Latency(
        size_mb,
        journal_mode,
        mode == ALWAYS,
        percentile(quiet_ms, 99),
        percentile(late_ms, 50),
        percentile(late_ms, 99),
        max(late_ms),
        len(late_ms),
        statistics.median(run.run_s for run in runs),
        all(run.cleaned for run in runs),
    )


def measure_latencies(programs, meter, sizes_mb, rounds, work, say):
    latencies = []
    master, copy = work / "latency", work / "copy"
    for size_mb in sizes_mb:
        for journal_mode in JOURNAL_MODES:
            make_database(master, size_mb, journal_mode)
            runs = {mode: [] for mode in modes_of(programs, meter)}
            for _ in range(rounds):
                for mode, own in runs.items():
                    own.append(watch_run(programs, meter, master, copy, mode))
            latencies += [latency_of(size_mb, journal_mode, mode, own) for mode, own in runs.items()]
            say(f"latency, {size_mb} MB, {journal_mode}: at most {latencies[-1].longest_ms:.0f} ms")
    shutil.rmtree(master)
    return latencies
