# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The scenarios: what each changes in a network that is otherwise in order, and how several are combined."""

import dataclasses

# How the submission endpoint may behave.
ANSWERS, FAILS, TWO_PIECES, CLOSES, STALLS = "answers", "fails", "two-pieces", "closes", "stalls"

# How far the user's machine is a part of its network.
ATTACHED, NO_ROUTE, NO_ADDRESS = "attached", "no-route", "no-address"

# What a run needs to show some scenarios.
SKIVRA, DOMAIN = "skivra", "domain"


class Contradiction(Exception):
    """Scenarios that cannot be combined. The message says why."""


class Unknown(Exception):
    """There is no scenario of this name."""


@dataclasses.dataclass(frozen=True)
class Trouble:
    """What is wrong with one of the network's lines."""

    delay_ms: float = 0  # what it adds to every ping
    jitter_ms: float = 0  # what it adds at most, by chance
    loss: float = 0  # the share of packets that get lost on their way from the exchange


@dataclasses.dataclass(frozen=True)
class Scenario:
    summary: str
    silent_servers: frozenset = frozenset()  # their programs do not run, by the name of their settings
    dns_rules: str = ""  # a file of rules of the home router for name servers' ports
    web_rules: str = ""  # and one for web servers' ports
    out_rules: str = ""  # and one for all that leaves it
    lines: dict = dataclasses.field(default_factory=dict)  # a line's Trouble, by its name
    attachment: str = ATTACHED
    mtu: int = 1500  # of the user's machine
    vpn: bool = False  # what leaves the user's machine goes through a tunnel to another operator
    nameserver: str = ""  # whom the user's machine asks in place of the router, or of the Skivra
    forwarder: str = "192.0.2.53"  # whom the router asks
    routes: dict = dataclasses.field(default_factory=dict)  # by an address, a place and its way there
    clock_behind_years: int = 0  # the clock that the user's programs see
    policy: str = ""  # a file of names that the service's resolvers answer otherwise
    blocked_page: str = "nginx/blocked-page.inc"  # what who asks for a blocked page gets to see
    skivra_runs: bool = True
    skivra_state: bool = True  # its state file is there
    submission: str = ANSWERS
    certificate: str = "good"
    disk_full: bool = False  # the user's
    needs: frozenset = frozenset()  # for a run to show it


WITH_DOMAIN = frozenset({DOMAIN})
WITH_SKIVRA = frozenset({SKIVRA})

SCENARIOS = {
    "clear": Scenario("everything is in order"),
    "resolver-down": Scenario("the service's resolver A does not run", silent_servers=frozenset({"resolver-a"})),
    "resolver-b-down": Scenario("its resolver B does not", silent_servers=frozenset({"resolver-b"}), needs=WITH_DOMAIN),
    "router-resolver-down": Scenario("the home router answers no query", silent_servers=frozenset({"home"})),
    "port-53-blocked": Scenario("the local network lets nobody ask on port 53", dns_rules="port-53-blocked.nft"),
    "dns-ports-blocked": Scenario("nor on 443 and 5353", dns_rules="dns-ports-blocked.nft"),
    "dns-hijacked": Scenario("the provider's resolver answers for all others", dns_rules="dns-hijacked.nft"),
    "loss-and-delay": Scenario("30 % loss and 300 ms more on the customer's line",
                               lines={"home": Trouble(delay_ms=300, loss=0.3)}),
    "loss-beyond-provider": Scenario("20 % loss between the provider and the exchange",
                                     lines={"isp": Trouble(loss=0.2)}),
    "high-delay": Scenario("600 ms more on the customer's line", lines={"home": Trouble(delay_ms=600)}),
    "uneven-delay": Scenario("up to 700 ms more, by chance", lines={"home": Trouble(jitter_ms=700)}),
    "slow-city": Scenario("700 ms more towards Frankfurt", lines={"fra": Trouble(delay_ms=700)}),
    "silent-city": Scenario("Frankfurt says nothing", lines={"fra": Trouble(loss=1)}),
    "small-mtu": Scenario("the user's machine sends packets of up to 1000 bytes", mtu=1000),
    "gateway-silent": Scenario("the home router says nothing", lines={"lan": Trouble(loss=1)}),
    "line-down": Scenario("the home router has no connection to its provider", out_rules="line-down.nft"),
    "no-default-route": Scenario("the user's machine knows no way out", attachment=NO_ROUTE),
    "no-address": Scenario("the user's machine has no address", attachment=NO_ADDRESS),
    "routing-loop": Scenario("the exchange sends what is for api back to the provider",
                             routes={"203.0.113.11": ("exchange", "dev isp")}),
    "path-ends-early": Scenario("what is for api vanishes behind the exchange",
                                routes={"203.0.113.11": ("exchange", "blackhole")}),
    "vpn": Scenario("a tunnel takes everything to another operator", vpn=True),
    "other-resolver": Scenario("the user's machine asks a resolver of another operator", nameserver="8.8.8.8"),
    "router-asks-provider": Scenario("the home router asks the provider's resolver", forwarder="198.18.7.53"),
    "clock-wrong": Scenario("the user's machine believes to be in an earlier century", clock_behind_years=30),
    "captive-portal": Scenario("a hotel's portal answers every web request", web_rules="captive-portal.nft"),
    "block-page": Scenario("the filter leads harmless names to the block page", policy="block-page.conf"),
    "no-block-page": Scenario("the filter shows what it should block", blocked_page="scenarios/no-block-page.inc",
                              needs=WITH_SKIVRA),
    "block-page-down": Scenario("the web servers of the filter do not run", silent_servers=frozenset({"filter"})),
    "web-down": Scenario("the service's web hosts do not run", silent_servers=frozenset({"web"})),
    "answer-differs": Scenario("the service knows an old address of shop.example", policy="answer-differs.conf",
                               needs=WITH_DOMAIN),
    "domain-missing": Scenario("the service knows no shop.example", policy="domain-missing.conf", needs=WITH_DOMAIN),
    "domain-private": Scenario("the service leads shop.example into a private network", policy="domain-private.conf",
                               needs=WITH_DOMAIN),
    "skivra-silent": Scenario("the Skivra's resolver does not run", skivra_runs=False, needs=WITH_SKIVRA),
    "skivra-no-state": Scenario("the Skivra's state file is missing", skivra_state=False, needs=WITH_SKIVRA),
    "skivra-bypassed": Scenario("the user's machine asks the router in place of the Skivra", nameserver="192.168.1.1",
                                needs=WITH_SKIVRA),
    "submission-500": Scenario("the submission endpoint fails with status 500", submission=FAILS),
    "submission-two-pieces": Scenario("it answers in two pieces", submission=TWO_PIECES),
    "submission-closes": Scenario("it closes in the middle of its answer", submission=CLOSES),
    "submission-stalls": Scenario("it never answers", submission=STALLS),
    "certificate-expired": Scenario("its certificate has expired", certificate="expired"),
    "certificate-self-signed": Scenario("its certificate is vouched for by nobody", certificate="self-signed"),
    "certificate-wrong-name": Scenario("its certificate is another host's", certificate="wrong-name"),
    "disk-full": Scenario("submission fails, and the user's disk is full", submission=FAILS, disk_full=True),
}

# What a field is about, for the message that two scenarios both change it.
SUBJECTS = {
    "dns_rules": "what becomes of queries at the home router",
    "web_rules": "what becomes of web requests at the home router",
    "out_rules": "what leaves the home router",
    "lines": "the same line",
    "attachment": "the address and the route of the user's machine",
    "mtu": "the size of packets",
    "nameserver": "whom the user's machine asks",
    "forwarder": "whom the home router asks",
    "routes": "the way to the same address",
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
