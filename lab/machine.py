# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The first process of the user's machine.

usage: machine.py CERTIFICATE USER GROUP NAME     the certificate to trust, the numbers, the machine's name

Started in new mount, process, host name and IPC namespaces, it makes a root folder of the host's folders, but its own
/etc, /run, /tmp, /var/tmp, /Library and /var/log, the user's disk in /lab and, for root only, the host's root folder in
OUTSIDE, prints "ready" and then reaps processes for ever.
"""

import os
import pathlib
import shutil
import socket
import subprocess
import sys

import network
import reaper

ROOT = pathlib.Path("/run/lab/machine")
CONFIG = pathlib.Path("/run/lab/config")
OWN = {"etc", "lab", "Library", "lost+found", "proc", "run", "sys", "tmp"}
DISK_SIZE = "256m"
NAME = "workstation"
USER = "visitor"
HOME = f"/lab/{USER}"
OUTSIDE = "/lab/outside/root"


def mount(*arguments):
    subprocess.run(["mount", *map(str, arguments)], check=True)


def build(certificate, uid, gid):
    subprocess.run(["umount", "/tmp"], check=True)  # that of the servers, which hides the one underneath
    ROOT.mkdir(exist_ok=True)  # each machine has its own there
    mount("-t", "tmpfs", "-o", "mode=755", "none", ROOT)
    for entry in os.scandir("/"):
        if entry.name in OWN:
            continue
        if entry.is_symlink():
            (ROOT / entry.name).symlink_to(os.readlink(entry.path))
        elif entry.is_dir():
            (ROOT / entry.name).mkdir()
            mount("--rbind", entry.path, ROOT / entry.name)
    for name in ("Library", "proc", "sys", "run/lab/config", "lab", "tmp"):
        (ROOT / name).mkdir(parents=True)
    mount("-t", "proc", "proc", ROOT / "proc")
    mount("-t", "sysfs", "-o", "ro", "sysfs", ROOT / "sys")
    mount("--bind", CONFIG, ROOT / "run/lab/config")
    mount("-t", "tmpfs", "-o", "mode=755", "none", ROOT / "var/log")
    shutil.copy(CONFIG / "user/system.log", ROOT / "var/log")
    build_etc(certificate, uid, gid)
    build_disk(certificate, uid, gid)


def build_etc(certificate, uid, gid):
    etc = ROOT / "etc"
    subprocess.run(["cp", "-a", "/etc", etc], check=True)
    name = socket.gethostname()
    replace(etc / "hostname", f"{name}\n")
    replace(etc / "hosts", f"127.0.0.1 localhost\n127.0.1.1 {name}\n")
    replace(etc / "nsswitch.conf", "passwd: files\ngroup: files\nhosts: files dns\n")
    write_resolv_conf(ROOT, network.HOME_LAN_ADDRESS)
    add_account(etc / "passwd", uid, f"{USER}:x:{uid}:{gid}:Visitor:{HOME}:/bin/sh")
    add_account(etc / "group", gid, f"{USER}:x:{gid}:")
    trust(etc / "ssl/certs", pathlib.Path(certificate))


def write_resolv_conf(root, server):
    replace(root / "etc/resolv.conf", f"nameserver {server}\n")


def replace(path, text):
    """Writes a file; a symbolic link in its place is removed, not followed."""
    path.unlink(missing_ok=True)
    path.write_text(text, encoding="ascii")


def add_account(path, number, line):
    others = [old for old in path.read_text(encoding="utf-8").splitlines()
              if old.split(":")[0] != USER and old.split(":")[2:3] != [str(number)]]
    path.write_text("\n".join([*others, line, ""]), encoding="utf-8")


def trust(store, certificate):
    """Has this machine alone trust the lab's authority, for programs that read the bundle or look up a hash."""
    with open(store / "ca-certificates.crt", "ab") as bundle:
        bundle.write(certificate.read_bytes())
    shutil.copy(certificate, store / "halvik-lab.pem")
    name = subprocess.run(["openssl", "x509", "-hash", "-noout", "-in", certificate], check=True, text=True,
                          capture_output=True).stdout.strip()
    (store / f"{name}.0").symlink_to("halvik-lab.pem")


def build_disk(certificate, uid, gid):
    """The disk of the user: a home folder, and one for temporary files."""
    disk = ROOT / "lab"
    mount("-t", "tmpfs", "-o", f"mode=755,size={DISK_SIZE}", "none", disk)
    home = ROOT / HOME.lstrip("/")
    for folder in (home / "Desktop", home / ".pki/nssdb", disk / "tmp", disk / "run", disk / "program"):
        folder.mkdir(parents=True)
    (disk / "tmp").chmod(0o1777)
    for folder in ("tmp", "var/tmp"):
        mount("--bind", disk / "tmp", ROOT / folder)
    browser = f"sql:{home}/.pki/nssdb"
    subprocess.run(["certutil", "-N", "-d", browser, "--empty-password"], check=True)
    subprocess.run(["certutil", "-A", "-d", browser, "-n", "lab", "-t", "C,,", "-i", certificate], check=True)
    for folder in (home, disk / "run"):
        subprocess.run(["chown", "-R", f"{uid}:{gid}", folder], check=True)
        folder.chmod(0o700)


def enter():
    outside = ROOT / OUTSIDE.lstrip("/")
    outside.mkdir(parents=True)
    outside.parent.chmod(0o700)
    os.chdir(ROOT)
    subprocess.run(["pivot_root", ".", outside], check=True)
    os.chdir("/")


def main(certificate, uid, gid, name):
    socket.sethostname(name)
    build(certificate, int(uid), int(gid))
    enter()
    print("ready", flush=True)
    reaper.reap_for_ever()


if __name__ == "__main__":
    main(*sys.argv[1:])
