# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Counts what one run of the program costs the service, in the lab: at each of its hosts and routers, what comes from the
customer and what goes back there. What resolvers ask others on the customer's behalf is not counted.

usage: scripts/run_cost          needs root, and the lab's packages
"""

import collections
import json
import subprocess
import sys

import network
from project import ROOT

NAME = "run cost"
CUSTOMER = network.ADDRESSES["customer-20.isp.example"]
HOSTS = [place.name for place in network.PLACES if any(name.endswith(".halvik.example") for name in place.addresses)]
RUNS = {"a run that prints its report": ["-s", "-c"], "with a domain": ["-s", "-c", "-d=shop.example"],
        "with an upload": ["-s"]}
# Packets that a router throws away, as they have travelled far enough for a traceroute, do not reach its input.
RULES = f"""table ip cost
delete table ip cost
table ip cost {{
  chain arrives {{
    type filter hook prerouting priority raw
    iifname != "uplink" return
    ip saddr != {CUSTOMER} return
    fib daddr type != local ip ttl > 1 return
    counter comment "bytes"
    udp dport {{ 53, 443, 5353 }} counter comment "queries"
    tcp flags & (syn | ack) == syn counter comment "connections"
    icmp type echo-request counter comment "echo requests"
  }}
  chain leaves {{
    type filter hook output priority 0
    ip daddr {CUSTOMER} counter comment "bytes"
  }}
}}
"""


def lab(*words, text=None):
    return subprocess.run([ROOT / "lab/lab", "--name", NAME, *words], check=True, input=text, text=True,
                          stdout=subprocess.PIPE).stdout


def counted():
    """Since the rules were loaded: packets by what they are, and bytes, at all hosts together."""
    sums = collections.Counter()
    for host in HOSTS:
        for entry in json.loads(lab("shell", "--at", host, "nft", "--json", "list", "table", "ip", "cost"))["nftables"]:
            rule = entry.get("rule", {})
            if "comment" in rule:
                counter, = [part["counter"] for part in rule["expr"] if "counter" in part]
                sums[rule["comment"]] += counter["bytes" if rule["comment"] == "bytes" else "packets"]
    return sums


def main():
    if sys.argv[1:]:
        sys.exit(__doc__)
    for title, options in RUNS.items():
        lab("up")  # a new one, whose resolvers remember no answers
        try:
            for host in HOSTS:
                lab("shell", "--at", host, "nft", "-f", "-", text=RULES)
            lab("run", *options)
            print(f"{title}: " + ", ".join(f"{count} {what}" for what, count in sorted(counted().items())), flush=True)
        finally:
            lab("down")


if __name__ == "__main__":
    main()
