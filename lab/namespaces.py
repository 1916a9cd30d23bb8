# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Network namespaces by name, and the lines that join them."""

import contextlib
import ctypes
import fcntl
import os
import socket
import struct
import subprocess

FOLDER = "/run/netns"
CLONE_NEWNET = 0x40000000
TUNSETIFF = 0x400454CA
TUNSETPERSIST = 0x400454CB
PACKETS, FRAMES = 0x1001, 0x1002  # what a tunnel carries, without a header of its own
MACHINE = "machine"

# Written in every namespace. The limits are off because all traceroutes of a run ask the same router at once; low
# ports are free so that no server needs a privilege.
SETTINGS = {
    "ipv4/ip_forward": "1",
    "ipv4/icmp_ratelimit": "0",
    "ipv4/icmp_msgs_per_sec": "100000",
    "ipv4/icmp_msgs_burst": "10000",
    "ipv4/ip_unprivileged_port_start": "0",
    "ipv4/ping_group_range": "0 2147483647",
    "ipv6/conf/all/disable_ipv6": "1",
    "ipv6/conf/default/disable_ipv6": "1",
}

_libc = ctypes.CDLL(None, use_errno=True)


def _setns(descriptor):
    if _libc.setns(descriptor, CLONE_NEWNET):
        raise OSError(ctypes.get_errno(), "setns")


@contextlib.contextmanager
def inside(name):
    """Puts the calling thread into a namespace. What it opens there stays there."""
    own = os.open("/proc/thread-self/ns/net", os.O_RDONLY | os.O_CLOEXEC)
    other = os.open(f"{FOLDER}/{name}", os.O_RDONLY | os.O_CLOEXEC)
    try:
        _setns(other)
        yield
    finally:
        _setns(own)
        os.close(own)
        os.close(other)


def command(name, *words):
    """The command that runs another one in a namespace."""
    return ["nsenter", f"--net={FOLDER}/{name}", "--", *map(str, words)]


def ip(lines, name=None):
    """Has ip carry out these lines, in a namespace or, without a name, in the caller's."""
    subprocess.run(["ip", *(["-n", name] if name else []), "-batch", "-"], input="\n".join(lines) + "\n",
                   text=True, check=True, capture_output=True)


def create(names):
    ip([f"netns add {name}" for name in names])
    for name in names:
        with inside(name):
            for path, value in SETTINGS.items():
                setting = f"/proc/sys/net/{path}"
                if os.path.exists(setting):  # some kernels have no IPv6, older ones no limit of a namespace's own
                    with open(setting, "w", encoding="ascii") as file:
                        file.write(value)


def open_tunnel(name, device, kind=PACKETS):
    """Makes a tunnel in a namespace."""
    with inside(name):
        return open_own_tunnel(device, kind)


def open_own_tunnel(device, kind=PACKETS):
    """Makes a network device whose packets, or Ethernet frames, come and go through the returned descriptor."""
    descriptor = os.open("/dev/net/tun", os.O_RDWR | os.O_NONBLOCK | os.O_CLOEXEC)
    fcntl.ioctl(descriptor, TUNSETIFF, struct.pack("16sH22x", device.encode(), kind))
    # It ends with its namespace, not with the descriptor. The kernel ends the devices of descriptors one by one, each
    # with a pause, but those of namespaces together, in the background.
    fcntl.ioctl(descriptor, TUNSETPERSIST, 1)
    return descriptor


def accepts(name, address, port):
    """Whether somebody in the namespace accepts connections."""
    with inside(name):
        attempt = socket.socket()
    with attempt:
        attempt.settimeout(1)
        return attempt.connect_ex((address, port)) == 0
