#!/usr/bin/python3
"""Answers questions that nobody asked by mDNS (RFC 6762, 18): panels with all their records, as fast as is asked.

    hostile_names.py ADDRESS NAMES [FLAPPING]     each of so many names once; then the flapping ones come and go until the end
"""

import itertools
import socket
import struct
import sys
import time

GROUP = ("224.0.0.251", 5353)
SERVICE = [b"_airplay", b"_tcp", b"local"]
PTR, TXT, SRV, A = 12, 16, 33, 1
PER_PACKET = 8


def labels(*parts):
    return b"".join(bytes([len(part)]) + part for part in parts) + b"\0"


def record(name, kind, ttl, data):
    flush = 0 if kind == PTR else 0x8000
    return name + struct.pack("!HHIH", kind, 1 | flush, ttl, len(data)) + data


def panel(number, address, ttl):
    name = labels(f"Meridian 65|Room {number}|0A{number:06X}".encode(), *SERVICE)
    host = labels(b"h%d" % number, b"local")
    return [record(labels(*SERVICE), PTR, ttl, name), record(name, SRV, ttl, struct.pack("!HHH", 0, 0, 7000) + host),
            record(name, TXT, ttl, b"\0"), record(host, A, ttl, socket.inet_aton(address))]


def main(address, names, flapping):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEPORT, 1)
        sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(address))
        sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_TTL, 255)
        sender.bind((address, 5353))

        def tell(numbers, ttl):
            for start in range(0, len(numbers), PER_PACKET):
                records = [r for number in numbers[start:start + PER_PACKET] for r in panel(number, address, ttl)]
                sender.sendto(struct.pack("!HHHHHH", 0, 0x8400, 0, len(records), 0, 0) + b"".join(records), GROUP)
                time.sleep(0.002)

        tell(range(names), 4500)
        print("told", flush=True)
        for ttl in itertools.cycle((0, 4500)):
            tell(range(names, names + flapping), ttl)
            time.sleep(0.3 if flapping else 5)


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]), int((sys.argv + ["0"])[3]))
