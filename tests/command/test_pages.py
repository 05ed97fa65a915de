"""The manual pages and the completion, which kh writes from what its commands say of themselves."""

import os
import pty
import select
import shutil
import subprocess
import time

import pytest
from conftest import DATA, KH, commands


def offered(kh, line, behind=""):
    """What is offered at the end of a line; the shell's word is what stands behind the last blank."""
    result = kh("--complete", line, behind, line.split(" ")[-1])
    assert result.lines[0] in ("files", "words")
    return "files" if result.lines[0] == "files" else result.lines[1:]


@pytest.mark.parametrize("line, offer", [
    ("kh he", ["header", "help"]), ("kh header s", ["show", "set"]), ("kh get ", "files"),
    ("kh get --js", ["--json"]), ("kh ls --color ", ["auto", "always", "never"]), ("kh ls -j ", []),
    ("kh get product.xml /", ["/Earth_Observation_File/"]),
    ("kh get product.xml /Earth_Observation_File/D", ["/Earth_Observation_File/Data_Block/"]),
    (f"kh get product.xml {DATA}/List/I", [f"{DATA}/List/Item[*]/"] + [f"{DATA}/List/Item[{i}]/" for i in (1, 2, 3)]),
    (f"kh get product.xml {DATA}/List/Item[*]/H", [f"{DATA}/List/Item[*]/Height"]),
    (f"kh get product.xml {DATA}/@", [f"{DATA}/@type"]),
    ("kh ls product.xml -p Data_Block/@type,Data_Block/L", ["Data_Block/@type,Data_Block/List/"]),
    ("kh get -p /a ", "files"), ("kh cp other.xml /Earth_Observation_File/D", ["/Earth_Observation_File/Data_Block/"]),
    ("kh cp other.xml /a ", "files"), ("kh set product.xml /a=", []), ("kh name compose ", []),
    ("kh get none.xml /", []), ("kh nothing ", []), ("kh get 'product.xml' \"/Earth_Observation_File/D", ["/Earth_Observation_File/Data_Block/"]),
])
def test_what_is_offered(kh, line, offer):
    assert offered(kh, line) == offer


def test_a_file_behind_the_cursor_serves_too(kh):
    assert offered(kh, "kh get -p /", " product.xml") == ["/Earth_Observation_File/"]


def test_the_shell_gets_only_what_it_replaces(kh):
    line = "kh set -s Data_Block/@type=x --color=a"
    assert kh("--complete", line, "", "a").lines == ["words", "auto", "always"]
    line = "kh get product.xml /Earth_Observation_File/Data_Block/@ty"
    assert kh("--complete", line, "", "@ty").lines == ["words", "@type"]
    line = "kh ls -p Data_Block/@type:i,Data_Block/L"
    assert kh("--complete", line, " product.xml", "i,Data_Block/L").lines == ["words", "i,Data_Block/List/"]
    line = "kh ls --color=a"
    assert kh("--complete", line, "", "a").lines == ["words", "auto", "always"]
    assert kh("--complete", line, "", line.split()[-1]).lines == ["words", "--color=auto", "--color=always"]


@pytest.fixture(scope="module")
def pages(tmp_path_factory):
    folder = tmp_path_factory.mktemp("pages")
    subprocess.run([KH, "--write-pages", folder], check=True)
    return folder


@pytest.mark.skipif(not shutil.which("bash"), reason="there is no bash")
def test_bash_completes_paths_as_they_are_typed(kh, pages):
    process, descriptor = pty.fork()
    if process == 0:
        os.chdir(kh.folder)
        os.execvpe("bash", ["bash", "--norc", "--noprofile", "-i"],
                   {**os.environ, "TERM": "dumb", "PS1": "ready> ", "PATH": os.path.dirname(KH) + ":" + os.environ["PATH"]})

    def read_until(text):
        output = ""
        limit = time.monotonic() + 60
        while text not in output and time.monotonic() < limit:
            if select.select([descriptor], [], [], 0.2)[0]:
                output += os.read(descriptor, 65536).decode()
        assert text in output
        return output

    read_until("ready> ")
    os.write(descriptor, f". {pages}/bash-completion/completions/kh\n".encode())
    read_until("ready> ")
    os.write(descriptor, b"kh get product.xml /Ea\tData\t@t\t\n")
    assert "xml" in read_until("ready> ").splitlines()
    os.write(descriptor, b"exit\n")
    os.close(descriptor)
    os.waitpid(process, 0)


def test_every_command_has_a_page(pages):
    names = {"kh.1"} | {f"kh-{command['name'].replace(' ', '-')}.1" for command in commands()}
    assert {page.name for page in (pages / "man" / "man1").iterdir()} == names


@pytest.mark.skipif(not shutil.which("man"), reason="there is no man")
def test_pages_are_shown_without_a_warning(pages):
    for page in (pages / "man" / "man1").iterdir():
        shown = subprocess.run(["man", "--warnings", "-l", page], capture_output=True, encoding="utf-8",
                               env={**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8"})
        assert shown.returncode == 0 and shown.stderr == "", page
        assert "EXIT STATUS" in shown.stdout


def test_pages_say_what_help_says(kh, pages):
    for command in commands():
        text = (pages / "man" / "man1" / f"kh-{command['name'].replace(' ', '-')}.1").read_text()
        plain = text.replace("\\-", "-").replace("\\e", "\\").replace("\\&", "")
        assert command["summary"] in plain
        for example in command["examples"]:
            assert example in plain
