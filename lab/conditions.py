# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Sets the parts of a scenario. Each function does so whatever scenario there was before."""

import struct
import subprocess

import namespaces
import network
import servers
import scenarios

MACHINE = namespaces.MACHINE
VPN_PLACE, VPN_DEVICE = "vpn", "vpn0"
SECONDS_A_YEAR = 31_556_952


def set_rules(rules):
    """Loads the rules of these files on the home router, besides its usual ones."""
    for file in ["no-scenario.nft", *rules]:
        load_rules(file)


def load_rules(file, place="home"):
    subprocess.run(namespaces.command(place, "nft", "-f", servers.CONFIG / "scenarios" / file), check=True,
                   capture_output=True)


def set_attachment(machine, scenario):
    """A machine's address, its way out, and the size of its packets."""
    namespaces.ip(["address flush dev eth0", f"link set eth0 mtu {scenario.mtu}"], machine.name)
    if scenario.attachment != scenarios.NO_ADDRESS:
        namespaces.ip([f"address add {machine.address}/24 brd + dev eth0"], machine.name)
    if scenario.attachment == scenarios.ATTACHED:
        namespaces.ip([f"route add default via {network.HOME_LAN_ADDRESS}"], machine.name)
    # A server that is silent now may have answered a moment ago.
    namespaces.ip(["neighbour flush dev eth0"], machine.name)


def set_vpn(present):
    """The user's machine has the tunnel's device only while it uses it."""
    devices = subprocess.run(["ip", "-n", MACHINE, "-oneline", "link", "show"], check=True, text=True,
                             capture_output=True).stdout
    if present == (f" {VPN_DEVICE}:" in devices):
        return
    if not present:
        namespaces.ip([f"link set {VPN_DEVICE} netns {VPN_PLACE}"], MACHINE)
        return
    namespaces.ip([f"link set {VPN_DEVICE} netns {MACHINE}"], VPN_PLACE)
    namespaces.ip([f"address add {network.VPN_MACHINE_ADDRESS}/32 dev {VPN_DEVICE}", f"link set {VPN_DEVICE} up",
                   f"route add 0.0.0.0/1 dev {VPN_DEVICE}", f"route add 128.0.0.0/1 dev {VPN_DEVICE}"], MACHINE)


def set_routes(routes):
    """Sets these routes, and resets all others that a scenario may change."""
    for scenario in scenarios.SCENARIOS.values():
        for address, (place, _) in scenario.routes.items():
            namespaces.ip([f"route replace {address} dev {network.way_down(place, address)}"], place)
    for address, (place, way) in routes.items():
        kind = way if way == "blackhole" else ""
        namespaces.ip([f"route replace {kind} {address} {'' if kind else way}"], place)


def set_clock(root, years_behind):
    """Sets the machine's time zone so many years behind UTC: the user's programs show that time, the clock is right."""
    zone, usual = root / "etc/localtime", root / "etc/localtime.usual"
    if usual.is_symlink() or usual.exists():
        usual.rename(zone)
    if years_behind:
        if zone.is_symlink() or zone.exists():
            zone.rename(usual)
        zone.write_bytes(time_zone("UTC", -years_behind * SECONDS_A_YEAR))


def time_zone(name, offset):
    """The file of a time zone that has been so many seconds ahead for ever."""
    counts = struct.pack(">6l", 0, 0, 0, 0, 1, len(name) + 1)
    return b"TZif" + bytes(16) + counts + struct.pack(">lBB", offset, 0, 0) + name.encode() + b"\0"
