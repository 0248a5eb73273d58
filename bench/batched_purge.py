"""Deletes what a pass deletes as recorders of events do: a few thousand rows at a time, each batch committed.

batched_purge.py DIRECTORY FILE

The file has "file name, tab, SQL" in each line: the statements of a pass. Page statistics are left out: only a pass
asks for them.
"""

import re
import sqlite3
import sys
from pathlib import Path

BATCH = 4_000
EXPIRE = re.compile(r"DELETE FROM (\w+) WHERE (datetime\(time\) < datetime\('[^']*'\));")
TRIM = re.compile(r"DELETE FROM (\w+) WHERE rowid IN \(SELECT rowid FROM \w+ ORDER BY rowid ASC LIMIT (\d+)\);")


def delete_rows(connection, table, rowids):
    places = ",".join("?" * len(rowids))
    connection.execute(f"DELETE FROM {table} WHERE rowid IN ({places})", rowids)
    connection.commit()


def select_rowids(connection, query, limit):
    return [rowid for (rowid,) in connection.execute(query, (limit,)).fetchall()]


def expire(connection, table, condition):
    query = f"SELECT rowid FROM {table} WHERE {condition} LIMIT ?"
    rowids = select_rowids(connection, query, BATCH)
    while rowids:
        delete_rows(connection, table, rowids)
        rowids = select_rowids(connection, query, BATCH)


def trim(connection, table, count):
    query = f"SELECT rowid FROM {table} ORDER BY rowid LIMIT ?"
    while count > 0:
        rowids = select_rowids(connection, query, min(count, BATCH))
        if not rowids:
            return
        delete_rows(connection, table, rowids)
        count -= len(rowids)


def run(connection, sql):
    if " FROM dbstat " in sql:
        return
    if found := EXPIRE.fullmatch(sql):
        expire(connection, found[1], found[2])
    elif found := TRIM.fullmatch(sql):
        trim(connection, found[1], int(found[2]))
    else:
        connection.execute(sql).fetchall()


def purge(directory, statements):
    connection, opened = None, None
    for line in statements.read_text().splitlines():
        name, sql = line.split("\t", 1)
        if name != opened:
            if connection:
                connection.close()
            connection, opened = sqlite3.connect(directory / name), name
        try:
            run(connection, sql)
        except sqlite3.OperationalError as error:
            if not str(error).startswith("no such table:"):
                raise
    if connection:
        connection.close()


if __name__ == "__main__":
    purge(Path(sys.argv[1]), Path(sys.argv[2]))
