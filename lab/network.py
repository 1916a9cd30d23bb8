# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The table of the lab's network: every place, its line to the next one, and the names and addresses it answers for.

It is a tree: each place is a network namespace, and each but the first has one line towards the exchange.
"""

import dataclasses
import os
import pathlib
import re

FOLDER = pathlib.Path(__file__).resolve().parent
LIBRARY = FOLDER.parent / "tests/lib"  # what the lab shares with the tests
BUILT_IN_ENDPOINTS = FOLDER.parent / "diagnostics" / "endpoints_built_in.cpp"


class UnknownNetwork(Exception):
    """The program, or a server's settings, name what the table does not have."""


@dataclasses.dataclass(frozen=True)
class Place:
    name: str
    uplink: str  # the place at the other end of its line; "" for the first
    round_trip_ms: float  # what the line adds to every ping
    addresses: dict  # by name


def city(name, round_trip_ms, address):
    return Place(name, "exchange", round_trip_ms, {f"router.{name}.halvik.example": address})


PLACES = [
    Place("exchange", "", 0, {"exchange.example": "198.18.0.1"}),

    # The customer's side. The user's machine is on the home router's local network.
    Place("isp", "exchange", 2, {"gateway.isp.example": "198.18.7.1"}),
    Place("isp-resolver", "isp", 1, {"resolver.isp.example": "198.18.7.53"}),
    Place("home", "isp", 6, {"customer-20.isp.example": "198.18.7.20"}),

    # The service's routers.
    city("pao", 68, "192.0.2.101"),
    city("sea", 64, "192.0.2.102"),
    city("lax", 62, "192.0.2.103"),
    city("chi", 18, "192.0.2.104"),
    city("nyc", 4, "192.0.2.105"),
    city("ash", 8, "192.0.2.106"),
    city("lon", 72, "192.0.2.107"),
    city("mia", 28, "192.0.2.108"),
    city("sin", 230, "192.0.2.109"),
    city("fra", 84, "192.0.2.110"),
    city("hkg", 212, "192.0.2.111"),
    city("ams", 80, "192.0.2.112"),
    city("ber", 92, "192.0.2.113"),
    city("par", 78, "192.0.2.114"),
    city("cph", 94, "192.0.2.115"),
    city("dfw", 38, "192.0.2.116"),
    city("otp", 112, "192.0.2.117"),
    city("prg", 96, "192.0.2.118"),
    city("waw", 100, "192.0.2.119"),
    city("syd", 208, "192.0.2.120"),

    # The service's servers, behind its routers.
    Place("resolver-a", "nyc", 1, {"resolver-a.halvik.example": "192.0.2.53"}),
    Place("resolver-b", "ash", 1, {"resolver-b.halvik.example": "198.51.100.53"}),
    Place("names", "ash", 1, {"ns1.halvik.example": "203.0.113.53"}),
    Place("web", "chi", 1, {
        "www.halvik.example": "203.0.113.10",
        "api.halvik.example": "203.0.113.11",
        "monitor.halvik.example": "203.0.113.12",
        "by-number.halvik.example": "203.0.113.80",
    }),
    Place("filter", "nyc", 1, {
        "block.halvik.example": "203.0.113.20",
        "category-hit.halvik.example": "203.0.113.21",
        "block-id.halvik.example": "203.0.113.22",
        "blocked-ip.halvik.example": "203.0.113.66",
        "blockip.test.halvik.example": "203.0.113.77",
    }),
    Place("submission", "dfw", 1, {"diagnostic.halvik.example": "203.0.113.13"}),

    # Other operators.
    Place("third-party", "exchange", 5, {"resolver.third-party.example": "8.8.8.8"}),
    Place("anycast", "exchange", 3, {"resolver.anycast.example": "1.1.1.1"}),
    Place("root", "exchange", 3, {"f.root-servers.net": "192.5.5.241"}),
    Place("akamai", "exchange", 9, {"ns1-1.akamaitech.net": "198.18.31.53"}),
    Place("ultradns", "exchange", 11, {"pdns1.ultradns.net": "198.18.32.53"}),
    Place("shop", "exchange", 25, {"shop.example": "198.18.40.80", "old.shop.example": "198.18.40.79"}),
    Place("vpn", "exchange", 13, {"vpn.example": "198.18.50.1"}),
]

# The customer's local network.
MACHINE_ADDRESS = "192.168.1.20"
HOME_LAN_ADDRESS = "192.168.1.1"
LAN_ROUND_TRIP_MS = 2
NOBODYS_LAN_ADDRESS = "192.168.1.80"
OFFICE_MACHINES_MAX = 100

# The tunnel from there to an operator that takes everything in its own name.
VPN_MACHINE_ADDRESS = "10.8.0.2"
VPN_ROUND_TRIP_MS = 40

# What is looked up like a zone of its own, and the name server that answers for it.
ZONES = {
    "": "f.root-servers.net",
    "halvik.example": "ns1.halvik.example",
    "myip.halvik.example": "ns1.halvik.example",
    "akamaitech.net": "ns1-1.akamaitech.net",
    "whoami.akamai.net": "ns1-1.akamaitech.net",
    "ultradns.net": "pdns1.ultradns.net",
    "whoami.ultradns.net": "pdns1.ultradns.net",
}
DEBUG_NAME = "debug.halvik.example"

ADDRESSES = {name: address for place in PLACES for name, address in place.addresses.items()}


def office(count):
    """The addresses of an office's further machines, by their names."""
    return {f"pc-{number:02}": f"192.168.1.{100 + number}" for number in range(1, count + 1)}


def subtree(name):
    """The places whose way to the exchange leads through the named one, itself included."""
    below = [place for place in PLACES if place.uplink == name]
    return [place for place in PLACES if place.name == name] + [each for next_ in below for each in subtree(next_.name)]


def way_down(place, address):
    """The device by which a place usually reaches an address that is behind it."""
    return next(each.name for each in PLACES if each.uplink == place
                and any(address in below.addresses.values() for below in subtree(each.name)))


def roles():
    """Every role's value, by the role's name, as the program was built. HALVIK_ENDPOINTS may name another file."""
    path = pathlib.Path(os.environ.get("HALVIK_ENDPOINTS") or BUILT_IN_ENDPOINTS)
    return dict(re.findall(r'\.(\w+)\s*=\s*"([^"]*)"', path.read_text()))


def check():
    """Raises UnknownNetwork if the program, or a server's settings, name what the table does not have."""
    known = {*ADDRESSES, *ADDRESSES.values(), *ZONES, DEBUG_NAME, MACHINE_ADDRESS, HOME_LAN_ADDRESS,
             NOBODYS_LAN_ADDRESS}
    complaints = []
    for role, value in roles().items():
        host = re.sub(r"^https://([^/]*)/diagnosticsubmit$", r"\1", value)
        if host not in known:
            complaints.append(f"the program's {role} is {value}")
    for path in sorted(FOLDER.glob("*/*.*")):
        text = path.read_text(errors="replace") if path.suffix in SETTINGS else ""
        for word in re.findall(r"(?:\d{1,3}\.){3}\d{1,3}(?![\d/])|(?:[\w-]+\.)+(?:halvik|isp)\.example", text):
            if word not in known and not word.startswith(("127.", "0.0.0.0")):
                complaints.append(f"{path.relative_to(FOLDER.parent)} names {word}")
    if complaints:
        raise UnknownNetwork("lab/network.py has no place for these:\n  " + "\n  ".join(complaints))


SETTINGS = {".conf", ".geo", ".nft"}
