# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""An independent parser of the form in which a report is uploaded, for the receivers of the tests and of the lab."""

import io

import werkzeug.formparser
import werkzeug.http


def files(body, content_type):
    """The field name, the file name and the content of each file in a form; None if it has other fields, too."""
    kind, options = werkzeug.http.parse_options_header(content_type)
    parser = werkzeug.formparser.FormDataParser(silent=True)
    _, fields, found = parser.parse(io.BytesIO(body), kind, len(body), options)
    if fields:
        return None
    parts = []
    for field, file in found.items(multi=True):
        parts.append((field, file.filename, file.read()))
        file.close()
    return parts
