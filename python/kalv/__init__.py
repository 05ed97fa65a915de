"""Reads, navigates, builds, edits and writes the XML data files of satellite ground-segment processors.

>>> doc = kalv.XmlFile.from_bytes(b"<List><Item id='a'>1.5</Item><Item id='b'>2</Item></List>")
>>> doc["/List/Item[2]/@id"], doc.get_float("/List/Item[1]")
('b', 1.5)
>>> doc.values("/List/Item[*]", dtype=float)
array([1.5, 2. ])
"""

from . import file_name
from ._core import Status, XmlFile, __version__, set_silent, set_verbose
from ._element import Element
from ._errors import InUseError, KalvError, KalvWarning
from ._header import FixedHeader

__all__ = [
    "Element",
    "FixedHeader",
    "InUseError",
    "KalvError",
    "KalvWarning",
    "Status",
    "XmlFile",
    "__version__",
    "file_name",
    "set_silent",
    "set_verbose",
]
