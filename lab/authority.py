# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The lab's certificate authority, and every certificate that the submission endpoint and the portal ever present."""

import subprocess

AUTHORITY = "authority"
NEW_KEY = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"]

# The configuration of openssl ca.
SETTINGS = """
[ca]
default_ca = authority
[authority]
database = {folder}/issued
new_certs_dir = {folder}
rand_serial = yes
default_md = sha256
policy = any
[any]
commonName = supplied
[server]
subjectAltName = DNS:{host}
extendedKeyUsage = serverAuth
"""


class Authority:
    """Writes NAME.pem and NAME.key into its folder."""

    def __init__(self, folder):
        self._folder = folder
        self.certificate = self._path(AUTHORITY, "pem")
        self._make_own(AUTHORITY, "Authority of the Halvik lab", ["keyUsage=critical,keyCertSign"])

    def issue(self, name, host, expired=False):
        """Issues a server's certificate, signed by the authority."""
        settings, request = self._path(name, "settings"), self._path(name, "csr")
        settings.write_text(SETTINGS.format(folder=self._folder, host=host))
        (self._folder / "issued").write_text("")
        time = ["-startdate", "20200101000000Z", "-enddate", "20210101000000Z"] if expired else ["-days", "30"]
        self._openssl("req", "-new", *NEW_KEY, "-subj", f"/CN={host}", "-keyout", self._path(name, "key"),
                      "-out", request)
        self._openssl("ca", "-batch", "-notext", "-config", settings, "-extensions", "server", *time,
                      "-cert", self.certificate, "-keyfile", self._path(AUTHORITY, "key"),
                      "-in", request, "-out", self._path(name, "pem"))

    def issue_self_signed(self, name, host):
        """Issues a server's self-signed certificate."""
        self._make_own(name, host, [f"subjectAltName=DNS:{host}"])

    def _make_own(self, name, subject, extensions):
        options = [word for extension in extensions for word in ("-addext", extension)]
        self._openssl("req", "-x509", *NEW_KEY, "-days", "30", "-subj", f"/CN={subject}",
                      "-keyout", self._path(name, "key"), "-out", self._path(name, "pem"), *options)

    def _path(self, name, suffix):
        return self._folder / f"{name}.{suffix}"

    @staticmethod
    def _openssl(*arguments):
        subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True)
