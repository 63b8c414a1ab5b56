"""An upload service made of a plain socket, which checks how a message is framed."""

import re
import socket
import threading

from harness.processes import Failure, wait_until

FORM = (b"--%(boundary)s\r\nContent-Disposition: form-data; name=\"my-file\"; filename=\"%(name)s\"\r\n"
        b"Content-Type: %(type)s\r\n\r\n%(content)s\r\n--%(boundary)s--\r\n")
BOUNDARY = re.compile(rb"Boundary-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}")


class RawPanel:
    """Takes one connection; `behaviour` gets it and what was read of the head."""

    def __init__(self, address, behaviour):
        self._listener = socket.create_server((address, 5505))
        self._listener.settimeout(30)
        self._behaviour = behaviour
        self._problem = None
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def _serve(self):
        try:
            connection, _ = self._listener.accept()
            with connection:
                connection.settimeout(20)
                self._behaviour(connection)
        except Exception as problem:  # pylint: disable=broad-except  # told by wait()
            self._problem = problem
        finally:
            self._listener.close()

    def wait(self):
        """Until the connection has been served; fails as the behaviour did."""
        wait_until(lambda: not self._thread.is_alive(), "the upload at the plain server", 30)
        if self._problem:
            raise Failure(f"at the plain server: {self._problem!r}")


def read_head(connection):
    """(The header section, what came of the body with it.)"""
    read = b""
    while b"\r\n\r\n" not in read:
        piece = connection.recv(4096)
        if not piece:
            raise Failure("the head broke off")
        read += piece
    head, body = read.split(b"\r\n\r\n", 1)
    return head, body


def field(head, name):
    found = re.findall(rb"^" + name.encode() + rb": (.*)$", head.replace(b"\r\n", b"\n"), re.MULTILINE)
    if len(found) != 1:
        raise Failure(f"{len(found)} fields {name}")
    return found[0]


def read_upload(connection):
    """(Header section, body of exactly the length that it tells), with nothing after it for half a second."""
    head, body = read_head(connection)
    length = int(field(head, "Content-Length"))
    while len(body) < length:
        piece = connection.recv(1 << 20)
        if not piece:
            raise Failure(f"the body broke off after {len(body)} of {length} bytes")
        body += piece
    connection.settimeout(0.5)
    try:
        rest = connection.recv(1)
    except TimeoutError:
        rest = None
    if len(body) > length or rest:
        raise Failure(f"bytes after the body of {length}")
    if rest == b"":
        raise Failure("closed before the answer")
    return head, body


def check_upload(head, body, name, file_type, content):
    """Byte for byte."""
    boundary = field(head, "Content-Type").removeprefix(b"multipart/form-data; boundary=")
    if not BOUNDARY.fullmatch(boundary):
        raise Failure(f"the boundary is {boundary}")
    if not head.startswith(b"POST /uploadfile HTTP/1.1\r\n"):
        raise Failure(f"the request is {head[:80]}")
    for header, value in (("srcfilename", name), ("filetype", file_type)):
        if field(head, header) != value.encode():
            raise Failure(f"{header} is {field(head, header)}")
    expected = FORM % {b"boundary": boundary, b"name": name.encode(), b"type": file_type.encode(), b"content": content}
    if body != expected:
        raise Failure(f"the body has {len(body)} bytes that are not the {len(expected)} expected")
