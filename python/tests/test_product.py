"""The fixed header and the names of product files."""

import dataclasses
import pathlib

import kalv
import pytest
from conftest import cases, code_of
from kalv import file_name

HEADER = kalv.FixedHeader(
    file_name="QH1_OPER_AUXDATA_2031",
    file_description="A description",
    notes="Notes",
    mission="QH1",
    file_class="OPER",
    file_type="AUXDATA",
    validity_start="UTC=2031-01-01T00:00:00",
    validity_stop="UTC=2031-01-02T00:00:00",
    file_version=3,
    system="PDS",
    creator="tests",
    creator_version="1.0",
    creation_date="UTC=2031-01-03T00:00:00",
    header_type=20 + file_name.Extension.EOF,
)


@pytest.fixture
def doc():
    doc = kalv.XmlFile().create()
    doc.create_header(HEADER)
    return doc


def test_a_header_reads_back(doc):
    assert dataclasses.replace(doc.header, header_type=HEADER.header_type, file_type="AUXDATA") == HEADER
    assert doc.header.file_type.strip() == "AUXDATA"  # written ten characters wide
    again = kalv.XmlFile.from_bytes(doc.to_bytes())
    assert again.header == doc.header
    assert again.get_fixed_header_item("Mission") == "QH1"
    assert again.get_fixed_header_item("File_Version") == "3"


def test_the_skeleton_alone():
    doc = kalv.XmlFile().create()
    doc.create_header(HEADER.header_type)
    assert doc.current_element_name() == "Variable_Header"
    assert doc.header == kalv.FixedHeader()


def test_setting_a_header(doc):
    doc.header = dataclasses.replace(HEADER, notes="Other notes", file_version=2**31 - 1)
    assert doc.header.notes == "Other notes"
    assert doc.header.file_version == 2**31 - 1
    doc.set_fixed_header_item("Notes", "More")
    assert doc.header.notes == "More"


def test_a_second_header_warns(doc):
    with pytest.warns(kalv.KalvWarning) as caught:
        doc.create_header(HEADER.header_type)
    assert caught[0].message.code == kalv.Status.WARN_HEADER_EXISTS


def test_an_item_that_is_cut_warns(doc):
    with pytest.warns(kalv.KalvWarning, match="exceeds"):
        doc.header = dataclasses.replace(HEADER, notes="x" * 600)
    assert doc.header.notes == "x" * 510
    with pytest.warns(kalv.KalvWarning, match="exceeds"):
        doc.set_fixed_header_item("Notes", "y" * 600)


def test_what_is_no_header(doc):
    for wrong in ("24", None, 2.5):
        with pytest.raises(TypeError):
            doc.create_header(wrong)
    for change in ({"notes": 5}, {"file_version": "5"}):
        with pytest.raises(TypeError, match="FixedHeader"):
            doc.header = dataclasses.replace(HEADER, **change)
    with pytest.raises(ValueError, match="null"):
        doc.header = dataclasses.replace(HEADER, notes="a\0b")
    assert doc.header.notes == "Notes"
    assert code_of(lambda: kalv.XmlFile().create().create_header(22)) == kalv.Status.ERR_NO_HEADER_TYPE


def test_a_header_that_makes_its_items(doc):
    class Made(kalv.FixedHeader):
        @property
        def notes(self):
            return "made " * 50

        @notes.setter
        def notes(self, text):
            pass

    doc.header = Made()
    assert doc.header.notes == "made " * 50


@pytest.mark.parametrize("name, parts, satellite, texts", cases("file_names"))
def test_split(name, parts, satellite, texts):
    items = texts.replace("(untouched)", "").split("|")
    assert file_name.split(name) == (satellite, *items)
    assert file_name.split(pathlib.Path("/data", name)) == (satellite, *items)


@pytest.mark.parametrize("extension, text", cases("extensions"))
def test_compose(extension, text):
    assert file_name.compose(91, "ABCD", "TYPEA", "INST", extension) == "QH1_ABCD_TYPEA_INST" + text


def test_compose_takes_the_extension_of_the_satellite():
    for satellite in (41, 91, 112, 147):
        extension = file_name.extension_of(satellite)
        assert file_name.compose(satellite, "A", "B", "C").endswith("." + extension.name)


def test_names_that_are_too_long():
    assert code_of(lambda: file_name.compose(91, "ABCDE", "T", "I")) == kalv.Status.WARN_LENGTH
    assert code_of(lambda: file_name.compose(91, "ABCD", "t" * 10, "i" * 42, 0)) == kalv.Status.ERR_FILE_NAME_LENGTH
    assert code_of(lambda: file_name.split("x" * 65)) == kalv.Status.ERR_FILE_NAME_LENGTH


def test_satellites():
    assert file_name.satellite_id("none of them") == 400


def test_extensions_are_the_library_s():
    text = (pathlib.Path(__file__).parents[2] / "include" / "kalv" / "product.h").read_text()
    for extension in file_name.Extension:
        assert f"KH_EXTENSION_{extension.name} = {extension.value}" in text
