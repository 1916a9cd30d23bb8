# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A certificate authority, and the certificates that servers of the tests and of the lab present."""

import subprocess

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
    """Keeps its own certificate and what openssl needs in its folder. Any certificate is PATH.pem, its key PATH.key."""

    def __init__(self, folder):
        self.path = folder / "authority"
        self._folder = folder
        make_self_signed(self.path, f"Authority in {folder.name}", "keyUsage=critical,keyCertSign")

    def issue(self, path, host, expired=False):
        """Makes a server's certificate, signed by the authority. Returns its path."""
        settings = self._folder / "settings"
        settings.write_text(SETTINGS.format(folder=self._folder, host=host))
        (self._folder / "issued").write_text("")
        time = ["-startdate", "20200101000000Z", "-enddate", "20210101000000Z"] if expired else ["-days", "30"]
        openssl("req", "-new", *NEW_KEY, "-subj", f"/CN={host}", "-keyout", f"{path}.key", "-out", f"{path}.csr")
        openssl("ca", "-batch", "-notext", "-config", settings, "-extensions", "server", *time,
                "-cert", f"{self.path}.pem", "-keyfile", f"{self.path}.key",
                "-in", f"{path}.csr", "-out", f"{path}.pem")
        return path


def make_self_signed(path, name, extension):
    """Makes a certificate that its own key has signed."""
    openssl("req", "-x509", *NEW_KEY, "-days", "30", "-subj", f"/CN={name}", "-keyout", f"{path}.key",
            "-out", f"{path}.pem", "-addext", extension)


def openssl(*arguments):
    subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True)
