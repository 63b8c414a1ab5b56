"""Drives whole programs on a virtual desktop: used by the tour and by the tests of whole programs.

Only Debian's own python3 has the accessibility bindings; scripts name /usr/bin/python3.
"""
