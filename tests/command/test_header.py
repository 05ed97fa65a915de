"""kh header: showing, setting and making the fixed header."""

import pytest
from conftest import HEADER


def test_shows_the_items_in_their_order(kh):
    lines = kh("header", "show", "product.xml").lines
    assert lines[0] == "File_Name\tQQ_OPER_ORBIT_20260101_20260102_0001"
    assert lines[2] == "Notes\t"
    assert lines[8] == "File_Version\t1"
    assert [line.split("\t")[0] for line in lines[9:]] == ["KVSTD_Version", "System", "Creator", "Creator_Version",
                                                          "Creation_Date"]


def test_shows_single_items_of_several_files(kh):
    assert kh("header", "show", "-i", "Mission", "-i", "File_Version", "product.xml", "other.xml").lines == [
        "product.xml\tMission\tQuarvosk", "product.xml\tFile_Version\t1",
        "other.xml\tMission\tQuarvosk", "other.xml\tFile_Version\t2"]


def test_shows_the_header_as_json(kh):
    element = kh("header", "show", "--json", "product.xml").json[0]
    assert element["path"] == HEADER
    assert element["header"]["File_Version"] == 1
    assert element["header"]["Notes"] == ""
    assert len(element["header"]) == 14


def test_an_item_that_the_header_lacks_is_not_taken_from_elsewhere(kh):
    text = kh.read("product.xml").replace("      <Notes/>\n", "").replace("<Remark/>", "<Notes>of an item</Notes>")
    kh.write("product.xml", text)
    assert kh("header", "show", "-i", "Notes", "product.xml").out == ""
    assert kh("header", "show", "--json", "-i", "Notes", "product.xml").json[0]["header"] == {"Notes": None}
    assert kh("header", "set", "-s", "Notes=new", "product.xml", code=1).err == "product.xml: the header has no Notes\n"
    assert kh.read("product.xml") == text


def test_a_file_without_header_is_told(kh):
    kh.write("plain.xml", "<Root/>")
    assert kh("header", "show", "plain.xml", code=1).err == "plain.xml: no header\n"
    assert kh("header", "set", "-s", "Notes=new", "plain.xml", code=1).err == "plain.xml: no header\n"


def test_sets_items_and_nothing_else(kh):
    before = kh.read("product.xml")
    kh("header", "set", "-s", "Notes=R&D <1>", "-s", "File_Version=12", "product.xml")
    assert kh.read("product.xml") == before.replace("<Notes/>", "<Notes>R&amp;D &lt;1&gt;</Notes>").replace(
        ">0001<", ">0012<")


@pytest.mark.parametrize("item", ["Nothing=1", "Notes", "File_Version=x", "File_Version=", "File_Version=12345678901"])
def test_what_is_no_item_is_a_wrong_usage(kh, item):
    before = kh.read("product.xml")
    assert kh("header", "set", "-s", item, "product.xml", code=2).err.startswith("kh: ")
    assert kh.read("product.xml") == before
    kh("header", "set", "product.xml", code=2)
    kh("header", "show", "-i", "Nothing", "product.xml", code=2)


def test_a_value_that_would_be_cut_is_refused(kh):
    before = kh.read("product.xml")
    kh("header", "set", "-s", "Notes=" + 600 * "x", "product.xml", code=4)
    kh("header", "set", "-s", "Notes=a\x01b", "product.xml", code=4)
    assert kh.read("product.xml") == before


def test_a_dry_run_shows_and_changes_nothing(kh):
    before = kh.read("product.xml")
    result = kh("header", "set", "-n", "-s", "Mission=Draskuil", "-s", "Creator=orbits", "product.xml")
    assert result.lines == [f"-\tproduct.xml\t{HEADER}/Mission\tQuarvosk", f"+\tproduct.xml\t{HEADER}/Mission\tDraskuil"]
    assert kh.read("product.xml") == before


def test_a_backup_keeps_the_old_file(kh):
    before = kh.read("product.xml")
    kh("header", "set", "-b", ".old", "-s", "Mission=Draskuil", "product.xml")
    assert kh.read("product.xml.old") == before
    assert "Draskuil" in kh.read("product.xml")


def test_a_file_without_a_change_is_left_alone(kh):
    before = kh.state("product.xml")
    kh("header", "set", "-b", ".old", "-s", "Mission=Quarvosk", "product.xml")
    assert kh.state("product.xml") == before
    assert not kh.path("product.xml.old").exists()


@pytest.mark.parametrize("type, version, root", [
    ("eof", 3, "Earth_Observation_File"), ("klv", 2, "Orvanto_File"),
    ("hdr", 3, "Earth_Observation_Header"), ("hdr", 1, "Orvanto_Header")])
def test_makes_a_file_with_a_header(kh, type, version, root):
    kh("header", "create", "-t", type, "-f", version, "-s", "Creator=kh", "new.xml")
    assert kh.read("new.xml").startswith(f'<?xml version="1.0"?>\n<{root}>\n')
    items = kh("header", "show", "--json", "new.xml").json[0]["header"]
    assert items["Creator"] == "kh"
    assert (items["KVSTD_Version"] is not None) == (version == 3)


def test_gives_a_file_a_header(kh):
    kh.write("body.xml", "<Orvanto_File>\n  <Data_Block/>\n</Orvanto_File>\n")
    kh("header", "create", "body.xml")
    assert kh("header", "show", "-i", "File_Name", "body.xml").lines == ["File_Name\t"]
    assert "<Data_Block/>" in kh.read("body.xml")


def test_a_second_header_is_refused(kh):
    before = kh.read("product.xml")
    assert kh("header", "create", "-f", 3, "product.xml", code=4).err == "product.xml: has a header already\n"
    kh.write("plain.xml", "<Root/>")
    kh("header", "create", "plain.xml", code=4)
    assert (kh.read("product.xml"), kh.read("plain.xml")) == (before, "<Root/>")


def test_a_file_that_cannot_be_written_is_told(kh):
    assert kh("header", "create", "nowhere/new.xml", code=4).err == (
        "nowhere/new.xml: No such file or directory; the file is as it was\n")


def test_a_dry_run_makes_no_file(kh):
    kh("header", "create", "-n", "new.xml")
    assert not kh.path("new.xml").exists()
