"""kh get: values by path, from one file or many."""

import pytest
from conftest import DATA, HEADER


def test_prints_the_value_of_an_element_as_it_stands(kh):
    assert kh("get", "product.xml", f"{HEADER}/File_Type").out == "     ORBIT\n"


def test_expands_what_the_file_escapes(kh):
    assert kh("get", "product.xml", f"{DATA}/List/Item[1]/Remark").out == "first & best\n"


def test_prints_an_attribute(kh):
    assert kh("get", "product.xml", f"{DATA}/List/@count").out == "3\n"


def test_prints_each_path_in_the_order_asked_for(kh):
    assert kh("get", "product.xml", f"{DATA}/List/Item[2]/Orbit", f"{DATA}/List/Item[1]/Orbit").lines == ["1002", "1001"]


def test_prints_an_empty_line_for_an_empty_element(kh):
    assert kh("get", "product.xml", f"{HEADER}/Notes").out == "\n"


def test_starts_a_relative_path_at_the_root(kh):
    assert kh("get", "product.xml", "Data_Block/@type").out == "xml\n"


@pytest.mark.parametrize("path, values", [
    ("List/Item[*]/Orbit", ["1001", "1002", "1003"]),
    ("List/Item[*]/@id", ["a", "b", "c"]),
    ("List/Item[*]/Remark", ["first & best", "", ""]),
    ("List/Item[*]/Height/@unit", ["km", "km", "m"]),
    ("List[*]/Item[*]/Orbit", ["1001", "1002", "1003"]),
    ("List/Item[2]/Orbit[*]", ["1002"]),
])
def test_prints_arrays(kh, path, values):
    assert kh("get", "product.xml", f"{DATA}/{path}").lines == values


def test_tells_an_array_value_that_is_missing_from_an_empty_one_in_json(kh):
    values = kh("get", "--json", "product.xml", f"{DATA}/List/Item[*]/Remark").json[0]["values"]
    assert [value["value"] for value in values] == ["first & best", "", None]


def test_numbers_are_numbers_in_json(kh):
    result = kh("get", "--json", "product.xml", f"{DATA}/List/Item[2]/Orbit:i", f"{DATA}/List/Item[2]/Height:r",
                f"{DATA}/List/Item[2]/Orbit:s", f"{DATA}/List/Item[2]/Orbit")
    assert result.json == [{"file": "product.xml", "values": [
        {"path": f"{DATA}/List/Item[2]/Orbit", "value": 1002},
        {"path": f"{DATA}/List/Item[2]/Height", "value": 702.25},
        {"path": f"{DATA}/List/Item[2]/Orbit", "value": "1002"},
        {"path": f"{DATA}/List/Item[2]/Orbit", "value": "1002"}]}]


def test_an_integer_is_printed_without_what_stands_around_it(kh):
    assert kh("get", "product.xml", f"{HEADER}/File_Version:i").out == "1\n"


@pytest.mark.parametrize("type", ["i", "r"])
def test_a_text_that_is_no_number_cannot_be_read_as_one(kh, type):
    result = kh("get", "product.xml", f"{HEADER}/Mission:{type}", code=3)
    assert result.out == ""
    assert result.err.startswith(f"product.xml: {HEADER}/Mission: no ")


@pytest.mark.parametrize("path", ["/Other", "/Earth_Observation_File/Nothing", f"{DATA}/List/Item[4]/Orbit",
                                  f"{DATA}/@none", f"{DATA}/Nothing[*]/Orbit", f"{DATA}/List/Item[*]/Nothing"])
def test_what_is_not_found_is_said_with_code_1(kh, path):
    result = kh("get", "product.xml", path, code=1)
    assert (result.out, result.err) == ("", f"product.xml: {path}: not found\n")


def test_what_is_not_found_does_not_hide_what_is(kh):
    result = kh("get", "--json", "product.xml", "Nothing", "Data_Block/@type", code=1)
    assert [value["value"] for value in result.json[0]["values"]] == [None, "xml"]


@pytest.mark.parametrize("path", ["/", "", "/a[*", ".x", "/a" * 51])
def test_what_is_no_path_is_a_wrong_usage(kh, path):
    if path == "/a[*":
        kh("get", "product.xml", path, code=1)
    else:
        assert kh("get", "product.xml", path, code=2).err.startswith("kh: ")


def test_an_element_that_holds_elements_has_no_value(kh):
    result = kh("get", "product.xml", f"{DATA}/List", code=1)
    assert result.err.startswith(f"product.xml:28: {DATA}/List: holds ")


def test_lines_of_several_files_begin_with_the_file(kh):
    assert kh("get", "-p", f"{DATA}/List/Item[*]/Orbit", "product.xml", "other.xml").lines == [
        "product.xml\t1001", "product.xml\t1002", "product.xml\t1003",
        "other.xml\t2001", "other.xml\t2002", "other.xml\t2003"]


def test_lines_with_names_escape_what_would_end_a_cell(kh):
    kh.write("odd.xml", "<R><V>a\tb\nc\\d</V></R>")
    assert kh("get", "-H", "odd.xml", "/R/V").out == "odd.xml\t/R/V\ta\\tb\\nc\\\\d\n"
    assert kh("get", "odd.xml", "/R/V").out == "a\tb\nc\\d\n"


def test_values_can_end_with_a_zero_byte(kh):
    kh.write("odd.xml", "<R><V>a\nb</V><V>c</V></R>")
    assert kh("get", "-0", "odd.xml", "/R/V[*]").out == "a\nb\0c\0"


def test_several_paths_can_stand_in_one_option(kh):
    assert kh("get", "-p", f"{DATA}/@type,{DATA}/List/@count:i", "product.xml").lines == ["xml", "3"]


def test_without_a_path_it_is_a_wrong_usage(kh):
    kh("get", "product.xml", code=2)
    kh("get", code=2)
    kh("get", "-p", "/a,,/b", "product.xml", code=2)
