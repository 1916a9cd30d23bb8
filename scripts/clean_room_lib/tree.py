# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A Debian system in a folder, and how a command runs in it."""

import os
import subprocess

from clean_room_lib.summary import LOGS, ROOT, Failure

USER = "tester"

# Makes a tree the root folder, with a few devices, and runs a command in it. The shell stays the first process of the
# namespace: signals and orphans are handled differently there than a program expects.
ENTER = r"""
set -eu
tree=$1 user=$2
shift 2
hostname clean-room
mount --make-rprivate /
mount --bind "$tree" "$tree"
cd "$tree"
mount -t proc proc proc
mount -t sysfs sysfs sys
mount -t tmpfs -o mode=755 dev dev
for device in null zero full random urandom tty; do
  touch dev/$device
  mount --bind /dev/$device dev/$device
done
mkdir dev/net dev/pts dev/shm
if [ -e /dev/net/tun ]; then
  touch dev/net/tun
  mount --bind /dev/net/tun dev/net/tun
fi
mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts dev/pts
mount -t tmpfs -o mode=1777 shm dev/shm
ln -s pts/ptmx dev/ptmx
ln -s /proc/self/fd dev/fd
ln -s /proc/self/fd/0 dev/stdin
ln -s /proc/self/fd/1 dev/stdout
ln -s /proc/self/fd/2 dev/stderr
pivot_root . mnt
umount --lazy /mnt
cd "$(getent passwd "$user" | cut -d: -f6)"
status=0
setpriv --reuid="$user" --regid="$user" --init-groups --reset-env -- env LC_ALL=C.UTF-8 "$@" || status=$?
exit $status
"""


class Tree:
    """A Debian system in a folder. The logs of its commands are in a folder of its release."""

    def __init__(self, path, release):
        self.path, self.release = path, release
        self.logs = LOGS / release

    def command(self, words, user="root", variables=None, network=True):
        """The command that runs another one in the tree."""
        assignments = [f"{name}={value}" for name, value in (variables or {}).items()]
        return ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--ipc", "--uts",
                *([] if network else ["--net"]), "--",
                "sh", "-c", ENTER, "sh", str(self.path), user, *assignments, *words]

    def run(self, words, log, **others):
        """Runs a command and logs what it prints. Returns the last line of its standard output."""
        path = self.logs / f"{log}.log"
        with open(path, "ab") as file:
            ended = subprocess.run(self.command(words, **others), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=file)
            file.write(ended.stdout)
        if ended.returncode != 0:
            raise Failure(f"status {ended.returncode}, see {path.relative_to(ROOT)}")
        lines = ended.stdout.decode(errors="replace").splitlines()
        return lines[-1] if lines else ""

    def file(self, name):
        return self.path / name.removeprefix("/")

    def copy(self, path):
        subprocess.run(["cp", "--archive", "--reflink=auto", self.path, path], check=True)
        return Tree(path, self.release)

    def clone(self, user):
        """Makes a clean clone of the sources in the user's home folder. Returns its path in the tree."""
        home = "/root" if user == "root" else f"/home/{user}"
        place = self.file(home) / "halvik-diagnostic"
        subprocess.run(["git", "clone", "--quiet", "--no-hardlinks", ROOT, place], check=True)
        owner = self.file(home).stat()
        for path in [place, *place.rglob("*")]:
            os.chown(path, owner.st_uid, owner.st_gid, follow_symlinks=False)
        return f"{home}/halvik-diagnostic"

    def add_user(self, log, with_sudo):
        """Adds an ordinary user, who becomes root by sudo without a password if there is sudo."""
        self.run(["useradd", "--create-home", "--shell", "/bin/bash", USER], log)
        if with_sudo:
            self.run(["sh", "-c", "apt-get update && apt-get install -y --no-install-recommends sudo"], log)
            self.file(f"/etc/sudoers.d/{USER}").write_text(f"{USER} ALL=(ALL) NOPASSWD: ALL\n")
