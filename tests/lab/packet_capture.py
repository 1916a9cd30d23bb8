# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Captures the packets that leave the labs of a test file."""

import os

import namespaces

DEVICE = "capture"
NO_IPV6 = "/proc/sys/net/ipv6/conf/default/disable_ipv6"


class PacketCapture:
    """A default route to a tunnel, which receives all packets that leave a lab."""

    def __init__(self):
        if os.path.exists(NO_IPV6):
            with open(NO_IPV6, "w", encoding="ascii") as file:
                file.write("1")  # the kernel itself would look for neighbours
        self._descriptor = namespaces.open_own_tunnel(DEVICE)
        namespaces.ip(["link set lo up", f"link set {DEVICE} up", f"address add 10.0.0.1/32 dev {DEVICE}",
                       f"route add default dev {DEVICE}"])

    def packets(self):
        """Those that were received since the last call."""
        packets = []
        while True:
            try:
                packets.append(os.read(self._descriptor, 65536))
            except BlockingIOError:
                return packets

    def close(self):
        os.close(self._descriptor)
