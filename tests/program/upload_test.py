# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The upload on the wire, and what the program makes of each kind of answer."""

import http_server
import isolation
import polling
import program_tests
import report_text
import upload_form

RESULTS_URL = b"http://results.halvik.example/1"
OUTPUTS = [("echo first", "first\n"),
           ("printf '%s\\r\\n' --0xKhTmLbOuNdArY-- '\u00e4'", "--0xKhTmLbOuNdArY--\r\n\u00e4\r\n")]
COMMANDS = [line for line, *_ in OUTPUTS]
REPORT = report_text.report(OUTPUTS)


class UploadTest(program_tests.ProgramTest):
    def serve(self, *scripts, **others):
        server = http_server.Server(*scripts, **others)
        self.addCleanup(server.close)
        return server

    def submit(self, server, **others):
        return self.run_test_build(["-s"], COMMANDS, submit=server.url(), **others)

    def assert_accepted(self, ended, reply):
        self.assertEqual(ended.stdout, b"url=" + reply + b"\n")
        self.assertEqual(ended.stderr, b"")
        self.assertEqual(ended.status, 0)
        self.assert_only_files(self.home, [])

    def assert_refused(self, ended):
        self.assert_submission_failed(ended, REPORT)
        self.desktop_file.unlink()


class RequestTest(UploadTest):
    def test_the_request(self):
        server = self.serve(http_server.reply(RESULTS_URL))
        self.assert_accepted(self.submit(server), RESULTS_URL)
        request, = server.requests
        self.assertEqual((request.method, request.target), ("POST", "/diagnosticsubmit"))
        self.assertEqual(request.headers["content-type"], "multipart/form-data; boundary=0xKhTmLbOuNdArY")
        self.assertEqual(request.headers["host"], f"127.0.0.1:{server.port}")
        self.assertEqual(request.headers["content-length"], str(len(REPORT) + 110))
        self.assertEqual(len(request.body), len(REPORT) + 110)
        self.assertEqual(request.body, upload_form.around(REPORT))
        self.assertTrue(request.body.startswith(b"--0xKhTmLbOuNdArY\r\nContent-Disposition: form-data; name="))
        self.assertTrue(request.body.endswith(b"\r\n--0xKhTmLbOuNdArY--\r\n"))

    def test_a_large_request(self):
        (self.work / "filler").write_bytes(b"x" * 20_000_000)
        server = self.serve(http_server.reply(RESULTS_URL), receive_buffer=4096)
        ended = self.run_test_build(["-s"], ["cat filler"], submit=server.url())
        self.assert_accepted(ended, RESULTS_URL)
        self.assert_same_text(server.requests[0].submitted, report_text.report([("cat filler", b"x" * 20_000_000)]))


class ReplyTest(UploadTest):
    def test_statuses(self):
        for status, body, accepted in [
            (200, RESULTS_URL, True), (201, RESULTS_URL, True), (202, b"x", True), (299, RESULTS_URL, True),
            (300, RESULTS_URL, True), (200, b"", False), (204, None, False), (201, b"", False),
            (400, RESULTS_URL, False), (400, b"", False), (401, b"who?", False), (403, b"no", False),
            (404, b"<html>not here</html>", False), (404, b"", False), (407, b"proxy?", False), (413, b"large", False),
            (418, b"teapot", False), (500, b"broken", False), (500, b"", False), (502, b"gateway", False),
            (503, b"later", False), (599, b"?", False),
        ]:
            with self.subTest(status=status, body=body):
                fields = ['WWW-Authenticate: Basic realm="here"'] if status == 401 else []
                script = http_server.reply(body, status, fields)
                if body is None:
                    script = lambda exchange: (exchange.send(http_server.head(204)), exchange.close())
                server = self.serve(script)
                ended = self.submit(server)
                if accepted:
                    self.assert_accepted(ended, body)
                else:
                    self.assert_refused(ended)
                for request in server.requests:
                    self.assertEqual(request.submitted, REPORT)

    def test_forms_of_a_whole_body(self):
        def until_closed(exchange):
            exchange.send(http_server.head() + RESULTS_URL)
            exchange.close()

        def kept_alive(exchange):
            exchange.send(http_server.head(200, len(RESULTS_URL)) + RESULTS_URL)

        def one_chunk(exchange):
            exchange.send(http_server.head(200, fields=["Transfer-Encoding: chunked"])
                          + b"%x\r\n%s\r\n0\r\n\r\n" % (len(RESULTS_URL), RESULTS_URL))

        def head_first(exchange):
            exchange.send(http_server.head(200, len(RESULTS_URL)))
            exchange.wait_until_taken(self.process.pid)
            exchange.send(RESULTS_URL)

        def continued(exchange):
            exchange.send(b"HTTP/1.1 100 Continue\r\n\r\n" + http_server.head(200, len(RESULTS_URL)) + RESULTS_URL)

        for script in (until_closed, kept_alive, one_chunk, head_first, continued):
            with self.subTest(script.__name__):
                self.assert_accepted(self.submit_watched(script), RESULTS_URL)

    def submit_watched(self, script):
        """Submits to a script that looks at the running program, too."""
        def script_with_process(exchange):
            polling.wait_until(lambda: self.process, "the program is known")
            script(exchange)

        self.process = None
        server = self.serve(script_with_process)
        self.process = self.start_test_build(["-s"], COMMANDS, submit=server.url())
        return self.finish(self.process)

    def test_of_a_body_in_pieces_the_last_one_is_the_reply(self):
        def in_pieces(*pieces):
            def script(exchange):
                exchange.send(http_server.head(200, sum(map(len, pieces))))
                for piece in pieces:
                    exchange.wait_until_taken(self.process.pid)
                    exchange.send(piece)
            return script

        def in_chunks(*pieces):
            def script(exchange):
                exchange.send(http_server.head(200, fields=["Transfer-Encoding: chunked"]))
                for piece in pieces:
                    exchange.wait_until_taken(self.process.pid)
                    exchange.send(b"%x\r\n%s\r\n" % (len(piece), piece))
                exchange.wait_until_taken(self.process.pid)
                exchange.send(b"0\r\n\r\n")
            return script

        for send in (in_pieces, in_chunks):
            for pieces in ((b"http://", b"second"), (b"one", b"two", b"three\n"), (b"\xff", b"good")):
                with self.subTest(send=send.__name__, pieces=pieces):
                    self.assert_accepted(self.submit_watched(send(*pieces)), pieces[-1])

    def test_a_reply_that_is_not_utf8_still_counts(self):
        server = self.serve(http_server.reply(b"caf\xe9"))
        ended = self.submit(server)
        self.assertRegex(ended.stdout, rb"^url=[ -~]*\n$")
        self.assertEqual(ended.status, 0)
        self.assert_only_files(self.home, [])


class RedirectTest(UploadTest):
    PAGE = b"http://results.halvik.example/page"

    def test_the_page_that_a_redirect_leads_to_is_the_reply(self):
        for status, method in ((301, "GET"), (302, "GET"), (303, "GET"), (307, "POST"), (308, "POST")):
            for body in (b"", b"moved"):
                with self.subTest(status=status, body=body):
                    server = self.serve(http_server.reply(body, status, ["Location: /page"]),
                                        http_server.reply(self.PAGE))
                    self.assert_accepted(self.submit(server), self.PAGE)
                    first, second = server.requests
                    self.assertEqual((first.method, first.target), ("POST", "/diagnosticsubmit"))
                    self.assertEqual((second.method, second.target), (method, "/page"))
                    self.assertEqual(second.body, first.body if method == "POST" else b"")

    def test_to_another_server(self):
        other = self.serve(http_server.reply(self.PAGE))
        server = self.serve(http_server.reply(b"", 302, ["Location: " + other.url("/there?x=1")]))
        self.assert_accepted(self.submit(server), self.PAGE)
        self.assertEqual([request.target for request in other.requests], ["/there?x=1"])

    def test_without_a_place_to_go_to_it_is_a_reply_like_any_other(self):
        self.assert_accepted(self.submit(self.serve(http_server.reply(RESULTS_URL, 302))), RESULTS_URL)
        self.assert_refused(self.submit(self.serve(http_server.reply(b"", 302))))

    def test_redirects_that_lead_nowhere(self):
        port = http_server.unreachable_port(self)
        for name, *scripts in [
            ("a circle", http_server.reply(b"", 302, ["Location: /diagnosticsubmit"])),
            ("a missing page", http_server.reply(b"", 302, ["Location: /page"]), http_server.reply(b"not here", 404)),
            ("an empty page", http_server.reply(b"moved", 302, ["Location: /page"]), http_server.reply(b"")),
            ("nobody there", http_server.reply(b"", 302, [f"Location: http://127.0.0.1:{port}/"])),
            ("another protocol", http_server.reply(b"", 302, ["Location: file:///etc/hostname"])),
        ]:
            with self.subTest(name):
                self.assert_refused(self.submit(self.serve(*scripts)))


class BrokenConnectionTest(UploadTest):
    def test_nobody_there(self):
        submit = f"http://127.0.0.1:{http_server.unreachable_port(self)}/diagnosticsubmit"
        self.assert_refused(self.run_test_build(["-s"], COMMANDS, submit=submit))

    def test_closed_at_once(self):
        for end in (http_server.Exchange.close, http_server.Exchange.reset):
            with self.subTest(end.__name__):
                self.assert_refused(self.submit(self.serve(end, at_connect=True)))

    def test_closed_inside_the_reply(self):
        whole = http_server.head(200, 100)
        for name, sent in [
            ("before the head", b""),
            ("inside the first line", b"HTTP/1."),
            ("inside the head", b"HTTP/1.1 200 OK\r\nContent-Len"),
            ("before the end of the head", whole[:-2]),
            ("after the head", whole),
            ("inside the body", whole + b"http://results.halvik.example/"),
            ("inside an error's body", http_server.head(500, 100) + b"broken"),
            ("not a reply at all", b"220 mail.halvik.example ESMTP\r\n"),
        ]:
            for end in (http_server.Exchange.close, http_server.Exchange.reset):
                with self.subTest(name, end=end.__name__):
                    self.assert_refused(self.submit(self.serve(self.breaks_off(sent, end))))

    def breaks_off(self, sent, end):
        def script(exchange):
            exchange.send(sent)
            end(exchange)
        return script


isolation.run_tests()
