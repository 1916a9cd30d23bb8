# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A lab from the inside: how it is built, and how its scenario changes."""

import dataclasses
import os
import shutil
import subprocess

import authority
import conditions
import customer_machine
import machine
import namespaces
import network
import office
import servers
import skivra
import scenarios
import zones

CONFIG = servers.CONFIG
TLS = servers.LAB / "tls"
ZONES = servers.LAB / "zones"
POLICY = servers.LAB / "policy.conf"
FORWARDER = servers.LAB / "forwarder.conf"
BLOCKED_PAGE = servers.LAB / "blocked-page.inc"
SUBMISSION_HOST = "diagnostic.halvik.example"


class Lab:
    """Everything that a supervisor holds. Its methods raise OSError, CalledProcessError or ServerFailed."""

    def __init__(self, uid, gid, reader, program, machines):
        self.uid, self.gid = uid, gid
        self._reader = reader
        self.scenario = "clear"
        self.has_skivra = False
        self._running = servers.Running()
        self._carrier = None
        self._machine = customer_machine.CustomerMachine(namespaces.MACHINE, network.MACHINE_ADDRESS, "lan",
                                                         machine.NAME)
        self._office = office.Office(machines, program, uid, gid)

    def build(self):
        lay_out_folders(self._reader)
        make_certificates()
        self._carrier = join_places(self._office.lines())
        conditions.set_attachment(self._machine, scenarios.SCENARIOS["clear"])
        self._machine.start(TLS / "authority.pem", self.uid, self.gid)
        self._office.start(TLS / "authority.pem")
        self._set_files(scenarios.SCENARIOS["clear"])
        conditions.load_rules("home.nft")
        conditions.load_rules("vpn.nft", "vpn")
        self._running.start(servers.SERVERS)
        self._machine.finish()
        self._office.finish(self._running, self._machine)
        look_up_a_name()

    def check(self):
        """Raises ServerFailed if anything of the lab has ended."""
        self._running.check()
        if self._carrier.poll() is not None:
            raise servers.ServerFailed(f"what carries the packets has ended, with status {self._carrier.returncode}")
        self._machine.check()
        self._office.check()

    # The machines

    def machine(self, name):
        return self._machine if name == namespaces.MACHINE else self._office[name]

    def switch_off(self, name):
        """Switches a machine of the office off, for good."""
        self._office.switch_off(name, self._running)

    def change_skivra(self, installed):
        if installed != self.has_skivra:
            self.has_skivra = installed
            self._set_skivra(scenarios.named(self.scenario))

    def _set_skivra(self, scenario):
        self._running.stop([servers.SKIVRA])
        skivra.remove(self._machine.root)
        usual = network.HOME_LAN_ADDRESS
        if self.has_skivra:
            usual = servers.SKIVRA.address
            skivra.install(self._machine.root, CONFIG / "user/skivra", scenario.skivra_state)
            if scenario.skivra_runs:
                self._running.start([servers.SKIVRA], servers.unprivileged(self._machine.command()))
        machine.write_resolv_conf(self._machine.root, scenario.nameserver or usual)

    # The scenario

    def change_scenario(self, name, machine_name):
        """Sets everything that a scenario may change, whatever the scenario was before. With the name of a machine of
        the office, sets that machine only, as far as the scenario is about a machine."""
        if machine_name != namespaces.MACHINE:
            self._change_scenario_of(self._office[machine_name], name)
            return
        scenario = scenarios.named(name)
        self._running.stop(restarted_by_a_change())
        self._set_files(scenario)
        self._set_lines(scenario)
        conditions.set_rules(filter(None, [scenario.dns_rules, scenario.web_rules, scenario.out_rules]))
        conditions.set_vpn(False)
        conditions.set_attachment(self._machine, scenario)
        conditions.set_vpn(scenario.vpn)
        conditions.set_routes(scenario.routes)
        conditions.set_clock(self._machine.root, scenario.clock_behind_years)
        self._machine.set_disk(scenario.disk_full)
        self._running.start([server for server in servers.SERVERS if server.name not in scenario.silent_servers])
        self._set_skivra(scenario)
        self.scenario = name

    def _set_files(self, scenario):
        POLICY.write_text((CONFIG / "scenarios" / scenario.policy).read_text() if scenario.policy else "")
        FORWARDER.write_text(f'forward-zone:\n  name: "."\n  forward-addr: {scenario.forwarder}\n')
        BLOCKED_PAGE.write_text((CONFIG / scenario.blocked_page).read_text())
        servers.BEHAVIOUR.write_text(scenario.submission)
        for suffix in ("pem", "key"):
            current = TLS / f"current.{suffix}"
            current.unlink(missing_ok=True)
            current.symlink_to(f"{scenario.certificate}.{suffix}")

    def _set_lines(self, scenario):
        for line in {line for each in scenarios.SCENARIOS.values() for line in each.lines}:
            self._set_line(line, scenario)

    def _set_line(self, line, scenario):
        impairment = scenario.lines.get(line, scenarios.Impairment())
        delay, jitter = impairment.delay_ms / 2 / 1000, impairment.jitter_ms / 2 / 1000
        self._carrier.stdin.write(f"{line} {delay} {jitter} {impairment.loss}\n")
        self._carrier.stdin.flush()
        self._carrier.stdout.readline()

    def _change_scenario_of(self, each, name):
        scenario = scenarios.of_a_machine(name, each.line)
        self._set_line(each.line, scenario)
        conditions.set_attachment(each, scenario)
        machine.write_resolv_conf(each.root, scenario.nameserver or network.HOME_LAN_ADDRESS)
        each.set_disk(scenario.disk_full)


def lay_out_folders(reader):
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "none", "/run"], check=True, capture_output=True)
    # Copies, as the servers' user may not be allowed to read the originals.
    shutil.copytree(network.FOLDER, CONFIG, ignore=shutil.ignore_patterns("__pycache__"))
    shutil.copytree(network.LIBRARY, servers.LIBRARY, ignore=shutil.ignore_patterns("__pycache__"))
    shutil.copytree(network.FOLDER.parent / "share/ansible", office.PLAYBOOKS)
    subprocess.run(["chmod", "-R", "a+rX,go-w", CONFIG, servers.LIBRARY], check=True)
    if reader.is_file():
        shutil.copy(reader, servers.READER)
        servers.READER.chmod(0o755)
    # Not before the copies: the originals may be in /tmp. A server that is killed leaves what it has there.
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=1777", "none", "/tmp"], check=True, capture_output=True)
    TLS.mkdir()
    ZONES.mkdir()
    servers.prepare()
    zones.write(ZONES)


def make_certificates():
    own = authority.Authority(TLS)
    own.issue(TLS / "good", SUBMISSION_HOST)
    own.issue(TLS / "expired", SUBMISSION_HOST, expired=True)
    own.issue(TLS / "wrong-name", "www.halvik.example")
    for name, host in (("self-signed", SUBMISSION_HOST), ("portal", "portal.hotel.example")):
        authority.make_self_signed(TLS / name, host, f"subjectAltName=DNS:{host}")
    subprocess.run(["chown", "-R", f"{servers.USER}:{servers.GROUP}", TLS], check=True)


def join_places(office_lines):
    """Makes all places, their lines and their routes. Returns the process that carries packets."""
    namespaces.create([place.name for place in network.PLACES] + [namespaces.MACHINE]
                      + [name for *_, (name, _) in office_lines])
    lines = [Line("lan", ("home", "lan"), (namespaces.MACHINE, "eth0"), network.LAN_ROUND_TRIP_MS, namespaces.FRAMES)]
    lines.append(Line("tunnel", ("vpn", "clients"), ("vpn", conditions.VPN_DEVICE), network.VPN_ROUND_TRIP_MS))
    lines += [Line(place.name, (place.uplink, place.name), (place.name, "uplink"), place.round_trip_ms)
              for place in network.PLACES if place.uplink]
    lines += [Line(*line, network.LAN_ROUND_TRIP_MS, namespaces.FRAMES) for line in office_lines]
    carrier = start_carrier(lines)
    for place in network.PLACES:
        namespaces.ip(settings_of(place), place.name)
    namespaces.ip([f"address add {network.HOME_LAN_ADDRESS}/24 brd + dev lan", "link set lan up"], "home")
    namespaces.ip(["link set clients up", f"route add {network.VPN_MACHINE_ADDRESS} dev clients"], "vpn")
    namespaces.ip(["link set lo up", "link set eth0 up"], namespaces.MACHINE)
    return carrier


@dataclasses.dataclass(frozen=True)
class Line:
    name: str
    first: tuple  # a place and the name of the device there
    second: tuple
    round_trip_ms: float
    kind: int = namespaces.PACKETS


def start_carrier(lines):
    arguments, descriptors = [], []
    for line in lines:
        ends = [namespaces.open_tunnel(*end, line.kind) for end in (line.first, line.second)]
        arguments.append(f"{line.name}:{ends[0]}:{ends[1]}:{line.round_trip_ms / 2 / 1000}")
        descriptors += ends
    carrier = subprocess.Popen(["/usr/bin/python3", "-B", CONFIG / "line.py", *arguments],
                               pass_fds=descriptors, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    for descriptor in descriptors:
        os.close(descriptor)
    return carrier


def settings_of(place):
    """What ip has to do in a place: addresses, the way to the exchange, and the ways to what is behind it."""
    device = "uplink" if place.uplink else "lo"
    lines = ["link set lo up"]
    lines += [f"address add {address}/32 dev {device}" for address in place.addresses.values()]
    if place.uplink:
        lines += ["link set uplink up", "route add default dev uplink"]
    for next_ in network.PLACES:
        if next_.uplink == place.name:
            lines.append(f"link set {next_.name} up")
            lines += [f"route add {address} dev {next_.name}"
                      for each in network.subtree(next_.name) for address in each.addresses.values()]
    return lines


def restarted_by_a_change():
    """The servers that restart with every scenario: their caches are those of the scenario before."""
    silent = {name for scenario in scenarios.SCENARIOS.values() for name in scenario.silent_servers}
    return [server for server in servers.SERVERS
            if server.program == "unbound" or server.name in {*silent, "submission"}]


def look_up_a_name():
    """Waits until the user's machine can look up a name, by all servers that have a part in it."""
    name = "www.halvik.example"
    answer = subprocess.run(namespaces.command(namespaces.MACHINE, "dig", "+short", "+time=2", "+tries=10",
                                               f"@{network.HOME_LAN_ADDRESS}", name), capture_output=True, text=True)
    if answer.stdout.split() != [network.ADDRESSES[name]]:
        raise servers.ServerFailed(f"the lab looks up {name} in vain:\n{answer.stdout}")
