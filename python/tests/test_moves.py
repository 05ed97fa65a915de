"""The cursor, and elements."""

import warnings

import kalv
import pytest
from conftest import cases, code_of

# The document of the tables.
MOVES = (
    "<R>\n  <A id='1'><B>one</B></A>\n  <C/>\n  <A id='2'><B>two</B><B>three</B></A>\n  <D><A/></D>\n</R>"
)


@pytest.fixture
def doc(xml):
    return xml(MOVES)


def elements_only(name):
    """The rows that can be told by the paths of elements."""
    return [row for row in cases(name) if "text()" not in "".join(row)]


def expect_at(doc, path):
    """The cursor stands where an absolute path leads."""
    reached = doc.current_path_name()
    doc.to_path(path)
    assert reached == doc.current_path_name()


@pytest.mark.parametrize("start, path, reached", elements_only("moves"))
def test_moves(doc, start, path, reached):
    doc.to_path(start)
    doc.to_path(path)
    expect_at(doc, reached)


@pytest.mark.parametrize("start, path, cursor", elements_only("moves_nowhere"))
def test_moves_that_lead_nowhere(doc, start, path, cursor):
    doc.to_path(start)
    assert code_of(lambda: doc.to_path(path)) == kalv.Status.ERR_NOT_FOUND
    expect_at(doc, cursor)


@pytest.mark.parametrize("start, path, reached", elements_only("moves_above_root"))
def test_moves_above_the_root_warn(doc, start, path, reached):
    doc.to_path(start)
    with pytest.warns(kalv.KalvWarning) as caught:
        doc.to_path(path)
    assert caught[0].message.code == kalv.Status.WARN_ROOT_REACHED
    assert caught[0].filename == __file__
    expect_at(doc, reached)


def test_steps(doc):
    doc.next()
    assert doc.current_path_name() == "/R/A[1]"
    doc.to_element("B")
    doc.to_element("B")
    assert doc.current_path_name() == "/R/A[2]/B[1]"
    assert doc.current_element_name() == "B"
    doc.root()
    assert doc.current_element_name() == "R"
    assert code_of(lambda: doc.to_element("None")) == kalv.Status.ERR_NOT_FOUND


def test_siblings(doc, capfd):
    doc.next()
    reached = []
    while doc.next_sibling():
        reached.append(doc.current_path_name())
    assert reached == ["/R/C", "/R/A[2]", "/R/D"]
    assert doc.current_path_name() == "/R/D"
    assert capfd.readouterr().out == ""


def test_a_path_of_any_length(xml):
    name = "n" * 100000
    doc = xml(f"<{name}><{name}/></{name}>")
    doc.next()
    assert doc.current_path_name() == f"/{name}/{name}"


def test_children(doc):
    paths = ["/R/A[1]", "/R/C", "/R/A[2]", "/R/D"]
    assert [child.path for child in doc.children("/R")] == paths
    assert [child.name for child in doc.children()] == ["A", "C", "A", "D"]
    assert [child.path for child in doc.element("/R")] == paths
    assert doc.children("/R/C") == []
    assert code_of(lambda: doc.children("/R/None")) == kalv.Status.ERR_NOT_FOUND


def test_children_that_are_no_elements(xml):
    doc = xml("<!DOCTYPE R [<!ENTITY e '<x/>'>]><R>text<!--c--><?p i?><a/>&e;<![CDATA[<b/>]]><a/><p:c xmlns:p='u'/></R>")
    paths = ["/R/a[1]", "/R/a[2]", "/R/c"]
    assert [child.path for child in doc.children("/R")] == paths
    for path in paths:
        doc.to_path(path)
        assert doc.current_path_name() == path


def test_elements(doc):
    first, _, second, _ = doc.element("/R")
    doc.to_path("/R/D")  # elements do not depend on the cursor
    assert second["@id"] == "2"
    assert second["B[2]"] == "three"
    assert first["B"] == "one"
    assert second.values("B[*]", dtype=str).tolist() == ["two", "three"]
    assert second.get_int("@id") == 2 and second.get_float("@id") == 2.0 and second.get_str("@id") == "2"
    assert second.get("None") is None and second.get_int("None", 1) == 1
    assert "B[2]" in second and "B[3]" not in second
    second["B[2]"] = 4
    assert second["B[2]"] == "4"
    second["."] = "all"
    assert second["."] == "all"
    del second["@id"]
    assert "@id" not in second
    assert first == doc.element("/R/A[1]") and first != second and first != "/R/A[1]"
    assert len({first, doc.element("/R/A[1]"), second}) == 2
    assert repr(second) == "Element('/R/A[2]')"


def test_an_element_that_is_gone(doc):
    element = doc.element("/R/D")
    del doc["/R/D"]
    assert code_of(lambda: element["@id"]) == kalv.Status.ERR_NOT_FOUND
    doc.close()
    assert code_of(lambda: element["@id"]) == kalv.Status.ERR_DESCRIPTOR


def test_a_value_comes_with_its_warning(xml):
    doc = xml("<R><A>1</A></R>")
    with pytest.warns(kalv.KalvWarning, match="goes up too much"):
        assert doc["../A"] == "1"
    doc.to_path("/R")
    with pytest.warns(kalv.KalvWarning):
        assert doc.values("../A[*]", dtype=str).tolist() == ["1"]


def test_a_warning_of_an_element_points_to_the_caller(xml):
    element = xml("<R><A>1</A></R>").element("/R")
    with pytest.warns(kalv.KalvWarning) as caught:
        element["../A"]
    assert caught[0].filename == __file__


def test_warnings_as_errors(xml):
    doc = xml("<R><A>1</A></R>")
    with warnings.catch_warnings():
        warnings.simplefilter("error", kalv.KalvWarning)
        with pytest.raises(kalv.KalvWarning) as caught:
            doc["../A"]
    assert (caught.value.code, caught.value.function) == (kalv.Status.WARN_ROOT_REACHED, "XmlFile[]")


def test_a_warning_handler_can_use_the_document(xml, monkeypatch):
    doc = xml("<R><A>1</A></R>")
    seen = []
    monkeypatch.setattr(warnings, "showwarning", lambda *args: seen.append(doc.current_path_name()))
    with warnings.catch_warnings():
        warnings.simplefilter("always")
        doc.to_path("../A")
    assert seen == ["/R/A"]
