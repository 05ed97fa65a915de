"""Imports the package from an installed tree that was moved, and from a wheel in a virtual environment."""

import os
import pathlib
import subprocess
import sys
import tempfile

PYTHON = pathlib.Path(__file__).resolve().parents[1]
BUILD = os.environ["KALV_BUILD"]

# Prints where the package and the libraries come from.
USE = """
import kalv, re
doc = kalv.XmlFile.from_bytes(b"<R><A>1</A><A>2</A></R>")
assert doc.values("/R/A[*]").sum() == 3
print(kalv.__file__)
print(*sorted(set(re.findall(r"/\\S*/libKalv\\S*", open("/proc/self/maps").read()))), sep="\\n")
"""


def run(*command, **more):
    subprocess.run([str(part) for part in command], check=True, stdout=subprocess.DEVNULL, **more)


def expect_all_from(folder, interpreter, **more):
    """Uses the package where an interpreter finds it; it and the libraries have to come from a folder."""
    environment = {name: value for name, value in os.environ.items() if name not in ("LD_LIBRARY_PATH", "PYTHONPATH")}
    environment.update(more)
    shown = subprocess.run([interpreter, "-c", USE], env=environment, check=True, capture_output=True, text=True)
    files = shown.stdout.split()
    assert len(files) == 3, files
    for file in files:
        assert file.startswith(f"{folder}/"), file


with tempfile.TemporaryDirectory() as name:
    temporary = pathlib.Path(name).resolve()
    run("cmake", "--install", BUILD, "--prefix", temporary / "installed")
    moved = (temporary / "installed").rename(temporary / "moved")
    (package,) = moved.rglob("kalv/__init__.py")
    expect_all_from(moved, sys.executable, PYTHONPATH=str(package.parents[1]))

    source = temporary / "python"  # making a wheel leaves files beside its sources
    run("cp", "-r", PYTHON, source)
    run("cp", PYTHON.parent / "CMakeLists.txt", temporary)
    pip = (sys.executable, "-m", "pip", "-q", "--disable-pip-version-check", "--no-cache-dir")
    offline = ("--no-deps", "--no-index")
    run(*pip, "wheel", "--no-build-isolation", *offline, "-w", temporary / "wheels", source)
    (wheel,) = (temporary / "wheels").iterdir()
    environment = temporary / "environment"
    run(sys.executable, "-m", "venv", "--without-pip", "--system-site-packages", environment)
    interpreter = environment / "bin" / "python3"
    run(*pip, "--python", interpreter, "install", *offline, wheel)
    expect_all_from(environment, interpreter)
print("imported from the installed tree and from", wheel.name)
