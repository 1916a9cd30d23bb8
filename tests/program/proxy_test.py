# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The proxy settings of the environment."""

import http_server
import isolation
import program_tests
import report_text

HOST = "diagnostic.halvik.example"


class ProxyTest(program_tests.ProgramTest):
    """A host's name stands for this machine: what is plainly this machine is never reached by a proxy."""

    def setUp(self):
        super().setUp()
        (self.folder / "hosts").write_text(f"127.0.0.1 localhost {HOST}\n")
        isolation.cover("/etc/hosts", self.folder / "hosts")
        self.addCleanup(isolation.uncover, "/etc/hosts")
        self.direct = http_server.Server(http_server.reply(b"direct"))
        self.addCleanup(self.direct.close)
        self.proxy = http_server.Server(http_server.reply(b"by proxy"))
        self.addCleanup(self.proxy.close)
        self.url = f"http://{HOST}:{self.direct.port}/diagnosticsubmit"

    def submit(self, **variables):
        return self.run_test_build(["-s"], submit=self.url, env=variables)

    def test_which_way_an_upload_takes(self):
        proxy = f"http://127.0.0.1:{self.proxy.port}"
        for variables, reply in [
            ({}, b"direct"),
            ({"http_proxy": proxy}, b"by proxy"),
            ({"http_proxy": proxy + "/"}, b"by proxy"),
            ({"https_proxy": proxy}, b"direct"),
            ({"http_proxy": proxy, "no_proxy": "other.example"}, b"by proxy"),
            ({"http_proxy": proxy, "no_proxy": f"other.example,{HOST}"}, b"direct"),
            ({"http_proxy": proxy, "no_proxy": ".halvik.example"}, b"direct"),
            ({"http_proxy": ""}, b"direct"),
        ]:
            with self.subTest(variables):
                self.proxy.requests.clear()
                self.direct.requests.clear()
                ended = self.submit(**variables)
                self.assertEqual((ended.stdout, ended.status), (b"url=" + reply + b"\n", 0))
                by_proxy = reply == b"by proxy"
                used, unused = (self.proxy, self.direct) if by_proxy else (self.direct, self.proxy)
                self.assertEqual([request.submitted for request in used.requests], [report_text.report()])
                self.assertEqual(used.requests[0].target, self.url if by_proxy else "/diagnosticsubmit")
                self.assertEqual(unused.requests, [])

    def test_a_proxy_that_is_not_there_is_a_failed_upload(self):
        ended = self.submit(http_proxy=f"http://127.0.0.1:{http_server.unreachable_port(self)}")
        self.assert_submission_failed(ended, report_text.report())
        self.assertEqual(self.direct.connections, 0)

    def test_a_proxy_that_asks_for_a_password_is_a_failed_upload(self):
        asking = http_server.Server(http_server.reply(b"who?", 407, ['Proxy-Authenticate: Basic realm="here"']))
        ended = self.submit(http_proxy=asking.url(""))
        asking.close()
        self.assert_submission_failed(ended, report_text.report())
        self.assertEqual(self.direct.connections, 0)


isolation.run_tests(needs_namespaces=True)
