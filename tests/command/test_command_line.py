"""What holds for every command: help, wrong usage, examples that work."""

import shlex

import pytest
from conftest import SCHEMAS, commands

NAMES = [command["name"] for command in commands()]
EXAMPLES = [example for command in commands() for example in command["examples"]]


def test_without_a_command_the_commands_are_listed(kh):
    text = kh().out
    assert text == kh("help").out == kh("--help").out == kh("-h").out
    for name in NAMES:
        assert f"\n  {name} " in text


@pytest.mark.parametrize("name", NAMES)
def test_help_shows_examples_and_options(kh, name):
    text = kh(*name.split(), "--help").out
    assert text == kh("help", *name.split()).out == kh(*name.split(), "-h").out
    command = next(command for command in commands() if command["name"] == name)
    assert command["examples"]
    for shown in command["examples"]:
        assert shown in text
    for option in command["options"]:
        assert option.replace(",", ", ") in text
    assert max(len(line) for line in text.splitlines() if not line.startswith("  kh ")) <= 80


@pytest.mark.parametrize("example", EXAMPLES)
def test_examples_work_on_the_samples(kh, example):
    words = shlex.split(example)
    assert words[0] == "kh"
    kh.write("product.json", kh("dump", "product.xml").out)
    kh(*words[1:])


@pytest.mark.parametrize("name", NAMES)
def test_every_json_output_has_a_schema(name):
    command = next(command for command in commands() if command["name"] == name)
    file = SCHEMAS / f"kh-{name.replace(' ', '-')}.schema.json"
    assert file.exists() == ("--json" in command["options"])


@pytest.mark.parametrize("words", [["nothing"], ["header"], ["header", "nothing"], ["get", "--nothing", "x"],
                                   ["get", "-j", "many", "product.xml", "/a"],
                                   ["get", "-j", "-1", "product.xml", "/a"], ["ls", "-d", "-5", "product.xml"],
                                   ["get", "--color", "blue", "product.xml", "/a"], ["help", "nothing"]])
def test_a_wrong_usage_is_told_with_code_2(kh, words):
    result = kh(*words, code=2)
    assert result.out == ""
    assert result.err.startswith("kh: ")


def test_a_group_shows_its_commands(kh):
    text = kh("header", "--help").out
    assert text == kh("help", "header").out
    assert "header show" in text and "name split" not in text


def test_the_version_is_told(kh):
    assert kh("--version").out.startswith("kh 4.")
