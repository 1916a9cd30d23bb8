# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Servers with TLS that mean harm or are broken: old protocols, certificates that change, replies that are cut."""

import os
import pathlib
import shutil
import ssl
import subprocess
import tempfile
import unittest
import warnings

import http_server
import isolation
import program_tests
import report_text
import skipping
from authority import Authority

skipping.require_modules("werkzeug")
import tls

OTHER = "other.halvik.example"
SUBMIT = f"https://{tls.HOST}/diagnosticsubmit"
RESULTS_URL = b"https://results.halvik.example/1"


def context(certificate):
    result = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    result.load_cert_chain(f"{certificate}.pem", f"{certificate}.key")
    return result


def setUpModule():
    global good, other, unknown
    folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-tls-"))
    unittest.addModuleCleanup(shutil.rmtree, folder, ignore_errors=True)
    for name in ("trusted", "unknown"):
        (folder / name).mkdir()
    trusted = Authority(folder / "trusted")
    tls.trust(trusted, folder)
    unittest.addModuleCleanup(isolation.uncover, tls.MACHINE_CERTIFICATES)
    good = trusted.issue(folder / "good", tls.HOST)
    other = trusted.issue(folder / "other", OTHER)
    unknown = Authority(folder / "unknown").issue(folder / "bad", tls.HOST)
    (folder / "hosts").write_text(f"127.0.0.1 localhost {tls.HOST} {OTHER}\n")
    isolation.cover("/etc/hosts", folder / "hosts")
    unittest.addModuleCleanup(isolation.uncover, "/etc/hosts")


class TlsTest(program_tests.ProgramTest):
    def serve(self, *scripts, context, port=443):
        server = http_server.Server(*scripts, context=context, port=port)
        self.addCleanup(server.close)
        return server

    def submit(self, **others):
        return self.run_test_build(["-s"], submit=SUBMIT, **others)

    def assert_accepted(self, ended):
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + RESULTS_URL + b"\n", b"", 0))

    def assert_refused(self, ended, reason):
        self.assert_submission_failed(ended, report_text.report())
        self.desktop_file.unlink()
        self.assertRegex(ended.messages[0], f"^sending to {SUBMIT} failed: " + reason)


class ProtocolTest(TlsTest):
    def test_versions(self):
        for version, taken in ((ssl.TLSVersion.TLSv1, False), (ssl.TLSVersion.TLSv1_1, False),
                               (ssl.TLSVersion.TLSv1_2, True), (ssl.TLSVersion.TLSv1_3, True)):
            with self.subTest(version):
                settings = context(good)
                settings.set_ciphers("ALL:@SECLEVEL=0")
                with warnings.catch_warnings():
                    warnings.simplefilter("ignore", DeprecationWarning)
                    settings.minimum_version = settings.maximum_version = version
                server = self.serve(http_server.reply(RESULTS_URL), context=settings)
                ended = self.submit()
                if taken:
                    self.assert_accepted(ended)
                else:
                    self.assert_refused(ended, ".*(unsupported protocol|protocol version|wrong version)")
                    self.assertEqual(server.requests, [])
                server.close()

    def test_what_comes_without_tls_counts_for_nothing(self):
        """Least of all where it asks for the report to be sent elsewhere."""
        second = self.serve(http_server.reply(RESULTS_URL), context=context(other), port=8443)
        for status in (200, 307, 400):
            plain = http_server.reply(RESULTS_URL, status, [f"Location: https://{OTHER}:8443/"])
            first = http_server.Server(plain, at_connect=True, port=443)
            self.addCleanup(first.close)
            self.assert_refused(self.submit(), "(?!server replied)")
            first.close()
        self.assertEqual(second.connections, 0)

    def test_http_2_is_not_asked_for(self):
        settings = context(good)
        settings.set_alpn_protocols(["h2", "http/1.1"])
        chosen = []

        def script(exchange):
            chosen.append(exchange.connection.selected_alpn_protocol())
            http_server.reply(RESULTS_URL)(exchange)

        server = self.serve(script, context=settings)
        self.assert_accepted(self.submit())
        self.assertEqual((chosen, server.requests[0].version), (["http/1.1"], "HTTP/1.1"))


class CertificateTest(TlsTest):
    def test_one_that_changes_between_two_runs(self):
        """Each run judges by itself; nothing is remembered."""
        server = self.serve(http_server.reply(RESULTS_URL), context=context(good))
        self.assert_accepted(self.submit())
        server.context = context(unknown)
        self.assert_refused(self.submit(), ".*certificate")
        self.assertEqual(len(server.requests), 1)
        server.context = context(good)
        self.assert_accepted(self.submit())

    def test_one_that_changes_between_two_steps(self):
        """The server to which a redirect leads is judged as the first one is, although it is the same one."""
        for bad in (unknown, other):
            def script(exchange):
                server.context = context(bad)
                http_server.reply(b"", 307, ["Location: /again"])(exchange)

            server = self.serve(script, context=context(good))
            self.assert_refused(self.submit(), ".*(certificate|host name)")
            self.assertEqual(len(server.requests), 1)
            server.close()

    def test_another_host_shows_its_own(self):
        target = f"https://{OTHER}:8443/page"
        for certificate, taken in ((other, True), (good, False)):
            second = self.serve(http_server.reply(RESULTS_URL), context=context(certificate), port=8443)
            first = self.serve(http_server.reply(b"", 307, ["Location: " + target]), context=context(good))
            ended = self.submit()
            if taken:
                self.assert_accepted(ended)
                self.assertEqual([request.submitted for request in second.requests], [report_text.report()])
            else:
                self.assert_refused(ended, "SSL: no alternative certificate subject name matches")
                self.assertEqual(second.requests, [])
            first.close()
            second.close()

    def test_the_environment_names_no_authorities(self):
        """Not even one that other programs would believe on the word of a variable."""
        self.serve(http_server.reply(RESULTS_URL), context=context(unknown))
        authority = unknown.parent / "unknown/authority.pem"
        asked = subprocess.run(["openssl", "s_client", "-verify_return_error", "-connect", f"{tls.HOST}:443"],
                               env={**os.environ, "SSL_CERT_FILE": str(authority)}, stdin=subprocess.DEVNULL,
                               capture_output=True)
        self.assertEqual(asked.returncode, 0, asked.stderr)
        ended = self.submit(env={"SSL_CERT_FILE": authority, "SSL_CERT_DIR": authority.parent})
        self.assert_refused(ended, ".*certificate")


class CutTest(TlsTest):
    """A connection may be cut at any byte, by anybody on its way."""

    def test_replies_that_are_cut(self):
        chunked = b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
        for data in (http_server.head(200, 99) + b"https://r", chunked + b"20\r\nhttps://r",
                     chunked + b"5\r\nhttps\r\n"):
            for end in (http_server.Exchange.close, http_server.Exchange.reset):
                with self.subTest(data, end=end.__name__):
                    def script(exchange):
                        exchange.send(data)
                        end(exchange)

                    server = self.serve(script, context=context(good))
                    self.assert_refused(self.submit(), "(transfer closed with|.*Connection reset by peer|.*unexpected eof)")
                    server.close()

    def test_a_reply_of_the_largest_size(self):
        """All of it arrives, though the server closes right behind it: the last piece is the end."""
        body = b"x" * ((1 << 20) - len(RESULTS_URL)) + RESULTS_URL
        for fields in ([f"Content-Length: {len(body)}"], []):
            with self.subTest(fields):
                def script(exchange):
                    exchange.send(http_server.head(200, fields=fields) + body)
                    exchange.close(with_notice=True)

                server = self.serve(script, context=context(good))
                ended = self.submit()
                self.assertEqual((ended.stderr, ended.status), (b"", 0))
                self.assertTrue(ended.stdout.endswith(RESULTS_URL + b"\n"))
                server.close()

    def test_an_endless_reply(self):
        def script(exchange):
            exchange.send(http_server.head(200))
            while True:
                exchange.send(b"x" * 65536)

        self.serve(script, context=context(good))
        self.assert_refused(self.submit(), "no usable reply: it is longer than 1048576 bytes")


skipping.require_tools("openssl")
isolation.run_tests(needs_namespaces=True)
