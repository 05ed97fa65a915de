"""What all commands share that work on many files: the list, the filter, failures, threads, exit codes."""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

import pytest
from conftest import DATA, HEADER, KH, SAMPLES, Kh

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
    with open("/dev/full", "w") as full:
        process = subprocess.run([KH, "get", "product.xml", VERSION], cwd=kh.folder, stdout=full, stderr=subprocess.PIPE)
    assert process.returncode == 4
    assert process.stderr == b"kh: standard output cannot be written\n"


def test_help_that_does_not_arrive_is_a_failure_to_write(kh):
    assert run_in_shell(kh, '"$KH" help > /dev/full').returncode == 4


def run_in_shell(kh, script, **who):
    return subprocess.run(["bash", "-c", script], cwd=kh.folder, capture_output=True, encoding="utf-8", timeout=100,
                          env={**os.environ, "KH": KH}, **who)


def test_closed_streams_are_told_and_harm_no_file(kh):
    before = kh.read("product.xml")
    result = run_in_shell(kh, '"$KH" ls - <&-')
    assert (result.returncode, result.stderr) == (3, "kh: the list on standard input cannot be read\n")
    assert run_in_shell(kh, '"$KH" ls product.xml >&-').returncode == 4
    assert run_in_shell(kh, f'"$KH" set -v product.xml {DATA}/@type=csv <&- >&- 2>&-').returncode == 4
    assert kh.read("product.xml") == before.replace('"xml"', '"csv"')


def test_a_reader_that_goes_away_ends_the_work_silently(kh):
    kh.write("list", 3000 * "product.xml\n")
    result = run_in_shell(kh, '"$KH" ls - < list | head -n 1; echo ${PIPESTATUS[0]}')
    assert result.stdout == "product.xml\t/Earth_Observation_File\t\n141\n"
    assert result.stderr == ""


def test_edits_are_completed_even_where_nobody_reads(kh):
    names = [kh.write(f"{n}.xml", "<r><a/></r>") for n in range(300)]
    result = run_in_shell(kh, '"$KH" set -v -s /r/a=' + 1000 * "x" + ' {0..299}.xml | true; echo ${PIPESTATUS[0]}')
    assert result.stdout == "4\n"
    assert all(kh.read(name).count("x") > 1000 for name in names)


@pytest.mark.parametrize("interruption", [signal.SIGINT, signal.SIGTERM])
def test_an_interrupted_edit_completes_its_file_and_begins_no_other(kh, interruption):
    for name in ("first.xml", "last.xml"):
        kh.write(name, "<r><a>1</a></r>")
    os.mkfifo(kh.path("slow.xml"))
    process = subprocess.Popen([KH, "set", "-w", "/r/a=1", "-s", "/r/a=2", "first.xml", "slow.xml", "last.xml"],
                               cwd=kh.folder)
    with open(kh.path("slow.xml"), "w") as slow: # returns when the command has opened the other end
        saved = os.open(kh.path("slow.xml"), os.O_RDONLY | os.O_NONBLOCK)
        process.send_signal(interruption)
        slow.write("<r><a>1</a></r>")
    assert process.wait(timeout=100) == -interruption
    assert "<a>2</a>" in os.read(saved, 1000).decode()
    os.close(saved)
    assert kh.value("first.xml", "/r/a") == "2" and kh.value("last.xml", "/r/a") == "1"
    assert not [path for path in kh.folder.iterdir() if path.name.startswith(".")]


@pytest.mark.parametrize("name, told", [
    ("a b.xml", "a b.xml"), ("a\nb.xml", "a\\nb.xml"), ("\x1b[31m.xml", "\\x1b[31m.xml"), ("-n.xml", "-n.xml"),
    ("\u2200.xml", "\u2200.xml"), ("a\\b.xml", "a\\\\b.xml")])
def test_any_file_name_will_do(kh, name, told):
    kh.write(name, kh.read("product.xml"))
    assert kh("get", "-p", f"{DATA}/@type", "--", name, "product.xml").lines == [f"{told}\txml", "product.xml\txml"]
    assert kh("get", "--json", "-p", "/none", "--", name, code=1).json[0]["file"] == name
    assert kh("get", "-p", "/none", "--", name, code=1).err == told.replace("\\\\", "\\") + ": /none: not found\n"


def test_an_empty_name_is_told(kh):
    assert kh("info", "", code=3).err == "kh: a file has no empty name\n"


def test_the_same_file_may_be_given_twice(kh):
    assert kh("get", "-j", "2", "-p", f"{DATA}/@type", "product.xml", "product.xml").lines == 2 * ["product.xml\txml"]
    kh("set", "-j", "2", "-s", f"{DATA}/@type=csv", "product.xml", "product.xml")
    assert kh.value("product.xml", f"{DATA}/@type") == "csv"


def test_a_link_stays_a_link(kh):
    os.symlink("product.xml", kh.path("link.xml"))
    kh("set", "link.xml", f"{DATA}/@type=csv")
    assert os.readlink(kh.path("link.xml")) == "product.xml"
    assert kh.value("product.xml", f"{DATA}/@type") == "csv"


NOBODY = 65534


@pytest.fixture
def nobody():
    """Somebody who may do less than the superuser, in a folder that everybody reaches; runs kh, tells code and lines."""
    who = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
    if os.geteuid() != 0:
        pytest.skip("only the superuser can become somebody else")
    with tempfile.TemporaryDirectory(dir="/tmp") as folder:
        os.chmod(folder, 0o755)
        os.chown(folder, NOBODY, NOBODY)
        kh = Kh(pathlib.Path(folder))
        for sample in SAMPLES.iterdir():
            shutil.copy(sample, folder)
        if run_in_shell(kh, '"$KH" --version', **who).returncode != 0:
            pytest.skip("the command lies where only the superuser reaches it")

        def run(*arguments):
            result = run_in_shell(kh, '"$KH" ' + " ".join(arguments), **who)
            return result.returncode, result.stderr.splitlines()

        yield kh, run


def test_what_permissions_forbid_is_told_with_the_reason(nobody):
    kh, told = nobody
    os.makedirs(kh.path("closed"))
    kh.write("closed/in.xml", kh.read("product.xml"))
    for path in kh.folder.rglob("*"):
        os.chown(path, NOBODY, NOBODY)
    os.chmod(kh.path("closed"), 0o555)
    os.chmod(kh.path("product.xml"), 0o444)
    os.chmod(kh.path("other.xml"), 0o000)
    before = kh.read("product.xml")

    assert told("info other.xml") == (3, ["other.xml: Permission denied"])
    assert told(f"set product.xml {DATA}/@type=csv") == (4, ["product.xml: Permission denied; the file is as it was"])
    code, lines = told(f"set closed/in.xml {DATA}/@type=csv")
    assert code == 4 and lines[0].startswith("closed/in.xml: cannot be replaced as a whole: ")
    assert lines[0].endswith("/closed: Permission denied")
    assert told("header create closed/new.xml") == (4, ["closed/new.xml: Permission denied; the file is as it was"])
    assert told(f"get -k -p {DATA}/@type other.xml product.xml")[0] == 3
    assert kh.read("product.xml") == kh.read("closed/in.xml") == before
