"""What is raised, and what the package says of itself."""

import doctest
import inspect
import pathlib
import pickle
import re
import typing

import kalv
import pytest
from conftest import cases


@pytest.mark.parametrize("code, text", cases("statuses"))
def test_statuses(code, text):
    assert kalv.Status(code).value == code
    assert (code < 0) == kalv.Status(code).name.startswith("ERR_")


def test_every_status_is_there():
    assert {row[0] for row in cases("statuses")} == set(kalv.Status)
    header = (pathlib.Path(__file__).parents[2] / "include" / "kalv" / "status.h").read_text()
    named = re.findall(r"^ *KH_(\w+) = (-?\d+)", header, re.MULTILINE)
    assert {name: int(code) for name, code in named} == {status.name: status.value for status in kalv.Status}


def test_an_error_tells_what_is_wrong():
    doc = kalv.XmlFile.from_bytes(b"<R/>")
    with pytest.raises(kalv.KalvError) as caught:
        doc.get_int("/R/None")
    error = caught.value
    assert error.code is kalv.Status.ERR_NOT_FOUND
    assert error.message == dict(cases("statuses"))[error.code]
    assert error.function == "XmlFile.get_int"
    assert error.report.startswith(error.message + "\n")
    assert "Path: /R/None" in error.report
    assert str(error).startswith(f"XmlFile.get_int: {error.message} (-11)\n")
    assert str(error).endswith(error.report.partition("\n")[2].rstrip("\n"))
    with pytest.raises(kalv.KalvError, match="XmlFile.get_int"):
        raise pickle.loads(pickle.dumps(error))


def test_a_parse_error_tells_where():
    with pytest.raises(kalv.KalvError) as caught:
        kalv.XmlFile.from_bytes(b"<R>\n  <A></B>\n</R>")
    assert caught.value.function == "XmlFile.read_bytes"
    assert ":2:" in caught.value.report


def test_a_report_belongs_to_its_error():
    doc = kalv.XmlFile.from_bytes(b"<R/>")
    errors = []
    for path in ("/R/One", "/R/Two"):
        with pytest.raises(kalv.KalvError) as caught:
            doc[path]
        errors.append(caught.value)
    assert "One" in errors[0].report and "Two" in errors[1].report and "One" not in errors[1].report


def test_printing(capfd):
    kalv.set_verbose()
    try:
        with pytest.raises(kalv.KalvError):
            kalv.XmlFile.from_bytes(b"<R/>")["/R/None"]
    finally:
        kalv.set_silent()
    assert "Path: /R/None" in capfd.readouterr().err
    with pytest.raises(kalv.KalvError):
        kalv.XmlFile.from_bytes(b"<R/>")["/R/None"]
    assert capfd.readouterr().err == ""


def test_version():
    assert re.fullmatch(r"\d+\.\d+", kalv.__version__)


def documented() -> typing.Iterator[typing.Tuple[str, object]]:
    """Everything public, and its methods."""
    yield "kalv", kalv
    for module in (kalv, kalv.file_name):
        for name in module.__all__:
            value = getattr(module, name)
            if not isinstance(value, str):
                yield name, value
            if inspect.isclass(value):
                for member in vars(value):
                    if not member.startswith("_") or member in ("__getitem__", "__setitem__"):
                        yield f"{name}.{member}", getattr(value, member)


@pytest.mark.parametrize("name, value", [pytest.param(*row, id=row[0]) for row in documented()])
def test_documentation(name, value, tmp_path, monkeypatch):
    """All is documented, and its examples are true."""
    if isinstance(value, (int, str)):
        return  # a member of an enumeration or a default
    text = inspect.getdoc(value)
    assert text
    monkeypatch.chdir(tmp_path)
    runner = doctest.DocTestRunner(optionflags=doctest.ELLIPSIS)
    runner.run(doctest.DocTestParser().get_doctest(text, {"kalv": kalv}, name, None, 0))
    assert runner.failures == 0
