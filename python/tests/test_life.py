"""Opening, saving and letting go; and whatever is done to an object without a document."""

import copy
import gc
import os
import pathlib
import pickle
import threading
import warnings
import weakref

import kalv
import numpy
import pytest
from conftest import code_of

CONTENT = '<?xml version="1.0"?>\n<R>\n  <b>1</b>\n  <b>2</b>\n</R>\n'

# Every method that needs a document, with arguments that would do on one.
CALLS = {
    "root": (),
    "next": (),
    "to_element": ("b",),
    "to_path": ("/R",),
    "next_sibling": (),
    "current_element_name": (),
    "current_path_name": (),
    "element": ("/R",),
    "children": (),
    "__getitem__": ("/R/b",),
    "__setitem__": ("/R/b", "1"),
    "__delitem__": ("/R/b",),
    "__contains__": ("/R/b",),
    "get": ("/R/b",),
    "get_str": ("/R/b",),
    "get_int": ("/R/b",),
    "get_float": ("/R/b",),
    "values": ("/R/b[*]",),
    "get_string_values_from_list": ("/R", "b"),
    "find_value_in_element": ("b", "1"),
    "find_value_in_path": ("/R/b[*]", "1"),
    "create_root": ("R",),
    "add_child": ("/R", "c"),
    "add_next": ("/R/b", "c"),
    "add_previous": ("/R/b", "c"),
    "add_attribute": ("/R", "c"),
    "set_value": ("/R/b", 1.5),
    "remove_node": ("/R/b",),
    "copy_node": ("/R", "none.xml", "/R"),
    "create_header": (24,),
    "get_fixed_header_item": ("Notes",),
    "set_fixed_header_item": ("Notes", "text"),
    "to_bytes": (),
    "save": ("never.xml",),
}
for _type in ("string", "int", "real"):
    CALLS[f"get_element_value_as_{_type}"] = ("b",)
    CALLS[f"get_attribute_value_as_{_type}"] = ("b", "a")
    CALLS[f"get_path_value_as_{_type}"] = ("/R/b",)
    CALLS[f"get_element_array_as_{_type}"] = ("b",)
    CALLS[f"get_path_array_as_{_type}"] = ("/R/b[*]",)

# Those that an object without a document has something to say to, or where it says nothing.
OTHERS = {"create", "read", "read_bytes", "from_bytes", "close", "closed", "file_name", "descriptor", "header",
          "set_schema", "remove_schema"}


@pytest.fixture
def file(tmp_path):
    path = tmp_path / "file.xml"
    path.write_text(CONTENT)
    return path


def test_every_method_is_tried_without_a_document():
    public = {name for name in vars(kalv.XmlFile) if not name.startswith("_")}
    assert public == {name for name in CALLS if not name.startswith("_")} | OTHERS


@pytest.mark.parametrize("method", CALLS)
def test_a_closed_document_says_so(method, file):
    doc = kalv.XmlFile(file)
    doc.close()
    assert code_of(lambda: getattr(doc, method)(*CALLS[method])) == kalv.Status.ERR_DESCRIPTOR
    assert not pathlib.Path("never.xml").exists()


@pytest.mark.parametrize("method", CALLS)
def test_an_object_that_never_had_one_says_so(method):
    assert code_of(lambda: getattr(kalv.XmlFile(), method)(*CALLS[method])) == kalv.Status.ERR_DESCRIPTOR


@pytest.mark.parametrize("method", CALLS)
def test_an_object_that_was_not_initialised_says_so(method):
    with pytest.raises(TypeError, match="__init__"):
        getattr(kalv.XmlFile.__new__(kalv.XmlFile), method)(*CALLS[method])


def test_header_of_a_closed_document():
    doc = kalv.XmlFile()
    assert code_of(lambda: doc.header) == kalv.Status.ERR_DESCRIPTOR
    with pytest.raises(kalv.KalvError):
        doc.header = kalv.FixedHeader()
    doc.set_schema("schema.xsd")
    doc.remove_schema()


def test_a_subclass_that_forgets_to_initialise():
    class Forgetful(kalv.XmlFile):
        def __init__(self):
            pass

    with pytest.raises(TypeError, match="__init__"):
        Forgetful()


def test_closing_twice_and_leaving_after_closing(file):
    with kalv.XmlFile(file) as doc:
        assert not doc.closed
        doc.close()
        doc.close()
        assert doc.closed
    doc.close()
    assert doc.descriptor == -1
    assert doc.file_name == str(file)


def test_leaving_lets_go_after_an_exception(file):
    with pytest.raises(ZeroDivisionError):
        with kalv.XmlFile(file) as doc:
            1 / 0
    assert doc.closed


def test_the_slot_is_free_again(file):
    first = kalv.XmlFile(file)
    descriptor = first.descriptor
    del first
    gc.collect()
    assert kalv.XmlFile(file).descriptor == descriptor


def test_more_documents_than_there_are_slots(file):
    docs = []
    with pytest.raises(kalv.KalvError) as caught:
        for _ in range(600):
            docs.append(kalv.XmlFile(file))
    assert caught.value.code == kalv.Status.ERR_TABLE_FULL
    assert len(docs) > 500
    del docs
    gc.collect()
    kalv.XmlFile(file).close()


@pytest.mark.parametrize("convert", [str, pathlib.Path, os.fsencode, lambda path: memoryview(b"")])
def test_file_names(convert, file, tmp_path):
    name = convert(file)
    if isinstance(name, memoryview):
        with pytest.raises(TypeError):
            kalv.XmlFile(name)
        return
    doc = kalv.XmlFile(name)
    assert doc.file_name == str(file)
    doc.save(convert(tmp_path / "saved.xml"))
    assert (tmp_path / "saved.xml").read_text() == CONTENT
    doc.copy_node("/R", convert(file), "/R/b[2]")
    assert doc["/R/b[3]"] == "2"


def test_a_file_name_that_is_no_text(tmp_path):
    path = os.fsencode(tmp_path) + b"/\xff.xml"
    with open(path, "w") as file:
        file.write(CONTENT)
    assert os.fsencode(kalv.XmlFile(path).file_name) == path
    assert os.fsencode(kalv.XmlFile(os.fsdecode(path)).file_name) == path


def test_saving_where_it_was_read(file):
    doc = kalv.XmlFile(file)
    doc["/R/b"] = 3
    doc.save()
    assert "<b>3</b>" in file.read_text()


def test_a_document_survives_a_failed_save(file, tmp_path):
    doc = kalv.XmlFile(file)
    assert code_of(lambda: doc.save(tmp_path / "none" / "file.xml")) == kalv.Status.ERR_SAVE
    assert doc["/R/b"] == "1"
    doc.save(tmp_path / "elsewhere.xml")
    assert (tmp_path / "elsewhere.xml").read_text() == CONTENT


def test_a_created_document_has_no_name_to_save_to():
    doc = kalv.XmlFile().create()
    doc.create_root("R")
    assert code_of(doc.save) == kalv.Status.ERR_SAVE


def test_a_failed_read_holds_nothing(file):
    doc = kalv.XmlFile(file)
    assert code_of(lambda: doc.read("missing.xml")) == kalv.Status.ERR_PARSE
    assert doc.closed
    assert doc.read(file) is doc
    assert doc["/R/b"] == "1"


@pytest.mark.parametrize("kind", [bytes, bytearray, memoryview])
def test_bytes(kind):
    doc = kalv.XmlFile.from_bytes(kind(CONTENT.encode()))
    assert doc["/R/b[2]"] == "2"
    assert doc.to_bytes() == CONTENT.encode()
    assert doc.file_name == ""


def test_bytes_are_bytes():
    for wrong in (CONTENT, 3, None):
        with pytest.raises(TypeError):
            kalv.XmlFile.from_bytes(wrong)
    for broken in (b"", b"<R>", b"no XML"):
        assert code_of(lambda: kalv.XmlFile.from_bytes(broken)) == kalv.Status.ERR_PARSE


def test_texts_of_any_script_and_declared_encoding():
    text = "\u00e4 \u20ac \U0001f6f0"
    doc = kalv.XmlFile.from_bytes(f"<?xml version='1.0' encoding='UTF-16'?><R><b>{text}</b></R>".encode("utf-16"))
    assert doc["/R/b"] == text
    assert kalv.XmlFile.from_bytes(doc.to_bytes())["/R/b"] == text
    latin = kalv.XmlFile.from_bytes("<?xml version='1.0' encoding='ISO-8859-1'?><R>\u00e4</R>".encode("latin-1"))
    assert latin["/R"] == "\u00e4"


def test_copies_are_refused(file):
    doc = kalv.XmlFile(file)
    for copier in (copy.copy, copy.deepcopy, pickle.dumps):
        with pytest.raises(TypeError, match="second document"):
            copier(doc)
    assert doc["/R/b"] == "1"


def test_subclass(file):
    class Product(kalv.XmlFile):
        extra = 1

    for doc in (Product(file), Product.from_bytes(CONTENT.encode()), Product().create()):
        assert type(doc) is Product
        with doc as same:
            assert same is doc


def test_a_document_is_not_gone_through_by_number(file):
    for use in (iter, list, len, reversed):
        with pytest.raises(TypeError, match="no len|not iterable|not reversible|not a sequence"):
            use(kalv.XmlFile(file))


def test_weak_reference(file):
    doc = kalv.XmlFile(file)
    reference = weakref.ref(doc)
    del doc
    gc.collect()
    assert reference() is None


def test_an_array_outlives_its_document(file):
    doc = kalv.XmlFile(file)
    values = doc.values("/R/b[*]")
    view = values[1:]
    doc.close()
    del doc, values
    gc.collect()
    assert view.tolist() == [2.0]
    view[0] = 5  # the block is the caller's


def test_other_users_of_libxml2_live_on(file):
    etree = pytest.importorskip("lxml.etree")
    schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='R'/></xs:schema>"
    tree = etree.fromstring(CONTENT)
    for _ in range(50):
        kalv.XmlFile(file).close()
        assert etree.XMLSchema(etree.fromstring(schema)).validate(tree)
        kalv.XmlFile(file).close()
        with pytest.raises(etree.XMLSyntaxError):
            etree.fromstring("<R>")
        assert len(tree.xpath("//b")) == 2


def test_representation(file):
    doc = kalv.XmlFile(file)
    assert repr(doc) == f"<kalv.XmlFile {str(file)!r}>"
    doc.close()
    assert repr(doc) == f"<kalv.XmlFile {str(file)!r} closed>"
