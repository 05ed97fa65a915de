"""What the tests share. `xml` makes a document from a text."""

import pathlib
import re
import typing

import kalv
import pytest

CASES = pathlib.Path(__file__).parents[2] / "tests" / "cases"


def cases(name: str) -> typing.List[tuple]:
    """The rows of a table that the C++ tests include as an initialiser."""
    text = (CASES / f"{name}.inc").read_text(encoding="utf-8")
    rows = re.sub(r"^\s*//.*$", "", text, flags=re.MULTILINE).translate(str.maketrans("{}", "()"))
    constants = {f"KH_{status.name}": status for status in kalv.Status}
    constants.update(LONG_MAX=2**63 - 1, LONG_MIN=-(2**63), DBL_MAX=1.7976931348623157e308)
    return eval(f"[{rows}]", constants)


@pytest.fixture
def xml() -> typing.Iterator[typing.Callable[[str], kalv.XmlFile]]:
    made = []

    def make(text: str) -> kalv.XmlFile:
        made.append(kalv.XmlFile.from_bytes(text.encode()))
        return made[-1]

    yield make
    for doc in made:
        doc.close()


def code_of(call: typing.Callable[[], object]) -> kalv.Status:
    """The status of the KalvError that a call raises."""
    with pytest.raises(kalv.KalvError) as caught:
        call()
    return caught.value.code
