"""Builds the Python module kpt with CMake: `pip install .`, or without a network
`pip install --no-build-isolation --no-index .`.

The package contains the libraries of this tree beside the module, which is linked with them.
"""
import os
import pathlib
import re
import subprocess
import sys

import setuptools
from setuptools.command.build_ext import build_ext

TREE = pathlib.Path(__file__).parent.resolve()
OPTIONS = {
    "CMAKE_BUILD_TYPE": "Release",
    "CMAKE_CXX_FLAGS_RELEASE": "-O2 -DNDEBUG",
    "CMAKE_BUILD_WITH_INSTALL_RPATH": "ON",
    "CMAKE_INSTALL_RPATH": "$ORIGIN",
    "KPT_PYTHON": sys.executable,
    "KPT_BUILD_PYTHON": "ON",
    "KPT_BUILD_TESTS": "OFF",
    "KPT_BUILD_TOOLS": "OFF",
    "KPT_BUILD_EXAMPLES": "OFF",
    "KPT_INSTALL": "ON",
}


class BuildWithCMake(build_ext):
    def build_extension(self, extension):
        target = pathlib.Path(self.get_ext_fullpath(extension.name)).resolve().parent
        build = pathlib.Path(self.build_temp).resolve()
        options = {**OPTIONS, "KPT_PYTHON_DESTINATION": ".", "KPT_PYTHON_LIBRARIES": "ON"}
        cmake("-S", TREE, "-B", build, *(f"-D{name}={value}" for name, value in options.items()))
        cmake("--build", build, "--target", "kpt_python", "--parallel", str(os.cpu_count() or 1))
        cmake("--install", build, "--component", "python", "--prefix", target)


def cmake(*arguments):
    subprocess.run(["cmake", *map(str, arguments)], check=True)


def version():
    text = (TREE / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(kpt VERSION ([\d.]+)", text, re.MULTILINE).group(1)


setuptools.setup(version=version(), ext_modules=[setuptools.Extension("kpt._kpt", [])],
                 cmdclass={"build_ext": BuildWithCMake}, zip_safe=False)
