"""For authors of collectors: what their own choices cost and bring, each changed alone."""

import sqlite3
import time
from dataclasses import dataclass, replace
from statistics import median



ROWS = 200_000
FEW_ROWS = 4_000
SPAN_S = 100 * 86_400
EXPIRED = "DELETE FROM Samples WHERE datetime(time) < datetime('now', '-90 days')"
TABLE = "CREATE TABLE Samples (time TEXT, kind TEXT, name TEXT, value REAL, uptime_s INTEGER)"
INSERT = (
    "INSERT INTO Samples VALUES (strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now', ?), 'thermal', 'upper left', ?, ?)"
)


@dataclass(frozen=True)
class Choice:
    """How a collector makes its database and writes to it."""

    index: str = ""
    journal_mode: str = "delete"
    page_size: int = 4096
    rows_a_transaction: int = 1_000
    rows: int = ROWS


@dataclass(frozen=True)
class Outcome:
    insert_s: float
    bytes: int
    expiry_s: float


@dataclass(frozen=True)
class Question:
    title: str
    choices: dict
    follows: str


BASE = Choice()
FEW = replace(BASE, rows=FEW_ROWS)
QUESTIONS = (
    Question(
        "Index",
        {
            "none": BASE,
            "on `time`": replace(BASE, index="time"),
            "on `datetime(time)`": replace(BASE, index="datetime(time)"),
        },
        "An index on `time` brings a pass nothing: a pass asks for `datetime(time)`, which it cannot answer.\n"
        "One on `datetime(time)` makes the search short, and every insertion, deletion and check longer: worth it\n"
        "only where few of many rows expire in a pass.",
    ),
    Question(
        "Journal mode",
        {mode: replace(FEW, journal_mode=mode, rows_a_transaction=1) for mode in ("delete", "wal")},
        "One row a transaction: WAL spares the rollback journal, which is made, written and deleted for each of them,\n"
        "and readers do not hold up the writer. A pass keeps the mode that it finds.",
    ),
    Question(
        "Page size",
        {f"{size} bytes": replace(BASE, page_size=size) for size in (1024, 4096, 16384)},
        "SQLite's default, 4096 bytes, serves rows like these; another size has to earn its place in a measurement\n"
        "with the collector's own rows.",
    ),
    Question(
        "Transaction size",
        {("1 row" if rows == 1 else f"{rows} rows"): replace(FEW, rows_a_transaction=rows) for rows in (1, 10, 100)},
        "Each transaction waits for the disk. A collector that gathers rows for a second and writes them together\n"
        "spares most of these waits, and locks the file that much more seldom.",
    ),
)


def insert_rows(connection, choice):
    for first in range(0, choice.rows, choice.rows_a_transaction):
        last = min(first + choice.rows_a_transaction, choice.rows)
        ages = ((f"-{SPAN_S * (choice.rows - row) // choice.rows} seconds", row / 7, row) for row in range(first, last))
        connection.execute("BEGIN")
        connection.executemany(INSERT, ages)
        connection.execute("COMMIT")


def timed(work):
    start = time.monotonic()
    work()
    return time.monotonic() - start


def try_out(choice, folder):
    file = folder / "advice.db"
    file.unlink(missing_ok=True)
    connection = sqlite3.connect(file, isolation_level=None)
    connection.execute(f"PRAGMA page_size = {choice.page_size}")
    connection.execute(f"PRAGMA journal_mode = {choice.journal_mode}")
    connection.execute(TABLE)
    if choice.index:
        connection.execute(f"CREATE INDEX ByTime ON Samples ({choice.index})")
    insert_s = timed(lambda: insert_rows(connection, choice))
    connection.execute("PRAGMA wal_checkpoint(TRUNCATE)")
    size = file.stat().st_size
    expiry_s = timed(lambda: connection.execute(EXPIRED))
    connection.close()
    file.unlink()
    return Outcome(insert_s, size, expiry_s)


def answer(question, rounds, folder):
    """Of each choice the medians of the rounds, in which the choices take turns."""
    outcomes = {name: [] for name in question.choices}
    for _ in range(rounds):
        for name, choice in question.choices.items():
            outcomes[name].append(try_out(choice, folder))
    return {
        name: Outcome(*(median(getattr(each, field) for each in own) for field in ("insert_s", "bytes", "expiry_s")))
        for name, own in outcomes.items()
    }
