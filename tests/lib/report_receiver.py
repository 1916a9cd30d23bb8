# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The submission endpoint of the tests and of the lab. It takes forms apart by a library's parser, not by ours."""

import contextlib
import http.server
import io
import time

import werkzeug.formparser
import werkzeug.http


class Receiver(http.server.ThreadingHTTPServer):
    """An HTTP server on the loopback interface that has `handle` answer each Request."""

    def __init__(self, port, handle):
        super().__init__(("127.0.0.1", port), Request)
        self.handle = handle


class Request(http.server.BaseHTTPRequestHandler):
    """A request with its head and body as they came, and the files of its form."""

    protocol_version = "HTTP/1.1"

    def do_GET(self):
        self.head = f"{self.requestline}\r\n{self.headers.as_string(unixfrom=False)}".encode("latin-1", "replace")
        self.body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.server.handle(self)

    do_POST = do_GET

    def files(self):
        """The field name, the file name and the content of each file; None if the form has other fields, too."""
        kind, options = werkzeug.http.parse_options_header(self.headers.get("Content-Type", ""))
        parser = werkzeug.formparser.FormDataParser(silent=True)
        _, fields, found = parser.parse(io.BytesIO(self.body), kind, len(self.body), options)
        parts = []
        for field, file in found.items(multi=True):
            with contextlib.closing(file):
                parts.append((field, file.filename, file.read()))
        return None if fields else parts

    def answer(self, status, *pieces, missing=0, pause=0):
        """Announces `missing` bytes more than it sends, and waits so many seconds between two pieces."""
        self.close_connection = True
        self.send_response(status)
        self.send_header("Content-Type", "text/plain")
        self.send_header("Content-Length", str(sum(map(len, pieces)) + missing))
        self.end_headers()
        for index, piece in enumerate(pieces):
            if index:
                time.sleep(pause)
            self.wfile.write(piece)
            self.wfile.flush()

    def log_message(self, format, *args):
        pass
