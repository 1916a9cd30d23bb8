# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What a scenario needs around the program: a server, certificates, a screen."""

import contextlib
import pathlib
import tempfile

import http_server
import isolation
from authority import Authority
from failing_calls.scenarios import SCENARIOS, Upload, Window


@contextlib.contextmanager
def scenario(name):
    """The scenario with the server that it needs, inside namespaces of its own."""
    kind = SCENARIOS[name]
    if kind is Upload:
        yield from _with_upload()
    elif kind is Window:
        yield from _with_screen()
    else:
        yield kind()


def _with_screen():
    # Not every machine has the libraries for these.
    import fake_desktop
    import virtual_screen
    import windows
    from failing_calls.window_user import WindowUser

    virtual_screen.use_own_sockets()
    with tempfile.TemporaryDirectory(prefix="halvik-screen-") as place, contextlib.ExitStack() as stack:
        screen = virtual_screen.Screen(size=(640, 640), options=["-nolock"])
        stack.callback(screen.close)
        server = http_server.Server(http_server.reply(windows.RESULT))
        stack.callback(server.close)
        yield Window(server, screen, fake_desktop.Desktop(pathlib.Path(place)), WindowUser)


def _with_upload():
    import tls  # the same

    with tempfile.TemporaryDirectory(prefix="halvik-tls-") as place, contextlib.ExitStack() as stack:
        folder = pathlib.Path(place)
        (folder / "authority").mkdir()
        authority = Authority(folder / "authority")
        tls.trust(authority, folder)
        stack.callback(isolation.uncover, tls.MACHINE_CERTIFICATES)
        (folder / "hosts").write_text(f"127.0.0.1 localhost {tls.HOST}\n")
        isolation.cover("/etc/hosts", folder / "hosts")
        stack.callback(isolation.uncover, "/etc/hosts")
        receiver = tls.Receiver()
        stack.callback(receiver.close)
        web = tls.WebServer(folder / "nginx", authority.issue(folder / "server", tls.HOST), receiver.port,
                            "client_max_body_size 8m;")
        stack.callback(web.close)
        yield Upload(receiver)
