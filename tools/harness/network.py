"""Configures interfaces by the kernel's own calls: a bare machine has no tool for it."""

import fcntl
import os
import socket
import struct

# Empty in a network of its own, which tools/lib/isolated.sh creates.
WHY_NOT_ISOLATED = "" if os.environ.get("PANEL_COMPANION_ISOLATION", "none") != "none" else \
    os.environ.get("PANEL_COMPANION_WHY_NOT_ISOLATED", "this script was not started by tools/lib/isolated.sh")

_SIOCGIFFLAGS, _SIOCSIFFLAGS = 0x8913, 0x8914
_IFF_UP = 1


def loopback_up():
    """Switches the loopback interface on; a new network namespace starts with it off."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        request = struct.pack("16sH14s", b"lo", 0, b"")
        flags = struct.unpack("16sH14s", fcntl.ioctl(control, _SIOCGIFFLAGS, request))[1]
        if not flags & _IFF_UP:
            fcntl.ioctl(control, _SIOCSIFFLAGS, struct.pack("16sH14s", b"lo", flags | _IFF_UP, b""))
