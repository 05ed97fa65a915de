"""The fixed header of a product file."""

from dataclasses import dataclass


@dataclass
class FixedHeader:
    """The items of a fixed header, each named after its tag. Texts are taken as they are: dates are not checked.

    `schema` and `kvstd_version` are neither read from a document nor written with the other items. `header_type`
    is the format version * 10 + the extension type, see `XmlFile.create_header`.

    >>> doc = kalv.XmlFile().create()
    >>> doc.create_header(kalv.FixedHeader(mission="QH1", file_version=3, header_type=24))
    >>> doc.header.mission, doc.header.file_version
    ('QH1', 3)
    """

    file_name: str = ""
    schema: str = "_NOSCHEMA_"
    file_description: str = ""
    notes: str = ""
    mission: str = ""
    file_class: str = ""
    file_type: str = ""
    validity_start: str = ""
    validity_stop: str = ""
    file_version: int = 0
    kvstd_version: str = ""
    system: str = ""
    creator: str = ""
    creator_version: str = ""
    creation_date: str = ""
    header_type: int = -1


FixedHeader.__module__ = "kalv"
