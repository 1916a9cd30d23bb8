# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The upload to a real web server over TLS, with certificates that the machine trusts and with others."""

import pathlib
import shutil
import socket
import tempfile
import threading
import unittest

import http_server
import isolation
import program_tests
import report_text
import skipping
from authority import Authority

skipping.require_modules("werkzeug")
import tls

SUBMIT = f"https://{tls.HOST}/diagnosticsubmit"


def setUpModule():
    """One set of certificates, and one authority that the machine trusts, for all tests."""
    global folder, trusted, unknown
    folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-tls-"))
    unittest.addModuleCleanup(shutil.rmtree, folder, ignore_errors=True)
    for name in ("trusted", "unknown"):
        (folder / name).mkdir()
    trusted, unknown = Authority(folder / "trusted"), Authority(folder / "unknown")
    tls.trust(trusted, folder)
    unittest.addModuleCleanup(isolation.uncover, tls.MACHINE_CERTIFICATES)
    (folder / "hosts").write_text(f"127.0.0.1 localhost {tls.HOST}\n")
    isolation.cover("/etc/hosts", folder / "hosts")
    unittest.addModuleCleanup(isolation.uncover, "/etc/hosts")


class TlsTest(program_tests.ProgramTest):
    def serve(self, certificate, extra=""):
        self.receiver = tls.Receiver()
        self.addCleanup(self.receiver.close)
        web = tls.WebServer(self.folder / "nginx", certificate, self.receiver.port, extra)
        self.addCleanup(web.close)

    def certificate(self, authority=None, host=tls.HOST, **properties):
        return (authority or trusted).issue(self.folder / "server", host, **properties)


class TrustTest(TlsTest):
    """These run the program itself, with its whole plan and its own address of the submission endpoint."""

    def test_a_trusted_certificate(self):
        self.serve(self.certificate())
        ended = self.run_program(["-s", "-c", "-i"])
        self.assertEqual(ended.stderr, b"")
        self.assertEqual(ended.status, 0)
        report, _, url = ended.stdout.rpartition(b"\nurl=")
        self.assertEqual(url, f"https://{tls.HOST}/results/1\n".encode())
        (field, name, content), = self.receiver.files
        self.assertEqual((field, name), ("file", "test.bin"))
        self.assert_same_text(content, report)
        self.assertEqual(len(report_text.blocks(report)), report_text.PLAN_LENGTH)

    def assert_refused(self, certificate):
        self.serve(certificate)
        ended = self.run_program(["-s", "-c", "-i"])
        report = ended.stdout[:-1]
        self.assertEqual(len(report_text.blocks(report)), report_text.PLAN_LENGTH)
        self.assert_submission_failed(ended, report, report + b"\n")
        self.assertEqual(self.receiver.files, [])

    def test_a_certificate_of_an_unknown_authority(self):
        self.assert_refused(self.certificate(unknown))

    def test_an_expired_certificate(self):
        self.assert_refused(self.certificate(expired=True))

    def test_a_certificate_for_another_host(self):
        self.assert_refused(self.certificate(host="other.halvik.example"))

    def test_a_certificate_for_the_parent_domain(self):
        self.assert_refused(self.certificate(host="halvik.example"))


class SecureTransportTest(TlsTest):
    def submit(self, commands=(), **others):
        return self.run_test_build(["-s"], commands, submit=SUBMIT, **others)

    def test_the_form_as_a_parser_sees_it(self):
        self.serve(self.certificate())
        ended = self.submit(["seq 100000", "printf '\\303\\244\\r\\n--\\n'"])
        self.assertEqual(ended.status, 0)
        report = report_text.report([("seq 100000", "".join(f"{i}\n" for i in range(1, 100001))),
                                     ("printf '\\303\\244\\r\\n--\\n'", "\u00e4\r\n--\n")])
        self.assertEqual([file[:2] for file in self.receiver.files], [("file", "test.bin")])
        self.assert_same_text(self.receiver.files[0][2], report)

    def test_a_report_of_the_largest_size(self):
        self.serve(self.certificate())
        (self.work / "filler").write_bytes(b"x" * (1_000_000 - len(report_text.report([("cat filler", "x")])) + 1))
        ended = self.submit(["cat filler"])
        self.assertEqual(ended.status, 0)
        self.assertEqual(len(self.receiver.files[0][2]), 1_000_000)

    def test_a_redirect_to_https_is_followed(self):
        self.serve(self.certificate(), f"location = /diagnosticsubmit {{ return 302 https://{tls.HOST}/page; }}")
        ended = self.submit()
        self.assertEqual((ended.stdout, ended.status), (b"url=page\n", 0))
        self.assertEqual(self.receiver.pages, 1)

    def test_a_redirect_to_plain_http_is_refused(self):
        plain = http_server.Server(http_server.reply(b"page"))
        self.addCleanup(plain.close)
        self.serve(self.certificate(), f"location = /diagnosticsubmit {{ return 302 {plain.url('/page')}; }}")
        self.assert_submission_failed(self.submit(), report_text.report())
        self.assertEqual(plain.connections, 0)

    def test_there_is_no_way_back_from_tls(self):
        """Also where the first server was asked without it."""
        plain = http_server.Server(http_server.reply(b"page"))
        self.addCleanup(plain.close)
        self.serve(self.certificate(), f"location = /diagnosticsubmit {{ return 302 {plain.url('/page')}; }}")
        first = http_server.Server(http_server.reply(b"", 307, [f"Location: https://{tls.HOST}/diagnosticsubmit"]))
        self.addCleanup(first.close)
        self.assert_submission_failed(self.run_test_build(["-s"], submit=first.url()), report_text.report())
        self.assertEqual((first.connections, plain.connections), (1, 0))

    def test_a_server_without_tls(self):
        plain = http_server.Server(lambda exchange: exchange.send(b"HTTP/1.1 400 Bad\r\n\r\n"), at_connect=True)
        self.addCleanup(plain.close)
        ended = self.run_test_build(["-s"], submit=f"https://127.0.0.1:{plain.port}/diagnosticsubmit")
        self.assert_submission_failed(ended, report_text.report())

    def test_a_handshake_that_never_ends(self):
        silent = http_server.Server(lambda exchange: exchange.wait_until_closed_by_client(), at_connect=True)
        self.addCleanup(silent.close)
        ended = self.run_test_build(["-s"], submit=f"https://127.0.0.1:{silent.port}/diagnosticsubmit",
                                    env={"TEST_BUILD_STALL_MS": 300})
        self.assert_submission_failed(ended, report_text.report())

    def test_through_a_proxy(self):
        self.serve(self.certificate())
        proxy = http_server.Server(tunnel)
        self.addCleanup(proxy.close)
        for variables, requests in [
            ({"https_proxy": f"http://127.0.0.1:{proxy.port}"}, 1),
            ({"https_proxy": f"http://127.0.0.1:{proxy.port}", "no_proxy": tls.HOST}, 0),
            ({"https_proxy": f"http://127.0.0.1:{proxy.port}", "no_proxy": ".halvik.example"}, 0),
        ]:
            with self.subTest(variables):
                proxy.requests.clear()
                self.receiver.files.clear()
                ended = self.submit(env=variables)
                self.assertEqual((ended.stdout, ended.status), (f"url=https://{tls.HOST}/results/1\n".encode(), 0))
                self.assertEqual([content for _, _, content in self.receiver.files], [report_text.report()])
                self.assertEqual([(request.method, request.target) for request in proxy.requests],
                                 [("CONNECT", f"{tls.HOST}:443")] * requests)


def tunnel(exchange):
    """Connects a proxy's client with the server that it asked for, until both have closed."""
    with socket.create_connection(("127.0.0.1", 443)) as server:
        exchange.send(b"HTTP/1.1 200 Connected\r\n\r\n")

        def pump(source, target):
            try:
                while data := source.recv(65536):
                    target.sendall(data)
                target.shutdown(socket.SHUT_WR)
            except OSError:
                pass  # the other direction has ended the connection

        back = threading.Thread(target=pump, args=(server, exchange.connection))
        back.start()
        pump(exchange.connection, server)
        back.join()


skipping.require_tools("nginx", "openssl")
isolation.run_tests(needs_namespaces=True)
