# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Runs commands in the namespaces of a lab."""

import os
import re
import signal
import subprocess

import control_socket
import machine
import namespaces
from commands import executables, running_lab

# The root folder is not that of the mount namespace where the lab was started in a chroot.
ENTER = ["--root", "--wd", "--mount", "--net", "--pid", "--uts", "--ipc", "--"]
KEPT_VARIABLES = re.compile(r"TERM|LANG|LC_.*|DISPLAY|XAUTHORITY|QT_.*|DBUS_SESSION_BUS_ADDRESS|(A|L|UB)SAN_OPTIONS")

# In a mount namespace of the command's own, mounts the program and the working directory, whatever the permissions of
# the folders above them, and the machine's X sockets where the lab has none. Of the lab's own folders, it hides only
# empty ones that an earlier command's mount has left.
PREPARE = """
outside=$1 program=$2 folder=$3 screens=/tmp/.X11-unix left=/run/working-directories
shift 3
show() {
  mkdir -p "$2"
  mount -o "$3" "$outside$1" "$2"
}
[ ! -d "$outside$program" ] || show "$program" /lab/program bind
if [ ! -d "$folder" ] || grep -qsxF -e "$folder" $left; then
  printf '%s\\n' "$folder" >>$left
  show "$folder" "$folder" bind
fi
if [ "${DISPLAY-}" ] && [ -d "$outside$screens" ] && [ -z "$(ls -A $screens 2>/dev/null)" ]; then
  show $screens $screens bind,ro
fi
cd "$folder"
exec "$@"
"""


def variables():
    kept = {name: value for name, value in os.environ.items() if KEPT_VARIABLES.fullmatch(name)}
    return {"LANG": "C.UTF-8", **kept, "HOME": machine.HOME, "USER": machine.USER, "LOGNAME": machine.USER,
            "SHELL": "/bin/bash", "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin:/lab/program",
            "XDG_RUNTIME_DIR": "/lab/run"}


def run_in_machine(name, words, as_user=True, on=namespaces.MACHINE):
    answer, (descriptor,) = control_socket.request(name, "machine", on)
    target = control_socket.pid_behind(descriptor)
    privileges = ["setpriv", "--pdeathsig", "KILL"]
    if as_user:
        privileges += ["--reuid", str(answer["uid"]), "--regid", str(answer["gid"]), "--clear-groups",
                       "--inh-caps=-all"]
    folders = [machine.OUTSIDE, executables.program().parent, os.getcwd()]
    return run(target, [*ENTER, "unshare", "--mount", "sh", "-e", "-c", PREPARE, "sh", *folders, *privileges, "--",
                        *words], variables())


def run_at_place(name, place, words):
    """Runs a command as root in the network of a place, with the supervisor's files."""
    supervisor = running_lab.processes(name)[0]
    net = f"--net=/proc/{supervisor}/root/run/netns/{place}"
    namespace = ["--root", "--wd", "--mount", net, "--pid", "--uts", "--ipc", "--"]
    return run(supervisor, [*namespace, "setpriv", "--pdeathsig", "KILL", *words])


def run(target, words, environment=None):
    """Runs a command, which ends with this process, in namespaces of a process; returns its status as a shell does."""
    process = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", "nsenter", "--target", str(target), *words],
                               env=environment)
    try:
        status = process.wait()
    except KeyboardInterrupt:
        process.terminate()
        process.wait()
        status = -signal.SIGINT
    return status if status >= 0 else 128 - status
