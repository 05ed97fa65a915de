"""kh diff, dump, load and schema: comparing files, taking them apart and putting them together, checking them."""

import gzip
import json

import pytest
from conftest import DATA, HEADER
from test_edit import ODD

LIST = f"{DATA}/List"


def differences(kh, one, other, *options):
    kh.write("one.xml", one)
    kh.write("other.xml", other)
    kh("diff", *options, "one.xml", "one.xml")
    result = kh("diff", "--json", *options, "one.xml", "other.xml", code=1).json[0]
    assert not result["equal"]
    return [tuple(d[key] for key in ("kind", "path", "before", "after")) for d in result["differences"]]


@pytest.mark.parametrize("one, other, expected", [
    ("<r><a>1</a></r>", "<r><a>2</a></r>", [("changed", "/r/a", "1", "2")]),
    ("<r><a/></r>", "<r><b>2</b></r>", [("removed", "/r/a", "", None), ("added", "/r/b", None, "2")]),
    ("<r a='1' b='2'/>", "<r b='3' c='4'/>",
     [("removed", "/r/@a", "1", None), ("changed", "/r/@b", "2", "3"), ("added", "/r/@c", None, "4")]),
    ("<r><a/><a>1</a></r>", "<r><a/></r>", [("removed", "/r/a[2]", "1", None)]),
    ("<r><a/><b/></r>", "<r><b/><a/></r>", [("reordered", "/r", "a", "b")]),
    ("<r>x<a/>y</r>", "<r>x<a/>z</r>", [("changed", "/r", "xy", "xz")]),
    ("<r><a><b/></a></r>", "<r><a>1</a></r>",
     [("changed", "/r/a", "", "1"), ("removed", "/r/a/b", "", None)]),
    ("<r/>", "<s/>", [("renamed", "/r", "r", "s")]),
    ("<p:r xmlns:p='u'/>", "<q:r xmlns:q='u'/>",
     [("renamed", "/r", "p:r", "q:r"), ("removed", "/r/@xmlns:p", "u", None), ("added", "/r/@xmlns:q", None, "u")]),
])
def test_differences_are_told_by_path(kh, one, other, expected):
    assert differences(kh, one, other) == expected


@pytest.mark.parametrize("one, other", [
    ("<r><a/></r>", "<r>\n  <a></a>\n</r>"), ("<r a='1' b='2'/>", '<r b="2" a="1"/>'),
    ("<r><!--c--><a>1</a></r>", "<r><a>1<!--d--></a><?p i?></r>"),
    ("<r>a&amp;b</r>", "<?xml version='1.0'?><r><![CDATA[a&b]]></r>")])
def test_what_does_not_count_is_not_told(kh, one, other):
    kh.write("one.xml", one)
    kh.write("other.xml", other)
    assert kh("diff", "one.xml", "other.xml").out == ""


@pytest.mark.parametrize("one, other, options, code", [
    ("1.0", "1.05", ["-t", "0.1"], 0), ("1.0", "1.05", ["-t", "0.01"], 1), ("100", "101", ["--relative", "0.01"], 0),
    ("100", "102", ["--relative", "0.01"], 1), (" 1", "1 ", [], 1), (" 1", "1 ", ["-t", "0.1"], 0),
    (" a", "a ", ["--trim"], 0), ("a", "b", ["-t", "1"], 1), ("1a", "1b", ["-t", "1"], 1), ("", "0", ["-t", "1"], 1)])
def test_a_tolerance_is_for_numbers(kh, one, other, options, code):
    kh.write("one.xml", f"<r>{one}</r>")
    kh.write("other.xml", f"<r>{other}</r>")
    kh("diff", *options, "one.xml", "other.xml", code=code)


@pytest.mark.parametrize("ignored, code", [
    ([f"{HEADER}", f"{LIST}"], 0), ([HEADER], 1), (["Fixed_Header", "Orbit", "Height"], 0),
    (["Fixed_Header", "Item[*]/Orbit", "Item[1]/Height"], 0), (["Fixed_Header", "Orbit", "Item[2]/Height"], 1),
    (["Fixed_Header", f"{LIST}/Item"], 0), (["/Earth_Observation_File"], 0)])
def test_paths_are_ignored(kh, ignored, code):
    options = [option for path in ignored for option in ("--ignore", path)]
    kh("diff", "-q", *options, "product.xml", "other.xml", code=code)


def test_an_ignored_attribute(kh):
    assert differences(kh, "<r a='1'><s a='1' b='1'/></r>", "<r a='2'><s a='2' b='2'/></r>", "--ignore", "@a") == [
        ("changed", "/r/s/@b", "1", "2")]


def test_differences_in_a_pipe(kh):
    lines = kh("diff", "product.xml", "other.xml", code=1).lines
    assert f"-\t{LIST}/Item[1]/Orbit\t1001" in lines
    assert lines[lines.index(f"-\t{LIST}/Item[1]/Orbit\t1001") + 1] == f"+\t{LIST}/Item[1]/Orbit\t2001"


def test_what_cannot_be_compared(kh):
    kh("diff", "product.xml", "none.xml", code=3)
    assert kh("diff", "none.xml", "product.xml", code=3).err == "none.xml: No such file or directory\n"
    assert kh("diff", "product.xml", "-", code=3).err == "-: No such file or directory\n"
    kh("diff", "product.xml", code=2)
    kh("diff", "product.xml", "product.xml", "product.xml", code=2)
    kh("diff", "--ignore", "", "product.xml", "product.xml", code=2)


def test_deep_files_are_compared(kh):
    deep = 3000 * "<a>" + "{}" + 3000 * "</a>"
    kh.write("one.xml", deep.format(1))
    kh.write("other.xml", deep.format(2))
    assert len(kh("diff", "one.xml", "other.xml", code=1).lines) == 2


WRITTEN = {
    "plain": "<r/>",
    "sample": None,
    "odd": ODD,
    "blanks": "<r>\n <a> </a>\r\n<b>\t&#13;</b>&#10;</r>",
    "attributes": "<r a='&quot;&lt;&amp;&gt;&#9;&#10;&#13;' b='&#233;&apos;' c=''/>",
    "latin": "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xe9&#8704;'>\xe9&#8704;<\xe9/><!--\xe9--><![CDATA[\xe9]]></r>",
    "none declared": "<r>&#233;\u2200</r>",
    "entities": "<!DOCTYPE r [<!ENTITY a 'x&#38;#38;y'><!ENTITY b '&a;'>]><r c='&a; &b;'>&b;&amp;b;</r>",
    "namespaces": "<p:r xmlns:p='u?a&amp;b' xmlns='v' p:a='1'><b xmlns=''/></p:r>",
    "instructions": "<?a?><?b c?><r><?d e f?></r><?g?>",
    "standalone": "<?xml version='1.0' standalone='yes'?><r/>",
    "doctype": "<!DOCTYPE r PUBLIC '-//x//y' 'z.dtd' [<!ELEMENT r (a|b)*><!ATTLIST r c CDATA 'd'><!NOTATION n SYSTEM 'm'>]><r/>",
}


def written(kh, name):
    """A file that the command itself has written."""
    text = WRITTEN[name] if WRITTEN[name] is not None else kh.read("product.xml")
    kh.path("raw.xml").write_bytes(text.encode("latin-1" if "ISO-8859-1" in text else "utf-8"))
    root = kh("info", "--json", "raw.xml").json[0]["root"].split(":")[-1]
    kh("add", "raw.xml", f"/{root}/@zz=1")
    kh("rm", "raw.xml", f"/{root}/@zz")
    return kh.path("raw.xml").read_bytes()


@pytest.mark.parametrize("name", WRITTEN)
def test_a_file_comes_back_with_the_same_bytes(kh, name):
    before = written(kh, name)
    kh.write("dump.json", kh("dump", "--json", "raw.xml").out)
    kh("load", "dump.json", "back.xml")
    assert kh.path("back.xml").read_bytes() == before


@pytest.mark.parametrize("name", ["sample", "odd", "latin"])
def test_a_dump_may_have_gone_through_other_programs(kh, name):
    before = written(kh, name)
    dump = json.loads(kh("dump", "raw.xml").out)
    kh("load", "-", "back.xml", stdin=json.dumps(dump[0], sort_keys=True))
    assert kh("diff", "raw.xml", "back.xml").out == ""
    kh("load", "-", "back.xml", stdin=json.dumps(dump, ensure_ascii=False))
    assert kh.path("back.xml").read_bytes() == before


def test_the_form_of_a_dump(kh):
    kh.path("odd.xml").write_bytes(ODD.encode("latin-1"))
    document = kh("dump", "--json", "odd.xml").json[0]["document"]
    assert document["encoding"] == "ISO-8859-1" and document["standalone"] == "no"
    assert document["nodes"][0] == {"instruction": "sheet", "data": 'of="style"'}
    assert document["nodes"][1]["doctype"].startswith("<!DOCTYPE p:r [")
    root = document["nodes"][3]
    assert root[:2] == ["p:r", {"xmlns:p": "urn:p", "xmlns": "urn:d", "b": [{"reference": "e"}, "\n2"]}]
    assert root[3] == ["a", {}, "1", {"comment": "one"}]
    assert root[5] == ["q:b", {"xmlns:q": "urn:q"}, {"cdata": "<2>"}]


def test_deep_files_are_dumped_and_loaded(kh):
    kh.write("deep.xml", '<?xml version="1.0"?>\n' + 20000 * "<a>" + 20000 * "</a>" + "\n")
    kh.write("dump.json", kh("dump", "deep.xml").out)
    kh("load", "dump.json", "back.xml")
    kh("diff", "deep.xml", "back.xml")


@pytest.mark.parametrize("text, fault", [
    ("", "1:1: not JSON"), ("{", "1:2: not JSON"), ('[\n{"a": x', "2:7: not JSON"), ("[]", "no document"), ("{}", "no document"), ("1", "a number"),
    ('{"document": {}}', "does not describe"), ('{"document": {"nodes": []}}', "does not describe"),
    ('{"document": {"nodes": [["r"]]}}', "an element without"), ('{"document": {"nodes": [[]]}}', "an element without"),
    ('{"document": {"nodes": [["r", {}, 5]]}}', "a number"), ('{"document": {"nodes": [["r", {}, {}]]}}', "an object that is no node"),
    ('{"document": {"nodes": ["text"]}}', "a text where none"), ('{"document": {"nodes": [["r", {"a": {}}]]}}', "an object where none"),
    ('{"document": {"nodes": [["r s", {}]]}}', "does not describe"), ('{"document": {"nodes": [["r", {"a": [{"cdata": "x"}]}]]}}', "an object in an attribute"),
    ('[{"document": {"nodes": [["r", {}]]}}, {"document": {"nodes": [["r", {}]]}}]', "more than one document"),
    ('{"document": {"encoding": "nonsense", "nodes": [["r", {}]]}}', "an unknown encoding"),
    ('{"document": {"encoding": "US-ASCII", "nodes": [["\u00e9", {}]]}}', "a name, comment or section"),
])
def test_what_is_no_dump_is_told_and_changes_nothing(kh, text, fault):
    kh.write("dump.json", text)
    before = kh.read("product.xml")
    assert kh("load", "dump.json", "product.xml", code=3).err.startswith(f"dump.json:{fault if fault[0].isdigit() else ' ' + fault}")
    assert kh.read("product.xml") == before


def test_load_tells_what_it_cannot_read_or_write(kh):
    kh("load", "none.json", "x.xml", code=3)
    kh.write("dump.json", kh("dump", "product.xml").out)
    kh("load", "dump.json", "no/where.xml", code=4)
    assert kh("load", "dump.json", "/dev/full", code=4).err.startswith("/dev/full: No space left on device")
    assert kh("load", ".", "x.xml", code=3).err == ".: Is a directory\n"
    kh("load", "dump.json", code=2)
    kh("load", "-n", "dump.json", "new.xml")
    assert not kh.path("new.xml").exists()
    kh("load", "-n", "none.json", "new.xml", code=3)
    kh("load", "-b", ".old", "dump.json", "other.xml")
    assert "2001" in kh.read("other.xml.old") and "1001" in kh.read("other.xml")


def test_a_valid_file_has_no_fault(kh):
    assert kh("schema", "check", "-x", "product.xsd", "product.xml", "other.xml").out == ""
    result = kh("schema", "check", "--json", "-x", "product.xsd", "product.xml").json
    assert result == [{"file": "product.xml", "valid": True, "faults": []}]


@pytest.mark.parametrize("jobs", [1, 3])
def test_faults_are_told_with_their_line(kh, jobs):
    kh("set", "product.xml", f"{LIST}/Item[2]/Orbit=many")
    kh("rm", "product.xml", f"{LIST}/Item[3]/Height/@unit")
    result = kh("schema", "check", "-j", jobs, "-x", "product.xsd", "product.xml", "other.xml", code=1)
    lines = [line.split(":", 3) for line in result.err.splitlines()]
    assert lines[0][:2] == ["product.xml", "35"] and lines[0][3].startswith(" Element 'Orbit':")
    assert any(line[1] == "42" and line[3].startswith(" Element 'Height':") for line in lines)
    assert all(0 < int(line[2]) < 60 for line in lines)
    elements = kh("schema", "check", "--json", "-x", "product.xsd", "product.xml", "other.xml", code=1).json
    assert [element["valid"] for element in elements] == [False, True]
    assert elements[0]["faults"][0]["line"] == 35
    assert str(elements[0]["faults"][0]["column"]) == lines[0][2]


SCHEMA = """<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
<xs:element name="r"><xs:complexType><xs:sequence><xs:element name="a" type="xs:integer" maxOccurs="unbounded"/>
</xs:sequence><xs:attribute name="b" type="xs:integer" default="1"/></xs:complexType></xs:element></xs:schema>"""


@pytest.mark.parametrize("text, code", [
    ('<!DOCTYPE r [<!ENTITY e "12">]><r><a>&e;3</a></r>', 0), ('<!DOCTYPE r [<!ENTITY e "x">]><r><a>1&e;</a></r>', 1),
    ('<!DOCTYPE r [<!ENTITY e "<a>x</a>">]><r><a>1</a>&e;</r>', 1),
    ('<!DOCTYPE r [<!ENTITY e "<a>2</a>">]><r b="2"><a>1</a>&e;</r>', 0),
    ('<!DOCTYPE r [<!ENTITY e SYSTEM "secret.txt">]><r><a>&e;</a></r>', 3),
    ('<!DOCTYPE r [<!ENTITY % p SYSTEM "secret.txt"> %p;]><r><a>1</a></r>', 3),
    ("<r><a>1<!--c-->2<![CDATA[3]]></a></r>", 0), ("<r><a>1</a><?i?><a>x</a></r>", 1), ("<r/>", 1), ("<s/>", 1),
    ("<r>" + 5000 * "<a>1</a>" + "</r>", 0)])
def test_entities_are_checked_as_what_they_stand_for_and_no_other_file_is_read(kh, text, code):
    kh.write("secret.txt", "secret")
    kh.write("r.xsd", SCHEMA)
    kh.write("r.xml", text)
    result = kh("schema", "check", "-x", "r.xsd", "r.xml", code=code)
    assert "secret" not in result.err.replace("secret.txt", "")
    assert (result.err.count("\n") > 0) == (code != 0)
    assert code != 3 or ": cannot be checked: " in result.err


def test_a_compressed_file_is_checked(kh):
    kh.write("r.xsd", SCHEMA)
    kh.path("r.xml").write_bytes(gzip.compress(b"<r><a>x</a></r>"))
    assert kh("schema", "check", "-x", "r.xsd", "r.xml", code=1).err.startswith("r.xml:1:")


def test_many_faults_are_told_in_a_time_that_grows_with_the_file_alone(kh):
    kh.write("r.xsd", SCHEMA)
    kh.write("r.xml", "<r>" + 50000 * "<a>x</a>\n" + "</r>")
    assert kh("schema", "check", "-x", "r.xsd", "r.xml", code=1).err.count("\n") == 50000


def test_the_schema_that_a_file_names_is_taken(kh):
    kh("add", "product.xml", "/Earth_Observation_File/@xsi:noNamespaceSchemaLocation=product.xsd")
    kh("schema", "check", "product.xml")
    kh("set", "product.xml", f"{LIST}/Item[2]/Orbit=many")
    kh("schema", "check", "product.xml", code=1)


def test_a_schema_that_cannot_be_had_is_told(kh):
    assert kh("schema", "check", "-x", "none.xsd", "product.xml", code=3).err == "none.xsd: No such file or directory\n"
    assert kh("schema", "check", "-x", "product.xml", "product.xml", code=3).err.startswith("product.xml:")
    kh.write("broken.xsd", "<xs:schema>")
    assert kh("schema", "check", "-x", "broken.xsd", "product.xml", code=3).err.startswith("broken.xsd:1:")
    assert kh("schema", "check", "other.xml", code=3).err == "other.xml: names no schema; use -x\n"
    kh.write("far.xml", '<r xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
                        'xsi:noNamespaceSchemaLocation="http://schemas.kalvira.example/x.xsd"/>')
    kh("schema", "check", "far.xml", code=3)


def test_schema_references_are_set_and_removed(kh):
    kh("schema", "set", "-s", "ORBIT_0102.XSD", "product.xml")
    told = kh("info", "--json", "product.xml").json[0]
    assert told["schema"].endswith(" ORBIT_0102.XSD") and told["schema_version"] == "1.2"
    kh("schema", "remove", "product.xml")
    assert "schema" not in kh("info", "--json", "product.xml").json[0]
    kh("schema", "set", "--no-version", "-s", "urn:a a.xsd", "other.xml")
    told = kh("info", "--json", "other.xml").json[0]
    assert told["schema"] == "urn:a a.xsd" and "schema_version" not in told
    kh("schema", "remove", "--all", "other.xml")
    assert kh("ls", "-a", "-d", 0, "other.xml").lines == ["/Earth_Observation_File\t"]


def test_a_dry_run_shows_how_references_would_change(kh):
    before = kh.read("product.xml")
    lines = kh("schema", "set", "-n", "-s", "urn:a a.xsd", "product.xml").lines
    assert "+\tproduct.xml\t/Earth_Observation_File/@xsi:schemaLocation\turn:a a.xsd" in lines
    assert kh.read("product.xml") == before
    kh("schema", "set", "product.xml", code=2)
