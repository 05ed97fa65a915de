"""What is raised and warned of."""

import sys
import warnings


class _Report(Exception):
    """What the library tells of a status other than 0."""

    def __init__(self, code: int, message: str, function: str, report: str = "") -> None:
        super().__init__(code, message, function, report)
        self.code = code
        self.message = message
        self.function = function
        self.report = report

    def __str__(self) -> str:
        trace = self.report.partition("\n")[2].rstrip("\n")
        return f"{self.function}: {self.message} ({int(self.code)})" + (f"\n{trace}" if trace else "")


class KalvError(_Report):
    """A call failed.

    `code` is the `kalv.Status`, `message` its text, `function` what was called, such as "XmlFile.to_path", and
    `report` the library's own report: the message, and one line for each of its functions on the way.

    >>> try:
    ...     kalv.XmlFile("missing.xml")
    ... except kalv.KalvError as error:
    ...     error.code, error.function
    (<Status.ERR_PARSE: -4>, 'XmlFile.read')
    """


class KalvWarning(_Report, UserWarning):
    """A call did its work, with a reservation. It has the attributes of a KalvError.

    >>> import warnings
    >>> doc = kalv.XmlFile.from_bytes(b"<List><Item>1</Item></List>")
    >>> with warnings.catch_warnings():
    ...     warnings.simplefilter("error", kalv.KalvWarning)
    ...     doc.to_path("../../Item")
    Traceback (most recent call last):
    kalv.KalvWarning: XmlFile.to_path: KH: The path goes up too much. Root already reached (1)
    ...
    """


class InUseError(RuntimeError):
    """Two threads used one document at the same time. Give each a document of its own, or share a lock."""


for _class in (KalvError, KalvWarning, InUseError):
    _class.__module__ = "kalv"


def warn(code: int, message: str, function: str, report: str) -> None:
    """Shows a warning at the line that called the package, wherever in it the call was made."""
    level = 2
    frame = sys._getframe(1)
    while frame.f_back and frame.f_globals.get("__name__", "").partition(".")[0] == "kalv":
        frame = frame.f_back
        level += 1
    warnings.warn(KalvWarning(code, message, function, report), stacklevel=level)
