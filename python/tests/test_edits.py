"""Building and editing."""

import decimal
import fractions

import kalv
import numpy
import pytest
from conftest import code_of


@pytest.fixture
def doc(xml):
    return xml("<R><A>1</A></R>")


def test_building():
    doc = kalv.XmlFile().create()
    doc.create_root("R")
    doc.add_child("/R", "A", "text")
    doc.add_attribute(".", "id", 7)
    doc.add_next("/R/A", "B", 2.5, "%.3f")
    doc.add_previous("/R/A", "Z")
    doc["/R/A/@new"] = "<&>"
    assert doc.to_bytes().decode().splitlines()[1:] == [
        "<R>",
        "  <Z/>",
        '  <A id="7" new="&lt;&amp;&gt;">text</A>',
        "  <B>2.500</B>",
        "</R>",
    ]
    assert code_of(lambda: doc.create_root("R")) == kalv.Status.ERR_ROOT_EXISTS
    assert code_of(lambda: doc.add_child("/R", "no name")) == kalv.Status.ERR_ARGUMENT
    assert code_of(lambda: doc.add_next("/R", "B")) == kalv.Status.ERR_ADD_SIBLING


@pytest.mark.parametrize(
    "value, text",
    [
        ("text", "text"),
        ("", None),
        (5, "5"),
        (-(2**63), "-9223372036854775808"),
        (2**63 - 1, "9223372036854775807"),
        (True, "1"),
        (0.1, "0.1"),
        (2.0, "2.0"),
        (1e300, "1e+300"),
        (1 / 3, "0.3333333333333333"),
        (float("inf"), "inf"),
        (numpy.int32(-5), "-5"),
        (numpy.float64(0.1), "0.1"),
        (numpy.float32(0.5), "0.5"),
        (decimal.Decimal("1.5"), "1.5"),
        (fractions.Fraction(1, 4), "0.25"),
        ("\u20ac " * 80, "\u20ac " * 80),
    ],
)
def test_values(doc, value, text):
    doc["/R/A"] = value
    assert doc.get("/R/A") == text
    doc.set_value("/R/@a", value)
    assert doc["/R/@a"] == (text or "")


@pytest.mark.parametrize("value", [0.1, 1e-320, 1.7976931348623157e308, -2.5, 123456789.123456789, 3e22])
def test_reals_read_back(doc, value):
    doc["/R/A"] = value
    assert doc.get_float("/R/A") == value


@pytest.mark.parametrize("wrong, error", [(None, TypeError), ([1], TypeError), (b"1", TypeError), (1j, TypeError),
                                          (2**63, OverflowError), ("a\0b", ValueError)])
def test_values_that_are_none(doc, wrong, error):
    for call in (lambda: doc.set_value("/R/A", wrong), lambda: doc.__setitem__("/R/A", wrong)):
        with pytest.raises(error):
            call()
    assert doc["/R/A"] == "1"


@pytest.mark.parametrize(
    "value, format, text",
    [(5, "%03ld", "005"), (5, "%lx", "5"), (2.0, "%.2f", "2.00"), ("a", "<%s>", "<a>"), ("a", "constant", "constant")],
)
def test_formats(doc, value, format, text):
    doc.set_value("/R/A", value, format)
    assert doc["/R/A"] == text
    doc.set_value("/R/A", value, format=format)


@pytest.mark.parametrize("value, format", [(5, "%s"), (5.0, "%ld"), ("a", "%d"), ("a", "%s%s"), (5, "%n"), (5, "%*d")])
def test_formats_that_do_not_fit(doc, value, format):
    assert code_of(lambda: doc.set_value("/R/A", value, format)) == kalv.Status.ERR_FORMAT
    assert doc["/R/A"] == "1"


def test_what_xml_does_not_allow(doc):
    assert code_of(lambda: doc.set_value("/R/A", "\x01")) == kalv.Status.ERR_ARGUMENT


@pytest.mark.parametrize("text", ["x" * 1_000_000, "a &amp; b", "&none;", " <&>\"' ", "\u20ac" * 511, "%s"])
def test_a_text_is_set_as_it_is(doc, text):
    doc["/R/A"] = text
    doc.add_child("/R", "B", text)
    doc.add_attribute("/R/B", "b", text)
    for path in ("/R/A", "/R/B", "/R/B/@b"):
        assert doc[path] == text
        assert kalv.XmlFile.from_bytes(doc.to_bytes())[path] == text


def test_with_a_format_a_text_is_cut_and_has_references(doc):
    with pytest.warns(kalv.KalvWarning) as caught:
        doc.set_value("/R/A", "x" * 2000, "%s")
    assert caught[0].message.code == kalv.Status.WARN_LENGTH
    assert doc["/R/A"] == "x" * 510
    doc.set_value("/R/A", "a &amp; b", "%s")
    assert doc["/R/A"] == "a & b"


def test_a_node_stays_where_its_value_fails(doc):
    assert code_of(lambda: doc.add_child("/R", "B", 1, "%s")) == kalv.Status.ERR_FORMAT
    assert "/R/B" in doc


def test_removing(doc):
    doc["/R/A/@id"] = 1
    del doc["/R/A/@id"]
    assert "/R/A/@id" not in doc
    doc.remove_node("/R/A")
    assert "/R/A" not in doc
    assert code_of(lambda: doc.remove_node("/R/A")) == kalv.Status.ERR_NOT_FOUND
    del doc["/R"]
    doc.create_root("New")
    assert doc.current_path_name() == "/New"


def test_copying(doc, tmp_path):
    source = tmp_path / "source.xml"
    source.write_text("<S><T><U>deep</U></T></S>")
    doc.copy_node("/R", source, "/S/T")
    assert doc["/R/T/U"] == "deep"
    assert code_of(lambda: doc.copy_node("/R", tmp_path / "none.xml", "/S")) == kalv.Status.ERR_PARSE


def test_schema(doc):
    doc.set_schema("http://example.org/space space.xsd", version=False)
    assert "space.xsd" in doc.to_bytes().decode()
    doc.remove_schema(everything=True)
    assert "space.xsd" not in doc.to_bytes().decode()
