#!/usr/bin/python3
"""A panel that answers every request on port 5000 in another hostile way, or always in the one that is named.

    hostile_panel.py ADDRESS [KIND]        --list prints the kinds, one a line
"""

import itertools
import socket
import struct
import sys
import threading
import time

MIB = 1 << 20
OK = b"HTTP/1.1 200 OK\r\n"


def whole(body, head=OK):
    return head + b"Content-Length: %d\r\n\r\n" % len(body) + body


# Sent as they are; then the connection is closed.
TEXTS = {
    "nothing": b"",
    "one byte": b"H",
    "a NUL": b"\0",
    "random bytes": bytes((7 * i * i + 13) % 256 for i in range(4096)),
    "no HTTP": b"SSH-2.0-OpenSSH_9.2\r\n",
    "half a status line": b"HTTP/1.1 2",
    "a status line alone": OK,
    "a head that is not ended": OK + b"Content-Length: 2\r\n",
    "HTTP 0.9": b"OK",
    "HTTP 9.9": whole(b"OK", b"HTTP/9.9 200 OK\r\n"),
    "status 0": whole(b"OK", b"HTTP/1.1 0 OK\r\n"),
    "status 99999": whole(b"OK", b"HTTP/1.1 99999 OK\r\n"),
    "status -200": whole(b"OK", b"HTTP/1.1 -200 OK\r\n"),
    "status two hundred": whole(b"OK", b"HTTP/1.1 two hundred\r\n"),
    "status 204 with a body": whole(b"CAST_OFF", b"HTTP/1.1 204 No\r\n"),
    "status 304": b"HTTP/1.1 304 No\r\n\r\n",
    "status 101": b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n\r\n\x81\x05hello",
    "a redirect to itself": b"HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 0\r\n\r\n",
    "a redirect to a file": b"HTTP/1.1 302 Found\r\nLocation: file:///etc/passwd\r\nContent-Length: 0\r\n\r\n",
    "a question for a password": b"HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"\x1b[31m\"\r\nContent-Length: 0\r\n\r\n",
    "thousand interim responses": b"HTTP/1.1 100 Continue\r\n\r\n" * 1000 + whole(b"OK"),
    "early hints": b"HTTP/1.1 103 Early Hints\r\nLink: </>\r\n\r\n" + whole(b"OK"),
    "a length that is too long": OK + b"Content-Length: 100\r\n\r\nOK",
    "a length that is too short": OK + b"Content-Length: 1\r\n\r\nOK",
    "a negative length": OK + b"Content-Length: -1\r\n\r\nOK",
    "a length of 2^64": OK + b"Content-Length: 18446744073709551616\r\n\r\nOK",
    "a length in words": OK + b"Content-Length: two\r\n\r\nOK",
    "two lengths": OK + b"Content-Length: 1\r\nContent-Length: 2\r\n\r\nOK",
    "a length and chunks": OK + b"Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nOK\r\n0\r\n\r\n",
    "a chunk of 2^64": OK + b"Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\nOK\r\n",
    "a negative chunk": OK + b"Transfer-Encoding: chunked\r\n\r\n-2\r\nOK\r\n0\r\n\r\n",
    "chunks without an end": OK + b"Transfer-Encoding: chunked\r\n\r\n2\r\nOK\r\n",
    "a chunk extension of a mebibyte": OK + b"Transfer-Encoding: chunked\r\n\r\n2;" + b"x" * MIB + b"\r\nOK\r\n0\r\n\r\n",
    "trailers of a mebibyte": OK + b"Transfer-Encoding: chunked\r\n\r\n0\r\nX: " + b"y" * MIB + b"\r\n\r\n",
    "an unknown encoding": OK + b"Transfer-Encoding: rot13\r\nContent-Encoding: br\r\nContent-Length: 2\r\n\r\nOK",
    "what is no gzip": OK + b"Content-Encoding: gzip\r\nContent-Length: 2\r\n\r\nOK",
    "a field of a mebibyte": OK + b"X: " + b"z" * MIB + b"\r\nContent-Length: 2\r\n\r\nOK",
    "10000 fields": OK + b"".join(b"X-%d: 1\r\n" % i for i in range(10_000)) + b"Content-Length: 2\r\n\r\nOK",
    "fields without names": OK + b": 1\r\n:\r\n \r\nfolded\r\n\tline\r\nContent-Length: 2\r\n\r\nOK",
    "fields with NULs": OK + b"X\0Y: 1\0\r\nContent-Length: 2\r\n\r\nOK",
    "bare line feeds": b"HTTP/1.1 200 OK\nContent-Length: 2\n\nOK",
    "bare carriage returns": b"HTTP/1.1 200 OK\rContent-Length: 2\r\rOK",
    "escape sequences": whole(b"\x1b]0;owned\x07\x1b[2J\xe2\x80\xaeKO"),
    "16 MiB": whole(b"A" * (16 * MIB)),
    "17 MiB": whole(b"A" * (17 * MIB)),
}


def drip(connection):
    """A byte at a time, for as long as anybody listens."""
    for byte in itertools.chain(whole(b"")[:-2], itertools.cycle(b"X-Drip: 1\r\n")):
        connection.sendall(bytes([byte]))
        time.sleep(0.05)


def reset(connection):
    connection.sendall(OK)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))


def say_nothing(_):
    time.sleep(600)


DEEDS = {"a drip": drip, "a reset": reset, "silence": say_nothing}
KINDS = [*TEXTS, *DEEDS]


def answer(connection, kind):
    with connection:
        try:
            connection.settimeout(30)
            connection.recv(65536)
            if kind in DEEDS:
                DEEDS[kind](connection)
            else:
                connection.sendall(TEXTS[kind])
        except OSError:
            pass  # the other side has had enough


def serve(address, kinds):
    with socket.create_server((address, 5000), backlog=128) as listener:
        print("ready", flush=True)
        for kind in kinds:
            connection, _ = listener.accept()
            print(f"answered {kind}", flush=True)
            threading.Thread(target=answer, args=(connection, kind), daemon=True).start()


if __name__ == "__main__":
    if sys.argv[1:] == ["--list"]:
        print("\n".join(KINDS))
    else:
        serve(sys.argv[1], itertools.repeat(sys.argv[2]) if len(sys.argv) > 2 else itertools.cycle(KINDS))
