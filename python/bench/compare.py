"""Compares ways to open a file and read an array of reals into numpy, side by side.

    compare.py [--values N] [--rounds N] [--repeat N] [--program KALV_PYTHON_BENCH]

Every contender runs in a process of its own, and all take turns, round by round. What a process does once, such as
importing modules, is not counted, and none gives memory back to the system in between, as some would. The sums of the
values have to agree. Times are medians, in milliseconds of the processor, so that what else the machine does counts
little; "/ kalv" is how many times as long as the package's it is.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

# What a row of the file looks like, the library's path to its values, and the path of the others below the root.
SHAPES = {
    "values one after the other": ("<Value>{:.3f}</Value>\n", "/List/Value[*]", "Value"),
    "records of one value": ("<Item>\n    <Value>{:.3f}</Value>\n  </Item>\n", "/List/Item[*]/Value", "Item/Value"),
    "records of three": (
        "<Item>\n    <Time>2031-01-01T00:00:00</Time>\n    <Value>{:.3f}</Value>\n    <Flag>0</Flag>\n  </Item>\n",
        "/List/Item[*]/Value",
        "Item/Value",
    ),
    "attributes": ('<Item value="{:.3f}"/>\n', "/List/Item[*]/@value", "Item/@value"),
}


def use_kalv(file, path, _):
    import kalv

    with kalv.XmlFile(file) as doc:
        begin = time.process_time()
        values = doc.values(path, dtype=float)
        return values, time.process_time() - begin


def use_lxml(file, _, path):
    import lxml.etree
    import numpy

    tree = lxml.etree.parse(file)
    begin = time.process_time()
    if "@" not in path:
        path += "/text()"
    values = numpy.array([float(text) for text in tree.xpath("/List/" + path)])
    return values, time.process_time() - begin


def use_lxml_plain(file, _, path):
    """The fastest of the ways with XPath: texts that do not know where they come from."""
    import lxml.etree
    import numpy

    tree = lxml.etree.parse(file)
    begin = time.process_time()
    if "@" not in path:
        path += "/text()"
    values = numpy.array([float(text) for text in tree.xpath("/List/" + path, smart_strings=False)])
    return values, time.process_time() - begin


def use_elementtree(file, _, path):
    import xml.etree.ElementTree

    import numpy

    tree = xml.etree.ElementTree.parse(file)
    begin = time.process_time()
    elements, _, attribute = path.partition("/@")
    found = tree.getroot().findall(elements)
    values = numpy.array([float(each.get(attribute) if attribute else each.text) for each in found])
    return values, time.process_time() - begin


WAYS = {
    "kalv": use_kalv,
    "lxml": use_lxml,
    "lxml, plain strings": use_lxml_plain,
    "ElementTree": use_elementtree,
}


def measure(way, file, path, other_path, repeat):
    """What a process of its own runs; prints what read_values.cc prints."""
    WAYS[way](file, path, other_path)
    for _ in range(repeat):
        begin = time.process_time()
        values, reading = WAYS[way](file, path, other_path)
        print(time.process_time() - begin, reading)
    print(float(values.sum()))


def times_of(command):
    environment = {**os.environ, "MALLOC_TRIM_THRESHOLD_": str(2**30)}
    done = subprocess.run(command, check=True, capture_output=True, text=True, env=environment)
    *lines, total = done.stdout.splitlines()
    return [[float(part) for part in line.split()] for line in lines], float(total)


def compare(shape, folder, values, rounds, repeat, program):
    row, path, other_path = SHAPES[shape]
    file = folder / "file.xml"
    rows = "".join("  " + row.format(700 + i % 1000 / 7) for i in range(values))
    file.write_text(f'<?xml version="1.0"?>\n<List count="{values}">\n{rows}</List>\n')

    commands = {way: [sys.executable, __file__, "--way", way, file, path, other_path, str(repeat)] for way in WAYS}
    if program:
        commands["C++"] = [program, file, path, str(repeat)]
    measured = {way: [] for way in commands}
    totals = set()
    for _ in range(rounds):
        for way, command in commands.items():
            repetitions, total = times_of(command)
            measured[way] += repetitions
            totals.add(round(total, 3))
    assert len(totals) == 1, totals
    times = {way: [statistics.median(column) for column in zip(*rows)] for way, rows in measured.items()}

    print(f"\n{shape}: {values} values, {file.stat().st_size / 1e6:.1f} MB\n")
    print(f"| {'':<20} | {'open and read':>13} | {'/ kalv':>6} | {'read alone':>10} | {'/ kalv':>6} |")
    print(f"|{'-' * 22}|{'-' * 14}:|{'-' * 7}:|{'-' * 11}:|{'-' * 7}:|")
    for way, (both, reading) in times.items():
        ratios = both / times["kalv"][0], reading / times["kalv"][1]
        print(f"| {way:<20} | {both * 1e3:>13.1f} | {ratios[0]:>6.2f} | {reading * 1e3:>10.1f} | {ratios[1]:>6.2f} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--values", type=int, default=100_000)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--repeat", type=int, default=5, help="how often a process reads the file")
    parser.add_argument("--program", help="the C++ program to compare with")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        for shape in SHAPES:
            compare(shape, pathlib.Path(folder), arguments.values, arguments.rounds, arguments.repeat, arguments.program)


if __name__ == "__main__":
    if sys.argv[1:2] == ["--way"]:
        way, file, path, other_path, repeat = sys.argv[2:]
        measure(way, file, path, other_path, int(repeat))
    else:
        main()
