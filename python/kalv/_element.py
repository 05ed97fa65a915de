"""Elements of a document."""

from __future__ import annotations

import typing

if typing.TYPE_CHECKING:
    import numpy
    import numpy.typing

    from ._core import XmlFile

_Default = typing.TypeVar("_Default")


class Element:
    """An element of a document: the document, and the element's path from the root.

    Paths start from the element, wherever the document's cursor stands; the cursor moves as it does for the
    document's own methods. What counts is the path: after an edit it can lead to another element, or to none.

    >>> doc = kalv.XmlFile.from_bytes(b"<List><Item id='a'><Value>1.5</Value></Item><Item id='b'/></List>")
    >>> first, second = doc.element("/List")
    >>> first["@id"], first.get_float("Value"), second.get("Value")
    ('a', 1.5, None)
    """

    __slots__ = {"document": "The document.", "path": "The path from the root."}

    def __init__(self, document: XmlFile, path: str) -> None:
        self.document = document
        self.path = path

    @property
    def name(self) -> str:
        """The element's name, without prefix."""
        return self.path.rpartition("/")[2].partition("[")[0]

    def _at(self, path: str) -> str:
        return self.path if path == "." else f"{self.path}/{path}"

    def __getitem__(self, path: str) -> str:
        """The text of the element or attribute at a path."""
        return self.document[self._at(path)]

    def __setitem__(self, path: str, value: str | int | float) -> None:
        """Sets the text of the element or attribute at a path."""
        self.document[self._at(path)] = value

    def __delitem__(self, path: str) -> None:
        """Removes the attribute at a path, or the element with all below it."""
        del self.document[self._at(path)]

    def __contains__(self, path: str) -> bool:
        """Whether a path leads to an element or attribute."""
        return self._at(path) in self.document

    @typing.overload
    def get(self, path: str) -> str | None: ...
    @typing.overload
    def get(self, path: str, default: _Default) -> str | _Default: ...
    def get(self, path: str, default: typing.Any = None) -> typing.Any:
        """The text at a path, or the default where there is no value."""
        return self.document.get(self._at(path), default)

    @typing.overload
    def get_str(self, path: str) -> str: ...
    @typing.overload
    def get_str(self, path: str, default: _Default) -> str | _Default: ...
    def get_str(self, path: str, default: typing.Any = ...) -> typing.Any:
        """The text at a path. Where there is no value: the default, or without one an error."""
        return self.document.get_str(self._at(path), default)

    @typing.overload
    def get_int(self, path: str) -> int: ...
    @typing.overload
    def get_int(self, path: str, default: _Default) -> int | _Default: ...
    def get_int(self, path: str, default: typing.Any = ...) -> typing.Any:
        """The integer at a path. Where there is no value: the default, or without one an error."""
        return self.document.get_int(self._at(path), default)

    @typing.overload
    def get_float(self, path: str) -> float: ...
    @typing.overload
    def get_float(self, path: str, default: _Default) -> float | _Default: ...
    def get_float(self, path: str, default: typing.Any = ...) -> typing.Any:
        """The real at a path. Where there is no value: the default, or without one an error."""
        return self.document.get_float(self._at(path), default)

    def values(self, path: str, dtype: numpy.typing.DTypeLike = float) -> numpy.ndarray[typing.Any, typing.Any]:
        """The values of all nodes that a path with one "[*]" stands for, as an array of numpy's."""
        return self.document.values(self._at(path), dtype)

    def children(self) -> list[Element]:
        """The elements directly below, as they are now."""
        return self.document.children(self.path)

    def __iter__(self) -> typing.Iterator[Element]:
        """Goes through the elements directly below, as they are when it begins."""
        return iter(self.children())

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Element):
            return NotImplemented
        return self.document is other.document and self.path == other.path

    def __hash__(self) -> int:
        return hash((id(self.document), self.path))

    def __repr__(self) -> str:
        return f"Element({self.path!r})"


Element.__module__ = "kalv"
