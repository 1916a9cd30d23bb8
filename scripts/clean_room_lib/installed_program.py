# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The installed program in a network that is the loopback interface alone, with a submission endpoint of its own."""

import pathlib
import shutil
import subprocess
import tempfile

import isolation
import report_text
import tls
from authority import Authority
from clean_room_lib import window
from clean_room_lib.summary import ROOT, Failure
from clean_room_lib.tree import USER


def try_program(summary, tree, with_window):
    isolation.raise_loopback()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        authority = Authority(folder)
        shutil.copy(f"{authority.path}.pem", tree.file("/usr/local/share/ca-certificates/clean-room.crt"))
        tree.file("/etc/hosts").write_text(f"127.0.0.1 localhost clean-room {tls.HOST}\n")
        receiver = tls.Receiver()
        web = tls.WebServer(folder / "nginx", authority.issue(folder / "server", tls.HOST), receiver.port)
        try:
            if not with_window:
                try_without_window(summary, tree, receiver)
                return
            with summary.step(f"as {USER}: halvik-diagnostic, Start tests"):
                tree.run(["update-ca-certificates", "--fresh"], "trust")
                window.use(tree, receiver)
        finally:
            web.close()
            receiver.close()


def try_without_window(summary, tree, receiver):
    with summary.step(f"as {USER}: halvik-diagnostic -s -i, refused by the server's certificate"):
        if run_without_window(tree, ["-s", "-i"], status=1) or receiver.files:
            raise Failure("the report was sent")
    with summary.step(f"as {USER}: ping is answered"):
        tree.run(["sysctl", "--system", "--pattern", "ping_group_range"], "ping")  # as at the start of a machine
        tree.run(["ping", "-c", "1", "127.0.0.1"], "ping", user=USER)
    tree.run(["update-ca-certificates", "--fresh"], "trust")
    for user in ("root", USER):
        with summary.step(f"as {user}: halvik-diagnostic -s -c -i") as facts:
            facts.append(check_delivery(receiver, run_without_window(tree, ["-s", "-c", "-i"], user=user)))


def run_without_window(tree, options, user=USER, status=0):
    """What the installed program prints."""
    log = tree.logs / "headless.log"
    with open(log, "ab") as file:
        ended = subprocess.run(tree.command(["halvik-diagnostic", *options], user), stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=file)
        file.write(ended.stdout)
    if ended.returncode != status:
        raise Failure(f"status {ended.returncode} instead of {status}, see {log.relative_to(ROOT)}")
    return ended.stdout


def check_delivery(receiver, printed):
    report, _, url = printed.rpartition(b"\nurl=")
    if [content for _, _, content in receiver.files[-1:]] != [report]:
        raise Failure("what was received is not what was printed")
    blocks = report_text.blocks(report)
    if len(blocks) != report_text.PLAN_LENGTH:
        raise Failure(f"{len(blocks)} commands in the report")
    return f"{len(blocks)} commands, {len(report):,} bytes, {url.decode().strip()}"
