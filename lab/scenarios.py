# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The scenarios: what each changes in a network that is otherwise in order, and how several are combined.

The files of rules and names are in the folder scenarios.
"""

import dataclasses

# What the submission endpoint does with a report.
ANSWERS, FAILS, TWO_HALVES, CLOSES, STALLS = "answers", "fails", "two-halves", "closes", "stalls"

# Whether the user's machine has an address and a route.
ATTACHED, NO_ROUTE, NO_ADDRESS = "attached", "no-route", "no-address"

# What a run needs to show some scenarios.
SKIVRA, DOMAIN = "skivra", "domain"


class Contradiction(Exception):
    """Scenarios that cannot be combined. The message says why."""


class Unknown(Exception):
    """There is no scenario of this name."""


@dataclasses.dataclass(frozen=True)
class Impairment:
    """What one of the network's lines does to packets."""

    delay_ms: float = 0  # added to every round trip
    jitter_ms: float = 0  # the most that is added at random
    loss: float = 0  # the share of packets that are lost on their way from the exchange


@dataclasses.dataclass(frozen=True)
class Scenario:
    summary: str  # also in the table of README.md
    silent_servers: frozenset = frozenset()  # the names of the servers that do not run
    dns_rules: str = ""  # a file of the home router's rules for the ports of name servers
    web_rules: str = ""  # one for the ports of web servers
    out_rules: str = ""  # one for its uplink
    lines: dict = dataclasses.field(default_factory=dict)  # a line's Impairment, by its name
    attachment: str = ATTACHED
    mtu: int = 1500  # of the user's machine
    vpn: bool = False  # whether the user's machine sends everything through a tunnel to another operator
    nameserver: str = ""  # the resolver of the user's machine; "" for the router, or the Skivra where it is installed
    forwarder: str = "192.0.2.53"  # the resolver that the router asks
    routes: dict = dataclasses.field(default_factory=dict)  # a place and its route, by the address
    clock_behind_years: int = 0  # of the time that the user's programs see
    policy: str = ""  # a file of names for which the service's resolvers have other answers
    blocked_page: str = "nginx/blocked-page.inc"  # the page that is shown in place of a blocked one
    skivra_runs: bool = True
    skivra_state: bool = True  # whether its state file exists
    submission: str = ANSWERS
    certificate: str = "good"  # of the submission endpoint
    disk_full: bool = False  # of the user's machine
    needs: frozenset = frozenset()  # SKIVRA or DOMAIN, where only a run with that shows the scenario


WITH_DOMAIN = frozenset({DOMAIN})
WITH_SKIVRA = frozenset({SKIVRA})

SCENARIOS = {
    "clear": Scenario("the network is in order"),
    "resolver-down": Scenario("the programs of resolver A do not run; its host does",
                              silent_servers=frozenset({"resolver-a"})),
    "resolver-b-down": Scenario("the programs of resolver B do not run",
                                silent_servers=frozenset({"resolver-b"}), needs=WITH_DOMAIN),
    "router-resolver-down": Scenario("the home router's resolver does not run", silent_servers=frozenset({"home"})),
    "port-53-blocked": Scenario("the home router drops queries to port 53", dns_rules="port-53-blocked.nft"),
    "dns-ports-blocked": Scenario("the home router rejects queries to ports 53, 443 (UDP only) and 5353",
                                  dns_rules="dns-ports-blocked.nft"),
    "dns-hijacked": Scenario("the provider's resolver answers all queries to port 53, whichever resolver is asked",
                             dns_rules="dns-hijacked.nft"),
    "loss-and-delay": Scenario("30 % of the packets to the customer are lost, and round trips take 300 ms more",
                               lines={"home": Impairment(delay_ms=300, loss=0.3)}),
    "loss-beyond-provider": Scenario("20 % of the packets from the exchange to the provider are lost",
                                     lines={"isp": Impairment(loss=0.2)}),
    "high-delay": Scenario("round trips take 600 ms more", lines={"home": Impairment(delay_ms=600)}),
    "uneven-delay": Scenario("round trips take up to 700 ms more, at random",
                             lines={"home": Impairment(jitter_ms=700)}),
    "slow-city": Scenario("round trips to Frankfurt take 700 ms more", lines={"fra": Impairment(delay_ms=700)}),
    "silent-city": Scenario("all packets to Frankfurt are lost", lines={"fra": Impairment(loss=1)}),
    "small-mtu": Scenario("the MTU of the user's machine is 1000 bytes", mtu=1000),
    "gateway-silent": Scenario("nothing comes back from the home router", lines={"lan": Impairment(loss=1)}),
    "line-down": Scenario("the home router has no uplink, and rejects what would leave by it",
                          out_rules="line-down.nft"),
    "no-default-route": Scenario("the user's machine has no default route", attachment=NO_ROUTE),
    "no-address": Scenario("the user's machine has no address, and so no route", attachment=NO_ADDRESS),
    "routing-loop": Scenario("the exchange sends packets for api.halvik.example back to the provider",
                             routes={"203.0.113.11": ("exchange", "dev isp")}),
    "path-ends-early": Scenario("the exchange drops packets for api.halvik.example",
                                routes={"203.0.113.11": ("exchange", "blackhole")}),
    "vpn": Scenario("a VPN takes all traffic to another operator, and hides the customer's address", vpn=True),
    "other-resolver": Scenario("the user's machine asks the resolver 8.8.8.8", nameserver="8.8.8.8"),
    "router-asks-provider": Scenario("the home router forwards queries to the provider's resolver",
                                     forwarder="198.18.7.53"),
    "clock-wrong": Scenario("the user's programs see a time 30 years ago", clock_behind_years=30),
    "captive-portal": Scenario("a hotel's portal answers all requests to ports 80 and 443",
                               web_rules="captive-portal.nft"),
    "block-page": Scenario("resolvers A and B lead harmless names to the block page", policy="block-page.conf"),
    "no-block-page": Scenario("the filter shows the pages that it should block",
                              blocked_page="scenarios/no-block-page.inc", needs=WITH_SKIVRA),
    "block-page-down": Scenario("the web servers of the filter do not run", silent_servers=frozenset({"filter"})),
    "web-down": Scenario("the web servers of www, api, monitor and 203.0.113.80 do not run",
                         silent_servers=frozenset({"web"})),
    "answer-differs": Scenario("resolvers A and B give an old address for shop.example",
                               policy="answer-differs.conf", needs=WITH_DOMAIN),
    "domain-missing": Scenario("resolvers A and B answer that there is no shop.example",
                               policy="domain-missing.conf", needs=WITH_DOMAIN),
    "domain-private": Scenario("resolvers A and B give a private address for shop.example",
                               policy="domain-private.conf", needs=WITH_DOMAIN),
    "skivra-silent": Scenario("the Skivra's resolver does not run", skivra_runs=False, needs=WITH_SKIVRA),
    "skivra-no-state": Scenario("the Skivra's state file is missing", skivra_state=False, needs=WITH_SKIVRA),
    "skivra-bypassed": Scenario("the user's machine asks the home router, not the Skivra's resolver",
                                nameserver="192.168.1.1", needs=WITH_SKIVRA),
    "submission-500": Scenario("the submission endpoint answers with status 500", submission=FAILS),
    "submission-two-halves": Scenario("the endpoint sends its answer in two halves, a second apart",
                                      submission=TWO_HALVES),
    "submission-closes": Scenario("the endpoint closes the connection in the middle of its answer", submission=CLOSES),
    "submission-stalls": Scenario("the endpoint takes the report and never answers", submission=STALLS),
    "certificate-expired": Scenario("the endpoint's certificate has expired", certificate="expired"),
    "certificate-self-signed": Scenario("the endpoint's certificate is self-signed", certificate="self-signed"),
    "certificate-wrong-name": Scenario("the endpoint's certificate is for www.halvik.example",
                                       certificate="wrong-name"),
    "disk-full": Scenario("the endpoint answers with status 500, and the user's disk is full",
                          submission=FAILS, disk_full=True),
}

# What a field is about, for the message that two scenarios both change it.
SUBJECTS = {
    "dns_rules": "what the home router does with queries",
    "web_rules": "what the home router does with web requests",
    "out_rules": "what leaves the home router",
    "lines": "the same line",
    "attachment": "the address and the route of the user's machine",
    "mtu": "the MTU of the user's machine",
    "nameserver": "the resolver of the user's machine",
    "forwarder": "the resolver of the home router",
    "routes": "the route to the same address",
    "clock_behind_years": "the clock",
    "policy": "what the service's resolvers answer",
    "blocked_page": "what is shown in place of a blocked page",
    "submission": "what the submission endpoint answers",
    "certificate": "the certificate of the submission endpoint",
}

# What of a scenario is about one machine of an office. Its own line stands for those by which all reach the provider.
OF_A_MACHINE = ["attachment", "mtu", "nameserver", "disk_full"]
WAY_OF_A_MACHINE = ["lan", "home"]


def of_a_machine(name, line):
    """The part of a scenario that is about one machine, with this line. Raises Contradiction if there is none, besides
    what named raises."""
    whole, clear = named(name), SCENARIOS["clear"]
    part = {field: getattr(whole, field) for field in OF_A_MACHINE}
    part["lines"] = {line: whole.lines[each] for each in WAY_OF_A_MACHINE if each in whole.lines}
    scenario = dataclasses.replace(clear, **part)
    if scenario == clear != whole:
        raise Contradiction(f"{name} is not a scenario of one machine")
    return scenario


def named(name):
    """The scenario of a name, or of several that are joined by "+". Raises Unknown or Contradiction."""
    first, *others = name.split("+")
    scenario = _known(first)
    for other in others:
        scenario = _both(name, scenario, _known(other))
    return scenario


def _known(name):
    if name not in SCENARIOS:
        raise Unknown(name)
    return SCENARIOS[name]


def _both(name, one, other):
    values = {"summary": f"{one.summary}; {other.summary}"}
    for field in [each.name for each in dataclasses.fields(Scenario)[1:]]:
        mine, its, usual = (getattr(each, field) for each in (one, other, SCENARIOS["clear"]))
        if isinstance(mine, (dict, frozenset)):
            values[field] = mine | its
            clash = isinstance(mine, dict) and mine.keys() & its.keys()
        else:
            values[field] = its if mine == usual else mine
            clash = usual not in (mine, its) and mine != its
        if clash:
            raise Contradiction(f"{name} cannot be combined: two of them change {SUBJECTS[field]}")
    return dataclasses.replace(one, **values)
