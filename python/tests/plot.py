"""Draws the plot of docs/python_tour.md, and compares it with the picture there.

Usage: plot.py PROGRAM FILE PICTURE
"""

import pathlib
import subprocess
import sys

import matplotlib.image
import numpy

subprocess.run([sys.executable, *sys.argv[1:]], check=True)
shown = matplotlib.image.imread(pathlib.Path(__file__).parents[2] / "docs" / "python_tour.png")
drawn = matplotlib.image.imread(sys.argv[3])
assert drawn.shape == shown.shape, (drawn.shape, shown.shape)
difference = numpy.abs(drawn - shown).mean()  # fonts may differ a little
assert difference < 0.01, difference
print("the picture is the one on the page")
