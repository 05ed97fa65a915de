"""Plots the heights of a product file over time.

Usage: plot.py FILE PICTURE     the product file that tour.py makes; what the picture is, its name says
"""

import sys

import kalv
import matplotlib
import numpy

matplotlib.use("agg")  # needs no screen
from matplotlib import pyplot

passes = "/Orvanto_File/Data_Block/List_of_Passes/Pass[*]"
with kalv.XmlFile(sys.argv[1]) as doc:
    mission = doc.header.mission
    heights = doc.values(passes + "/Height")
    times = numpy.char.replace(doc.values(passes + "/Time", dtype=str), "UTC=", "").astype("datetime64[s]")

figure, axes = pyplot.subplots(figsize=(8, 3), layout="constrained")
axes.plot(times, heights, ".-")
axes.set_title(mission)
axes.set_ylabel("sea height / m")
axes.grid()
figure.savefig(sys.argv[2])
