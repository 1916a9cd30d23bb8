# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The plan that a run is expected to launch, written down a second time: launch order and display names."""

SKIVRA = "/Library/Application Support/Halvik Skivra"
ROUTERS = ["palo alto", "seattle", "los angeles", "chicago", "new york", "ashburn", "london", "miami", "singapore",
           "frankfurt", "hong kong", "amsterdam", "berlin", "paris", "copenhagen", "dallas", "bucharest", "prague",
           "washington dc", "warsaw", "sydney"]


def display_names(roles, domain=None, skivra=False, beacon_logs=()):
    """The display names of a run's commands.

    domain is the domain to test without its blanks, or None when none was given; beacon_logs are the paths of the log
    entries in the order of their reading.
    """
    plan = Plan(roles)
    plan.dig(roles["myIpQueryName"])
    if domain and "." in domain:
        plan.domain(domain)
    plan.traceroutes()
    plan.lookups()
    plan.pings()
    plan.machine()
    plan.pages()
    if skivra:
        plan.skivra(domain, beacon_logs)
    return plan.names


def comments(roles):
    """What follows the arguments in each display name of a run without domain and Skivra: a comment or nothing."""
    return [name[name.index(" ("):] if name.endswith(")") else "" for name in display_names(roles)]


class Plan:
    def __init__(self, roles):
        self.roles = roles
        self.names = []

    def add(self, *words):
        self.names.append(" ".join(words))

    def dig(self, *words):
        self.add("/usr/bin/dig", "+time=10", *words)

    def traceroute(self, host):
        self.add("/usr/sbin/traceroute", "-I", "-w 2", host)

    def domain(self, domain):
        self.traceroute(domain)
        self.dig(domain)
        for role in ("serviceResolverA", "serviceResolverB", "thirdPartyResolver"):
            self.dig(domain, "@" + self.roles[role])

    def traceroutes(self):
        for role in ("serviceResolverA", "serviceResolverB", "serviceApiHost", "serviceMonitorHost", "blockPageHost",
                     "categoryHitHost"):
            self.traceroute(self.roles[role])
        self.add("/bin/cat", SKIVRA + "/skv_state.plist")

    def lookups(self):
        roles = self.roles
        resolver = "@" + roles["serviceResolverA"]
        for port in ("", " -p 443", " -p 5353"):
            self.add(f"/usr/bin/dig {resolver}{port} +time=10 {roles['debugQueryName']} txt")
        self.dig(roles["debugQueryName"], "txt")
        self.dig(roles["akamaiWhoamiName"])
        self.dig(roles["ultraDnsWhoamiName"])
        self.add("/usr/bin/dig", resolver, "+time=10", roles["myIpQueryName"])
        self.add("/usr/bin/dig", "@" + roles["akamaiNameServer"], "+time=10", roles["akamaiWhoamiName"])
        self.add("/usr/bin/dig", "@" + roles["ultraDnsNameServer"], "+time=10", roles["ultraDnsWhoamiName"])
        for role in ("thirdPartyResolver", "rootServerAddress", "anycastServerAddress"):
            self.add("/usr/bin/nslookup -timeout=10 -class=chaos -type=txt hostname.bind.", roles[role])

    def pings(self):
        website = self.roles["serviceWebsiteHost"]
        self.add("/sbin/ping -c 5", website, f"({website})")
        for place in ROUTERS:
            first, *rest = ("ashburn" if place == "washington dc" else place).split()
            role = first + "".join(word.capitalize() for word in rest) + "Router"
            self.add("/sbin/ping -c 5", self.roles[role], f"({place} router)")

    def machine(self):
        self.names += ["/bin/ps wwaux", "/sbin/ifconfig -a", "/usr/sbin/scutil --dns", "/usr/sbin/netstat -rn"]

    def pages(self):
        roles = self.roles
        self.add("/usr/bin/curl -Ls", roles["blockIdHost"] + "/monitor.php")
        self.add("/usr/bin/curl -Ls -c /dev/null", roles["serviceMonitorHost"] + "/monitor/")
        self.add("/usr/bin/curl -LIs -c /dev/null", roles["blockIdHost"] + "/")
        self.add("/usr/bin/curl -s", roles["blockPageHost"] + "/monitor.php")
        self.add("/usr/bin/curl -s", roles["serviceHttpAddress"])
        self.add("/usr/sbin/system_profiler SPSoftwareDataType")

    def skivra(self, domain, beacon_logs):
        roles = self.roles
        if domain is None:
            self.add("/usr/bin/dig")
        elif "." in domain:
            self.add("/usr/bin/dig", domain, "@127.0.0.1")
        self.add(f"/usr/bin/dig @127.0.0.1 {roles['debugQueryName']}. txt")
        self.add("/bin/ls", SKIVRA)
        self.add(f"/bin/cat {SKIVRA}/resolv_orig.conf")
        self.shell(f"/bin/ls '{SKIVRA}'")
        self.shell(f"/bin/cat '{SKIVRA}/localdomains'")
        for path in beacon_logs:
            self.shell(f'cat "{path}"')
        self.shell("/usr/bin/tail -n 15000 /var/log/system.log"
                   ' | /usr/bin/egrep -i "kernel|launchd|vpn|dns|configd|racoon|brontel"')
        blocked, grey = roles["blockedIpAddress"], roles["greyIpAddress"]
        self.shell(f"/sbin/ping -c 1 -t 1 {blocked}", "(Blocked IP)")
        self.shell(f"/sbin/route -n get {blocked}", "(Blocked IP)")
        self.shell(f"/usr/bin/curl -v -m 2 {blocked}/some/page", "(Page from Blocked IP)")
        self.shell(f"/sbin/route -n get {grey}", f"({roles['blockIpTestName']})")
        for kind, page in (("Allowed", "favicon.ico"), ("Blocked", "malware.htm")):
            for port in ("", ":8081"):
                self.shell(f"/usr/bin/curl -v -m 2 {grey}{port}/{page}", f"({kind} page from grey IP)")

    def shell(self, line, *comment):
        self.add("/bin/sh -c", line, *comment)
