"""kh name: composing, splitting and checking product file names."""

import pytest

GOOD = "QQ_OPER_ORBIT_20260101_20260102_0001.KLV"


@pytest.mark.parametrize("options, name", [
    (["--satellite", "Quarvosk"], "QQ_OPER_ORBIT_A_B_C.KLV"),
    (["--satellite", "41", "--extension", "hdr"], "QQ_OPER_ORBIT_A_B_C.HDR"),
    (["--satellite", "KESTERWIL1"], "QK1_OPER_ORBIT_A_B_C.EOF"),
    (["--satellite", "Kesterwil1", "--extension", "none"], "QK1_OPER_ORBIT_A_B_C"),
    (["--satellite", "GenericMeo", "--extension", "dbl"], "XXX_OPER_ORBIT_A_B_C.DBL"),
])
def test_composes(kh, options, name):
    arguments = ["name", "compose", *options, "--class", "OPER", "--type", "ORBIT", "--instance", "A_B_C"]
    assert kh(*arguments).out == name + "\n"
    assert kh(*arguments, "--json").json == [{"name": name}]


def test_an_empty_class_has_its_own_mark(kh):
    assert kh("name", "compose", "--satellite", "41", "--type", "ORBIT", "--instance", "A").out == "QQ_XXXX_ORBIT_A.KLV\n"


@pytest.mark.parametrize("options, code", [
    (["--satellite", "Nobody"], 1), (["--satellite", "41", "--class", "TOOLONG"], 2), (["--satellite", "41", "--type", 11 * "x"], 2),
    (["--satellite", "41", "--instance", 43 * "x"], 2), (["--satellite", "41", "--extension", "zip"], 2), (["--satellite", "41", "word"], 2)])
def test_refuses_what_makes_no_name(kh, options, code):
    assert kh("name", "compose", *options, code=code).out == ""


def test_splits(kh):
    assert kh("name", "split", "folder/" + GOOD, "A_B").lines == [
        f"folder/{GOOD}\t41\tOPER\tORBIT\t20260101_20260102_0001\tKLV", "A_B\t0\tB\t\t\t"]
    assert kh("name", "split", "--json", "QH1_TEST_T_1_2_3.EOF").json == [
        {"file": "QH1_TEST_T_1_2_3.EOF", "satellite": 91, "class": "TEST", "type": "T", "instance": "1_2_3",
         "extension": "EOF"}]


def test_a_name_that_is_too_long_is_not_split(kh):
    assert kh("name", "split", 65 * "x", GOOD, code=1).lines[0].startswith(GOOD)


def test_a_good_name_has_no_fault(kh):
    assert kh("name", "check", GOOD, "QH1_TEST_ORBIT_1_2_3.EOF", "QH1_TEST_ORBIT_1_2_3.HDR").out == ""


@pytest.mark.parametrize("name, fault", [
    ("AA_OPER_ORBIT_1_2_3.KLV", "the mission code is unknown"),
    ("QQ_OP_ORBIT_1_2_3.KLV", "the class has not 4 characters"),
    ("QQ_OPER_ORBITORBITX_1_2_3.KLV", "the type has not 1 to 10 characters"),
    ("QQ_OPER_ORBIT_1_2.KLV", "there are fewer than six parts"),
    ("QQ_OPER_ORBIT_1_2_3.XML", "the extension is none of"),
    ("QQ_OPER_ORBIT_1_2_3.EOF", "full products of this mission have the extension KLV"),
    ("QH1_OPER_ORBIT_1_2_3.KLV", "full products of this mission have the extension EOF"),
])
def test_a_fault_is_named(kh, name, fault):
    result = kh("name", "check", name, GOOD, code=1)
    assert result.err.startswith(f"{name}: {fault}")
    assert result.err.count("\n") == 1
    elements = kh("name", "check", "--json", name, GOOD, code=1).json
    assert [element["valid"] for element in elements] == [False, True]
    assert elements[0]["faults"][0].startswith(fault)


def test_the_header_is_compared_with_the_name(kh):
    kh.write(GOOD, kh.read("product.xml"))
    kh("name", "check", "--header", GOOD)
    other = kh.write("QQ_TEST_STATE_1_2_3.KLV", kh.read("product.xml"))
    assert kh("name", "check", "--header", other, code=1).err.splitlines() == [
        f'{other}: the header\'s File_Name is "QQ_OPER_ORBIT_20260101_20260102_0001"',
        f'{other}: the header\'s File_Class is "OPER"', f'{other}: the header\'s File_Type is "ORBIT"']


def test_names_come_from_standard_input(kh):
    assert len(kh("name", "split", "-", stdin=f"{GOOD}\nA_B\n").lines) == 2
