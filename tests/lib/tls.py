# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A real web server with TLS in front of a receiver that takes the uploaded form apart, and whom a machine trusts."""

import pathlib
import shutil
import socket
import subprocess
import threading

import isolation
import polling
import report_receiver
from authority import openssl

HOST = "diagnostic.halvik.example"
MACHINE_CERTIFICATES = pathlib.Path("/etc/ssl/certs")

NGINX = """
daemon off;
user root;
master_process off;
pid {folder}/nginx.pid;
error_log {folder}/error.log;
events {{}}
http {{
    access_log {folder}/access.log;
    client_body_temp_path {folder}/body;
    proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi;
    uwsgi_temp_path {folder}/uwsgi;
    scgi_temp_path {folder}/scgi;
    server {{
        listen 127.0.0.1:443 ssl;
        ssl_certificate {certificate}.pem;
        ssl_certificate_key {certificate}.key;
        location / {{
            proxy_pass http://127.0.0.1:{receiver};
            proxy_set_header Host $host;
        }}
    }}
}}
"""


def trust(authority, folder):
    """Makes the machine, as this test file sees it, trust an authority, by a copy of its store in the folder."""
    store = folder / "certs"
    shutil.copytree(MACHINE_CERTIFICATES, store, symlinks=False, ignore_dangling_symlinks=True)
    shutil.copy(f"{authority.path}.pem", store / "halvik-test-authority.pem")
    with open(store / "ca-certificates.crt", "ab") as bundle:
        bundle.write(pathlib.Path(f"{authority.path}.pem").read_bytes())
    openssl("rehash", store)
    isolation.cover(MACHINE_CERTIFICATES, store)


class Receiver:
    """Keeps the files that are uploaded, and answers with the address of a results page."""

    def __init__(self):
        self.files = []  # field name, file name and content of each
        self.pages = 0
        self._server = report_receiver.Receiver(0, self._answer)
        self.port = self._server.server_port
        self._thread = threading.Thread(target=self._server.serve_forever)
        self._thread.start()

    def close(self):
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()

    def _answer(self, request):
        files = request.files()
        if request.command != "POST":
            self.pages += 1
            request.answer(200, b"page")
        elif request.path != "/diagnosticsubmit" or files is None:
            request.answer(400, b"not a report")
        else:
            self.files += files
            request.answer(200, f"https://{HOST}/results/{len(self.files)}".encode())


class WebServer:
    """nginx with TLS on this namespace's port 443, in front of a receiver."""

    def __init__(self, folder, certificate, receiver, extra=""):
        folder.mkdir()
        configuration = NGINX.format(folder=folder, certificate=certificate, receiver=receiver)
        configuration = configuration.replace("location / {", extra + "\n        location / {")
        (folder / "nginx.conf").write_text(configuration)
        command = ["nginx", "-p", folder, "-e", folder / "error.log", "-c", folder / "nginx.conf"]
        self._process = subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *command],
                                         stdin=subprocess.DEVNULL, stderr=subprocess.PIPE)
        polling.wait_until(self._listens, "nginx listens")

    def _listens(self):
        if self._process.poll() is not None:
            raise AssertionError(f"nginx ended: {self._process.stderr.read().decode()}")
        with socket.socket() as attempt:
            return attempt.connect_ex(("127.0.0.1", 443)) == 0

    def close(self):
        self._process.terminate()
        self._process.communicate()
