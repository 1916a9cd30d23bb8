# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Servers on the loopback interface for the program to submit its report to."""

import array
import fcntl
import re
import socket
import ssl
import struct
import termios
import threading

import polling
import upload_form


class Request:
    def __init__(self, head, body):
        first, *rest = head.decode().split("\r\n")
        self.method, self.target, self.version = first.split(" ")
        self.headers = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in rest)}
        self.body = body

    @property
    def submitted(self):
        """The report that the body carries."""
        return upload_form.content(self.body)


class Exchange:
    """One connection of a client, with its latest request. A script answers it in any way it likes."""

    def __init__(self, connection):
        self.connection = connection
        self.request = None
        self.unread = b""
        connection.settimeout(polling.GUARD_SECONDS)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def receive(self):
        """Reads one whole request; None when the client has closed instead."""
        while b"\r\n\r\n" not in self.unread:
            if not self._read_more():
                return None
        head, _, self.unread = self.unread.partition(b"\r\n\r\n")
        length = re.search(rb"^content-length: *(\d+)", head, re.IGNORECASE | re.MULTILINE)
        length = int(length[1]) if length else 0
        chunks = [self.unread]
        missing = length - len(self.unread)
        while missing > 0:
            chunk = self.connection.recv(min(missing, 1 << 20))
            if not chunk:
                return None
            chunks.append(chunk)
            missing -= len(chunk)
        data = b"".join(chunks)
        self.request, self.unread = Request(head, data[:length]), data[length:]
        return self.request

    def _read_more(self):
        chunk = self.connection.recv(65536)
        self.unread += chunk
        return chunk

    def send(self, data):
        self.connection.sendall(data)

    def wait_until_closed_by_client(self):
        while self.connection.recv(65536):
            pass

    def close(self, with_notice=False):
        """Closes, with TLS's own notice of that before the end if wanted, without which a reply may have been cut."""
        if with_notice:
            self.connection.unwrap()
        self.connection.close()

    def reset(self):
        """Closes so that the client sees a broken connection, not an end."""
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.connection.close()

    def wait_until_taken(self, pid):
        """Waits until the client has taken everything sent so far and has done all that follows from it."""
        polling.wait_until(lambda: not self._unacknowledged() and not self._unread_by_client(), "the client has read")
        polling.wait_until_idle(pid)

    def _unacknowledged(self):
        count = array.array("i", [0])
        fcntl.ioctl(self.connection, termios.TIOCOUTQ, count)
        return count[0]

    def _unread_by_client(self):
        ours, theirs = (f":{name[1]:04X}" for name in (self.connection.getsockname(), self.connection.getpeername()))
        with open("/proc/net/tcp") as table:
            for local, remote, _, queues in (line.split()[1:5] for line in list(table)[1:]):
                if local.endswith(theirs) and remote.endswith(ours):
                    return int(queues.split(":")[1], 16)
        raise AssertionError("the client has closed its connection")


class Server:
    """An HTTP server that reads each request whole and answers it by the next of its scripts, the last one for ever.

    A script takes the exchange, with at_connect before anything is read. With a context, which a test may change later,
    it speaks TLS; a client that ends the handshake is no error.
    """

    def __init__(self, *scripts, at_connect=False, receive_buffer=None, family=socket.AF_INET, context=None, port=0):
        self.requests = []
        self.connections = 0
        self.errors = []
        self._scripts = list(scripts)
        self._at_connect = at_connect
        self._lock = threading.Lock()
        self.context = context
        self._listener = socket.socket(family)
        self._listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        if family == socket.AF_INET6:
            self._listener.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
        if receive_buffer:
            self._listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self._listener.bind(("::1" if family == socket.AF_INET6 else "127.0.0.1", port))
        self._listener.listen()
        self.port = self._listener.getsockname()[1]
        self._exchanges = []
        self._threads = [threading.Thread(target=self._accept, daemon=True)]
        self._threads[0].start()

    def url(self, path="/diagnosticsubmit"):
        return f"http://127.0.0.1:{self.port}{path}"

    def close(self):
        if self._listener.fileno() < 0:
            return  # a test may close before its end
        self._listener.shutdown(socket.SHUT_RDWR)
        with self._lock:
            exchanges = list(self._exchanges)
        for exchange in exchanges:
            try:
                exchange.connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # closed already
        for thread in self._threads:
            thread.join(polling.GUARD_SECONDS)
        self._listener.close()
        if self.errors:
            raise self.errors[0]

    def _accept(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            with self._lock:
                self.connections += 1
                exchange = Exchange(connection)
                self._exchanges.append(exchange)
                thread = threading.Thread(target=self._serve, args=(exchange,), daemon=True)
                self._threads.append(thread)
            thread.start()

    def _next_script(self):
        with self._lock:
            return self._scripts.pop(0) if len(self._scripts) > 1 else self._scripts[0]

    def _serve(self, exchange):
        try:
            if self.context:
                exchange.connection = self.context.wrap_socket(exchange.connection, server_side=True)
            if self._at_connect:
                self._next_script()(exchange)
                return
            while exchange.connection.fileno() >= 0 and exchange.receive():
                self.requests.append(exchange.request)
                self._next_script()(exchange)
        except (ConnectionError, BrokenPipeError, ssl.SSLError):
            pass  # the client went away: its own outcome is what the test looks at
        except OSError as error:
            if exchange.connection.fileno() >= 0:
                self.errors.append(error)
        except Exception as error:
            self.errors.append(error)
        finally:
            exchange.close()


def head(status=200, length=None, fields=()):
    lines = [f"HTTP/1.1 {status} Reply", "Content-Type: text/plain", *fields]
    if length is not None:
        lines.append(f"Content-Length: {length}")
    return "\r\n".join([*lines, "", ""]).encode()


def reply(body=b"", status=200, fields=()):
    """A script that sends one whole reply at once and closes."""
    def script(exchange):
        exchange.send(head(status, len(body), ["Connection: close", *fields]) + body)
        exchange.close()
    return script


def unreachable_port(test):
    """A port that refuses connections, and that nobody else can take while the test runs."""
    holder = socket.socket()
    test.addCleanup(holder.close)
    holder.bind(("127.0.0.1", 0))
    return holder.getsockname()[1]
