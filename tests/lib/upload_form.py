# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The form in which the program submits a report."""

BOUNDARY = b"0xKhTmLbOuNdArY"
CONTENT_TYPE = b"multipart/form-data; boundary=" + BOUNDARY
HEAD = (b"--" + BOUNDARY + b"\r\n"
        b'Content-Disposition: form-data; name="file"; filename="test.bin"\r\n\r\n')
TAIL = b"\r\n--" + BOUNDARY + b"--\r\n"


def around(data):
    """The request body that carries these bytes."""
    return HEAD + data + TAIL


def content(body):
    """The bytes that a request body carries."""
    if not (body.startswith(HEAD) and body.endswith(TAIL)):
        raise AssertionError(f"not the form of an upload: {body[:200]!r} ... {body[-60:]!r}")
    return body[len(HEAD):-len(TAIL)]
