#!/usr/bin/python3
"""Sends touches and nonsense to the touch port of a host as fast as it can, for half a minute at most."""

import socket
import sys
import time

RECORDS = [b"MOVE,%d,%d,0;" % (x, 32767 - x) for x in range(0, 32768, 257)] + [
    b"", b"DOWN", b"JUMP,1,2,3;", b"DOWN,nan,1e400,0;", b"\xff\xfe\x00", b"x" * 9000]

with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
    sender.connect((sys.argv[1], 41863))
    end = time.monotonic() + 30
    while time.monotonic() < end:
        for record in RECORDS:
            try:
                sender.send(record)
            except OSError:
                pass  # the buffer is full, or nobody listens: the next one
