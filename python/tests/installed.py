"""Imports the package from an installed tree and from a wheel, each in a folder of its own that is then moved."""

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


def expect_all_from(folder, package):
    """Uses the package of a folder, where everything has to come from."""
    moved = folder.with_name(folder.name + "_moved")
    folder.rename(moved)
    environment = {name: value for name, value in os.environ.items() if name != "LD_LIBRARY_PATH"}
    environment["PYTHONPATH"] = str(moved / package)
    shown = subprocess.run([sys.executable, "-c", USE], env=environment, check=True, capture_output=True, text=True)
    files = shown.stdout.split()
    assert len(files) == 3, files
    for file in files:
        assert file.startswith(f"{moved}/"), file


def package_folder(root):
    (init,) = root.rglob("kalv/__init__.py")
    return init.parents[1].relative_to(root)


with tempfile.TemporaryDirectory() as name:
    temporary = pathlib.Path(name).resolve()
    installed = temporary / "installed"
    run("cmake", "--install", BUILD, "--prefix", installed)
    expect_all_from(installed, package_folder(installed))

    source = temporary / "python"  # making a wheel leaves files beside its sources
    run("cp", "-r", PYTHON, source)
    run("cp", PYTHON.parent / "CMakeLists.txt", temporary)
    run(sys.executable, "-m", "pip", "wheel", "-q", "--root-user-action=ignore", "--no-build-isolation", "--no-deps", "--no-index",
        "-w", temporary / "wheels", source)
    (wheel,) = (temporary / "wheels").iterdir()
    unpacked = temporary / "unpacked"
    run(sys.executable, "-m", "pip", "install", "-q", "--root-user-action=ignore", "--no-deps", "--no-index", "--target", unpacked, wheel)
    expect_all_from(unpacked, pathlib.Path("."))
print("imported from the installed tree and from", wheel.name)
