"""Files that Debian ships, held against what Python's own parser says of them."""

import collections
import functools
import os
import re
import xml.etree.ElementTree

import pytest

# Each with an element or attribute that is edited, and the name of many elements.
REAL = {
    "/usr/share/X11/xkb/rules/base.xml":
        ("/xkbConfigRegistry/layoutList/layout[2]/configItem/description", "layout"),
    "/usr/share/mime/packages/freedesktop.org.xml": ("/mime-info/mime-type[3]/comment[1]", "mime-type"),
    "/usr/share/xml/iso-codes/iso_3166-1.xml": ("/iso_3166_entries/iso_3166_entry[2]/@name", "iso_3166_entry"),
}


@pytest.fixture(params=REAL, ids=os.path.basename)
def real(request):
    if not os.path.exists(request.param):
        pytest.skip("the file's package is not installed")
    return request.param


@functools.lru_cache(maxsize=None)
def canonical(text, **options):
    """What a file says, whatever its quotes, attributes' order and line ends in tags."""
    return xml.etree.ElementTree.canonicalize(text, with_comments=True, **options)


def read(file):
    with open(file, encoding="utf-8") as stream:
        return stream.read()


def doctype(text):
    """What a document type declares; each attribute may have a list of its own."""
    found = re.search(r"<!DOCTYPE[^\[>]*(\[.*?\])?\s*>", text, re.DOTALL)
    return re.sub(r"\s|>|<!ATTLIST\s+\S+", "", found[0]).replace("'", '"') if found else None


def test_all_elements_are_listed_and_found(kh, real):
    names = collections.Counter(element.tag.split("}")[-1] for element in xml.etree.ElementTree.parse(real).iter())
    told = kh("info", "--json", "--names", real).json[0]
    assert told["counts"]["elements"] == sum(names.values())
    paths = [line.split("\t")[0] for line in kh("ls", real).lines]
    assert collections.Counter(path.split("/")[-1].split("[")[0] for path in paths) == names
    assert len(set(paths)) == len(paths)
    name = REAL[real][1]
    assert len(kh("find", "--name", name, real).lines) == names[name] > 50


def test_an_edit_changes_one_value_and_nothing_else(kh, real):
    before = read(real)
    kh.write("real.xml", before)
    path = REAL[real][0]
    old = kh("get", "-0", "real.xml", path).out.rstrip("\0")
    kh("set", "real.xml", f"{path}=Changed")
    edited = kh.read("real.xml")
    assert canonical(edited) != canonical(before)
    differences = kh("diff", "--json", real, "real.xml", code=1).json[0]["differences"]
    assert differences == [{"kind": "changed", "path": path, "before": old, "after": "Changed"}]
    kh("set", "real.xml", f"{path}={old}")
    after = kh.read("real.xml")
    assert canonical(after) == canonical(before)
    assert doctype(after) == doctype(before)
    assert len([1 for pair in zip(edited.splitlines(), after.splitlines()) if pair[0] != pair[1]]) == 1
    assert len(edited.splitlines()) == len(after.splitlines())


def test_a_file_survives_dump_and_load(kh, real):
    kh.write("dump.json", kh("dump", real).out)
    kh("load", "dump.json", "back.xml")
    assert canonical(kh.read("back.xml")) == canonical(read(real))
    kh.write("again.json", kh("dump", "back.xml").out)
    kh("load", "again.json", "twice.xml")
    assert kh.read("twice.xml") == kh.read("back.xml")


def test_indentation_changes_blanks_alone(kh, real):
    kh.write("real.xml", read(real))
    kh("fmt", "--indent", "3", "real.xml")
    kh("fmt", "--check", "--indent", "3", "real.xml")
    assert canonical(kh.read("real.xml"), strip_text=True) == canonical(read(real), strip_text=True)
    assert kh.read("real.xml") != read(real)


def test_a_file_that_is_broken_is_told_with_its_place(kh):
    broken = "/usr/share/xml/iso-codes/iso_3166-2.xml"
    if not os.path.exists(broken):
        pytest.skip("iso-codes is not installed")
    try:
        xml.etree.ElementTree.parse(broken)
    except xml.etree.ElementTree.ParseError as error:
        assert kh("info", broken, code=3).err.startswith(f"{broken}:{error.position[0]}:")
    else:
        kh("info", broken)
