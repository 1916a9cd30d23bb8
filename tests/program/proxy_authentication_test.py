# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Proxies that ask who is there. Name and password stand in the proxy's URL, which a variable holds."""

import base64
import hashlib
import re

import http_server
import isolation
import program_tests
import report_text

URL = "http://diagnostic.halvik.example/diagnosticsubmit"
USER, PASSWORD = "ann", "secret"
RESULTS_URL = b"https://results.halvik.example/1"
FIELD = "proxy-authorization"


def md5(text):
    return hashlib.md5(text.encode()).hexdigest()


class ProxyAuthenticationTest(program_tests.ProgramTest):
    def submit(self, judge):
        """Uploads by a proxy that answers each request by what `judge` makes of its credentials: None to let it pass, or
        the challenge that it answers by. The programs' credentials, in order, and how it ended."""
        seen = []

        def script(exchange):
            seen.append(exchange.request.headers.get(FIELD))
            challenge = judge(seen[-1], exchange.request)
            if challenge is None:
                passed.append(exchange.request)
                http_server.reply(RESULTS_URL)(exchange)
            else:
                # On a connection that stays open, which NTLM needs.
                exchange.send(http_server.head(407, 4, [f"Proxy-Authenticate: {challenge}"]) + b"who?")

        passed = []
        server = http_server.Server(script)
        self.addCleanup(server.close)
        proxy = server.url("").replace("http://", f"http://{USER}:{PASSWORD}@")
        ended = self.run_test_build(["-s"], submit=URL, env={"http_proxy": proxy})
        return seen, passed, ended

    def assert_passed_once(self, passed, ended):
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + RESULTS_URL + b"\n", b"", 0))
        self.assertEqual([request.submitted for request in passed], [report_text.report()])

    def test_basic(self):
        expected = "Basic " + base64.b64encode(f"{USER}:{PASSWORD}".encode()).decode()
        seen, passed, ended = self.submit(
            lambda credentials, _: None if credentials == expected else 'Basic realm="here"')
        self.assert_passed_once(passed, ended)
        self.assertEqual(seen[-1], expected)

    def test_digest(self):
        def judge(credentials, request):
            if not (credentials or "").startswith("Digest "):
                return 'Digest realm="here", nonce="n1", qop="auth"'
            field = dict(re.findall(r'(\w+)="?([^",]+)"?', credentials))
            secret = md5(f"{USER}:here:{PASSWORD}")
            call = md5(f"{request.method}:{field['uri']}")
            expected = md5(f"{secret}:n1:{field['nc']}:{field['cnonce']}:auth:{call}")
            return None if field["response"] == expected else 'Digest realm="here", nonce="n2", qop="auth"'

        seen, passed, ended = self.submit(judge)
        self.assert_passed_once(passed, ended)
        self.assertNotIn(PASSWORD, "".join(filter(None, seen)))

    def test_ntlm(self):
        """Three messages: that the client is there, a challenge, the user's name with an answer to it."""
        challenge = (b"NTLMSSP\0" + (2).to_bytes(4, "little") + bytes(8) + (0x8201).to_bytes(4, "little") + b"12345678"
                     + bytes(8) + bytes(8))

        def judge(credentials, _):
            if not (credentials or "").startswith("NTLM "):
                return "NTLM"
            message = base64.b64decode(credentials.removeprefix("NTLM "))
            if message[8] == 1:
                return "NTLM " + base64.b64encode(challenge).decode()
            named = USER.encode("utf-16-le") in message or USER.encode() in message
            return None if message[8] == 3 and named else "NTLM"

        _, passed, ended = self.submit(judge)
        self.assert_passed_once(passed, ended)

    def test_a_wrong_password_is_a_failed_upload(self):
        for scheme in ('Basic realm="here"', 'Digest realm="here", nonce="n", qop="auth"', "NTLM", "Negotiate"):
            with self.subTest(scheme):
                _, passed, ended = self.submit(lambda *_: scheme)
                self.assert_submission_failed(ended, report_text.report())
                self.desktop_file.unlink()
                self.assertEqual(passed, [])


isolation.run_tests()
