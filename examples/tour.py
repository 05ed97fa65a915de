"""From a product file to arrays: docs/python_tour.md goes through it step by step.

Usage: tour.py FILE     the product file of the tutorial
"""

import dataclasses
import sys

import kalv
import numpy

# Look into a product file.
passes = "/Orvanto_File/Data_Block/List_of_Passes"
with kalv.XmlFile(sys.argv[1]) as doc:
    header = doc.header
    print(header.mission, header.file_type, header.validity_start)
    print(doc.get_int(passes + "/@count"), "passes, the first one", doc[passes + "/Pass[1]/Track"])
    for each in doc.element(passes):
        print(each.get_int("Orbit"), each["Track"], each.get_float("Height"), each["Height/@unit"])

# Make one of a whole day, with a height every quarter of an hour.
times = numpy.arange("2031-04-13T00:00", "2031-04-14T00:00", 15, dtype="datetime64[m]")
hours = numpy.arange(len(times)) / 4
tide = 0.9 * numpy.sin(2 * numpy.pi * hours / 12.42) + 0.3 * numpy.cos(2 * numpy.pi * hours / 24)

satellite = kalv.file_name.split(sys.argv[1]).satellite
name = kalv.file_name.compose(satellite, "OPER", "SEAHEIGHTS", "20310413T000000_20310414T000000_0001")
made = kalv.XmlFile().create()
made.create_header(
    dataclasses.replace(
        header,
        file_name=name,
        validity_start="UTC=2031-04-13T00:00:00",
        validity_stop="UTC=2031-04-14T00:00:00",
        header_type=kalv.file_name.Extension.EOF,
    )
)
made.add_child("/Orvanto_File", "Data_Block")
made.add_child(".", "List_of_Passes")
made.add_attribute(".", "count", len(times))
for time, height in zip(times, tide):
    made.add_child(passes, "Pass")
    made.add_child(".", "Time", f"UTC={time}:00")
    made.add_next(".", "Height", height, "%.3f")
made.save(name)

# Read it into numpy.
with kalv.XmlFile(name) as doc:
    heights = doc.values(passes + "/Pass[*]/Height")
    texts = doc.values(passes + "/Pass[*]/Time", dtype=str)
times = numpy.char.replace(texts, "UTC=", "").astype("datetime64[s]")
print(heights.shape, heights.dtype, times.dtype)
print(f"from {heights.min()} m to {heights.max()} m, highest at {times[heights.argmax()]}")

# What goes wrong says so.
try:
    kalv.XmlFile(name).values(passes + "/Pass[*]/Time")
except kalv.KalvError as error:
    print(error.code.name, "in", error.function)
    print(error.report)
