"""Holds the schemas of the host's documents against the meta-schema, and real documents against the schemas.

check_schemas.py <directory of schemas> <host program>
"""

import json
import pathlib
import subprocess
import sys
import tempfile

from jsonschema import Draft202012Validator


def validator(file):
    schema = json.loads(file.read_text(encoding="utf-8"))
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema)


def document(program, *words):
    run = subprocess.run([program, *words, "--json"], stdout=subprocess.PIPE, check=False)
    return json.loads(run.stdout)


def main(schemas, program):
    validators = {file.name.split(".")[0]: validator(file) for file in pathlib.Path(schemas).glob("*.schema.json")}
    with tempfile.TemporaryDirectory() as data:
        documents = [
            ("contracts", ["contracts"]),
            ("lint", ["contracts", "--lint"]),
            ("generate", ["generate", "--data-dir", data, "--scale", "0.01"]),
            ("failure", ["generate", "--data-dir", data]),
            ("status", ["status", "--data-dir", data]),
            ("report", ["report", "--data-dir", data, "--html", data + "/page.html"]),
            ("run", ["run", "--data-dir", data]),
            ("verify", ["verify", "--data-dir", data]),
            ("history", ["history", "--data-dir", data]),
            ("explain", ["explain", "CollectorCache", "--data-dir", data]),
            ("print", ["print", "CollectorCache", "--data-dir", data]),
            ("failure", ["bogus"]),
            ("text", ["run", "--help"]),
            ("text", ["--version"]),
        ]
        for kind, words in documents:
            validators[kind].validate(document(program, *words))
    untried = set(validators) - {kind for kind, _ in documents}
    if untried:
        sys.exit(f"no document is tried against {', '.join(sorted(untried))}")


main(*sys.argv[1:])
