"""Import this to import modules of the project's scripts/parts/ folder."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts/parts"))
