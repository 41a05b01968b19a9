"""A simulated iPod for the tests of head units. It needs the program ipodsim, not the library."""

from .simulator import Simulator, SimulatorError

__all__ = ["Simulator", "SimulatorError"]
