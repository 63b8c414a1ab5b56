#!/usr/bin/python3
"""Takes X connections on a display number of its own and passes them on to $DISPLAY. Prints the number; SIGUSR1 has it
drop the connection that was opened last, and print "dropped"."""

import itertools
import os
import signal
import socket
import threading

connections = []


def socket_name(number):
    return f"\0/tmp/.X11-unix/X{number}"


def listen():
    listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    for number in itertools.count(200):
        try:
            listener.bind(socket_name(number))
            break
        except OSError:
            pass
    listener.listen()
    print(number, flush=True)
    return listener


def close(*ends):
    for end in ends:
        try:
            end.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass  # it is closed already


def pump(source, target):
    """Shared memory comes as descriptors beside the bytes."""
    try:
        while True:
            data, descriptors, _, _ = socket.recv_fds(source, 65536, 16)
            if not data:
                break
            sent = socket.send_fds(target, [data], descriptors)
            target.sendall(data[sent:])
            for descriptor in descriptors:
                os.close(descriptor)
    except OSError:
        pass
    close(source, target)


def serve(listener):
    while True:
        client = listener.accept()[0]
        server = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        server.connect(socket_name(os.environ["DISPLAY"].removeprefix(":")))
        connections.append((client, server))
        for ends in ((client, server), (server, client)):
            threading.Thread(target=pump, args=ends, daemon=True).start()


signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGUSR1])
threading.Thread(target=serve, args=(listen(),), daemon=True).start()
while True:
    signal.sigwait([signal.SIGUSR1])
    close(*connections.pop())
    print("dropped", flush=True)
