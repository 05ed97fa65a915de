"""What all commands share that work on many files: the list, the filter, failures, threads, exit codes."""

import os

import pytest
from conftest import DATA, HEADER

VERSION = f"{HEADER}/File_Version"


@pytest.fixture
def hundred(kh):
    """A hundred files; the one with number 50 is broken."""
    text = kh.read("product.xml")
    names = []
    for number in range(100):
        names.append(kh.write(f"p{number:02}.xml", text.replace(">0001<", f">{number:04}<")))
    kh.write("p50.xml", "<broken>")
    return names


def test_a_dash_stands_for_a_list_on_standard_input(kh):
    result = kh("get", "-p", f"{VERSION}:i", "-", stdin="product.xml\n\nother.xml\n")
    assert result.lines == ["product.xml\t1", "other.xml\t2"]


def test_work_ends_with_the_first_file_that_cannot_be_read(kh, hundred):
    result = kh("get", "-p", VERSION, *hundred, code=3)
    assert len(result.lines) == 50
    assert result.err.startswith("p50.xml:")
    assert result.err.count("\n") == 1


@pytest.mark.parametrize("jobs", [0, 1, 2, 7])
def test_output_is_the_same_with_any_number_of_threads(kh, hundred, jobs):
    result = kh("get", "-k", "-j", jobs, "-p", f"{VERSION}:i", *hundred, code=3)
    assert result.lines == [f"p{number:02}.xml\t{number}" for number in range(100) if number != 50]
    stopped = kh("get", "-j", jobs, "-p", f"{VERSION}:i", *hundred, code=3)
    assert stopped.lines == result.lines[:50]


@pytest.mark.parametrize("jobs", [1, 3])
def test_json_tells_of_files_that_cannot_be_read(kh, hundred, jobs):
    elements = kh("get", "-k", "--json", "-j", jobs, "-p", VERSION, *hundred, code=3).json
    assert [element["file"] for element in elements] == hundred
    assert [element["file"] for element in elements if "error" in element] == ["p50.xml"]
    assert elements[50]["error"]["code"] == 3


def test_what_is_not_found_does_not_end_the_work(kh):
    kh.write("empty.xml", "<Earth_Observation_File/>")
    result = kh("get", "-p", f"{VERSION}:i", "empty.xml", "product.xml", code=1)
    assert result.lines == ["product.xml\t1"]


def test_the_gravest_code_counts(kh):
    kh.write("empty.xml", "<Earth_Observation_File/>")
    kh("get", "-k", "-p", VERSION, "missing.xml", "empty.xml", code=3)


@pytest.mark.parametrize("condition, files", [
    (f"{VERSION}=0002", ["other.xml"]),
    (f"{VERSION}!=0002", ["product.xml"]),
    (f"{DATA}/List/Item[*]/Orbit=2003", ["other.xml"]),
    (f"{DATA}/List/Item[*]/Orbit!=2003", ["product.xml"]),
    (f"{DATA}/List/@count", ["product.xml", "other.xml"]),
    (f"{DATA}/List/@none", []),
    ("Data_Block/@type=xml", ["product.xml", "other.xml"]),
    (f"{HEADER}/Notes=", ["product.xml", "other.xml"]),
])
def test_the_filter_takes_files_with_a_value(kh, condition, files):
    result = kh("get", "-w", condition, "--json", "-p", VERSION, "product.xml", "other.xml")
    assert [element["file"] for element in result.json] == files


def test_all_conditions_of_the_filter_must_hold(kh):
    assert kh("get", "-w", f"{VERSION}=0001", "-w", f"{DATA}/@type=csv", "-p", VERSION, "product.xml").out == ""


@pytest.mark.parametrize("name, text", [
    ("missing.xml", "missing.xml: No such file or directory\n"),
    (".", ".: Is a directory\n"),
])
def test_a_file_that_cannot_be_opened_is_told_with_its_reason(kh, name, text):
    assert kh("get", name, "/a", code=3).err == text


def test_a_file_may_have_the_name_of_a_command(kh):
    kh.write("get", kh.read("product.xml"))
    assert kh("get", "get", f"{DATA}/@type").out == "xml\n"


def test_a_file_name_that_is_no_utf8_still_gives_json(kh):
    name = os.fsencode(str(kh.folder)) + b"/\xff.xml"
    with open(name, "wb") as file:
        file.write(b"<R>1</R>")
    assert kh("get", "--json", "-p", "/R", "-", stdin="").json == []
    result = kh("get", "--json", "-p", "/R", os.fsdecode(name))
    assert result.json[0]["values"][0]["value"] == "1"


@pytest.mark.skipif(not os.path.exists("/dev/full"), reason="there is no device that is always full")
def test_output_that_does_not_arrive_is_a_failure_to_write(kh):
    import subprocess

    from conftest import KH
    with open("/dev/full", "w") as full:
        process = subprocess.run([KH, "get", "product.xml", VERSION], cwd=kh.folder, stdout=full, stderr=subprocess.PIPE)
    assert process.returncode == 4
    assert process.stderr == b"kh: standard output cannot be written\n"
