# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A proxy that asks for a ticket of Kerberos (Negotiate), in a realm of its own."""

import base64
import os
import socket
import subprocess
import unittest.mock

import http_server
import isolation
import polling
import program_tests
import report_text
import skipping

skipping.require_tools("krb5kdc", "kdb5_util", "kadmin.local", "kinit")
skipping.require_modules("gssapi")
import gssapi

URL = "http://diagnostic.halvik.example/diagnosticsubmit"
RESULTS_URL = b"https://results.halvik.example/1"
REALM, PORT = "HALVIK.EXAMPLE", 88
USER, PASSWORD = "ann", "secret"
PROXY = "HTTP/127.0.0.1"

SETTINGS = """
[libdefaults]
default_realm = {realm}
dns_canonicalize_hostname = false
dns_lookup_kdc = false
[realms]
{realm} = {{
  kdc = 127.0.0.1:{port}
  kdc_listen = 127.0.0.1:{port}
  kdc_tcp_listen = 127.0.0.1:{port}
  database_name = {folder}/principal
  key_stash_file = {folder}/stash
}}
[logging]
kdc = FILE:{folder}/log
"""


class ProxyKerberosTest(program_tests.ProgramTest):
    def setUp(self):
        """Starts the realm's server, which gives the user a ticket, and the proxy its key."""
        super().setUp()
        settings = self.folder / "krb5.conf"
        settings.write_text(SETTINGS.format(realm=REALM, port=PORT, folder=self.folder))
        self.realm = {"KRB5_CONFIG": str(settings), "KRB5_KDC_PROFILE": str(settings),
                      "KRB5CCNAME": str(self.folder / "ticket"), "KRB5RCACHENAME": "none:"}
        variables = unittest.mock.patch.dict(os.environ, self.realm)
        variables.start()
        self.addCleanup(variables.stop)
        self.call("kdb5_util", "create", "-s", "-P", "master")
        for command in (f"addprinc -pw {PASSWORD} {USER}", f"addprinc -randkey {PROXY}",
                        f"ktadd -k {self.folder}/keys {PROXY}"):
            self.call("kadmin.local", "-q", command)
        server = subprocess.Popen(["krb5kdc", "-n"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, server)
        polling.wait_until(self.is_up, "the realm's server listens", server)

    def call(self, *command, stdin=""):
        subprocess.run(command, input=stdin, text=True, check=True, capture_output=True)

    @staticmethod
    def is_up():
        with socket.socket() as any_socket:
            return any_socket.connect_ex(("127.0.0.1", PORT)) == 0

    def submit(self):
        """Uploads by a proxy that wants a ticket: the users whom it saw, what it let pass, and how the run ended."""
        keys = gssapi.Credentials(usage="accept", store={"keytab": str(self.folder / "keys")})
        names, passed = [], []

        def script(exchange):
            scheme, _, token = exchange.request.headers.get("proxy-authorization", "").partition(" ")
            if scheme != "Negotiate":
                exchange.send(http_server.head(407, 4, ["Proxy-Authenticate: Negotiate"]) + b"who?")
                return
            context = gssapi.SecurityContext(creds=keys, usage="accept")
            context.step(base64.b64decode(token))
            names.append(str(context.initiator_name))
            passed.append(exchange.request)
            http_server.reply(RESULTS_URL)(exchange)

        server = http_server.Server(script)
        self.addCleanup(server.close)
        env = {"http_proxy": server.url(""), **self.realm}
        return names, passed, self.run_test_build(["-s"], submit=URL, env=env)

    def test_a_user_with_a_ticket(self):
        self.call("kinit", USER, stdin=PASSWORD + "\n")
        names, passed, ended = self.submit()
        self.assertEqual((ended.stdout, ended.stderr, ended.status), (b"url=" + RESULTS_URL + b"\n", b"", 0))
        self.assertEqual([request.submitted for request in passed], [report_text.report()])
        self.assertEqual(names, [f"{USER}@{REALM}"])

    def test_a_user_without_a_ticket(self):
        names, passed, ended = self.submit()
        self.assert_submission_failed(ended, report_text.report())
        self.assertEqual((names, passed), ([], []))


isolation.run_tests(needs_namespaces=True)
