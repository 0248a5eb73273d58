"""Reference directories: databases as a laptop has them after two years, and fresh copies of them for each run."""

import datetime
import json
import os
import shutil
import sqlite3
import subprocess
from pathlib import Path

from compare_measure import MeasuringFailed

MEGABYTE = 1_000_000
DAYS = 730
SEED = 1

# The generator takes a factor on the number of rows: every size has the same tables, in the same proportion.
MEGABYTES_AT_SCALE_1 = 34.9


def today():
    return datetime.datetime.now(datetime.timezone.utc).date()


def databases_of(directory):
    return sorted(directory.glob("*.db"))


def bytes_of(directory):
    return sum(file.stat().st_size for file in databases_of(directory))


def open_to_read(file):
    return sqlite3.connect(f"{file.as_uri()}?mode=ro", uri=True)


def tables_of(connection):
    names = connection.execute("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")
    return [name for (name,) in names.fetchall()]


def rows_left(directory):
    """Of each table the number of rows, and the times of the oldest and the newest."""
    rows = {}
    for file in databases_of(directory):
        connection = open_to_read(file)
        for table in tables_of(connection):
            query = f'SELECT COUNT(*), MIN(time), MAX(time) FROM "{table}"'
            rows[file.name, table] = connection.execute(query).fetchone()
        connection.close()
    return rows


def copy_fresh(master, directory):
    """A copy that is on the disk, so that no later writing of it disturbs the measurement, and in the cache."""
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    for file in databases_of(master):
        shutil.copyfile(file, directory / file.name)
        with open(directory / file.name, "rb") as copy:
            os.fsync(copy.fileno())


class Masters:
    """Makes the directories that copies are taken of, and keeps them for the day."""

    def __init__(self, host, folder):
        self._host = host
        self._folder = folder

    def directory(self, size_mb):
        directory = self._folder / f"{size_mb} MB"
        made = directory / "made-for"
        if not made.exists() or made.read_text() != str(today()):
            shutil.rmtree(directory, ignore_errors=True)
            day = self._generate(size_mb, directory)
            self._clear_cutoffs(directory, day)
            made.write_text(str(day))
        return directory

    def _ask(self, *words):
        done = subprocess.run([self._host, *words, "--json"], capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise MeasuringFailed(f"{words[0]} failed: {done.stderr.strip()}")
        return json.loads(done.stdout)

    def _generate(self, size_mb, directory):
        scale = size_mb / MEGABYTES_AT_SCALE_1
        day = today()
        words = {"--scale": scale, "--days": DAYS, "--seed": SEED, "--now": day, "--data-dir": directory}
        self._ask("generate", *[str(word) for pair in words.items() for word in pair])
        return day

    def _clear_cutoffs(self, directory, day):
        """Takes out the rows that expire during this day and the next, so that every run of it deletes the same."""
        for contract in self._ask("contracts")["contracts"]:
            file = directory / f"{contract['database']}.db"
            if not file.exists():
                continue
            first = day - datetime.timedelta(days=contract["retention_days"])
            last = first + datetime.timedelta(days=2)
            connection = sqlite3.connect(file)
            if contract["table"] in tables_of(connection):
                times = (f"{first}T00:00:00", f"{last}T00:00:00")
                connection.execute(f'DELETE FROM "{contract["table"]}" WHERE time >= ? AND time < ?', times)
                connection.commit()
            connection.close()


class Statements:
    """What one pass ran on a directory, in its order: pairs of file name and SQL."""

    def __init__(self, file):
        self.file = file

    def by_database(self):
        found = {}
        for line in self.file.read_text().splitlines():
            name, sql = line.split("\t", 1)
            found.setdefault(name, []).append(sql.rstrip(";") + ";")
        return found

    def scripts(self, folder):
        """One file of SQL for each database."""
        files = {}
        for name, statements in self.by_database().items():
            files[name] = Path(folder) / f"{name}.sql"
            files[name].write_text("\n".join(statements) + "\n")
        return files
