# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Namespaces for a test file: no packet leaves the machine, and the machine's files can be covered.

Every test file that runs the program runs inside a mount namespace and a network namespace with the loopback interface
only; where a machine forbids these, the test files and the single tests that need one are skipped.
"""

import fcntl
import os
import resource
import socket
import struct
import subprocess
import sys
import tempfile
import unittest

import builds
from skipping import skip_file

ISOLATED = "HALVIK_TEST_ISOLATED"  # set, in a test file's own environment, once it runs inside its namespaces


def run_tests(needs_namespaces=False):
    """Runs the calling test file. Call this from its last line."""
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    for path in (builds.program(), builds.test_build()):
        if not os.access(path, os.X_OK):
            sys.exit(f"{path} is not an executable")
    if ISOLATED in os.environ:
        raise_loopback()
    else:
        prefix = namespace_prefix("--net")
        if prefix:
            os.environ[ISOLATED] = "1"
            os.execvp(prefix[0], prefix + [sys.executable, *sys.orig_argv[1:]])
        if needs_namespaces:
            skip_file("this machine permits no network and mount namespaces")
    unittest.main(module="__main__")


def namespace_prefix(*kinds):
    """The command that starts another one inside new namespaces of these kinds and with mounts of its own, or None where
    the machine forbids them."""
    own = ["unshare", *kinds, "--mount", "--propagation", "private"]
    as_user = ["unshare", "--user", "--map-root-user", *own[1:]]
    for prefix in [own, as_user] if os.geteuid() == 0 else [as_user]:
        attempt = prefix + ["mount", "-t", "tmpfs", "none", tempfile.gettempdir()]
        try:
            if subprocess.run(attempt, capture_output=True).returncode == 0:
                return prefix
        except FileNotFoundError:
            return None
    return None


needs_namespaces = unittest.skipUnless(ISOLATED in os.environ, "this machine permits no network and mount namespaces")


def raise_loopback():
    set_flags, up_and_running = 0x8914, 0x41
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        fcntl.ioctl(any_socket, set_flags, struct.pack("16sh22x", b"lo", up_and_running))


def mount(*arguments):
    # Without an entry in the system's table of mounts, which is not this user's to write.
    subprocess.run(["mount", "--no-mtab", *map(str, arguments)], check=True)


def cover(path, with_path):
    """Puts another file or folder in the place of one of the machine's, for this test file only."""
    if not os.path.exists(path):
        # A bare system may lack the file, /etc/hosts for one; an empty one means the same.
        open(path, "w", encoding="utf-8").close()
    mount("--bind", with_path, path)


def uncover(path):
    subprocess.run(["umount", "--no-mtab", "--lazy", str(path)], check=True)
