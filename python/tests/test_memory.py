"""Nothing is left behind: neither memory, nor references, nor open documents."""

import gc
import os
import pathlib
import sys
import warnings

import kalv
import numpy
import pytest

PAGE = os.sysconf("SC_PAGE_SIZE")


def resident():
    return int(pathlib.Path("/proc/self/statm").read_text().split()[1]) * PAGE


def expect_no_growth(action, times, allowed=2_000_000):
    """Fails if the process grows by repeating an action, once it has what it needs."""
    for _ in range(times // 4 + 1):
        action()
    gc.collect()
    before = resident()
    for _ in range(times):
        action()
    gc.collect()
    assert resident() - before < allowed


@pytest.fixture
def doc():
    items = "".join(f"<Item id='{i}'><Value>{i}.5</Value><Name>name {i}</Name></Item>" for i in range(1000))
    return kalv.XmlFile.from_bytes(f"<R>{items}</R>".encode())


def test_documents(tmp_path):
    path = tmp_path / "file.xml"
    path.write_text("<R>" + "<Value>1.5</Value>" * 5000 + "</R>")

    def action():
        kalv.XmlFile(path)["/R/Value[7]"]
        kalv.XmlFile.from_bytes(path.read_bytes()).to_bytes()
        kalv.XmlFile().create().create_root("R")

    expect_no_growth(action, 200)  # a document that stayed would be 2 MB


@pytest.mark.parametrize("dtype", [float, int, str, object, "f4", "U3"])
def test_arrays(doc, dtype):
    path = "/R/Item[*]/@id"
    expect_no_growth(lambda: doc.values(path, dtype=dtype), 2000)  # an array that stayed would be 8 kB


def test_lists(doc):
    expect_no_growth(lambda: doc.get_path_array_as_string("/R/Item[*]/Name"), 500)


def test_single_values_and_elements(doc):
    def action():
        for item in doc.children("/R")[:20]:
            item["Name"], item.get_float("Value"), item.get_int("@id"), item.get("None"), "None" in item
        doc["/R/Item[3]/Name"] = "text"
        doc["/R/Item[3]/Value"] = 1.25

    expect_no_growth(action, 500)


def test_errors_and_warnings(doc):
    def action():
        for _ in range(20):
            with pytest.raises(kalv.KalvError):
                doc["/R/None"]
            with pytest.raises(kalv.KalvError):
                doc.values("/R/Item[*]/Name")
            with pytest.raises(kalv.KalvError):
                kalv.XmlFile("missing.xml")
            with pytest.raises(TypeError):
                doc["/R/Item"] = object()
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")
                doc.to_path("/R/../..")

    expect_no_growth(action, 200)


def test_headers():
    doc = kalv.XmlFile().create()
    doc.create_header(24)

    def action():
        doc.header = kalv.FixedHeader(notes="x" * 200, mission="QH1")
        assert doc.header.notes == "x" * 200

    expect_no_growth(action, 500)


def test_references(doc):
    path, value, data = "/R/Item[5]/Name", "some text", doc.to_bytes()
    counted = [path, value, data, doc, numpy.dtype(float), kalv.XmlFile, kalv.FixedHeader, kalv.KalvError, None]

    def action():
        doc[path] = value
        doc[path], doc.get(path), doc.get_str(path, value), doc.get("/R/None", value), path in doc
        doc.values("/R/Item[*]/Value")
        doc.element(path).get(".")
        assert doc.read_bytes(data) is doc
        with kalv.XmlFile.from_bytes(data) as other:
            other.close()
        with pytest.raises(kalv.KalvError):
            doc["/R/None"]

    action()
    before = [sys.getrefcount(each) for each in counted]
    for _ in range(100):
        action()
    after = [sys.getrefcount(each) for each in counted]
    assert all(abs(b - a) < 20 for a, b in zip(after, before))


def test_an_array_owns_its_block(doc):
    values = doc.values("/R/Item[*]/Value")
    assert not values.flags.owndata and values.flags.writeable and values.flags.c_contiguous and values.flags.aligned
    owner = values.base
    assert type(owner).__name__ == "PyCapsule"
    references = sys.getrefcount(owner)
    view = values[::2]
    del values
    assert sys.getrefcount(owner) == references  # the view's base is the array, whose base is the block
    assert view.sum() == sum(i + 0.5 for i in range(0, 1000, 2))
