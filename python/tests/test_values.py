"""Values: single ones, arrays, searches."""

import math

import kalv
import numpy
import pytest
from conftest import cases, code_of

VALUES = (
    "<R><Text> a &amp; b </Text><Plain>some text</Plain><Int>42</Int><Int>-7</Int><Real>2.5</Real><Empty/>"
    "<Mixed>1<sub/></Mixed><Huge>99999999999999999999</Huge><Attributes text='a &amp; b' int='12' "
    "real='-1e3' none=''/></R>"
)


@pytest.fixture
def doc(xml):
    return xml(VALUES)


@pytest.mark.parametrize("text, value", cases("integers"))
def test_integers(xml, text, value):
    doc = xml(f"<R><A>{text}</A></R>")
    assert doc.get_int("/R/A") == value
    assert doc.get_path_value_as_int("/R/A") == value
    assert doc.values("/R/A[*]", dtype=int).tolist() == [value]


@pytest.mark.parametrize("text, value", cases("reals"))
def test_reals(xml, text, value):
    doc = xml(f"<R><A>{text}</A></R>")
    assert doc.get_float("/R/A") == value
    assert doc.get_path_value_as_real("/R/A") == value
    assert doc.values("/R/A[*]").tolist() == [value]


def test_not_a_number_is_one(xml):
    assert math.isnan(xml("<R><A>nan</A></R>").get_float("/R/A"))


def test_elements(doc):
    assert doc.get_element_value_as_string("Plain") == "some text"
    assert doc.get_element_value_as_int("Int") == 42
    assert doc.get_element_value_as_int("Int") == -7
    assert doc.get_element_value_as_real("Real") == 2.5
    doc.root()
    assert doc.get_element_value_as_string("Int") == "42"
    assert doc.get_element_value_as_real("") == -7.0
    assert doc.current_path_name() == "/R/Int[2]"
    doc.root()
    assert doc.get_element_value_as_string("Text") == " a & b "


def test_an_empty_name_needs_one_before(xml):
    assert code_of(lambda: xml("<R/>").get_element_value_as_string("")) == kalv.Status.ERR_NO_REQUEST


@pytest.mark.parametrize(
    "kind, name, code",
    [
        ("string", "None", kalv.Status.ERR_NOT_FOUND),
        ("string", "Empty", kalv.Status.ERR_NO_VALUE),
        ("string", "Mixed", kalv.Status.ERR_NOT_TERMINAL),
        ("int", "None", kalv.Status.ERR_NOT_FOUND),
        ("int", "Empty", kalv.Status.ERR_NO_VALUE),
        ("int", "Plain", kalv.Status.ERR_NOT_INTEGER),
        ("int", "Huge", kalv.Status.ERR_RANGE),
        ("real", "Empty", kalv.Status.ERR_NO_VALUE),
        ("real", "Plain", kalv.Status.ERR_NOT_REAL),
    ],
)
def test_what_cannot_be_read(doc, kind, name, code):
    assert code_of(lambda: getattr(doc, f"get_element_value_as_{kind}")(name)) == code
    assert code_of(lambda: getattr(doc, f"get_path_value_as_{kind}")(f"/R/{name}")) == code
    array = "/R[*]/" + name
    assert code_of(lambda: getattr(doc, f"get_path_array_as_{kind}")(array)) == code
    assert code_of(lambda: getattr(doc, f"get_element_array_as_{kind}")(name)) == code


def test_attributes(doc):
    assert doc.get_attribute_value_as_string("Attributes", "text") == "a & b"
    assert doc.get_attribute_value_as_int("Attributes", "int") == 12
    assert doc.get_attribute_value_as_real("", "real") == -1000.0
    assert doc.get_attribute_value_as_string("Attributes", "none") == ""
    assert code_of(lambda: doc.get_attribute_value_as_int("Attributes", "x")) == kalv.Status.ERR_NO_ATTRIBUTE
    assert code_of(lambda: doc.get_attribute_value_as_int("Attributes", "text")) == kalv.Status.ERR_NOT_INTEGER


def test_paths(doc):
    assert doc["/R/Plain"] == "some text"
    assert doc["/R/Attributes/@text"] == "a & b"
    assert doc["@int"] == "12"
    assert doc.get_int("/R/Int[2]") == -7
    assert doc.get_float("/R/Attributes/@real") == -1000.0
    assert code_of(lambda: doc["/R/None"]) == kalv.Status.ERR_NOT_FOUND
    assert code_of(lambda: doc[""]) == kalv.Status.ERR_ARGUMENT


def test_defaults(doc):
    for path in ("/R/None", "/R/Empty", "/R/Attributes/@x"):
        assert doc.get(path) is None
        assert doc.get(path, "other") == doc.get_str(path, "other") == "other"
        assert doc.get_int(path, 5) == 5
        assert doc.get_float(path, None) is None
        for get in (doc.get_str, doc.get_int, doc.get_float):
            with pytest.raises(kalv.KalvError):
                get(path)
    assert doc.get("/R/Plain") == doc.get_str("/R/Plain", "other") == "some text"
    # A default stands for a value that is missing, not for one that is wrong.
    assert code_of(lambda: doc.get_int("/R/Plain", 5)) == kalv.Status.ERR_NOT_INTEGER
    assert code_of(lambda: doc.get("/R/Mixed")) == kalv.Status.ERR_NOT_TERMINAL
    assert code_of(lambda: doc.get("/Other")) == kalv.Status.ERR_ARGUMENT


def test_contains(doc):
    for path in ("/R", "/R/Plain", "/R/Int[2]", "/R/Empty", "/R/Mixed", "/R/Attributes/@none"):
        assert path in doc
    for path in ("/R/None", "/R/Int[3]", "/R/Attributes/@x"):
        assert path not in doc
    assert code_of(lambda: "/Other" in doc) == kalv.Status.ERR_ARGUMENT


LIST = "<R>" + "".join(f"<I n='{i}'><V>{i}.25</V><T>t\u00e9xt {'x' * i}</T></I>" for i in range(5)) + "</R>"


@pytest.mark.parametrize(
    "dtype", [float, "f8", numpy.float32, int, "i8", numpy.int16, numpy.uint8, str, "U4", object, None, complex]
)
def test_array_types(xml, dtype):
    values = xml(LIST).values("/R/I[*]/@n", dtype=dtype)
    assert isinstance(values, numpy.ndarray)
    assert values.dtype == (numpy.dtype("U1") if dtype is str else numpy.dtype(dtype))
    expected = numpy.arange(5).astype(str).astype(values.dtype)
    assert values.tolist() == expected.tolist()


def test_arrays(xml):
    doc = xml(LIST)
    texts = [f"t\u00e9xt {'x' * i}" for i in range(5)]
    assert doc.values("/R/I[*]/V").tolist() == [0.25, 1.25, 2.25, 3.25, 4.25]
    assert doc.values("/R/I[*]/V", dtype=int).tolist() == [0, 1, 2, 3, 4]
    assert doc.values("/R/I[*]/T", dtype=str).tolist() == texts
    assert doc.get_path_array_as_string("/R/I[*]/T") == texts
    assert doc.get_element_array_as_string("T") == texts
    assert doc.get_element_array_as_real("V").dtype == numpy.float64
    assert doc.get_element_array_as_int("V").dtype == numpy.int64
    with pytest.raises(TypeError):
        doc.values("/R/I[*]/V", dtype="no type")


@pytest.mark.parametrize("dtype", [float, int, str, object])
def test_arrays_of_what_has_no_values(doc, dtype):
    expected = {
        "None": kalv.Status.ERR_NOT_FOUND,
        "Empty": kalv.Status.ERR_NO_VALUE,
        "Mixed": kalv.Status.ERR_NOT_TERMINAL,
    }
    for name, code in expected.items():
        assert code_of(lambda: doc.values(f"/R/{name}[*]", dtype)) == code


def test_integers_that_do_not_fit_are_refused(xml):
    doc = xml("<R><A>1</A><A>300</A><A>-1</A></R>")
    assert doc.values("/R/A[*]", dtype="i2").tolist() == [1, 300, -1]
    for small in ("i1", "u1", "u8"):
        with pytest.raises(OverflowError):
            doc.values("/R/A[*]", dtype=small)


def test_texts_of_every_width(xml):
    texts = ["a", "\u00e9", "\u20ac", "\U0001f6f0", "a\u00e9\u20ac\U0001f6f0z", "\uffff".replace("\uffff", "\ufffd")]
    doc = xml("<R>" + "".join(f"<A>{text}</A>" for text in texts) + "</R>")
    assert doc.values("/R/A[*]", dtype=str).tolist() == texts
    assert doc.values("/R/A[*]", dtype=object).tolist() == texts


def test_array_errors_name_the_value(xml):
    doc = xml("<R><A>1</A><A>x</A></R>")
    with pytest.raises(kalv.KalvError) as caught:
        doc.values("/R/A[*]")
    assert caught.value.code == kalv.Status.ERR_NOT_REAL
    assert caught.value.function == "XmlFile.values"
    assert "Value: x" in caught.value.report
    assert code_of(lambda: doc.values("/R/A")) == kalv.Status.ERR_ARGUMENT
    assert code_of(lambda: doc.get_path_array_as_real("/R/A[*]")) == kalv.Status.ERR_NOT_REAL


def test_lists_and_searches(xml):
    doc = xml("<R><L count='2'><I>a</I><I>b</I><I>c</I></L><S><K>x</K></S><S><K>y</K></S></R>")
    assert doc.get_string_values_from_list("/R/L", "I") == ["a", "b"]
    doc.root()
    assert doc.find_value_in_element("I", "b") == "/R/L/I[2]"
    assert doc.find_value_in_path("/R/S[*]/K", "y") == "/R/S[2]/K"
    assert code_of(lambda: doc.find_value_in_path("/R/S[*]/K", "z")) == kalv.Status.ERR_VALUE_NOT_FOUND
    assert code_of(lambda: doc.find_value_in_path("/R/../../S[*]/K", "x")) == kalv.Status.WARN_ROOT_REACHED
    doc.root()
    assert code_of(lambda: doc.find_value_in_element("I", "z")) == kalv.Status.ERR_VALUE_NOT_FOUND


@pytest.mark.parametrize("wrong", [None, 1, b"/R", ["/R"]])
def test_a_path_is_a_str(doc, wrong):
    for call in (doc.to_path, doc.get, doc.values, lambda path: doc[path], lambda path: path in doc):
        with pytest.raises(TypeError):
            call(wrong)


def test_texts_that_are_none_in_the_library(doc):
    for call in (doc.to_path, doc.get, doc.values, doc.create_root):
        with pytest.raises(ValueError, match="null"):
            call("/R\0/Plain")
        with pytest.raises(UnicodeEncodeError):
            call("/R/\udc80")
