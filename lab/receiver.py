# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The submission endpoint behind its web server: keeps each upload and answers with the address of its results page.

usage: receiver.py UPLOADS RESULTS BEHAVIOUR ADDRESS READER     two folders, a file, the results' URL, halvik-report

An upload is a numbered folder with the request's "head" and "body" as they came and, when the body is the form of one
report, the "report" in it.
"""

import html
import itertools
import pathlib
import subprocess
import sys

import report_receiver
from scenarios import ANSWERS, CLOSES, FAILS, STALLS, TWO_HALVES

PAGE = """<!DOCTYPE html>
<meta charset="utf-8">
<title>Results {number}</title>
<pre>
{report}</pre>
"""

NOTHING_FOUND, PROBLEM_FOUND = 0, 1  # how the reader ends when it has made a page

PAUSE_SECONDS = 1  # between the halves, so that no client reads them as one


class Store:
    def __init__(self, uploads, results, reader):
        self._uploads = uploads
        self._results = results
        self._reader = reader
        self._numbers = itertools.count(1)

    def keep(self, head, body, report):
        number = next(self._numbers)
        part = self._uploads / f"{number}.part"
        part.mkdir()
        (part / "head").write_bytes(head)
        (part / "body").write_bytes(body)
        if report is not None:
            (part / "report").write_bytes(report)
            (self._results / f"{number}.html").write_bytes(self._read(report) or plain_page(number, report))
        part.rename(self._uploads / str(number))
        return number

    def _read(self, report):
        """The page that the reader of reports makes; nothing where it is missing or fails."""
        if not self._reader.exists():
            return b""
        ended = subprocess.run([self._reader, "--html"], input=report, capture_output=True)
        return ended.stdout if ended.returncode in (NOTHING_FOUND, PROBLEM_FOUND) else b""


def plain_page(number, report):
    # A browser reads a carriage return as a line feed unless it is written out, as those in HTTP heads must be.
    text = html.escape(report.decode(errors="replace")).replace("\r", "&#13;")
    return PAGE.format(number=number, report=text).encode()


def report_in(request):
    """The one file of a submitted form; None if it is no such form."""
    files = request.files()
    if files is None or [field for field, _, _ in files] != ["file"]:
        return None
    return files[0][2]


def answer(request, store, behaviour, address):
    report = report_in(request)
    number = store.keep(request.head, request.body, report)
    if report is None:
        request.answer(400, b"not a report")
        return
    line = f"{address}{number}".encode()
    first_half, second_half = line[:len(line) // 2], line[len(line) // 2:]
    if behaviour == ANSWERS:
        request.answer(200, line)
    elif behaviour == FAILS:
        request.answer(500, b"internal server error")
    elif behaviour == TWO_HALVES:
        request.answer(200, first_half, second_half, pause=PAUSE_SECONDS)
    elif behaviour == CLOSES:
        request.answer(200, first_half, missing=len(second_half))
    elif behaviour == STALLS:
        request.rfile.read(1)  # comes back when the client has given up


def main(uploads, results, behaviour, address, reader):
    store = Store(pathlib.Path(uploads), pathlib.Path(results), pathlib.Path(reader))

    def handle(request):
        answer(request, store, pathlib.Path(behaviour).read_text(encoding="ascii").strip(), address)

    report_receiver.Receiver(8000, handle).serve_forever()


if __name__ == "__main__":
    main(*sys.argv[1:])
