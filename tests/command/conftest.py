"""Runs kh as its users do, on copies of the samples. Every JSON output is held against its schema."""

import functools
import json
import os
import pathlib
import shutil
import subprocess

import jsonschema
import pytest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
SCHEMAS = SOURCE / "tools" / "kh" / "schema"
SAMPLES = SOURCE / "tests" / "command" / "samples"
KH = os.environ.get("KH", str(SOURCE / "build" / "default" / "tools" / "kh" / "kh"))

DATA = "/Earth_Observation_File/Data_Block"
HEADER = "/Earth_Observation_File/Earth_Observation_Header/Fixed_Header"


@functools.lru_cache(maxsize=None)
def commands():
    """What the command says of its subcommands."""
    return json.loads(subprocess.run([KH, "--describe"], check=True, capture_output=True).stdout)


def command_of(arguments):
    """The subcommand that the first words name, such as "header show"."""
    names = {command["name"] for command in commands()}
    for count in (2, 1):
        if " ".join(arguments[:count]) in names:
            return " ".join(arguments[:count])
    return None


@functools.lru_cache(maxsize=None)
def validator(command):
    file = SCHEMAS / f"kh-{command.replace(' ', '-')}.schema.json"
    schema = json.loads(file.read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    resolver = jsonschema.RefResolver(file.as_uri(), schema)
    return jsonschema.Draft7Validator(schema, resolver=resolver)


class Result:
    def __init__(self, arguments, process):
        self.code = process.returncode
        self.out = process.stdout
        self.err = process.stderr
        if "--json" in arguments and self.code != 2:
            self.json = json.loads(self.out)
            validator(command_of(arguments)).validate(self.json)

    @property
    def lines(self):
        return self.out.splitlines()


class Kh:
    """A folder with the samples, and the command run in it."""

    def __init__(self, folder):
        self.folder = folder

    def __call__(self, *arguments, stdin="", code=0, env=None):
        arguments = [str(argument) for argument in arguments]
        process = subprocess.run([KH, *arguments], cwd=self.folder, input=stdin, capture_output=True,
                                 encoding="utf-8", timeout=100, env={**os.environ, **(env or {})})
        assert process.returncode == code, f"exit code {process.returncode}: {process.stdout}{process.stderr}"
        return Result(arguments, process)

    def path(self, name):
        return self.folder / name

    def state(self, name):
        """What changes when a file is written."""
        status = self.path(name).stat()
        return status.st_ino, status.st_mtime_ns, status.st_size, status.st_mode

    def read(self, name):
        return self.path(name).read_text(encoding="utf-8")

    def write(self, name, text):
        self.path(name).write_text(text, encoding="utf-8")
        return name

    def value(self, name, path):
        return self("get", name, path).out.rstrip("\n")


@pytest.fixture
def kh(tmp_path):
    for sample in SAMPLES.iterdir():
        shutil.copy(sample, tmp_path)
    return Kh(tmp_path)
