# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A lab from the inside: how it is built, and how its weather changes."""

import dataclasses
import os
import pathlib
import shutil
import subprocess

import authority
import machine
import namespaces
import network
import servers
import skivra
import weathers
import zones

CONFIG = servers.CONFIG
TLS = servers.LAB / "tls"
ZONES = servers.LAB / "zones"
POLICY = servers.LAB / "policy.conf"
SUBMISSION_HOST = "diagnostic.halvik.example"
# The line that a weather may change.
CUSTOMERS_LINE = "home"


class Lab:
    """Everything that a supervisor holds. Its methods raise OSError, CalledProcessError or ServerFailed."""

    def __init__(self, uid, gid):
        self.uid, self.gid = uid, gid
        self.weather = "clear"
        self.has_skivra = False
        self.machine_pid = 0
        self._running = servers.Running()
        self._carrier = None
        self._machine = None

    def build(self):
        lay_out_folders()
        make_certificates()
        self._carrier = join_places()
        self._machine = self._start_machine()
        self._set_files(weathers.WEATHERS["clear"])
        load_rules("home.nft")
        self._running.start(servers.SERVERS)
        self._finish_machine()
        look_up_a_name()

    def check(self):
        """Raises ServerFailed if anything of the lab has ended."""
        self._running.check()
        for what, process in (("what carries the packets", self._carrier), ("the user's machine", self._machine)):
            if process.poll() is not None:
                raise servers.ServerFailed(f"{what} has ended, with status {process.returncode}")

    # The user's machine

    def _start_machine(self):
        return subprocess.Popen(
            namespaces.command(namespaces.MACHINE, "unshare", "--mount", "--pid", "--fork", "--kill-child", "--uts",
                               "--ipc", "/usr/bin/python3", "-B", CONFIG / "machine.py",
                               TLS / "authority.pem", self.uid, self.gid),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def _finish_machine(self):
        if self._machine.stdout.readline() != "ready\n":
            raise servers.ServerFailed(f"the user's machine did not start; it said:\n{self._machine.stderr.read()}")
        unshare = self._machine.pid
        self.machine_pid = int(pathlib.Path(f"/proc/{unshare}/task/{unshare}/children").read_text())

    @property
    def _machine_root(self):
        return pathlib.Path(f"/proc/{self.machine_pid}/root")

    def _in_machine(self, *words):
        return ["nsenter", "--target", str(self.machine_pid), "--mount", "--net", "--pid", "--uts", "--ipc", "--",
                *words]

    def change_skivra(self, installed):
        if installed == self.has_skivra:
            return
        if installed:
            skivra.install(self._machine_root, CONFIG / "user/skivra")
            self._running.start([servers.SKIVRA], self._in_machine())
            machine.write_resolv_conf(self._machine_root, servers.SKIVRA.address)
        else:
            machine.write_resolv_conf(self._machine_root, network.HOME_LAN_ADDRESS)
            self._running.stop([servers.SKIVRA])
            skivra.remove(self._machine_root)
        self.has_skivra = installed

    # The weather

    def change_weather(self, name):
        """Makes everything as this weather has it, whatever the weather was before."""
        weather = weathers.WEATHERS[name]
        self._running.stop(restarted_by_a_change())
        if self.has_skivra:
            self._running.stop([servers.SKIVRA])
        self._set_files(weather)
        load_rules("no-weather.nft")
        if weather.firewall:
            load_rules(weather.firewall)
        self._set_line(weather)
        set_default_route(weather.default_route)
        self._set_disk(weather.disk_full)
        self._running.start([server for server in servers.SERVERS if server.name not in weather.silent_servers])
        if self.has_skivra:
            self._running.start([servers.SKIVRA], self._in_machine())
        self.weather = name

    def _set_files(self, weather):
        POLICY.write_text((CONFIG / "weather" / weather.policy).read_text() if weather.policy else "")
        servers.BEHAVIOUR.write_text(weather.submission)
        for suffix in ("pem", "key"):
            current = TLS / f"current.{suffix}"
            current.unlink(missing_ok=True)
            current.symlink_to(f"{weather.certificate}.{suffix}")

    def _set_line(self, weather):
        delay = weather.delay_ms / 2 / 1000
        self._carrier.stdin.write(f"{CUSTOMERS_LINE} {delay} {weather.loss}\n")
        self._carrier.stdin.flush()
        self._carrier.stdout.readline()

    def _set_disk(self, full):
        disk = self._machine_root / "lab"
        room = os.statvfs(disk)
        size = (room.f_blocks - room.f_bfree) * room.f_frsize if full else machine.DISK_SIZE
        subprocess.run(self._in_machine("mount", "-o", f"remount,size={size}", "/lab"), check=True, capture_output=True)


def lay_out_folders():
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "none", "/run"], check=True, capture_output=True)
    # Copies, as the servers' user may not be allowed to read the originals.
    shutil.copytree(network.FOLDER, CONFIG, ignore=shutil.ignore_patterns("__pycache__"))
    subprocess.run(["chmod", "-R", "a+rX,go-w", CONFIG], check=True)
    # Not before the copies: the originals may be in /tmp. A server that is killed leaves what it has there.
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=1777", "none", "/tmp"], check=True, capture_output=True)
    TLS.mkdir()
    ZONES.mkdir()
    servers.prepare()
    zones.write(ZONES)


def make_certificates():
    own = authority.Authority(TLS)
    own.issue("good", SUBMISSION_HOST)
    own.issue("expired", SUBMISSION_HOST, expired=True)
    own.issue("wrong-name", "www.halvik.example")
    own.issue_self_signed("self-signed", SUBMISSION_HOST)
    own.issue_self_signed("portal", "portal.hotel.example")
    subprocess.run(["chown", "-R", f"{servers.USER}:{servers.GROUP}", TLS], check=True)


def join_places():
    """Makes all places, their lines and their routes. Returns the process that carries packets."""
    namespaces.create([place.name for place in network.PLACES] + [namespaces.MACHINE])
    lines = [Line("lan", ("home", "lan"), (namespaces.MACHINE, "eth0"), network.LAN_ROUND_TRIP_MS, namespaces.FRAMES)]
    lines += [Line(place.name, (place.uplink, place.name), (place.name, "uplink"), place.round_trip_ms)
              for place in network.PLACES if place.uplink]
    carrier = start_carrier(lines)
    for place in network.PLACES:
        namespaces.ip(settings_of(place), place.name)
    namespaces.ip([f"address add {network.HOME_LAN_ADDRESS}/24 brd + dev lan", "link set lan up"], "home")
    namespaces.ip(["link set lo up", f"address add {network.MACHINE_ADDRESS}/24 brd + dev eth0", "link set eth0 up",
                   f"route add default via {network.HOME_LAN_ADDRESS}"], namespaces.MACHINE)
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


def load_rules(file):
    """Has the home router add the rules of a file."""
    subprocess.run(namespaces.command("home", "nft", "-f", CONFIG / "weather" / file), check=True, capture_output=True)


def set_default_route(present):
    namespaces.ip([f"route replace default via {network.HOME_LAN_ADDRESS}"], namespaces.MACHINE)
    if not present:
        namespaces.ip(["route del default"], namespaces.MACHINE)


def restarted_by_a_change():
    """The servers that start anew with every weather, as what they remember of the one before would still be heard."""
    silent = {name for weather in weathers.WEATHERS.values() for name in weather.silent_servers}
    return [server for server in servers.SERVERS
            if server.program == "unbound" or server.name in {*silent, "submission"}]


def look_up_a_name():
    """Waits until the user's machine can look up a name, by all servers that have a part in it."""
    name = "www.halvik.example"
    answer = subprocess.run(namespaces.command(namespaces.MACHINE, "dig", "+short", "+time=2", "+tries=10",
                                               f"@{network.HOME_LAN_ADDRESS}", name), capture_output=True, text=True)
    if answer.stdout.split() != [network.ADDRESSES[name]]:
        raise servers.ServerFailed(f"the lab looks up {name} in vain:\n{answer.stdout}")
