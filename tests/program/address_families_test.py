# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A server with addresses of both families, of which only one may lead anywhere."""

import socket

import http_server
import isolation
import program_tests
from hostile_servers import RESULTS_URL


class FamilyTest(program_tests.ProgramTest):
    """The two families of addresses, of which a host may have one or both, and only one may lead anywhere."""

    NAME = "families.halvik.example"

    def submit(self, *addresses, family, prepare=lambda server: None):
        hosts = self.folder / "hosts"
        hosts.write_text("".join(f"{address} {self.NAME}\n" for address in addresses))
        isolation.cover("/etc/hosts", hosts)
        self.addCleanup(isolation.uncover, "/etc/hosts")
        server = http_server.Server(http_server.reply(RESULTS_URL), family=family)
        self.addCleanup(server.close)
        prepare(server)
        ended = self.run_test_build(["-s"], submit=f"http://{self.NAME}:{server.port}/diagnosticsubmit")
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + RESULTS_URL + b"\n", b"", 0))
        self.assertEqual(server.requests[0].headers["host"], f"{self.NAME}:{server.port}")

    @isolation.needs_namespaces
    def test_a_host_with_addresses_of_one_family(self):
        self.submit("::1", family=socket.AF_INET6)
        self.submit("127.0.0.1", family=socket.AF_INET)

    @isolation.needs_namespaces
    def test_a_host_that_refuses_by_one_family(self):
        for family in (socket.AF_INET, socket.AF_INET6):
            with self.subTest(family):
                self.submit("::1", "127.0.0.1", family=family)

    @isolation.needs_namespaces
    def test_a_host_that_swallows_what_is_sent_by_one_family(self):
        """Its queue is full, so that connection requests go unanswered: a moment lost, not the upload."""
        def swallow(server):
            listener = socket.socket(socket.AF_INET6)
            self.addCleanup(listener.close)
            listener.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
            listener.bind(("::1", server.port))
            listener.listen(0)
            for _ in range(4):
                waiting = socket.socket(socket.AF_INET6)
                self.addCleanup(waiting.close)
                waiting.setblocking(False)
                waiting.connect_ex(listener.getsockname())

        self.submit("::1", "127.0.0.1", family=socket.AF_INET, prepare=swallow)

    def test_an_address_in_place_of_a_name(self):
        server = http_server.Server(http_server.reply(RESULTS_URL), family=socket.AF_INET6)
        self.addCleanup(server.close)
        ended = self.run_test_build(["-s"], submit=f"http://[::1]:{server.port}/diagnosticsubmit")
        self.assertEqual((ended.stdout, ended.status), (b"url=" + RESULTS_URL + b"\n", 0))
        self.assertEqual(server.requests[0].headers["host"], f"[::1]:{server.port}")


isolation.run_tests()
