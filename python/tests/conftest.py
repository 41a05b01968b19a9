"""The plugin: an installed one is found by itself; in the source tree pytest has to be given it."""

import importlib.metadata

import pytest

_INSTALLED = any(point.value == "pytest_ipodctl.plugin" for point in
                 importlib.metadata.entry_points(group="pytest11"))
_PLUGINS = [] if _INSTALLED else ["pytest_ipodctl.plugin"]
pytest_plugins = [*_PLUGINS, "pytester"]


@pytest.fixture
def other_project(pytester, monkeypatch):
    """The folder of another project's tests."""
    monkeypatch.setenv("PYTEST_ADDOPTS", " ".join(f"-p {plugin}" for plugin in _PLUGINS))
    return pytester
