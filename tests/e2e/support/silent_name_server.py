"""Runs a command in the current private network and mount namespaces, with a name server that receives every
question and answers none.

usage: silent_name_server.py DIRECTORY COMMAND...   (DIRECTORY/questions holds the number of questions)
"""

import fcntl
import pathlib
import signal
import socket
import struct
import subprocess
import sys
import threading

_SIOCGIFFLAGS = 0x8913
_SIOCSIFFLAGS = 0x8914
_IFF_UP = 1


def bring_loopback_up():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        request = struct.pack("16sh14x", b"lo", 0)
        name, flags = struct.unpack("16sh14x", fcntl.ioctl(any_socket, _SIOCGIFFLAGS, request))
        fcntl.ioctl(any_socket, _SIOCSIFFLAGS, struct.pack("16sh14x", name, flags | _IFF_UP))


def count_questions(server, counter):
    questions = 0
    while True:
        server.recvfrom(4096)
        questions += 1
        counter.write_text(str(questions))


def run_and_pass_interrupts_on(arguments):
    early = []
    signal.signal(signal.SIGINT, lambda number, _: early.append(number))
    command = subprocess.Popen(arguments)
    signal.signal(signal.SIGINT, lambda number, _: command.send_signal(number))
    for number in early:
        command.send_signal(number)
    return command.wait()


def main():
    directory = pathlib.Path(sys.argv[1])
    resolver = directory / "resolv.conf"
    resolver.write_text("nameserver 127.0.0.1\noptions timeout:30 attempts:1\n")
    subprocess.run(["mount", "--bind", str(resolver), "/etc/resolv.conf"], check=True)
    bring_loopback_up()
    server = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    server.bind(("127.0.0.1", 53))
    counting = threading.Thread(
        target=count_questions, args=(server, directory / "questions"), daemon=True)
    counting.start()
    return run_and_pass_interrupts_on(sys.argv[2:])


if __name__ == "__main__":
    sys.exit(main())
