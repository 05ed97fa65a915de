"""kh info, ls and find: what a file is, and what stands in it."""

import gzip
import os
import pty
import select

import pytest
from conftest import DATA, HEADER, KH

ODD = """<?xml version="1.0" encoding="ISO-8859-1" standalone="yes"?>
<!DOCTYPE r [
<!ENTITY e "text">
]>
<!--top--><?go on?>
<r xmlns="urn:u" xmlns:p="urn:v" a="x&amp;y&e;"><p:a/><a>one<![CDATA[<two>]]><!--c-->&e;</a><b><c/></b></r>
"""


def facts(kh, name):
    return dict(line.split("\t") for line in kh("info", name).lines)


def test_info_tells_the_kind_of_file(kh):
    kh("header", "create", "-t", "hdr", "new.HDR")
    kh.write("plain.xml", "<a><b><c><Fixed_Header/></c></b></a>")
    result = kh("info", "--json", "product.xml", "new.HDR", "plain.xml").json
    assert [element["kind"] for element in result] == ["product", "header", "XML"]


def test_info_counts(kh):
    result = kh("info", "--names", "--json", "product.xml").json[0]
    assert result["bytes"] == kh.path("product.xml").stat().st_size
    assert result["counts"] == {"elements": 33, "attributes": 9, "texts": 19, "comments": 2, "instructions": 0,
                                "references": 0, "names": 26, "depth": 5}
    assert result["elements"]["Item"] == 3
    assert sum(result["elements"].values()) == 33


def test_info_tells_what_a_document_declares(kh):
    kh.write("odd.xml", ODD)
    told = facts(kh, "odd.xml")
    assert told["encoding"] == "ISO-8859-1"
    assert (told["version"], told["standalone"], told["doctype"], told["root"]) == ("1.0", "yes", "r", "r")
    assert told["namespace"] == "urn:u"
    assert (told["texts"], told["comments"], told["instructions"], told["references"]) == ("2", "2", "1", "1")


def test_info_tells_the_schema(kh):
    kh.write("s.xml", '<r xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:schemaLocation="u s.xsd" '
                      'schemaVersion="1.2"/>')
    told = facts(kh, "s.xml")
    assert (told["schema"], told["schema_version"]) == ("u s.xsd", "1.2")


def test_info_tells_of_compression(kh):
    with gzip.open(kh.path("big.xml.gz"), "wb") as file:
        file.write(kh.read("product.xml").replace("<Notes/>", "<Notes>" + 20000 * "x" + "</Notes>").encode())
    kh.write("plain.xml", "<r/>")
    told = kh("info", "--json", "big.xml.gz", "plain.xml").json
    assert [element.get("compressed") for element in told] == ["yes", None]


def test_info_of_several_files_begins_lines_with_the_file(kh):
    assert kh("info", "product.xml", "other.xml").lines[0] == "product.xml\tkind\tproduct"


def test_ls_prints_paths_and_values_in_a_pipe(kh):
    lines = kh("ls", "product.xml").lines
    assert lines[0] == "/Earth_Observation_File\t"
    assert f"{DATA}/List/Item[2]/Orbit\t1002" in lines
    assert f"{HEADER}/Notes\t" in lines
    assert len(lines) == 33


def test_every_path_that_ls_prints_leads_to_its_value(kh):
    kh.write("odd.xml", ODD)
    for name in ("product.xml", "odd.xml"):
        for element in kh("ls", "--json", name).json[0]["elements"]:
            if "value" in element and "&" not in element["value"]:
                assert kh.value(name, element["path"]) == element["value"]


def test_ls_numbers_elements_of_one_name_whatever_their_prefix(kh):
    kh.write("odd.xml", ODD)
    elements = kh("ls", "--json", "-a", "odd.xml").json[0]["elements"]
    assert [(element["path"], element["name"], element.get("value")) for element in elements] == [
        ("/r", "r", None), ("/r/a[1]", "p:a", ""), ("/r/a[2]", "a", "one<two>&e;"), ("/r/b", "b", None),
        ("/r/b/c", "c", "")]
    assert elements[0]["attributes"] == {"xmlns": "urn:u", "xmlns:p": "urn:v", "a": "x&y&e;"}
    assert elements[0]["line"] == 6


def test_ls_lists_attributes_when_asked(kh):
    lines = kh("ls", "-a", "--at", f"{DATA}/List/Item[1]", "product.xml").lines
    assert lines == [f"{DATA}/List/Item[1]\t", f"{DATA}/List/Item[1]/@id\ta", f"{DATA}/List/Item[1]/Orbit\t1001",
                     f"{DATA}/List/Item[1]/Height\t701.5", f"{DATA}/List/Item[1]/Height/@unit\tkm",
                     f"{DATA}/List/Item[1]/Remark\tfirst & best"]


@pytest.mark.parametrize("depth, count", [(0, 1), (1, 3), (2, 6), (3, 19)])
def test_ls_goes_as_deep_as_asked(kh, depth, count):
    assert len(kh("ls", "--depth", depth, "product.xml").lines) == count


def test_ls_begins_where_asked(kh):
    assert [line.split("\t")[0] for line in kh("ls", "--at", f"{DATA}/List/Item[*]", "-d", 0, "product.xml").lines] == [
        f"{DATA}/List/Item[1]", f"{DATA}/List/Item[2]", f"{DATA}/List/Item[3]"]
    assert kh("ls", "--at", "/Nothing", "product.xml", code=1).err == "product.xml: /Nothing: not found\n"


def test_ls_shows_a_tree(kh):
    assert kh("ls", "--tree", "-a", "--at", f"{DATA}/List/Item[2]", "product.xml").lines == [
        "Item @id=b\t", "  Orbit\t1002", "  Height @unit=km\t702.25", "  Remark\t"]
    assert kh("ls", "--tree", "-d", 0, "product.xml", "other.xml").lines == [
        "product.xml", "  Earth_Observation_File\t", "other.xml", "  Earth_Observation_File\t"]
    kh("ls", "--tree", "--table", "product.xml", code=2)


def test_ls_makes_a_table_with_a_line_a_file(kh):
    assert kh("ls", "-p", f"{HEADER}/File_Version:i,Data_Block/List/@count:r,@none", "product.xml", "other.xml").lines == [
        "product.xml\t1\t3\t-", "other.xml\t2\t3\t-"]


def test_ls_makes_a_table_with_a_line_an_element(kh):
    arguments = ["ls", "--at", f"{DATA}/List/Item[*]", "-p", "@id,Orbit:i", "-p", "Height:r,Remark", "product.xml"]
    assert kh(*arguments).lines == ["product.xml\ta\t1001\t701.5\tfirst & best", "product.xml\tb\t1002\t702.25\t",
                                    "product.xml\tc\t1003\t703125\t-"]
    rows = kh(*arguments, "--json").json[0]["rows"]
    assert rows[2] == {"path": f"{DATA}/List/Item[3]",
                       "values": {"@id": "c", "Orbit:i": 1003, "Height:r": 703125.0, "Remark": None}}


def test_find_by_name_and_value(kh):
    assert kh("find", "--name", "Orbit", "product.xml").lines == [
        f"{DATA}/List/Item[{i}]/Orbit\t100{i}" for i in (1, 2, 3)]
    assert kh("find", "--name", "Orb*", "--value", "2002", "product.xml", "other.xml").lines == [
        f"other.xml\t{DATA}/List/Item[2]/Orbit\t2002"]
    assert kh("find", "--contains", "best", "product.xml").lines == [f"{DATA}/List/Item[1]/Remark\tfirst & best"]
    assert kh("find", "--regex", "^70[12]", "product.xml").lines == [
        f"{DATA}/List/Item[1]/Height\t701.5", f"{DATA}/List/Item[2]/Height\t702.25"]
    assert kh("find", "--name", "Remark", "--value", "", "product.xml").lines == [f"{DATA}/List/Item[2]/Remark\t"]


def test_find_tells_the_line_in_json(kh):
    match = kh("find", "--json", "--name", "List", "product.xml").json[0]["matches"][0]
    assert match == {"path": f"{DATA}/List", "line": 28, "value": None}


def test_find_finds_attributes_when_asked(kh):
    kh("find", "--name", "unit", "product.xml", code=1)
    assert kh("find", "-a", "--name", "unit", "--value", "m", "product.xml").lines == [
        f"{DATA}/List/Item[3]/Height/@unit\tm"]


def test_find_stops_at_the_first_and_begins_where_asked(kh):
    assert len(kh("find", "-1", "-a", "--regex", ".", "product.xml").lines) == 1
    assert kh("find", "--at", f"{DATA}/List/Item[2]", "--name", "Orbit", "product.xml").lines == [
        f"{DATA}/List/Item[2]/Orbit\t1002"]


def test_find_tells_by_its_code_whether_anything_was_found(kh):
    assert kh("find", "--name", "Nothing", "product.xml", code=1).out == ""
    assert kh("find", "--value", "2001", "product.xml", "other.xml").err == ""
    assert kh("find", "--regex", "(", "product.xml", code=2).err.startswith("kh: not a regular expression: (")


def test_a_broken_file_is_told_with_line_and_column(kh):
    kh.write("broken.xml", "<a>\n  <b></c>\n</a>\n")
    message = kh("info", "broken.xml", code=3).err
    assert message.startswith("broken.xml:2:")
    assert message.split(":")[2].isdigit()
    error = kh("info", "--json", "broken.xml", code=3).json[0]["error"]
    assert (error["line"], error["code"]) == (2, 3) and error["column"] > 1


class Terminal:
    """Runs kh on a pseudo-terminal."""

    def __init__(self, kh):
        self.folder = kh.folder

    def __call__(self, *arguments, env=None, wait=60):
        process, descriptor = pty.fork()
        if process == 0:
            os.chdir(self.folder)
            os.execve(KH, [KH, *map(str, arguments)], {**os.environ, "TERM": "xterm", **(env or {})})
        output = b""
        while select.select([descriptor], [], [], wait)[0]:
            try:
                piece = os.read(descriptor, 65536)
            except OSError:
                break
            if not piece:
                break
            output += piece
        os.close(descriptor)
        os.waitpid(process, 0)
        return output.decode().replace("\r\n", "\n")


@pytest.fixture
def terminal(kh):
    return Terminal(kh)


def test_a_terminal_gets_an_aligned_table_with_titles(terminal):
    lines = terminal("ls", "--at", f"{DATA}/List/Item[*]", "-p", "@id,Orbit:i,Height:r", "product.xml",
                     "--color", "never").splitlines()
    assert lines == ["file         @id  Orbit:i  Height:r",
                     "product.xml  a       1001     701.5",
                     "product.xml  b       1002    702.25",
                     "product.xml  c       1003    703125"]


def test_a_terminal_gets_a_tree(terminal):
    lines = terminal("ls", "--at", f"{DATA}/List/Item[2]", "product.xml", "--color", "never").splitlines()
    assert [line.rstrip() for line in lines] == ["element   value", "Item", "  Orbit   1002", "  Height  702.25",
                                                 "  Remark"]


def test_a_terminal_gets_colour_unless_it_is_unwanted(terminal, kh):
    arguments = ["header", "show", "-i", "Mission", "product.xml"]
    assert "\x1b[36mMission\x1b[0m" in terminal(*arguments)
    assert "\x1b" not in terminal(*arguments, env={"NO_COLOR": "1"})
    assert "\x1b" not in terminal(*arguments, env={"TERM": "dumb"})
    assert "\x1b" not in terminal(*arguments, "--color", "never")
    assert "\x1b" not in terminal(*arguments, "--json")
    assert kh(*arguments, "--color", "always").out == "\x1b[36mMission\x1b[0m\tQuarvosk\n"


def test_json_on_a_terminal_is_json(terminal):
    import json
    assert json.loads(terminal("get", "--json", "product.xml", "Data_Block/@type"))[0]["values"][0]["value"] == "xml"


def test_a_progress_bar_shows_itself_when_work_takes_long(terminal, kh):
    os.mkfifo(kh.path("slow.xml"))
    import threading
    import time

    def feed():
        with open(kh.path("slow.xml"), "w") as pipe:
            time.sleep(1.6)
            pipe.write("<r>1</r>")

    thread = threading.Thread(target=feed)
    thread.start()
    shown = terminal("get", "-p", "/r", "slow.xml", "slow2.xml")
    thread.join()
    assert "] 0/2 1 s slow.xml" in shown
    assert shown.replace("\r", "").split("\x1b[K")[-1].startswith("slow.xml\x1b[0m  1") or "1\n" in shown
    assert "0/2" not in terminal("get", "-p", "Data_Block/@type", "product.xml", "other.xml")
