"""Makes a wheel of what CMake builds: the package, with the library in it.

`KALV_BUILD` in the environment names a build tree with KALV_PYTHON to take it from; by default one is made.
"""

import os
import pathlib
import re
import subprocess
import sys

import setuptools
from setuptools.command.build_ext import build_ext

PROJECT = pathlib.Path(__file__).resolve().parents[1]
VERSION = re.search(r"project\(\w+ VERSION (\S+)", (PROJECT / "CMakeLists.txt").read_text())[1]


class CMakeBuild(build_ext):
    def build_extension(self, ext: setuptools.Extension) -> None:
        build = os.environ.get("KALV_BUILD")
        if not build:
            build = self.build_temp
            options = ["-DKALV_PYTHON=ON", f"-DPython_EXECUTABLE={sys.executable}"]
            try:
                import pybind11
                options.append(f"-Dpybind11_DIR={pybind11.get_cmake_dir()}")
            except ImportError:
                pass  # CMake finds the one of the system
            subprocess.check_call(["cmake", "-S", PROJECT, "-B", build, *options])
            subprocess.check_call(["cmake", "--build", build, "--target", "kalv_python", "--parallel"])
        package = pathlib.Path(self.get_ext_fullpath(ext.name)).resolve().parent
        subprocess.check_call(
            ["cmake", "--install", build, "--component", "python_wheel", "--strip", "--prefix", package.parent]
        )
        for link in package.iterdir():  # a wheel holds no links: the libraries go by the names that are looked for
            if link.is_symlink():
                link.resolve().replace(link)


setuptools.setup(
    version=VERSION,
    ext_modules=[setuptools.Extension("kalv._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
