"""The parts of tools/hostile_evening."""
