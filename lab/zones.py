# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""Zone files for the lab's name servers, made from the table of its network."""

import network

# The answer for this name, except from the service's resolvers.
NO_HALVIK_RESOLVER = "no resolver of Halvik was asked"

HEAD = """$TTL 60
@ SOA {server} hostmaster.{server} 1 3600 600 86400 60
@ NS {server}
"""


def write(folder):
    for zone, server in network.ZONES.items():
        (folder / file_name(zone)).write_text(text_of(zone, server), encoding="ascii")
    # The service's resolvers have this name to themselves.
    debug = HEAD.format(server=network.ZONES["halvik.example"] + ".")
    (folder / file_name(network.DEBUG_NAME)).write_text(debug, encoding="ascii")


def file_name(zone):
    return f"{zone or 'root'}.zone"


def text_of(zone, server):
    records = [HEAD.format(server=server + ".")]
    for child, its_server in network.ZONES.items():
        if child != zone and enclosing(parent_of(child)) == zone:
            records.append(f"{child}. NS {its_server}.\n{its_server}. A {network.ADDRESSES[its_server]}\n")
    records += [f"{name}. A {address}\n" for name, address in network.ADDRESSES.items() if enclosing(name) == zone]
    if zone == "":
        records += [f"{reverse(address)} PTR {name}.\n" for name, address in network.ADDRESSES.items()]
    if zone == enclosing(network.DEBUG_NAME):
        records.append(f'{network.DEBUG_NAME}. TXT "{NO_HALVIK_RESOLVER}"\n')
    return "".join(records)


def enclosing(name):
    """The zone that a name belongs to."""
    while name not in network.ZONES:
        name = parent_of(name)
    return name


def parent_of(name):
    return name.partition(".")[2]


def reverse(address):
    return ".".join(reversed(address.split("."))) + ".in-addr.arpa."
