"""Names of product files.

>>> kalv.file_name.compose(91, "OPER", "AUXDATA", "2031_2032_0001")
'QH1_OPER_AUXDATA_2031_2032_0001.EOF'
>>> kalv.file_name.split("QH1_OPER_AUXDATA_2031_2032_0001.EOF")
FileNameItems(satellite=91, file_class='OPER', file_type='AUXDATA', instance='2031_2032_0001.EOF')
"""

import enum
import os
import typing

from . import _core

__all__ = ["Extension", "FileNameItems", "compose", "extension_of", "satellite_id", "split"]


class Extension(enum.IntEnum):
    """The extension types of product files."""

    KLV = 0
    """A full product file with a header."""
    HDR = 1
    """A header-only file."""
    DBL = 2
    """A file that carries no header."""
    EOF = 4
    """A full product file with a header."""


class FileNameItems(typing.NamedTuple):
    """The parts of a product file name; the extension stays part of the last one."""

    satellite: int
    """The satellite; 0 for an unknown mission code."""
    file_class: str
    file_type: str
    instance: str
    """The last three of six parts; empty where there are fewer."""


def compose(
    satellite: int, file_class: str, file_type: str, instance: str, extension: typing.Optional[int] = None
) -> str:
    """Composes the name of a product file, by default with the extension of the satellite's files.

    >>> kalv.file_name.compose(91, "OPER", "AUXDATA", "2031", kalv.file_name.Extension.HDR)
    'QH1_OPER_AUXDATA_2031.HDR'
    """
    if extension is None:
        extension = extension_of(satellite)
    return _core.compose_file_name(satellite, file_class, file_type, instance, extension)


def split(name: typing.Union[str, "os.PathLike[str]"]) -> FileNameItems:
    """Splits the name of a product file; a folder before it is left out.

    >>> from pathlib import Path
    >>> kalv.file_name.split(Path("/data/QH1_OPER_AUXDATA_2031_2032_0001.EOF")).file_type
    'AUXDATA'
    """
    return FileNameItems(*_core.split_file_name(os.path.basename(os.fspath(name))))


def satellite_id(name: str) -> int:
    """The number of a satellite; 400 for an unknown name. Case matters."""
    return _core.satellite_id(name)


def extension_of(satellite: int) -> Extension:
    """The extension of a satellite's product files."""
    return Extension(_core.extension_of(satellite))
