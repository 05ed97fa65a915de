"""kh set, add, rm, cp and fmt: changing files, and leaving everything else in them as it was."""

import os
import stat

import pytest
from conftest import DATA

LIST = f"{DATA}/List"

# Everything that an edit must leave alone.
ODD = """<?xml version="1.0" encoding="ISO-8859-1" standalone="no"?>
<?sheet of="style"?>
<!DOCTYPE p:r [
<!ENTITY e "text">
<!ATTLIST p:r a CDATA "x">
]>
<!--top-->
<p:r xmlns:p="urn:p" xmlns="urn:d" b="&e;&#10;2">
\t<a>1<!--one--></a>
\t<q:b xmlns:q="urn:q"><![CDATA[<2>]]></q:b>  <?go on?>

     <c>mixed <i>text</i> here&e;</c>
</p:r>
<!--end-->
"""


@pytest.fixture
def odd(kh):
    kh.path("odd.xml").write_bytes(ODD.encode("latin-1"))
    return "odd.xml"


def text_of(kh, name):
    return kh.path(name).read_bytes().decode("latin-1")


def changed(kh, name, before, *pairs):
    """Whether a file is what it was but for some pieces."""
    for old, new in pairs:
        assert before.count(old) == 1, old
        before = before.replace(old, new)
    assert kh.read(name) == before


def test_sets_an_element_and_an_attribute(kh):
    before = kh.read("product.xml")
    assert kh("set", "product.xml", f"{LIST}/Item[2]/Orbit=7", f"{LIST}/@count=4").out == ""
    changed(kh, "product.xml", before, ("<Orbit>1002<", "<Orbit>7<"), ('count="3"', 'count="4"'))


def test_sets_all_of_an_array_in_many_files(kh):
    kh("set", "-s", f"{LIST}/Item[*]/Height/@unit=mm", "product.xml", "other.xml")
    assert kh("get", "-p", f"{LIST}/Item[*]/Height/@unit", "product.xml", "other.xml").lines == 3 * [
        "product.xml\tmm"] + 3 * ["other.xml\tmm"]


@pytest.mark.parametrize("value", ["", " ", "a & b", "&amp;", "&#65;", "<x/>", "]]>", "\"'", "é ∀ 🚀", "line\nline\t", 5000 * "long & "])
def test_a_value_reads_back_as_it_was_given(kh, value):
    for path in (f"{LIST}/Item[1]/Remark", f"{LIST}/Item[1]/@id"):
        kh("set", "product.xml", f"{path}={value}")
        assert kh("get", "-0", "product.xml", path).out == value + "\0"


def test_setting_leaves_everything_else_as_it_was(kh, odd):
    kh("set", odd, "/r/a=2", "/r/c/i=other", "/r/@b=3")
    after = ODD.replace(">1<!--", ">2<!--").replace("<i>text", "<i>other").replace("&e;&#10;2", "3")
    assert text_of(kh, odd) == after


def test_setting_replaces_sections_and_references(kh, odd):
    kh("set", odd, "/r/b=new")
    assert text_of(kh, odd) == ODD.replace("<![CDATA[<2>]]>", "new")


def test_a_file_on_one_line_stays_on_one_line(kh):
    kh.write("line.xml", "<r><a><b>1</b></a></r>")
    kh("set", "line.xml", "/r/a/b=2")
    kh("add", "line.xml", "/r/a/c=3")
    assert kh.read("line.xml") == '<?xml version="1.0"?>\n<r><a><b>2</b><c>3</c></a></r>\n'


@pytest.mark.parametrize("path", ["/r/none", "/r/a/@none", "/r/none[*]", "/other"])
def test_what_does_not_exist_is_not_set(kh, path):
    kh.write("f.xml", "<r><a/></r>")
    place = "f.xml:1" if path.startswith("/r/a/") else "f.xml"
    assert kh("set", "f.xml", f"{path}=1", code=1).err == f"{place}: {path}: not found\n"
    assert kh.read("f.xml") == "<r><a/></r>"


def test_an_element_that_holds_elements_is_not_set(kh):
    before = kh.read("product.xml")
    assert kh("set", "product.xml", f"{LIST}=1", code=4).err == f"product.xml:28: {LIST}: holds elements\n"
    assert kh.read("product.xml") == before


def test_nothing_is_saved_when_one_of_several_changes_fails(kh):
    before = kh.read("product.xml")
    kh("set", "product.xml", f"{LIST}/@count=5", f"{LIST}/@none=1", code=1)
    assert kh.read("product.xml") == before


def test_a_text_that_xml_forbids_is_refused(kh):
    before = kh.read("product.xml")
    kh("set", "product.xml", f"{LIST}/@count=a\x01b", code=4)
    kh("set", "product.xml", f"{LIST}/Item[1]/Orbit=a\x01b", code=4)
    assert kh.read("product.xml") == before


def test_an_attribute_is_set_under_the_name_that_it_has(kh):
    kh.write("f.xml", '<r xmlns:p="u" p:a="1"/>')
    kh("set", "f.xml", "/r/@a=2")
    assert 'p:a="2"' in kh.read("f.xml") and ' a="' not in kh.read("f.xml")
    kh("set", "f.xml", "/r/@p:a=3")
    assert kh("get", "f.xml", "/r/@p:a", "/r/@a").lines == ["3", "3"]
    kh("set", "f.xml", "/r/@xmlns:p=v?a&b")
    assert kh("get", "f.xml", "/r/@xmlns:p").out == "v?a&b\n"


def test_a_dry_run_shows_what_would_change(kh):
    before = kh.state("product.xml")
    result = kh("set", "-n", "-s", f"{LIST}/Item[*]/Height/@unit=km", "product.xml", "other.xml")
    assert result.lines == [f"-\tproduct.xml\t{LIST}/Item[3]/Height/@unit\tm",
                            f"+\tproduct.xml\t{LIST}/Item[3]/Height/@unit\tkm",
                            f"-\tother.xml\t{LIST}/Item[3]/Height/@unit\tm",
                            f"+\tother.xml\t{LIST}/Item[3]/Height/@unit\tkm"]
    assert kh.state("product.xml") == before


def test_a_backup_keeps_the_old_file_and_the_mode(kh):
    before = kh.read("product.xml")
    os.chmod(kh.path("product.xml"), 0o640)
    kh("set", "-b", "~", "product.xml", f"{LIST}/@count=5")
    assert kh.read("product.xml~") == before
    assert stat.S_IMODE(kh.path("product.xml").stat().st_mode) == 0o640
    kh("set", "-b", "/none/at/all", "product.xml", f"{LIST}/@count=6", code=4)
    assert kh.value("product.xml", f"{LIST}/@count") == "5"


def test_the_filter_and_the_threads_hold_for_edits_too(kh):
    names = [kh.write(f"{n}.xml", f"<r><a>{n % 2}</a></r>") for n in range(20)]
    kh("set", "-j", 4, "-w", "/r/a=1", "-s", "/r/a=5", *names)
    assert [kh.value(name, "/r/a") for name in names] == 10 * ["0", "5"]


def test_edits_stop_at_the_first_failure_unless_told_otherwise(kh):
    for n in range(3):
        kh.write(f"{n}.xml", "<r><a/></r>" if n != 1 else "<r/>")
    kh("set", "-s", "/r/a=5", "0.xml", "1.xml", "2.xml", code=1)
    assert [kh.read(f"{n}.xml").count("5") for n in (0, 1, 2)] == [1, 0, 0]
    kh("set", "-k", "-s", "/r/a=5", "0.xml", "1.xml", "2.xml", code=1)
    assert [kh.read(f"{n}.xml").count("5") for n in (0, 1, 2)] == [1, 0, 1]


def test_adds_elements_on_lines_of_their_own(kh):
    before = kh.read("product.xml")
    kh("add", "product.xml", f"{LIST}/Item", f"{LIST}/Item[4]/Orbit=1004", f"{LIST}/Item[4]/Height=1",
       f"{LIST}/Item[4]/@id=d")
    changed(kh, "product.xml", before, ("    </List>", """      <Item id="d">
        <Orbit>1004</Orbit>
        <Height>1</Height>
      </Item>
    </List>"""))


def test_adds_beside_a_sibling(kh):
    before = kh.read("product.xml")
    kh("add", "product.xml", "--before", f"{LIST}/Item[1]", f"{LIST}/Title=Orbits")
    kh("add", "product.xml", "--after", f"{LIST}/Item[2]", f"{LIST}/Break")
    changed(kh, "product.xml", before, ('      <Item id="a">', '      <Title>Orbits</Title>\n      <Item id="a">'),
            ("<Remark/>\n      </Item>", "<Remark/>\n      </Item>\n      <Break/>"))


@pytest.mark.parametrize("text, result", [
    ("<r/>", "<r>\n  <n/>\n</r>"),
    ("<r><a/></r>", "<r><a/><n/></r>"),
    ("<r>\n\t<a/>\n</r>", "<r>\n\t<a/>\n\t<n/>\n</r>"),
    ("<r>\n    <a/></r>", "<r>\n    <a/>\n    <n/></r>"),
    ("<r>text</r>", "<r>text<n/></r>"),
    ("<r>one <a/> two</r>", "<r>one <a/> two<n/></r>"),
    ("<r>\n</r>", "<r>\n  <n/>\n</r>"),
    ("<r>\n\n  <a/>\n\n</r>", "<r>\n\n  <a/>\n  <n/>\n\n</r>"),
    ("<r>\n  <a/>\n  <!--c-->\n</r>", "<r>\n  <a/>\n  <!--c-->\n  <n/>\n</r>"),
])
def test_what_is_added_stands_as_its_neighbours_do(kh, text, result):
    kh.write("f.xml", text)
    kh("add", "f.xml", "/r/n")
    assert kh.read("f.xml") == f'<?xml version="1.0"?>\n{result}\n'


def test_the_indentation_of_a_file_is_taken_up_below(kh):
    kh.write("f.xml", "<r>\n    <a>\n        <b/>\n    </a>\n</r>")
    kh("add", "f.xml", "/r/a/b/c", "/r/a/b/c/d=1")
    assert kh.read("f.xml").split("?>\n")[1] == """<r>
    <a>
        <b>
            <c>
                <d>1</d>
            </c>
        </b>
    </a>
</r>
"""


def test_adds_in_the_namespace_of_the_name(kh, odd):
    kh("add", odd, "/r/p:n=1", "/r/m=2")
    assert text_of(kh, odd) == ODD.replace("</c>\n</p:r>", "</c>\n\t<p:n>1</p:n>\n\t<m>2</m>\n</p:r>")
    assert kh.value(odd, "/r/n") == "1"


def test_adds_to_all_of_an_array(kh):
    kh("add", "product.xml", f"{LIST}/Item[*]/Flag=0")
    assert kh("get", "product.xml", f"{LIST}/Item[*]/Flag").lines == ["0", "0", "0"]


@pytest.mark.parametrize("arguments, code", [
    (["/Nowhere/n"], 1), ([f"{LIST}/Item[9]/n"], 1), ([f"{LIST}/@count=4"], 4), ([f"{LIST}/n[2]"], 2),
    ([f"{LIST}/1n"], 2), (["/second"], 4), ([f"{LIST}/"], 2), ([f"{LIST}/@"], 2),
    (["--before", f"{DATA}", f"{LIST}/n"], 4), (["--before", "/r", "--after", "/r", f"{LIST}/n"], 2), ([], 2)])
def test_what_cannot_be_added_is_told(kh, arguments, code):
    before = kh.read("product.xml")
    kh("add", "product.xml", *arguments, code=code)
    assert kh.read("product.xml") == before


def test_removes_an_element_with_its_line(kh):
    before = kh.read("product.xml")
    kh("rm", "product.xml", f"{LIST}/Item[2]", f"{LIST}/Item[1]/Height/@unit")
    start = before.index('      <Item id="b">')
    end = before.index("      <!-- the third")
    assert kh.read("product.xml") == (before[:start] + before[end:]).replace('<Height unit="km">701', "<Height>701")


@pytest.mark.parametrize("text, path, result", [
    ("<r>\n  <a/>\n  <b/>\n</r>", "/r/a", "<r>\n  <b/>\n</r>"),
    ("<r>\n  <a/>\n  <b/>\n</r>", "/r/b", "<r>\n  <a/>\n</r>"),
    ("<r>\n  <a/>\n</r>", "/r/a", "<r/>"),
    ("<r>one <a/> two</r>", "/r/a", "<r>one  two</r>"),
    ("<r> <a/> two</r>", "/r/a", "<r>  two</r>"),
    ("<r>\n  <a/>\n  <b/>\n  <a/>\n</r>", "/r/a[*]", "<r>\n  <b/>\n</r>"),
    ("<r>\n  <!--c-->\n  <a/>\n</r>", "/r/a", "<r>\n  <!--c-->\n</r>"),
])
def test_no_empty_line_and_no_text_is_lost(kh, text, path, result):
    kh.write("f.xml", text)
    kh("rm", "f.xml", path)
    assert kh.read("f.xml") == f'<?xml version="1.0"?>\n{result}\n'


def test_removes_from_all_that_have_it(kh):
    kh("rm", "-p", f"{LIST}/Item[*]/Remark", "product.xml")
    assert kh("find", "--name", "Remark", "product.xml", code=1).out == ""


def test_what_cannot_be_removed_is_told(kh):
    before = kh.read("product.xml")
    assert kh("rm", "product.xml", f"{LIST}/Item[9]", code=1).err == f"product.xml: {LIST}/Item[9]: not found\n"
    kh("rm", "product.xml", f"{LIST}/@none", code=1)
    kh("rm", "-f", "product.xml", f"{LIST}/@none", f"{LIST}/Item[9]")
    kh("rm", "product.xml", "/Earth_Observation_File", code=4)
    kh("rm", "product.xml", "/Earth_Observation_File/@xmlns:xsi", code=4)
    assert kh.read("product.xml") == before


def test_copies_an_element_of_another_file(kh):
    before = kh.read("product.xml")
    kh("cp", "other.xml", f"{LIST}/Item[1]", "product.xml", LIST)
    changed(kh, "product.xml", before, ("    </List>", """      <Item id="a">
        <Orbit>2001</Orbit>
        <Height unit="km">711.5</Height>
        <Remark>first &amp; best</Remark>
      </Item>
    </List>"""))


def test_a_copy_is_indented_as_its_new_file_is(kh):
    kh.write("from.xml", "<r><a><b>1</b><c> two <d/></c></a></r>")
    kh.write("to.xml", "<t>\n\t<x/>\n\t<y/>\n</t>")
    kh("cp", "from.xml", "/r/a", "to.xml", "/t/x")
    assert kh.read("to.xml").split("?>\n")[1] == """<t>
\t<x>
\t\t<a>
\t\t\t<b>1</b>
\t\t\t<c> two <d/></c>
\t\t</a>
\t</x>
\t<y/>
</t>
"""


def test_copies_within_one_file_and_declares_what_a_copy_needs(kh, odd):
    kh("cp", "product.xml", f"{LIST}/Item[2]", "product.xml", LIST)
    assert kh.value("product.xml", f"{LIST}/Item[4]/Orbit") == "1002"
    kh("cp", odd, "/r/b", "product.xml", DATA)
    assert '<q:b xmlns:q="urn:q"><![CDATA[<2>]]></q:b>' in kh.read("product.xml")


@pytest.mark.parametrize("arguments, code", [
    (["none.xml", "/a", "product.xml", DATA], 3), (["other.xml", "/none", "product.xml", DATA], 1),
    (["other.xml", LIST, "product.xml", "/none"], 1), (["other.xml", LIST, "none.xml", DATA], 3),
    (["other.xml", LIST, "product.xml"], 2)])
def test_what_cannot_be_copied_is_told(kh, arguments, code):
    before = kh.read("product.xml")
    kh("cp", *arguments, code=code)
    assert kh.read("product.xml") == before


UNTIDY = """<r><a>1</a>
      <b><c/><d>text <i>mixed</i></d>
</b><!--c--><e xml:space="preserve"> <f/> </e><g>  </g></r>"""


@pytest.mark.parametrize("options, unit", [([], "  "), (["-i", "4"], "    "), (["--tabs"], "\t"), (["-i", "0"], "")])
def test_indents(kh, options, unit):
    kh.write("f.xml", UNTIDY)
    kh("fmt", *options, "f.xml")
    assert kh.read("f.xml").split("?>\n")[1] == f"""<r>
{unit}<a>1</a>
{unit}<b>
{unit}{unit}<c/>
{unit}{unit}<d>text <i>mixed</i></d>
{unit}</b>
{unit}<!--c-->
{unit}<e xml:space="preserve"> <f/> </e>
{unit}<g>  </g>
</r>
"""


def test_a_file_that_is_indented_so_is_left_alone(kh):
    before = kh.state("product.xml")
    kh("fmt", "product.xml", "other.xml")
    assert kh.state("product.xml") == before
    assert kh("fmt", "--check", "product.xml").out == ""


def test_checks_the_indentation(kh):
    kh.write("f.xml", UNTIDY)
    assert kh("fmt", "-k", "--check", "f.xml", "product.xml", code=1).err == "f.xml: not indented so\n"
    assert kh.read("f.xml") == UNTIDY


def test_a_deep_file_is_indented(kh):
    kh.write("deep.xml", 1000 * "<a>" + "1" + 1000 * "</a>")
    kh("fmt", "-i", "0", "deep.xml")
    assert kh.read("deep.xml").count("\n") == 2000
