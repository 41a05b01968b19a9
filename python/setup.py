"""The wheel has programs and libraries of this system, but nothing of a certain Python."""

import pathlib

from setuptools import setup
from setuptools.dist import Distribution
from wheel.bdist_wheel import bdist_wheel


class BinaryDistribution(Distribution):
    """Its files belong to a platform."""

    def has_ext_modules(self):
        return True


class AnyPythonWheel(bdist_wheel):
    """A wheel for every Python 3 of this platform."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(
    version=pathlib.Path(__file__).with_name("version.txt").read_text(encoding="ascii").strip(),
    distclass=BinaryDistribution,
    cmdclass={"bdist_wheel": AnyPythonWheel},
)
