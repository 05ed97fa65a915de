"""The recipes of the cookbook for Python.

Usage: cookbook.py FILE     the tutorial's product file
"""

import concurrent.futures
import dataclasses
import gzip
import math
import pathlib
import sys
import warnings

import kalv
import numpy

product = pathlib.Path(sys.argv[1])
passes = "/Orvanto_File/Data_Block/List_of_Passes"


def table(path):
    """The values of all passes as columns."""
    with kalv.XmlFile(path) as doc:
        return {
            name: doc.values(f"{passes}/Pass[*]/{name}", dtype)
            for name, dtype in {"Orbit": int, "Track": str, "Height": float}.items()
        }


def heights_with_gaps(doc):
    """The height of every pass, and nan where a pass has none."""
    return numpy.array([each.get_float("Height", math.nan) for each in doc.element(passes)])


def shift(source, target, offset):
    """Adds an offset to all heights, under a new name and version."""
    with kalv.XmlFile(source) as doc:
        heights = doc.values(passes + "/Pass[*]/Height") + offset
        for each, height in zip(doc.element(passes), heights):
            each.document.set_value(each.path + "/Height", height, "%.3f")
        doc.header = dataclasses.replace(doc.header, file_name=target.name, file_version=2)
        doc.save(target)


def mean_height(path):
    with kalv.XmlFile(path) as doc:
        return doc.values(passes + "/Pass[*]/Height").mean()


def mean_heights(paths):
    """The mean height of each of many files, in threads: each has a document of its own."""
    with concurrent.futures.ThreadPoolExecutor() as pool:
        return dict(zip(paths, pool.map(mean_height, paths)))


def mission_of(data):
    """The mission in a file that stands in memory, such as a member of an archive or the answer of a server."""
    with kalv.XmlFile.from_bytes(data) as doc:
        return doc.header.mission


def exact_path(doc, path):
    """Moves along a path, and takes one that leads above the root for the mistake that it is."""
    with warnings.catch_warnings():
        warnings.simplefilter("error", kalv.KalvWarning)
        doc.to_path(path)


def is_well_formed(path):
    """Whether a file is well-formed; says where it is not. Any other trouble goes on."""
    try:
        kalv.XmlFile(path).close()
    except kalv.KalvError as error:
        if error.code != kalv.Status.ERR_PARSE:
            raise
        print(error.report)
        return False
    return True


columns = table(product)
ascending = columns["Track"] == "ascending"
print(columns["Orbit"][ascending], columns["Height"][ascending])

with kalv.XmlFile(product) as document:
    del document[passes + "/Pass[2]/Height"]
    print(heights_with_gaps(document))
    print(document.get_int(passes + "/Pass[9]/Orbit", None))
    try:
        exact_path(document, "/Orvanto_File/../../Data_Block")
    except kalv.KalvWarning as warning:
        print(warning.code.name)

shift(product, pathlib.Path("shifted.EOF"), 10)
for file, mean in mean_heights([product, pathlib.Path("shifted.EOF")]).items():
    print(f"{file.name}: {mean:.3f}")
print(mission_of(gzip.compress(product.read_bytes())))
pathlib.Path("broken.xml").write_text("<List>\n  <Item></List>\n", encoding="utf-8")
print(is_well_formed("broken.xml"))
